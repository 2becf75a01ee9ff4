// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey_backend.h"
#include "platform/input/x11_keyboard.h"
#include "platform/xcb_handles.h"

#include <QSocketNotifier>

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

/// Passive grabs on the root windows, on a connection of their own: Qt's event stream and error handling stay
/// untouched.
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
    void readEvents();
    void handle(const xcb_generic_event_t& event);
    void onKeyPress(const xcb_key_press_event_t& event);
    void onMappingChanged(const xcb_mapping_notify_event_t& event);

    GlobalHotkey& m_owner;
    xcb::Connection m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::optional<QKeyCombination> m_key;
    std::vector<Grab> m_grabs;
    bool m_held = false;
    xcb_timestamp_t m_releasedAt = 0;
};

X11Backend::X11Backend(GlobalHotkey& owner) : m_owner(owner), m_connection(xcb_connect(nullptr, nullptr))
{
    if (!isConnected())
        return;
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
    m_held = false;
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
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())); screen.rem > 0;
         xcb_screen_next(&screen)) {
        for (const xcb_keycode_t keycode : keycodes) {
            for (const std::uint16_t locks : keyboard.lockCombinations()) {
                if (!grab({screen.data->root, keycode, static_cast<std::uint16_t>(modifiers | locks)})) {
                    ungrabAll();
                    return QStringLiteral("another program holds it");
                }
            }
        }
    }
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
    // Waits for the server: another connection, or program, can take the key from now on.
    xcb::answer<xcb_get_input_focus_reply>(m_connection.get(), xcb_get_input_focus(m_connection.get()));
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
    switch (event.response_type & kEventTypeMask) {
    case XCB_KEY_PRESS:
        onKeyPress(reinterpret_cast<const xcb_key_press_event_t&>(event));
        break;
    case XCB_KEY_RELEASE:
        m_held = false;
        m_releasedAt = reinterpret_cast<const xcb_key_release_event_t&>(event).time;
        break;
    case XCB_MAPPING_NOTIFY:
        onMappingChanged(reinterpret_cast<const xcb_mapping_notify_event_t&>(event));
        break;
    default:
        break;
    }
}

void X11Backend::onKeyPress(const xcb_key_press_event_t& event)
{
    // A key that repeats comes as a release and a press of the same moment.
    const bool repeated = m_held || event.time == m_releasedAt;
    m_held = true;
    if (!repeated)
        QMetaObject::invokeMethod(&m_owner, &GlobalHotkey::activated, Qt::QueuedConnection);
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
