// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/watchedwindow.h"

#include "platform/xcb_handles.h"

#include <QString>

#include <array>
#include <string_view>

namespace {

template <typename T>
using Reply = platform::xcb::Owned<T>;

constexpr uint8_t kEventMask = 0x7f;

} // namespace

struct WatchedWindow::Private
{
    xcb_connection_t* connection = nullptr;
    xcb_window_t window = XCB_WINDOW_NONE;
    QStringList events;

    xcb_atom_t atom(std::string_view name) const { return platform::xcb::atomNamed(connection, name); }

    QString name(xcb_atom_t atom) const
    {
        const Reply<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
        return reply ? QString::fromLatin1(xcb_get_atom_name_name(reply.get()),
                                           xcb_get_atom_name_name_length(reply.get()))
                     : QString();
    }

    void make()
    {
        const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        const uint32_t unmanaged = 1;
        window = xcb_generate_id(connection);
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 320, 240, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
        const std::array<uint32_t, 2> minimised{3, XCB_WINDOW_NONE};
        const xcb_atom_t state = atom("WM_STATE");
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, state, state, 32, minimised.size(),
                            minimised.data());
        // What is asked of the window manager goes to the root window.
        const uint32_t wanted = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, screen->root, XCB_CW_EVENT_MASK, &wanted);
        sync();
    }

    /// What was done before is in the queue of events afterwards.
    void sync() const
    {
        const Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }

    void keep(const xcb_generic_event_t* event)
    {
        const int type = event->response_type & kEventMask;
        if (type == XCB_MAP_NOTIFY && reinterpret_cast<const xcb_map_notify_event_t*>(event)->window == window)
            events.append(QStringLiteral("shown"));
        const auto* const message = reinterpret_cast<const xcb_client_message_event_t*>(event);
        if (type == XCB_CLIENT_MESSAGE && message->window == window)
            events.append(described(*message));
    }

    QString described(const xcb_client_message_event_t& message) const
    {
        QString request = name(message.type);
        if (request != QLatin1String("_NET_WM_STATE"))
            return request;
        const QString action = message.data.data32[0] == 0 ? QStringLiteral("remove") : QStringLiteral("add");
        return request + u' ' + action + u' ' + name(message.data.data32[1]);
    }
};

WatchedWindow::WatchedWindow() : m_private(std::make_unique<Private>())
{
    m_private->connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_private->connection) == 0)
        m_private->make();
}

WatchedWindow::~WatchedWindow()
{
    xcb_disconnect(m_private->connection);
}

uint32_t WatchedWindow::id() const
{
    return m_private->window;
}

QStringList WatchedWindow::events()
{
    m_private->sync();
    // Describing an event asks the server, and no event may be lost meanwhile: the queue keeps them.
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_private->connection)})
        m_private->keep(event.get());
    return m_private->events;
}
