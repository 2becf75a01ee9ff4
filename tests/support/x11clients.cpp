// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/x11clients.h"

#include "platform/xcb_handles.h"

#include <array>
#include <span>
#include <string_view>

namespace x11clients {

using platform::xcb::Connection;
using platform::xcb::Owned;

namespace {

/// One look at the display.
class Display
{
public:
    Display() : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection.get()) == 0)
            m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    }

    xcb_window_t root() const { return m_root; }

    QList<uint32_t> numbers(xcb_window_t window, std::string_view property)
    {
        const auto reply = read(window, property);
        if (!reply || reply->format != 32)
            return {};
        const auto* values = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
        return {values, values + xcb_get_property_value_length(reply.get()) / 4};
    }

    QString text(xcb_window_t window, std::string_view property)
    {
        const auto reply = read(window, property);
        if (!reply)
            return {};
        return QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                 xcb_get_property_value_length(reply.get()));
    }

    QRect geometry(xcb_window_t window)
    {
        xcb_connection_t* const connection = m_connection.get();
        const Owned<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
        const Owned<xcb_translate_coordinates_reply_t> position(xcb_translate_coordinates_reply(
            connection, xcb_translate_coordinates(connection, window, m_root, 0, 0), nullptr));
        return size && position ? QRect(position->dst_x, position->dst_y, size->width, size->height) : QRect();
    }

    QImage grab(const QRect& area)
    {
        const auto cookie =
            xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<int16_t>(area.x()),
                          static_cast<int16_t>(area.y()), static_cast<uint16_t>(area.width()),
                          static_cast<uint16_t>(area.height()), ~uint32_t{0});
        const Owned<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
        if (!reply || xcb_get_image_data_length(reply.get()) < 4 * area.width() * area.height())
            return {};
        return QImage(xcb_get_image_data(reply.get()), area.width(), area.height(), QImage::Format_RGB32).copy();
    }

    xcb_atom_t atom(std::string_view name) { return platform::xcb::atomNamed(m_connection.get(), name); }

    QString atomName(xcb_atom_t atom)
    {
        const Owned<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(m_connection.get(), xcb_get_atom_name(m_connection.get(), atom), nullptr));
        return reply ? QString::fromLatin1(xcb_get_atom_name_name(reply.get()),
                                           xcb_get_atom_name_name_length(reply.get()))
                     : QString();
    }

    /// A request to the window manager about one window.
    void ask(xcb_window_t window, std::string_view request, const std::array<uint32_t, 5>& data)
    {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom(request);
        std::copy(data.begin(), data.end(), message.data.data32);
        xcb_send_event(m_connection.get(), 0, m_root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
        // A reply says that the request before it has arrived.
        const Owned<xcb_get_input_focus_reply_t> sync(
            xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
    }

private:
    Owned<xcb_get_property_reply_t> read(xcb_window_t window, std::string_view property)
    {
        constexpr uint32_t kLongestInWords = 4096;
        const auto cookie = xcb_get_property(m_connection.get(), 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY,
                                             0, kLongestInWords);
        return Owned<xcb_get_property_reply_t>(xcb_get_property_reply(m_connection.get(), cookie, nullptr));
    }

    Connection m_connection;
    xcb_window_t m_root = XCB_WINDOW_NONE;
};

/// The source indication of requests that come from the user: a taskbar or a pager.
constexpr uint32_t kFromTheUser = 2;

} // namespace

QList<Window> windowsOf(qint64 processId)
{
    Display display;
    QList<Window> windows;
    const QList<uint32_t> ids = display.numbers(display.root(), "_NET_CLIENT_LIST_STACKING");
    for (const uint32_t id : ids) {
        if (display.numbers(id, "_NET_WM_PID").value(0) != processId)
            continue;
        const bool minimised = display.numbers(id, "_NET_WM_STATE").contains(display.atom("_NET_WM_STATE_HIDDEN"));
        windows.append({id, display.text(id, "_NET_WM_NAME"), display.geometry(id), minimised});
    }
    return windows;
}

uint32_t topmostWindow()
{
    Display display;
    const QList<uint32_t> ids = display.numbers(display.root(), "_NET_CLIENT_LIST_STACKING");
    return ids.isEmpty() ? 0 : ids.constLast();
}

uint32_t activeWindow()
{
    Display display;
    return display.numbers(display.root(), "_NET_ACTIVE_WINDOW").value(0);
}

QStringList statesOf(uint32_t id)
{
    Display display;
    QStringList names;
    const QList<uint32_t> states = display.numbers(id, "_NET_WM_STATE");
    for (const uint32_t state : states)
        names.append(display.atomName(state));
    return names;
}

QList<uint32_t> iconOf(uint32_t id)
{
    Display display;
    const QList<uint32_t> icons = display.numbers(id, "_NET_WM_ICON");
    return icons.mid(0, 2 + qsizetype{icons.value(0)} * icons.value(1));
}

QImage grab(const QRect& area)
{
    return Display().grab(area);
}

void minimise(uint32_t id)
{
    constexpr uint32_t kIconicState = 3;
    Display().ask(id, "WM_CHANGE_STATE", {kIconicState});
}

void close(uint32_t id)
{
    Display().ask(id, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, kFromTheUser});
}

void activate(uint32_t id)
{
    Display().ask(id, "_NET_ACTIVE_WINDOW", {kFromTheUser, XCB_CURRENT_TIME});
}

} // namespace x11clients
