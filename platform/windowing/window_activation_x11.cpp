// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_activation.h"
#include "platform/xcb_handles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

namespace platform {

namespace {

// Values of WM_STATE (ICCCM 4.1.3.1) and of the window manager's client messages (EWMH).
constexpr uint32_t kIconicState = 3;
constexpr uint32_t kStateRemove = 0;
constexpr uint32_t kStateAdd = 1;
/// The request is the user's, by way of a program that manages windows: no focus-stealing rule delays it.
constexpr uint32_t kSourceUser = 2;

/// On a connection of its own, nothing here meets the process-wide error handlers of the libraries that also talk
/// to the display.
class Connection
{
public:
    bool isOpen() const { return xcb_connection_has_error(get()) == 0; }
    xcb_connection_t* get() const { return m_connection.get(); }

    /// The root of the screen that the window is on; none when there is no such window.
    xcb_window_t rootOf(xcb_window_t window) const
    {
        const auto reply = xcb::answer<xcb_get_geometry_reply>(get(), xcb_get_geometry(get(), window));
        return reply ? reply->root : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    }

    xcb_atom_t atom(std::string_view name) const { return xcb::atomNamed(get(), name); }

    /// The first 32-bit number of a property; 0 when there is none.
    uint32_t firstNumber(xcb_window_t window, xcb_atom_t property) const
    {
        const auto cookie = xcb_get_property(get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
        const auto reply = xcb::answer<xcb_get_property_reply>(get(), cookie);
        if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
            return 0;
        return *static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    }

    /// As the window manager has it.
    xcb_window_t activeWindow() const
    {
        return firstNumber(xcb::screenNumbered(get(), m_screen).root, atom("_NET_ACTIVE_WINDOW"));
    }

    bool succeeds(xcb_void_cookie_t cookie) const
    {
        const xcb::Owned<xcb_generic_error_t> error(xcb_request_check(get(), cookie));
        return !error && isOpen();
    }

    /// Sends a message about the window to the window manager.
    bool sendToWindowManager(xcb_window_t window, std::string_view type, const std::array<uint32_t, 5>& data) const
    {
        const xcb_window_t root = rootOf(window);
        if (root == XCB_WINDOW_NONE)
            return false;
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom(type);
        std::copy(data.begin(), data.end(), event.data.data32);
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        return succeeds(xcb_send_event_checked(get(), 0, root, mask, reinterpret_cast<const char*>(&event)));
    }

    bool changeState(xcb_window_t window, uint32_t action, std::string_view state) const
    {
        return sendToWindowManager(window, "_NET_WM_STATE", {action, atom(state), XCB_ATOM_NONE, kSourceUser, 0});
    }

private:
    int m_screen = 0;
    xcb::Connection m_connection{xcb_connect(nullptr, &m_screen)};
};

/// The window of a handle; none for a number that cannot be a window id.
xcb_window_t toWindow(quint64 handle)
{
    return handle <= std::numeric_limits<xcb_window_t>::max() ? static_cast<xcb_window_t>(handle)
                                                              : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

bool exists(const Connection& connection, xcb_window_t window)
{
    if (window == XCB_WINDOW_NONE || !connection.isOpen())
        return false;
    const auto cookie = xcb_get_window_attributes(connection.get(), window);
    const auto reply = xcb::answer<xcb_get_window_attributes_reply>(connection.get(), cookie);
    return reply != nullptr;
}

bool isActive(const Connection& connection, xcb_window_t window)
{
    return connection.firstNumber(connection.rootOf(window), connection.atom("_NET_ACTIVE_WINDOW")) == window;
}

} // namespace

bool isWindow(quint64 handle)
{
    const Connection connection;
    return exists(connection, toWindow(handle));
}

bool isMinimized(quint64 handle)
{
    const Connection connection;
    const xcb_window_t window = toWindow(handle);
    return exists(connection, window) && connection.firstNumber(window, connection.atom("WM_STATE")) == kIconicState;
}

bool restoreWindow(quint64 handle)
{
    const Connection connection;
    const xcb_window_t window = toWindow(handle);
    return exists(connection, window) && connection.succeeds(xcb_map_window_checked(connection.get(), window));
}

bool raiseWindow(quint64 handle)
{
    const Connection connection;
    const xcb_window_t window = toWindow(handle);
    if (!exists(connection, window))
        return false;
    // Coming down from the layer above the others, a window lands on top of them. Where nobody manages windows the
    // messages go unheard, and the plain request alone raises it.
    const uint32_t above = XCB_STACK_MODE_ABOVE;
    return connection.changeState(window, kStateAdd, "_NET_WM_STATE_ABOVE") &&
           connection.changeState(window, kStateRemove, "_NET_WM_STATE_ABOVE") &&
           connection.succeeds(
               xcb_configure_window_checked(connection.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above));
}

quint64 activeWindow()
{
    const Connection connection;
    return connection.isOpen() ? connection.activeWindow() : 0;
}

bool activateWindow(quint64 handle)
{
    const Connection connection;
    const xcb_window_t window = toWindow(handle);
    return exists(connection, window) &&
           connection.sendToWindowManager(window, "_NET_ACTIVE_WINDOW",
                                          {kSourceUser, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
}

bool demandAttention(quint64 handle, int /*count*/)
{
    const Connection connection;
    const xcb_window_t window = toWindow(handle);
    if (!exists(connection, window))
        return false;
    return isActive(connection, window) || connection.changeState(window, kStateAdd, "_NET_WM_STATE_DEMANDS_ATTENTION");
}

} // namespace platform
