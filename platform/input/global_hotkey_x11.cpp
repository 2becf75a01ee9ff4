// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey_backend.h"
#include "platform/input/x11_key_grab.h"
#include "platform/input/x11_key_presses.h"
#include "platform/input/x11_keyboard.h"
#include "platform/input/x11_raw_events.h"
#include "platform/system_failure.h"
#include "platform/xcb_handles.h"

#include <QSocketNotifier>

#include <utility>
#include <xcb/xinput.h>

#include <optional>

namespace platform {

namespace {

constexpr std::uint8_t kEventTypeMask = 0x7f;

/// Once: each hotkey would say the same.
void reportMissingRawEvents()
{
    static bool isReported = false;
    if (!std::exchange(isReported, true))
        reportFailure(
            QStringLiteral("The X server has no raw key events: hotkeys wait while a program holds the keyboard"));
}

/// A grab, which keeps the key from other programs, and raw events, which come while another program holds the
/// keyboard. On a connection of its own: Qt's event stream and error handling stay untouched.
class X11Backend : public GlobalHotkey::Backend
{
public:
    explicit X11Backend(GlobalHotkey& owner);

    QString take(const QKeyCombination& key) override;
    void release() override;

private:
    bool isConnected() const { return xcb_connection_has_error(m_connection.get()) == 0; }
    QString grab();
    void ungrab();
    void listen();
    void reportPress();
    void selectRawKeys(bool wanted);
    void readEvents();
    void handle(const xcb_generic_event_t& event);
    bool isGrabbedPress(const xcb_generic_event_t& event);
    bool isRawPress(const xcb_generic_event_t& event);
    void onMappingChanged(const xcb_mapping_notify_event_t& event);

    GlobalHotkey& m_owner;
    int m_screen = 0;
    xcb::Connection m_connection;
    std::optional<std::uint8_t> m_rawOpcode;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::optional<QKeyCombination> m_key;
    X11KeyGrab m_grab;
    bool m_isTaken = false;
    X11KeyPresses m_presses;
};

X11Backend::X11Backend(GlobalHotkey& owner)
    : m_owner(owner), m_connection(xcb_connect(nullptr, &m_screen)), m_grab(m_connection.get(), [this] {
        // A raw event tells of the same press.
        if (!m_rawOpcode)
            reportPress();
    })
{
    if (!isConnected())
        return;
    m_rawOpcode = rawevents::opcode(m_connection.get());
    if (!m_rawOpcode)
        reportMissingRawEvents();
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &owner, [this] { readEvents(); });
}

QString X11Backend::take(const QKeyCombination& key)
{
    if (!isConnected())
        return QStringLiteral("the X server does not answer");
    m_key = key;
    QString trouble = grab();
    // Requests that waited for an answer may have read events along with it.
    readEvents();
    return trouble;
}

void X11Backend::release()
{
    ungrab();
    m_key.reset();
    m_presses = {};
    // The answer may have brought events along.
    if (isConnected())
        readEvents();
}

QString X11Backend::grab()
{
    const X11Keyboard keyboard(m_connection.get());
    const std::vector<xcb_keycode_t> keycodes = keyboard.keycodesOf(m_key->key());
    if (keycodes.empty())
        return QStringLiteral("the keyboard has no such key");
    QString trouble = m_grab.take(keyboard, *m_key);
    const bool isHeardAnyway = m_rawOpcode && m_owner.whenHeld() == GlobalHotkey::WhenHeld::Listen;
    m_isTaken = trouble.isEmpty() || isHeardAnyway;
    if (!m_isTaken)
        return trouble;
    m_presses.setKey(
        {keycodes, keyboard.modifiersOf(*m_key), keyboard.lockCombinations().back(), keyboard.modifierKeys()});
    listen();
    return {};
}

void X11Backend::ungrab()
{
    m_grab.release();
    m_isTaken = false;
    selectRawKeys(false);
    // Waits for the server: another connection, or program, can take the key from now on.
    xcb::answer<xcb_get_input_focus_reply>(m_connection.get(), xcb_get_input_focus(m_connection.get()));
}

void X11Backend::listen()
{
    selectRawKeys(true);
    const auto down = xcb::answer<xcb_query_keymap_reply>(m_connection.get(), xcb_query_keymap(m_connection.get()));
    constexpr unsigned kBits = 8;
    for (unsigned keycode = 0; down && keycode < kBits * sizeof(down->keys); ++keycode) {
        if ((down->keys[keycode / kBits] >> (keycode % kBits) & 1U) != 0)
            m_presses.addDown(static_cast<xcb_keycode_t>(keycode));
    }
}

/// They tell of every key that is pressed: they come only while there is one to listen for.
void X11Backend::selectRawKeys(bool wanted)
{
    constexpr std::uint32_t kWanted = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    if (m_rawOpcode)
        rawevents::select(m_connection.get(), xcb::screenNumbered(m_connection.get(), m_screen).root,
                          wanted ? kWanted : 0);
}

void X11Backend::readEvents()
{
    while (isConnected()) {
        const xcb::Owned<xcb_generic_event_t> event(xcb_poll_for_event(m_connection.get()));
        if (!event)
            return;
        handle(*event);
    }
    // The server is gone; its socket would report itself readable for ever.
    m_notifier->setEnabled(false);
}

void X11Backend::handle(const xcb_generic_event_t& event)
{
    const int type = event.response_type & kEventTypeMask;
    if (type == XCB_MAPPING_NOTIFY)
        onMappingChanged(reinterpret_cast<const xcb_mapping_notify_event_t&>(event));
    else if (type == XCB_GE_GENERIC ? isRawPress(event) : isGrabbedPress(event))
        reportPress();
}

void X11Backend::reportPress()
{
    QMetaObject::invokeMethod(&m_owner, &GlobalHotkey::activated, Qt::QueuedConnection);
}

bool X11Backend::isGrabbedPress(const xcb_generic_event_t& event)
{
    const int type = event.response_type & kEventTypeMask;
    // A release has the same form.
    const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    if (type == XCB_KEY_RELEASE)
        m_presses.onGrabRelease(key.detail, key.time);
    return type == XCB_KEY_PRESS && m_presses.onGrabPress(key.detail, key.time);
}

bool X11Backend::isRawPress(const xcb_generic_event_t& event)
{
    if (!m_rawOpcode)
        return false;
    const std::uint16_t type = rawevents::typeOf(event, *m_rawOpcode);
    const auto& key = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    const auto keycode = static_cast<xcb_keycode_t>(key.detail);
    if (type == XCB_INPUT_RAW_KEY_RELEASE)
        m_presses.onRawRelease(keycode);
    const bool repeats = (key.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0;
    return type == XCB_INPUT_RAW_KEY_PRESS && !repeats && m_presses.onRawPress(keycode, key.time);
}

void X11Backend::onMappingChanged(const xcb_mapping_notify_event_t& event)
{
    if (event.request == XCB_MAPPING_POINTER || !m_key)
        return;
    const bool wasTaken = m_isTaken;
    ungrab();
    QString trouble = grab();
    if (m_isTaken != wasTaken)
        QMetaObject::invokeMethod(
            &m_owner,
            [&owner = m_owner, isTaken = m_isTaken, trouble] { emit owner.availabilityChanged(isTaken, trouble); },
            Qt::QueuedConnection);
}

} // namespace

std::unique_ptr<GlobalHotkey::Backend> GlobalHotkey::Backend::create(GlobalHotkey& owner)
{
    return std::make_unique<X11Backend>(owner);
}

} // namespace platform
