#pragma once

class QWidget;

namespace platform {

/// Keeps a top-level window out of every screen capture while it stays visible to the user, or lets it be captured
/// again. The window gets its native handle if it has none yet. User-interface thread.
///
/// @return whether the system could. X11 has nothing of the kind: there a window that must not be in a recording has to
///         be minimised, hidden or placed outside the recorded area, and callers do that whatever this returns.
bool setExcludedFromCapture(QWidget& window, bool excluded);

} // namespace platform
