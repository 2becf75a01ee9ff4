// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace platform {

/// A key with modifiers, as the keyboard has it.
struct X11Key
{
    std::vector<xcb_keycode_t> keycodes{};
    std::uint16_t modifiers = 0;
    /// Modifiers that make no difference.
    std::uint16_t locks = 0;
    /// The keys that are modifiers, with their bits.
    std::map<xcb_keycode_t, std::uint16_t> modifierKeys{};
};

/// Counts the presses of one key. Its grab reports them while nobody else holds the keyboard, raw events always,
/// without modifiers and of every key: which modifiers are held is all that is kept of the others. Both name the same
/// moment for the same press, which counts once; a key that repeats counts once. Milliseconds of the server.
class X11KeyPresses
{
public:
    /// From now on; no modifier is held.
    void setKey(X11Key key);

    /// A key that was down before.
    void addDown(xcb_keycode_t keycode);

    // Whether a press counts.
    bool onGrabPress(xcb_keycode_t keycode, xcb_timestamp_t time);
    bool onRawPress(xcb_keycode_t keycode, xcb_timestamp_t time);

    void onGrabRelease(xcb_keycode_t keycode, xcb_timestamp_t time);
    void onRawRelease(xcb_keycode_t keycode);

private:
    bool isKey(xcb_keycode_t keycode) const;
    void addHeld(xcb_keycode_t keycode);
    std::uint16_t heldModifiers() const;
    bool countsAt(xcb_timestamp_t time);

    X11Key m_key;
    /// Of the modifiers.
    std::set<xcb_keycode_t> m_held;
    bool m_isDown = false;
    /// By raw events.
    std::optional<xcb_timestamp_t> m_pressedAt;
    /// By the grab.
    std::optional<xcb_timestamp_t> m_releasedAt;
    std::optional<xcb_timestamp_t> m_countedAt;
};

} // namespace platform
