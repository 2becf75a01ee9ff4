// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/xserver.h"

#include <xcb/render.h>
#include <xcb/shape.h>

#include <algorithm>

using platform::xcb::Owned;

namespace {

constexpr int kStartTimeoutMs = 20'000;

} // namespace

XServer::~XServer()
{
    m_process.terminate();
    m_process.waitForFinished();
}

bool XServer::start(const QStringList& options)
{
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(QStringLiteral("Xvfb"),
                    QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-noreset")} +
                        options);
    if (!m_process.waitForReadyRead(kStartTimeoutMs))
        return false;
    m_display = ':' + m_process.readLine().trimmed();
    return true;
}

PaintedWindow::PaintedWindow(const QRect& geometry, std::uint32_t color, const char* display)
{
    int number = 0;
    m_connection.reset(xcb_connect(display, &number));
    const xcb_screen_t& screen = platform::xcb::screenNumbered(connection(), number);
    m_window = xcb_generate_id(connection());
    m_context = xcb_generate_id(connection());
    const std::array<std::uint32_t, 2> values{color, 1};
    xcb_create_window(connection(), XCB_COPY_FROM_PARENT, m_window, screen.root,
                      static_cast<std::int16_t>(geometry.x()), static_cast<std::int16_t>(geometry.y()),
                      static_cast<std::uint16_t>(geometry.width()), static_cast<std::uint16_t>(geometry.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                      values.data());
    xcb_create_gc(connection(), m_context, m_window, 0, nullptr);
    xcb_map_window(connection(), m_window);
    sync();
}

void PaintedWindow::paint(const QRect& area, std::uint32_t color)
{
    xcb_change_gc(connection(), m_context, XCB_GC_FOREGROUND, &color);
    const xcb_rectangle_t rectangle{static_cast<std::int16_t>(area.x()), static_cast<std::int16_t>(area.y()),
                                    static_cast<std::uint16_t>(area.width()),
                                    static_cast<std::uint16_t>(area.height())};
    xcb_poly_fill_rectangle(connection(), m_window, m_context, 1, &rectangle);
    sync();
}

void PaintedWindow::moveTo(const QPoint& position)
{
    const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(position.x()),
                                              static_cast<std::uint32_t>(position.y())};
    xcb_configure_window(connection(), m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values.data());
    sync();
}

void PaintedWindow::hide()
{
    xcb_unmap_window(connection(), m_window);
    sync();
}

void PaintedWindow::show()
{
    xcb_map_window(connection(), m_window);
    sync();
}

void PaintedWindow::raise()
{
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection(), m_window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    sync();
}

void PaintedWindow::setShape(const QRegion& region)
{
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& part : region)
        rectangles.push_back({static_cast<std::int16_t>(part.x()), static_cast<std::int16_t>(part.y()),
                              static_cast<std::uint16_t>(part.width()), static_cast<std::uint16_t>(part.height())});
    xcb_shape_rectangles(connection(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, m_window, 0,
                         0, static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    sync();
}

void PaintedWindow::setBlockPointer(int sizePx, const QPoint& hotSpot, std::uint16_t red)
{
    setPointer(createBlock(sizePx, hotSpot, red));
}

void PaintedWindow::setAnimatedPointer(int sizePx, const std::vector<std::uint16_t>& reds, int intervalMs)
{
    std::vector<xcb_render_animcursorelt_t> images;
    images.reserve(reds.size());
    for (const std::uint16_t red : reds)
        images.push_back({createBlock(sizePx, QPoint(0, 0), red), static_cast<std::uint32_t>(intervalMs)});
    const auto cursor = xcb_generate_id(connection());
    xcb_render_create_anim_cursor(connection(), cursor, static_cast<std::uint32_t>(images.size()), images.data());
    setPointer(cursor);
}

xcb_cursor_t PaintedWindow::createBlock(int sizePx, const QPoint& hotSpot, std::uint16_t red)
{
    const auto block = xcb_generate_id(connection());
    const auto context = xcb_generate_id(connection());
    const auto cursor = xcb_generate_id(connection());
    const auto size = static_cast<std::uint16_t>(sizePx);
    const std::uint32_t one = 1;
    xcb_create_pixmap(connection(), 1, block, m_window, size, size);
    xcb_create_gc(connection(), context, block, XCB_GC_FOREGROUND, &one);
    const xcb_rectangle_t whole{0, 0, size, size};
    xcb_poly_fill_rectangle(connection(), block, context, 1, &whole);
    xcb_create_cursor(connection(), cursor, block, block, red, 0, 0, 0, 0, 0, static_cast<std::uint16_t>(hotSpot.x()),
                      static_cast<std::uint16_t>(hotSpot.y()));
    return cursor;
}

void PaintedWindow::setPointer(xcb_cursor_t cursor)
{
    xcb_change_window_attributes(connection(), m_window, XCB_CW_CURSOR, &cursor);
    sync();
}

void PaintedWindow::movePointer(const QPoint& position)
{
    xcb_warp_pointer(connection(), XCB_NONE, m_window, 0, 0, 0, 0, static_cast<std::int16_t>(position.x()),
                     static_cast<std::int16_t>(position.y()));
    sync();
}

void PaintedWindow::arrangeButtons(const std::array<std::uint8_t, 3>& buttons)
{
    const Owned<xcb_get_pointer_mapping_reply_t> present(
        xcb_get_pointer_mapping_reply(connection(), xcb_get_pointer_mapping(connection()), nullptr));
    if (!present)
        return;
    std::uint8_t* const map = xcb_get_pointer_mapping_map(present.get());
    std::copy(buttons.begin(), buttons.end(), map);
    const auto cookie = xcb_set_pointer_mapping(connection(), present->map_len, map);
    const Owned<xcb_set_pointer_mapping_reply_t> reply(xcb_set_pointer_mapping_reply(connection(), cookie, nullptr));
}

void PaintedWindow::disconnectOthers()
{
    // What a client makes has the client's number above the bits of this mask.
    const xcb_setup_t& setup = *xcb_get_setup(connection());
    const std::uint32_t step = setup.resource_id_mask + 1;
    constexpr std::uint32_t kMaxClients = 64;
    for (std::uint32_t client = 1; client < kMaxClients; ++client) {
        if (client * step != setup.resource_id_base)
            xcb_kill_client(connection(), client * step);
    }
    sync();
}

void PaintedWindow::sync()
{
    // A reply says that the requests before it were carried out.
    const Owned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr));
}
