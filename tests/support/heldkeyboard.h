// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>

#include <memory>

/// Other programs that hold the keyboard, or a key of it. Need an X display.
namespace heldkeyboard {

/// Whether some client of the display holds the keyboard now.
bool isHeld();

/// A client that holds the keyboard for as long as the object lives, as a game or a virtual machine does.
class Holder
{
public:
    Holder();
    ~Holder();
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    bool isHolding() const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

/// A client that has one key, with any modifiers, for as long as the object lives.
class KeyHolder
{
public:
    explicit KeyHolder(int keycode);
    ~KeyHolder();
    KeyHolder(const KeyHolder&) = delete;
    KeyHolder& operator=(const KeyHolder&) = delete;

    bool isHolding() const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

/// A Tk program whose menu is open, for as long as the object lives.
class TkMenu
{
public:
    /// Starts the program and waits until its menu holds the keyboard; false when it never does.
    bool open();
    ~TkMenu();

private:
    QProcess m_process;
};

} // namespace heldkeyboard
