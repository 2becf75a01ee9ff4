// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/// Keeps top-level windows out of the frames that this program grabs from the X server itself, while the user sees
/// them (docs/x11-limits.md). Other captures have them, those through the engine's scene and screenshots among them:
/// RecorderPort::leavesOutOwnWindows() says which a recording is. Nothing on Windows: see capture_exclusion.h.
/// User-interface thread.
namespace platform {

/// Shown or not, under whatever native handles the window gets, until it goes.
void setExcludedFromFrames(QWidget& window, bool excluded);

/// Of a window that is meant to be seen inside, its edges alone.
/// @param depthPx how far those reach into it, in physical pixels; above 0
void excludeBorderFromFrames(QWidget& window, int depthPx);

} // namespace platform
