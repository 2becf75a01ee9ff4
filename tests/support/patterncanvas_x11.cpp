// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/xcb_handles.h"
#include "tests/support/patterncanvas.h"

#include <array>

using platform::xcb::atomNamed;
using platform::xcb::Connection;
using platform::xcb::Owned;

namespace {

xcb_rectangle_t rectangleOf(const QRect& rect)
{
    return {static_cast<int16_t>(rect.x()), static_cast<int16_t>(rect.y()), static_cast<uint16_t>(rect.width()),
            static_cast<uint16_t>(rect.height())};
}

} // namespace

struct PatternCanvas::Private
{
    Connection connection{xcb_connect(nullptr, nullptr)};
    xcb_screen_t* screen = nullptr;
    xcb_window_t window = 0;
    xcb_gcontext_t gc = 0;
};

PatternCanvas::PatternCanvas() : m_private(std::make_unique<Private>())
{
    if (xcb_connection_has_error(m_private->connection.get()) == 0)
        m_private->screen = xcb_setup_roots_iterator(xcb_get_setup(m_private->connection.get())).data;
}

PatternCanvas::~PatternCanvas() = default;

bool PatternCanvas::isBroken() const
{
    return !m_private->screen || xcb_connection_has_error(m_private->connection.get()) != 0;
}

QSize PatternCanvas::size() const
{
    return {m_private->screen->width_in_pixels, m_private->screen->height_in_pixels};
}

void PatternCanvas::show(const QColor& background)
{
    xcb_connection_t* const connection = m_private->connection.get();
    const xcb_screen_t& screen = *m_private->screen;
    m_private->window = xcb_generate_id(connection);
    m_private->gc = xcb_generate_id(connection);
    const std::array<uint32_t, 2> values{background.rgb() & 0xFFFFFFU, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_private->window, screen.root, 0, 0, screen.width_in_pixels,
                      screen.height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    const std::array<uint32_t, 1> noExposures{0};
    xcb_create_gc(connection, m_private->gc, m_private->window, XCB_GC_GRAPHICS_EXPOSURES, noExposures.data());
    const xcb_atom_t type = atomNamed(connection, "_NET_WM_WINDOW_TYPE_DESKTOP");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_private->window,
                        atomNamed(connection, "_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &type);
    xcb_map_window(connection, m_private->window);
    flush();
}

void PatternCanvas::fill(const QRect& area, const QColor& colour)
{
    const std::array<uint32_t, 1> foreground{colour.rgb() & 0xFFFFFFU};
    const xcb_rectangle_t rectangle = rectangleOf(area);
    xcb_change_gc(m_private->connection.get(), m_private->gc, XCB_GC_FOREGROUND, foreground.data());
    xcb_poly_fill_rectangle(m_private->connection.get(), m_private->window, m_private->gc, 1, &rectangle);
}

void PatternCanvas::flush()
{
    xcb_flush(m_private->connection.get());
}

bool PatternCanvas::takeExposure()
{
    bool exposed = false;
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_private->connection.get())})
        exposed = exposed || (event->response_type & 0x7F) == XCB_EXPOSE;
    return exposed;
}
