#pragma once

#include <QtGlobal>

/// What one program can do with a top-level window of another: the steps by which a second start hands the focus to the
/// copy that runs.
///
/// A handle is the toolkit's native window id. Every function copes with any number: a stale or foreign one makes it
/// return false. Each asks the window system on a connection of its own and needs no application object.
namespace platform {

/// Whether the handle is a window that exists now.
bool isWindow(quint64 handle);

/// Whether the window is minimised.
bool isMinimized(quint64 handle);

/// Shows a minimised window as it was before.
///
/// @return whether the request was accepted. On X11 the window manager carries it out, a moment later.
bool restoreWindow(quint64 handle);

/// Raises the window above all others of its kind without moving or sizing it, and without leaving it topmost.
///
/// @return as restoreWindow().
bool raiseWindow(quint64 handle);

/// Gives the window the keyboard focus.
///
/// @return false when the system refuses: Windows lets only the foreground process hand the focus on. The caller's next
///         best is demandAttention().
bool activateWindow(quint64 handle);

/// Draws the user's eye to the window until it comes to the foreground. Windows flashes its caption and its taskbar
/// button count times at the cursor's blink rate. X11 knows no count: the window manager is told that the window
/// demands attention and shows it in its own way; for the window that is active already there is nothing to do.
///
/// @return as restoreWindow().
bool demandAttention(quint64 handle, int count);

} // namespace platform
