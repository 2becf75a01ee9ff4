#pragma once

#include <QList>
#include <QRect>
#include <QString>

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

/// Asks the window manager to close a window as its close button does. Works on minimised windows as well.
void close(uint32_t id);

/// Asks the window manager to restore, raise and focus a window, as a taskbar does.
void activate(uint32_t id);

} // namespace x11clients
