// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/x11_keyboard.h"

#include "platform/xcb_handles.h"

#include <algorithm>

namespace platform {

namespace {

// Keysym values of the X protocol, appendix A.
constexpr std::uint32_t kF1 = 0xffbe;
constexpr std::uint32_t kNumLock = 0xff7f;
constexpr std::uint32_t kScrollLock = 0xff14;
constexpr std::uint32_t kLeftAlt = 0xffe9;
constexpr std::uint32_t kLeftSuper = 0xffeb;
constexpr std::uint32_t kUnicodeBase = 0x01000000;

std::uint32_t namedSymbol(Qt::Key key)
{
    static const std::map<Qt::Key, std::uint32_t> kSymbols{
        {Qt::Key_Escape, 0xff1b}, {Qt::Key_Tab, 0xff09},      {Qt::Key_Backspace, 0xff08},
        {Qt::Key_Return, 0xff0d}, {Qt::Key_Enter, 0xff8d},    {Qt::Key_Insert, 0xff63},
        {Qt::Key_Delete, 0xffff}, {Qt::Key_Pause, 0xff13},    {Qt::Key_Print, 0xff61},
        {Qt::Key_Home, 0xff50},   {Qt::Key_End, 0xff57},      {Qt::Key_Left, 0xff51},
        {Qt::Key_Up, 0xff52},     {Qt::Key_Right, 0xff53},    {Qt::Key_Down, 0xff54},
        {Qt::Key_PageUp, 0xff55}, {Qt::Key_PageDown, 0xff56}, {Qt::Key_ScrollLock, kScrollLock},
        {Qt::Key_Menu, 0xff67}};
    const auto found = kSymbols.find(key);
    return found == kSymbols.end() ? 0 : found->second;
}

/// 0 for a key without a symbol of its own.
std::uint32_t symbolOf(Qt::Key key)
{
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return kF1 + static_cast<std::uint32_t>(key - Qt::Key_F1);
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return static_cast<std::uint32_t>(key - Qt::Key_A) + 'a';
    if (key >= Qt::Key_Space && key <= Qt::Key_ydiaeresis)
        return static_cast<std::uint32_t>(key);
    if (key < Qt::Key_Escape)
        return kUnicodeBase + static_cast<std::uint32_t>(key);
    return namedSymbol(key);
}

} // namespace

X11Keyboard::X11Keyboard(xcb_connection_t* connection)
{
    readSymbols(connection);
    readModifiers(connection);
}

void X11Keyboard::readSymbols(xcb_connection_t* connection)
{
    const xcb_setup_t* const setup = xcb_get_setup(connection);
    m_firstKeycode = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto reply = xcb::answer<xcb_get_keyboard_mapping_reply>(
        connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count));
    if (!reply)
        return;
    m_symbolsPerKey = reply->keysyms_per_keycode;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    m_symbols.assign(symbols, symbols + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
}

void X11Keyboard::readModifiers(xcb_connection_t* connection)
{
    const auto reply = xcb::answer<xcb_get_modifier_mapping_reply>(connection, xcb_get_modifier_mapping(connection));
    if (!reply)
        return;
    m_keysPerModifier = reply->keycodes_per_modifier;
    const xcb_keycode_t* const keys = xcb_get_modifier_mapping_keycodes(reply.get());
    m_modifierKeys.assign(keys, keys + xcb_get_modifier_mapping_keycodes_length(reply.get()));
}

std::vector<xcb_keycode_t> X11Keyboard::keycodesBearing(Keysym symbol, bool firstColumnOnly) const
{
    std::vector<xcb_keycode_t> found;
    for (std::size_t start = 0; m_symbolsPerKey > 0 && start < m_symbols.size(); start += m_symbolsPerKey) {
        const auto begin = m_symbols.begin() + static_cast<std::ptrdiff_t>(start);
        const auto end = begin + (firstColumnOnly ? 1 : m_symbolsPerKey);
        if (std::find(begin, end, symbol) != end)
            found.push_back(static_cast<xcb_keycode_t>(m_firstKeycode + start / m_symbolsPerKey));
    }
    return found;
}

std::vector<xcb_keycode_t> X11Keyboard::keycodesOf(Qt::Key key) const
{
    const Keysym symbol = symbolOf(key);
    if (symbol == 0)
        return {};
    const std::vector<xcb_keycode_t> plain = keycodesBearing(symbol, true);
    return plain.empty() ? keycodesBearing(symbol, false) : plain;
}

std::uint16_t X11Keyboard::modifierOf(Keysym symbol, std::uint16_t fallback) const
{
    const std::vector<xcb_keycode_t> keys = keycodesBearing(symbol, false);
    for (std::size_t index = 0; index < m_modifierKeys.size(); ++index) {
        if (std::find(keys.begin(), keys.end(), m_modifierKeys[index]) != keys.end())
            return static_cast<std::uint16_t>(1U << (index / static_cast<std::size_t>(m_keysPerModifier)));
    }
    return fallback;
}

std::uint16_t X11Keyboard::modifiersOf(const QKeyCombination& key) const
{
    std::uint16_t modifiers = 0;
    if (key.keyboardModifiers().testFlag(Qt::ShiftModifier))
        modifiers |= XCB_MOD_MASK_SHIFT;
    if (key.keyboardModifiers().testFlag(Qt::ControlModifier))
        modifiers |= XCB_MOD_MASK_CONTROL;
    if (key.keyboardModifiers().testFlag(Qt::AltModifier))
        modifiers |= modifierOf(kLeftAlt, XCB_MOD_MASK_1);
    if (key.keyboardModifiers().testFlag(Qt::MetaModifier))
        modifiers |= modifierOf(kLeftSuper, XCB_MOD_MASK_4);
    return modifiers;
}

std::vector<std::uint16_t> X11Keyboard::lockCombinations() const
{
    std::vector<std::uint16_t> combinations{0};
    for (const std::uint16_t lock :
         {static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK), modifierOf(kNumLock, 0), modifierOf(kScrollLock, 0)}) {
        if (std::find(combinations.begin(), combinations.end(), lock) != combinations.end())
            continue;
        const std::size_t before = combinations.size();
        for (std::size_t index = 0; index < before; ++index)
            combinations.push_back(combinations[index] | lock);
    }
    return combinations;
}

std::map<xcb_keycode_t, std::uint16_t> X11Keyboard::modifierKeys() const
{
    std::map<xcb_keycode_t, std::uint16_t> keys;
    for (std::size_t index = 0; index < m_modifierKeys.size(); ++index) {
        const xcb_keycode_t keycode = m_modifierKeys[index];
        const auto bit = static_cast<std::uint16_t>(1U << (index / static_cast<std::size_t>(m_keysPerModifier)));
        // The table has gaps.
        if (keycode != 0)
            keys[keycode] = static_cast<std::uint16_t>(keys[keycode] | bit);
    }
    return keys;
}

} // namespace platform
