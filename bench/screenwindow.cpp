// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/screenwindow.h"

#include <QImage>

#include <algorithm>
#include <array>

using platform::xcb::atomNamed;
using platform::xcb::Owned;

namespace {

std::int16_t position(int value)
{
    return static_cast<std::int16_t>(value);
}

std::uint16_t length(int value)
{
    return static_cast<std::uint16_t>(value);
}

} // namespace

ScreenWindow::ScreenWindow() : m_connection(xcb_connect(nullptr, nullptr))
{
    xcb_connection_t* const connection = m_connection.get();
    if (xcb_connection_has_error(connection) != 0)
        return;
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    m_window = xcb_generate_id(connection);
    m_gc = xcb_generate_id(connection);
    const std::array<std::uint32_t, 1> events{XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, m_screen->root, 0, 0, m_screen->width_in_pixels,
                      m_screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual,
                      XCB_CW_EVENT_MASK, events.data());
    const std::array<std::uint32_t, 1> noExposures{0};
    xcb_create_gc(connection, m_gc, m_window, XCB_GC_GRAPHICS_EXPOSURES, noExposures.data());
}

bool ScreenWindow::isBroken() const
{
    return xcb_connection_has_error(m_connection.get()) != 0;
}

QRect ScreenWindow::rect() const
{
    return {0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels};
}

void ScreenWindow::show()
{
    xcb_connection_t* const connection = m_connection.get();
    const xcb_atom_t type = atomNamed(connection, "_NET_WM_WINDOW_TYPE_DESKTOP");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, atomNamed(connection, "_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &type);
    xcb_map_window(connection, m_window);
    flush();
}

xcb_pixmap_t ScreenWindow::upload(const QImage& image)
{
    xcb_connection_t* const connection = m_connection.get();
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    xcb_create_pixmap(connection, m_screen->root_depth, pixmap, m_window, length(image.width()),
                      length(image.height()));
    // Half of what one request can hold, in units of four bytes: there has to be room for its head.
    const auto rowsAtOnce =
        static_cast<int>(qint64{2} * xcb_get_maximum_request_length(connection) / image.bytesPerLine());
    for (int top = 0; top < image.height(); top += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, image.height() - top);
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, m_gc, length(image.width()), length(rows), 0,
                      position(top), 0, m_screen->root_depth, static_cast<std::uint32_t>(rows * image.bytesPerLine()),
                      image.constScanLine(top));
    }
    return pixmap;
}

void ScreenWindow::copy(xcb_pixmap_t image, const QRect& part)
{
    xcb_copy_area(m_connection.get(), image, m_window, m_gc, position(part.x()), position(part.y()), position(part.x()),
                  position(part.y()), length(part.width()), length(part.height()));
}

void ScreenWindow::fill(const QRect& area, QRgb colour)
{
    const std::array<std::uint32_t, 1> foreground{colour & RGB_MASK};
    const xcb_rectangle_t rectangle{position(area.x()), position(area.y()), length(area.width()),
                                    length(area.height())};
    xcb_change_gc(m_connection.get(), m_gc, XCB_GC_FOREGROUND, foreground.data());
    xcb_poly_fill_rectangle(m_connection.get(), m_window, m_gc, 1, &rectangle);
}

void ScreenWindow::flush()
{
    xcb_flush(m_connection.get());
}

bool ScreenWindow::takeExposure()
{
    bool exposed = false;
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())})
        exposed = exposed || (event->response_type & 0x7F) == XCB_EXPOSE;
    return exposed;
}
