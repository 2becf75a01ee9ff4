// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/win32/win32program.h"

#include <functional>

/// A user before the Windows desktop, with a keyboard and a pointer. Where something is awaited it is so for a time
/// that a busy machine keeps.
namespace win32user {

inline constexpr int kTimeoutMs = 20'000;

// Positions in the main window.
inline constexpr QPoint kScreenshotTab(76, 116);
inline constexpr QPoint kFilesTab(76, 160);
inline constexpr QPoint kSettingsButton(700, 20);
inline constexpr QPoint kMenuButton(736, 20);
inline constexpr QPoint kCloseButton(808, 20);

/// Starts the program and gets its main window to the front. Nothing when that fails.
std::optional<WindowsWindow> startInFront(Win32Program& program);

/// Asks a window to come to the front, as a taskbar does.
bool bringToFront(const WindowsWindow& window);

void press(const QStringList& keys);
/// @param position from the window's top left corner.
bool click(const WindowsWindow& window, const QPoint& position);
/// Presses the left button at the first position, goes to the second one, and releases it.
bool drag(const QPoint& from, const QPoint& to);

/// What Alt+F4 and the taskbar do; outside Wine the window manager keeps the key itself.
bool closeBySystem(const WindowsWindow& window);

/// The first window for which it is true, once it is shown.
std::optional<WindowsWindow> awaitWindow(const std::function<bool(const WindowsWindow&)>& isIt);
/// The program's window with this title once it is in front of all others and ready for keys and pointer.
std::optional<WindowsWindow> awaitReady(const QString& title, int timeoutMs = kTimeoutMs);
/// The tool bar of a screenshot's frame, once it is shown and the frame has the keyboard: the frame has it before the
/// bar comes, and again afterwards.
std::optional<WindowsWindow> awaitScreenshotBar();
/// Whether the window has the keyboard.
bool isInFront(int64_t handle);
/// Whether it has it in time.
bool awaitFront(int64_t handle);
/// Whether the program's window with this title goes.
bool awaitGone(const QString& title);

/// How many windows of the program are there to be seen.
qsizetype visibleWindows();

} // namespace win32user
