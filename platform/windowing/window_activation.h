// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// Hands the focus to another instance's window, by Qt's native window id. Any other number makes a function return
/// false. On X11 the window manager acts later: the result says whether the X server took the request. Needs no
/// application object.
namespace platform {

bool isWindow(quint64 handle);

bool isMinimized(quint64 handle);

bool restoreWindow(quint64 handle);

bool raiseWindow(quint64 handle);

/// The one that has the keyboard, of any program; 0 for none, and on X11 for one that no window manager manages.
quint64 activeWindow();

/// False on Windows for all but the foreground process; then demandAttention() is next.
bool activateWindow(quint64 handle);

/// Until the window comes to the foreground. Windows flashes caption and taskbar button count times; X11 window
/// managers have their own ways.
bool demandAttention(quint64 handle, int count);

} // namespace platform
