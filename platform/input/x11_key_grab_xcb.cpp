// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/x11_key_grab.h"
#include "platform/input/x11_keyboard.h"
#include "platform/xcb_handles.h"

#include <vector>

namespace platform {

namespace {

/// As it was made, to be released after the keyboard has changed.
struct Grab
{
    xcb_window_t root;
    xcb_keycode_t keycode;
    std::uint16_t modifiers;
};

} // namespace

struct X11KeyGrab::Private
{
    bool grab(const Grab& wanted);
    bool grabOnAllScreens(xcb_keycode_t keycode, std::uint16_t modifiers);

    xcb_connection_t* connection;
    std::vector<Grab> grabs{};
};

bool X11KeyGrab::Private::grab(const Grab& wanted)
{
    const xcb_void_cookie_t cookie = xcb_grab_key_checked(connection, 0, wanted.root, wanted.modifiers, wanted.keycode,
                                                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const xcb::Owned<xcb_generic_error_t> error(xcb_request_check(connection, cookie));
    if (!error)
        grabs.push_back(wanted);
    return !error;
}

bool X11KeyGrab::Private::grabOnAllScreens(xcb_keycode_t keycode, std::uint16_t modifiers)
{
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection)); screen.rem > 0; xcb_screen_next(&screen)) {
        if (!grab({screen.data->root, keycode, modifiers}))
            return false;
    }
    return true;
}

/// Presses are events of the connection.
// NOLINTNEXTLINE(performance-unnecessary-value-param): the other implementation keeps it.
X11KeyGrab::X11KeyGrab(xcb_connection_t* connection, std::function<void()> /*pressed*/)
    : m_private(std::make_unique<Private>(Private{connection}))
{}

X11KeyGrab::~X11KeyGrab() = default;

QString X11KeyGrab::take(const X11Keyboard& keyboard, const QKeyCombination& key)
{
    const std::uint16_t modifiers = keyboard.modifiersOf(key);
    for (const xcb_keycode_t keycode : keyboard.keycodesOf(key.key())) {
        for (const std::uint16_t locks : keyboard.lockCombinations()) {
            if (!m_private->grabOnAllScreens(keycode, static_cast<std::uint16_t>(modifiers | locks))) {
                release();
                return QStringLiteral("another program holds it");
            }
        }
    }
    return {};
}

void X11KeyGrab::release()
{
    for (const Grab& made : m_private->grabs)
        xcb_ungrab_key(m_private->connection, made.keycode, made.root, made.modifiers);
    m_private->grabs.clear();
}

} // namespace platform
