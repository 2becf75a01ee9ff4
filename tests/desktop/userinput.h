// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class QPoint;

/// What a user does, done through the X server with the desktop's own tools. A tool that fails fails the test.
namespace userinput {

/// Runs xdotool: moves the pointer, presses keys and buttons.
void xdotool(const QStringList& arguments);

/// Moves the pointer, in physical pixels of the desktop.
void pointTo(const QPoint& desktopPx);

/// Gives the keyboard another layout ("us", "de").
void setKeyboardLayout(const QString& layout);

} // namespace userinput
