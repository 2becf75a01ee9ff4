// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey_backend.h"
#include "platform/input/x11_key_presses.h"
#include "platform/input/x11_keyboard.h"
#include "platform/input/x11_raw_events.h"
#include "platform/system_failure.h"
#include "platform/xcb_handles.h"

#include <QSocketNotifier>

#include <utility>
#include <xcb/xinput.h>

#include <optional>
#include <vector>

namespace platform {

namespace {

/// A passive grab as it was made, to be released after the keyboard has changed.
struct Grab
{
    xcb_window_t root;
    xcb_keycode_t keycode;
    std::uint16_t modifiers;
};

constexpr std::uint8_t kEventTypeMask = 0x7f;

/// Once: each hotkey would say the same.
void reportMissingRawEvents()
{
    static bool isReported = false;
    if (!std::exchange(isReported, true))
        reportFailure(
            QStringLiteral("The X server has no raw key events: hotkeys wait while a program holds the keyboard"));
}

/// Passive grabs on the root windows, which keep the key from other programs, and raw events, which come while another
/// program holds the keyboard. On a connection of its own: Qt's event stream and error handling stay untouched.
class X11Backend : public GlobalHotkey::Backend
{
public:
    explicit X11Backend(GlobalHotkey& owner);

    QString take(const QKeyCombination& key) override;
    void release() override;

private:
    bool isConnected() const { return xcb_connection_has_error(m_connection.get()) == 0; }
    QString grabAll();
    bool grab(const Grab& wanted);
    void ungrabAll();
    void listen();
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
    std::vector<Grab> m_grabs;
    X11KeyPresses m_presses;
};

X11Backend::X11Backend(GlobalHotkey& owner) : m_owner(owner), m_connection(xcb_connect(nullptr, &m_screen))
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
    QString trouble = grabAll();
    // Requests that waited for an answer may have read events along with it.
    readEvents();
    return trouble;
}

void X11Backend::release()
{
    ungrabAll();
    m_key.reset();
    m_presses = {};
    // The answer may have brought events along.
    if (isConnected())
        readEvents();
}

QString X11Backend::grabAll()
{
    const X11Keyboard keyboard(m_connection.get());
    const std::vector<xcb_keycode_t> keycodes = keyboard.keycodesOf(m_key->key());
    if (keycodes.empty())
        return QStringLiteral("the keyboard has no such key");
    const std::uint16_t modifiers = keyboard.modifiersOf(*m_key);
    const std::vector<std::uint16_t> locks = keyboard.lockCombinations();
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())); screen.rem > 0;
         xcb_screen_next(&screen)) {
        for (const xcb_keycode_t keycode : keycodes) {
            for (const std::uint16_t locked : locks) {
                if (!grab({screen.data->root, keycode, static_cast<std::uint16_t>(modifiers | locked)})) {
                    ungrabAll();
                    return QStringLiteral("another program holds it");
                }
            }
        }
    }
    m_presses.setKey({keycodes, modifiers, locks.back(), keyboard.modifierKeys()});
    listen();
    return {};
}

bool X11Backend::grab(const Grab& wanted)
{
    const xcb_void_cookie_t cookie = xcb_grab_key_checked(m_connection.get(), 0, wanted.root, wanted.modifiers,
                                                          wanted.keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const xcb::Owned<xcb_generic_error_t> error(xcb_request_check(m_connection.get(), cookie));
    if (!error)
        m_grabs.push_back(wanted);
    return !error;
}

void X11Backend::ungrabAll()
{
    for (const Grab& made : m_grabs)
        xcb_ungrab_key(m_connection.get(), made.keycode, made.root, made.modifiers);
    m_grabs.clear();
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
            m_presses.addHeld(static_cast<xcb_keycode_t>(keycode));
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
    const bool wasTaken = !m_grabs.empty();
    ungrabAll();
    QString trouble = grabAll();
    const bool isTaken = trouble.isEmpty();
    if (isTaken != wasTaken)
        QMetaObject::invokeMethod(
            &m_owner, [&owner = m_owner, isTaken, trouble] { emit owner.availabilityChanged(isTaken, trouble); },
            Qt::QueuedConnection);
}

} // namespace

std::unique_ptr<GlobalHotkey::Backend> GlobalHotkey::Backend::create(GlobalHotkey& owner)
{
    return std::make_unique<X11Backend>(owner);
}

} // namespace platform
