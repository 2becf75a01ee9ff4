// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <cstdint>

/// What the window manager of the test's display knows about a program's windows, asked over a connection of its own.
namespace x11clients {

struct Window
{
    uint32_t id = 0;
    QString title;
    /// Without the window manager's frame, in pixels of the screen.
    QRect geometry;
    bool isMinimised = false;
};

/// The windows of a process that the window manager manages, minimised ones included; the lowest in the stack first.
QList<Window> windowsOf(qint64 processId);

/// The window on top of all others that the window manager manages; 0 where it manages none.
uint32_t topmostWindow();

/// The window with the keyboard focus, as the window manager has it; 0 when none has.
uint32_t activeWindow();

/// The window's states by their names ("_NET_WM_STATE_ABOVE", ...).
QStringList statesOf(uint32_t id);

/// The first icon that the window offers: width, height and the pixels, each a number. Empty when it offers none.
QList<uint32_t> iconOf(uint32_t id);

/// What the display shows in an area of it; a null image where some of the area is not on the display.
QImage grab(const QRect& area);

/// Asks the window manager to minimise a window.
void minimise(uint32_t id);

/// Asks the window manager to close a window as its close button does. Works on minimised windows as well.
void close(uint32_t id);

/// Asks the window manager to restore, raise and focus a window, as a taskbar does.
void activate(uint32_t id);

} // namespace x11clients
