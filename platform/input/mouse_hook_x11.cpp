// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/mouse_hook.h"
#include "platform/input/x11_raw_events.h"
#include "platform/xcb_handles.h"

#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <utility>
#include <xcb/xinput.h>

namespace platform {

namespace {

/// Logical button numbers of the X protocol.
constexpr std::uint8_t kLeftButton = 1;
constexpr std::uint8_t kRightButton = 3;
/// A pointer that another program puts somewhere else causes no raw event: it is looked for this often.
constexpr int kGlanceMs = 50;

} // namespace

/// Raw events of all master pointers, on a connection of its own: Qt's event stream stays untouched, and nothing is
/// grabbed.
struct MouseHook::Private
{
    unsigned long connect();
    void readEvents();
    void lookAtPointer();
    void handle(const xcb_generic_event_t& event);
    void onPress(std::uint8_t physicalButton);
    void setWanted(bool wanted);
    void reportMoveTo(const QPoint& position);
    QPoint pointer() const;
    std::uint8_t logicalButton(std::uint8_t physicalButton) const;

    Handler handler;
    xcb::Connection connection;
    xcb_window_t root = XCB_WINDOW_NONE;
    std::uint8_t opcode = 0;
    std::unique_ptr<QSocketNotifier> notifier;
    QTimer glance;
    QPoint lastPosition;
    bool hasMoved = false;
};

unsigned long MouseHook::Private::connect()
{
    int screenNumber = 0;
    connection.reset(xcb_connect(nullptr, &screenNumber));
    if (const int error = xcb_connection_has_error(connection.get()); error != 0)
        return static_cast<unsigned long>(error);
    const std::optional<std::uint8_t> found = rawevents::opcode(connection.get());
    if (!found)
        return XCB_CONN_CLOSED_EXT_NOTSUPPORTED;
    opcode = *found;
    root = xcb::screenNumbered(connection.get(), screenNumber).root;
    return 0;
}

void MouseHook::Private::readEvents()
{
    while (xcb_connection_has_error(connection.get()) == 0) {
        const xcb::Owned<xcb_generic_event_t> event(xcb_poll_for_event(connection.get()));
        if (event)
            handle(*event);
        // Of many moves that came at once only where they end counts.
        else if (hasMoved)
            reportMoveTo(pointer());
        else
            return;
    }
    // The server is gone; its socket would report itself readable for ever.
    notifier->setEnabled(false);
}

/// Whoever waits for an answer takes in the events before it as well, and the socket does not announce those any more.
void MouseHook::Private::lookAtPointer()
{
    hasMoved = true;
    readEvents();
}

void MouseHook::Private::handle(const xcb_generic_event_t& event)
{
    const std::uint16_t type = rawevents::typeOf(event, opcode);
    if (type == XCB_INPUT_RAW_MOTION)
        hasMoved = true;
    else if (type == XCB_INPUT_RAW_BUTTON_PRESS)
        onPress(static_cast<std::uint8_t>(reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail));
}

void MouseHook::Private::onPress(std::uint8_t physicalButton)
{
    const std::uint8_t button = logicalButton(physicalButton);
    if (button != kLeftButton && button != kRightButton)
        return;
    const QPoint position = pointer();
    reportMoveTo(position);
    handler(button == kLeftButton ? Event::LeftPress : Event::RightPress, position);
}

void MouseHook::Private::reportMoveTo(const QPoint& position)
{
    hasMoved = false;
    if (std::exchange(lastPosition, position) != position)
        handler(Event::Move, position);
}

void MouseHook::Private::setWanted(bool wanted)
{
    constexpr std::uint32_t kWanted = XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    rawevents::select(connection.get(), root, wanted ? kWanted : 0);
    hasMoved = false;
    lastPosition = pointer();
    if (wanted)
        glance.start(kGlanceMs);
    else
        glance.stop();
}

/// Raw events say how far the device was moved, not where that took the pointer.
QPoint MouseHook::Private::pointer() const
{
    const auto reply =
        xcb::answer<xcb_query_pointer_reply>(connection.get(), xcb_query_pointer(connection.get(), root));
    return reply ? QPoint(reply->root_x, reply->root_y) : lastPosition;
}

/// Raw events do not know that the user has swapped the buttons.
std::uint8_t MouseHook::Private::logicalButton(std::uint8_t physicalButton) const
{
    const auto reply =
        xcb::answer<xcb_get_pointer_mapping_reply>(connection.get(), xcb_get_pointer_mapping(connection.get()));
    const bool isMapped =
        reply && physicalButton >= 1 && physicalButton <= xcb_get_pointer_mapping_map_length(reply.get());
    return isMapped ? xcb_get_pointer_mapping_map(reply.get())[physicalButton - 1] : physicalButton;
}

MouseHook::MouseHook() : m_private(std::make_unique<Private>()) {}

MouseHook::~MouseHook() = default;

unsigned long MouseHook::install(Handler handler)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return 0;
    m_private->handler = std::move(handler);
    if (const unsigned long error = m_private->connect(); error != 0) {
        remove();
        return error;
    }
    m_private->notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_private->connection.get()), QSocketNotifier::Read);
    QObject::connect(m_private->notifier.get(), &QSocketNotifier::activated, m_private->notifier.get(),
                     [this] { m_private->readEvents(); });
    QObject::connect(&m_private->glance, &QTimer::timeout, &m_private->glance, [this] { m_private->lookAtPointer(); });
    return 0;
}

void MouseHook::remove()
{
    m_private = std::make_unique<Private>();
}

void MouseHook::setWanted(bool wanted)
{
    if (m_private->connection)
        m_private->setWanted(wanted);
}

} // namespace platform
