// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QEvent>

/// A window over the desktop. No window manager gives it the keyboard: the user does, with the window key.
class KeyboardWindow
{
public:
    virtual ~KeyboardWindow() = default;

    /// Whether the user has it at the moment, also where it waits for the pointer unseen.
    virtual bool offersKeyboard() const = 0;
    virtual bool hasKeyboard() const = 0;
    virtual void takeKeyboard() = 0;

    /// Sent to itself when offersKeyboard() has changed without a show or hide event.
    static QEvent::Type offerEvent()
    {
        static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }
};
