#include "platform/pointer_state.h"

#include <xcb/xcb.h>

#include <cstdlib>

namespace platform {

namespace {

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); }
};

xcb_window_t rootOf(xcb_connection_t* display, int screen)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(display));
    while (screen-- > 0 && screens.rem > 1)
        xcb_screen_next(&screens);
    return screens.data->root;
}

} // namespace

struct PointerProbe::Connection
{
    Connection() : display(xcb_connect(nullptr, &screen))
    {
        if (isUsable())
            root = rootOf(display, screen);
    }
    ~Connection() { xcb_disconnect(display); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool isUsable() const { return xcb_connection_has_error(display) == 0; }

    int screen = 0;
    xcb_connection_t* display;
    xcb_window_t root = XCB_WINDOW_NONE;
};

PointerProbe::PointerProbe() : m_connection(std::make_unique<Connection>()) {}

PointerProbe::~PointerProbe() = default;

std::optional<PointerState> PointerProbe::look() const
{
    xcb_connection_t* const display = m_connection->display;
    if (!m_connection->isUsable())
        return {};
    const std::unique_ptr<xcb_query_pointer_reply_t, FreeReply> reply(
        xcb_query_pointer_reply(display, xcb_query_pointer(display, m_connection->root), nullptr));
    if (!reply || reply->same_screen == 0)
        return {};
    // The server counts the buttons after the user's arrangement of them.
    return PointerState{QPoint(reply->root_x, reply->root_y), (reply->mask & XCB_BUTTON_MASK_1) != 0,
                        (reply->mask & XCB_BUTTON_MASK_3) != 0};
}

} // namespace platform
