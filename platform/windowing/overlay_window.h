// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/// What windows that float over the desktop need from the system (docs/x11-limits.md). User-interface thread.
namespace platform {

/// Keeps a frameless window above everything, full-screen windows included, without the keyboard focus. Call before it
/// is shown; it gets its native handle. On X11 it is not managed; on Windows nothing is done.
void prepareAsOverlay(QWidget& window);

/// Gives the keyboard to a shown window that prepareAsOverlay() has prepared, also to one that takes none by a click.
void giveKeyboard(QWidget& window);

/// Whether the system mixes translucent windows with those below them now: always on Windows. Where it does not, their
/// see-through parts are black, and callers cut them out with QWidget::setMask().
bool isCompositing();

/// Prepares a frameless window for setWindowAlpha(). Call before it is shown; it gets its native handle.
/// @return whether unpainted parts stay see-through, given isCompositing(). Not on Windows, which mixes a window either
///         pixel by pixel or as a whole.
bool prepareForAlpha(QWidget& window);

/// Mixes a prepared window as a whole with what is below it: alpha 0 (invisible) to 255 (opaque).
/// @return false on X11 without a compositor: the window stays opaque.
bool setWindowAlpha(QWidget& window, int alpha);

} // namespace platform
