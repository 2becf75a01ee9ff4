// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// The arithmetic of a frame that the user moves and resizes with the mouse. Logical pixels. An edge is between two
/// pixels: the right edge of a frame is its left edge plus its width.
namespace framegeometry {

/// The width of the area at an edge that resizes.
inline constexpr int kMarginPx = 10;

/// What the left mouse button drags.
enum class HitArea : int
{
    None = 0,
    Drawing = 1,
    TopLeft = 2,
    TopRight = 3,
    BottomLeft = 4,
    BottomRight = 5,
    Left = 6,
    Right = 7,
    Top = 8,
    Bottom = 9,
    Move = 10
};

/// Never None or Drawing. Areas that overlap in a small frame win in the order above.
HitArea hitAreaAt(const QPoint& point, const QSize& frame);

bool isResize(HitArea area);

Qt::CursorShape cursorOf(HitArea area);

/// The frame after a drag of an edge or corner, not below the minimum; any other area returns start.
///
/// @param lockRatio keeps start's aspect ratio: a corner takes its vertical edge along, an edge grows the other two
///        sides evenly. The height then is not held to the minimum at a left or right edge.
QRect resized(HitArea area, const QRect& start, const QPoint& delta, const QSize& minimum, bool lockRatio);

/// The frame after a drag that keeps the aspect ratio (width by height, above 0), as resized() with lockRatio. An area
/// that does not resize moves the frame.
QRect draggedAtAspect(HitArea area, const QRect& start, const QPoint& delta, int minimumWidth, float aspect);

/// The position of a dragged frame: within the available area, but up to extraBelowPx below it.
QPoint moved(const QRect& start, const QPoint& delta, const QRect& available, int extraBelowPx);

} // namespace framegeometry
