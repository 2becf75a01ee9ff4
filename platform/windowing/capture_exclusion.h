// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <initializer_list>

class QWidget;

namespace platform {

/// Keeps a top-level window out of every screen capture while it stays visible to the user, or lets it be captured
/// again. The window gets its native handle and must keep it. User-interface thread.
///
/// @return whether the system could. X11 cannot, nor can Windows before Windows 10 2004. Callers go by that result:
/// such a
///         window has to be minimised, hidden or outside the recorded area.
bool setExcludedFromCapture(QWidget& window, bool excluded);

/// Keeps all of the windows out of captures or, where one of them cannot be, none.
///
/// @param setExcluded what excludes one window; the system's unless a test has another one.
bool excludeTogether(std::initializer_list<QWidget*> windows,
                     const std::function<bool(QWidget&, bool)>& setExcluded = &setExcludedFromCapture);

} // namespace platform
