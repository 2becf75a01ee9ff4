#pragma once

class QWidget;

namespace platform {

/// Readies a frameless top-level window for setWindowAlpha(); it gets its native handle. Before it is shown.
/// User-interface thread.
///
/// Windows mixes a window with what lies below it either by what it paints, pixel by pixel, or as a whole, and a window
/// that has been faded as a whole can no longer be drawn in the other way. So the window is readied for the second.
///
/// @return whether what the window leaves unpainted is see-through all the same, where isCompositing(). Callers cut the
///         window to its outline with QWidget::setMask() where it is not.
bool readyForAlpha(QWidget& window);

/// Has the system mix a top-level window with what lies below it: alpha 0 (invisible) to 255 (opaque), for the window
/// as a whole, whatever it paints. The window has been readied. User-interface thread.
///
/// @return whether the system mixes. X11 needs a compositor for it; without one the window stays opaque and callers
///         make do with what they paint and with hiding.
bool setWindowAlpha(QWidget& window, int alpha);

} // namespace platform
