#pragma once

class QWidget;

namespace platform {

/// Readies a frameless window that stays on top to stand above everything, a focused full-screen window included, at
/// exactly the place it is given, without ever taking the keyboard focus. Call before it is shown; the window gets its
/// native handle. User-interface thread.
///
/// X11 window managers put focused full-screen windows above those that merely stay on top, so the window is not theirs
/// to manage there. On Windows topmost windows are above already, and nothing is done.
void readyAsOverlay(QWidget& window);

} // namespace platform
