// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/x11_key_presses.h"

#include <utility>

#include <algorithm>

namespace platform {

void X11KeyPresses::setKey(X11Key key)
{
    m_key = std::move(key);
    m_held.clear();
}

void X11KeyPresses::addDown(xcb_keycode_t keycode)
{
    addHeld(keycode);
    m_isDown = m_isDown || isKey(keycode);
}

void X11KeyPresses::addHeld(xcb_keycode_t keycode)
{
    if (m_key.modifierKeys.contains(keycode))
        m_held.insert(keycode);
}

bool X11KeyPresses::onGrabPress(xcb_keycode_t keycode, xcb_timestamp_t time)
{
    // While the key is held down the grab has the whole keyboard.
    addHeld(keycode);
    if (!isKey(keycode))
        return false;
    // A key that repeats comes as a release and a press of the same moment. The release is another program's where that
    // had the keyboard when the key went down.
    const bool repeated = (m_isDown && time != m_pressedAt) || time == m_releasedAt;
    m_isDown = true;
    return !repeated && countsAt(time);
}

void X11KeyPresses::onGrabRelease(xcb_keycode_t keycode, xcb_timestamp_t time)
{
    m_held.erase(keycode);
    if (!isKey(keycode))
        return;
    m_isDown = false;
    m_releasedAt = time;
}

bool X11KeyPresses::onRawPress(xcb_keycode_t keycode, xcb_timestamp_t time)
{
    addHeld(keycode);
    if (!isKey(keycode))
        return false;
    m_isDown = true;
    m_pressedAt = time;
    return (heldModifiers() & ~m_key.locks) == m_key.modifiers && countsAt(time);
}

void X11KeyPresses::onRawRelease(xcb_keycode_t keycode)
{
    m_held.erase(keycode);
    m_isDown = m_isDown && !isKey(keycode);
}

bool X11KeyPresses::isKey(xcb_keycode_t keycode) const
{
    return std::ranges::find(m_key.keycodes, keycode) != m_key.keycodes.end();
}

std::uint16_t X11KeyPresses::heldModifiers() const
{
    std::uint16_t modifiers = 0;
    for (const xcb_keycode_t keycode : m_held)
        modifiers = static_cast<std::uint16_t>(modifiers | m_key.modifierKeys.at(keycode));
    return modifiers;
}

bool X11KeyPresses::countsAt(xcb_timestamp_t time)
{
    return std::exchange(m_countedAt, time) != time;
}

} // namespace platform
