#pragma once

class QWidget;

/// What windows that float over the desktop need from the system. User-interface thread.
namespace platform {

/// Prepares a frameless window that stays on top to stand above everything, a focused full-screen window included, at
/// exactly the position it is given, without ever taking the keyboard focus. Call before it is shown; the window gets
/// its native handle.
///
/// X11 window managers put focused full-screen windows above those that merely stay on top, so the window is not
/// managed there. On Windows topmost windows are above already, and nothing is done.
void prepareAsOverlay(QWidget& window);

/// Whether the system mixes translucent windows with what lies below them right now. On Windows always.
///
/// Where it does not, the see-through parts of a window come out black: callers then cut them out with
/// QWidget::setMask(), which costs the smooth outline.
bool isCompositing();

/// Prepares a frameless top-level window for setWindowAlpha(); it gets its native handle. Before it is shown.
///
/// Windows mixes a window with what lies below it either pixel by pixel or as a whole, and a window that has been faded
/// as a whole can no longer be drawn pixel by pixel: the window is prepared for the second.
///
/// @return whether what the window leaves unpainted is see-through all the same, where isCompositing(). Callers cut the
///         window to its outline with QWidget::setMask() where it is not.
bool prepareForAlpha(QWidget& window);

/// Has the system mix a prepared top-level window with what lies below it: alpha 0 (invisible) to 255 (opaque), for the
/// window as a whole, whatever it paints.
///
/// @return whether the system mixes. X11 needs a compositor for it; without one the window stays opaque and callers
///         make do with what they paint and with hiding.
bool setWindowAlpha(QWidget& window, int alpha);

} // namespace platform
