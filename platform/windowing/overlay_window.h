// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/// What windows that float over the desktop need from the system (docs/x11-limits.md). User-interface thread.
namespace platform {

/// Prepares a frameless window to stand above everything, a focused full-screen window included, without ever taking
/// the keyboard focus. Call before it is shown; the window gets its native handle. On X11 it is not managed; on Windows
/// nothing is done.
void prepareAsOverlay(QWidget& window);

/// Whether the system mixes translucent windows with what lies below them right now. Where it does not, their
/// see-through parts are black, and callers cut them out with QWidget::setMask(). On Windows always.
bool isCompositing();

/// Prepares a frameless top-level window for setWindowAlpha(). Call before it is shown; it gets its native handle.
///
/// @return whether what the window leaves unpainted is see-through all the same, where isCompositing(). Not on Windows,
///         which mixes a window either pixel by pixel or as a whole.
bool prepareForAlpha(QWidget& window);

/// Has the system mix a prepared window, as a whole, with what lies below it: alpha 0 (invisible) to 255 (opaque).
///
/// @return whether the system mixes. Not on X11 without a compositor: the window stays opaque.
bool setWindowAlpha(QWidget& window, int alpha);

} // namespace platform
