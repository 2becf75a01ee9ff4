#pragma once

#include <functional>
#include <initializer_list>

class QWidget;

namespace platform {

/// Keeps a top-level window out of every screen capture while it stays visible to the user, or lets it be captured
/// again. The window gets its native handle if it has none yet, and must keep it: a new one is captured as usual.
/// User-interface thread.
///
/// @return whether the system could. X11 has nothing of the kind, and neither has Windows before Windows 10 2004, which
///         would record the window as a black box if it were asked; nothing is done to the window then. A window that
///         must not be in a recording has to be minimised, hidden or placed outside the recorded area where this
///         returns false, and callers go by that result, not by the system.
bool setExcludedFromCapture(QWidget& window, bool excluded);

/// Keeps all of the windows out of captures or, where one of them cannot be, none: what belongs together can then be
/// treated alike. As setExcludedFromCapture() otherwise.
///
/// @param setExcluded what excludes one window; the system's unless a test has another one.
/// @return whether they are all kept out.
bool excludeTogether(std::initializer_list<QWidget*> windows,
                     const std::function<bool(QWidget&, bool)>& setExcluded = &setExcludedFromCapture);

} // namespace platform
