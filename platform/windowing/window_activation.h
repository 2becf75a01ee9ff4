// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// The steps by which a second start hands the focus to the instance that runs. A handle is Qt's native window id; any
/// other number makes a function return false. On X11 the window manager carries a request out a moment later: the
/// result says whether it was accepted. No application object is needed.
namespace platform {

/// Whether the handle is a window that exists now.
bool isWindow(quint64 handle);

bool isMinimized(quint64 handle);

/// Shows a minimised window as it was before.
bool restoreWindow(quint64 handle);

/// Raises the window above all others of its kind without leaving it topmost.
bool raiseWindow(quint64 handle);

/// Gives the window the keyboard focus. False on Windows for all but the foreground process; demandAttention() is next.
bool activateWindow(quint64 handle);

/// Draws the user's eye to the window until it comes to the foreground. Windows flashes its caption and its taskbar
/// button count times at the cursor's blink rate; X11 window managers show it in their own way.
bool demandAttention(quint64 handle, int count);

} // namespace platform
