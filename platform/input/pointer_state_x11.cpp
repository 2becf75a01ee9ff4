// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/pointer_state.h"
#include "platform/xcb_handles.h"

namespace platform {

struct PointerProbe::Connection
{
    Connection() : display(xcb_connect(nullptr, &screen))
    {
        if (isUsable())
            root = xcb::screenNumbered(display.get(), screen).root;
    }

    bool isUsable() const { return xcb_connection_has_error(display.get()) == 0; }

    int screen = 0;
    xcb::Connection display;
    xcb_window_t root = XCB_WINDOW_NONE;
};

PointerProbe::PointerProbe() : m_connection(std::make_unique<Connection>()) {}

PointerProbe::~PointerProbe() = default;

std::optional<PointerState> PointerProbe::look() const
{
    xcb_connection_t* const display = m_connection->display.get();
    if (!m_connection->isUsable())
        return {};
    const auto reply = xcb::answer<xcb_query_pointer_reply>(display, xcb_query_pointer(display, m_connection->root));
    if (!reply || reply->same_screen == 0)
        return {};
    // The server counts the buttons after the user's arrangement of them.
    return PointerState{QPoint(reply->root_x, reply->root_y), (reply->mask & XCB_BUTTON_MASK_1) != 0,
                        (reply->mask & XCB_BUTTON_MASK_3) != 0};
}

} // namespace platform
