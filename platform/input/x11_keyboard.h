// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeyCombination>

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <vector>

namespace platform {

/// Which keys have which symbols and modifiers at the time of construction. Make another one after a MappingNotify.
class X11Keyboard
{
public:
    explicit X11Keyboard(xcb_connection_t* connection);

    /// The keys with that symbol without a modifier or, if there are none, with any.
    std::vector<xcb_keycode_t> keycodesOf(Qt::Key key) const;

    std::uint16_t modifiersOf(const QKeyCombination& key) const;

    /// Every combination of Caps, Num and Scroll Lock, from none to all: a grab matches modifiers exactly.
    std::vector<std::uint16_t> lockCombinations() const;

    /// The keys that are modifiers, with their bits.
    std::map<xcb_keycode_t, std::uint16_t> modifierKeys() const;

private:
    using Keysym = std::uint32_t;

    void readSymbols(xcb_connection_t* connection);
    void readModifiers(xcb_connection_t* connection);
    std::vector<xcb_keycode_t> keycodesBearing(Keysym symbol, bool firstColumnOnly) const;
    std::uint16_t modifierOf(Keysym symbol, std::uint16_t fallback) const;

    xcb_keycode_t m_firstKeycode = 0;
    int m_symbolsPerKey = 0;
    std::vector<Keysym> m_symbols;
    int m_keysPerModifier = 0;
    std::vector<xcb_keycode_t> m_modifierKeys;
};

} // namespace platform
