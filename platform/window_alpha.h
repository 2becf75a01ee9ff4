#pragma once

class QWidget;

namespace platform {

/// Has the system mix a top-level window with what lies below it: alpha 0 (invisible) to 255 (opaque), for the window
/// as a whole, whatever it paints. The window has its native handle. User-interface thread.
///
/// @return whether the system mixes. X11 needs a compositor for it; without one the window stays opaque and callers
/// make
///         do with what they paint and with hiding.
bool setWindowAlpha(QWidget& window, int alpha);

} // namespace platform
