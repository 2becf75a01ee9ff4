#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// The arithmetic of a frame that the user moves and resizes with the mouse, for every window that is one. Logical
/// pixels. An edge is the line between two pixels: the right edge of a frame is its left edge plus its width.
namespace framegeometry {

/// How far from the frame's edges the mouse takes hold of them.
inline constexpr int kMarginPx = 10;

/// What the left mouse button does at a place in the frame, and so also what it is doing during a drag.
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

/// The area of a point in a frame of that size; never None or Drawing. Corners win over edges, edges over the rest, and
/// where a frame is smaller than its margins, the first in the order above.
HitArea hitAreaAt(const QPoint& point, const QSize& frame);

/// Whether dragging that area resizes the frame.
bool isResize(HitArea area);

Qt::CursorShape cursorOf(HitArea area);

/// The frame that start becomes when the given area was dragged by delta. What is smaller than the minimum then is as
/// large as the minimum, with the edge in place that was not dragged.
///
/// @param area a resizing area; any other gives start back.
/// @param lockRatio keeps start's ratio: a corner takes its vertical edge along, an edge grows the other two sides
///        evenly about their middle. Such a height at a left or right edge is not held to the minimum.
QRect resized(HitArea area, const QRect& start, const QPoint& delta, const QSize& minimum, bool lockRatio);

/// The frame that start becomes when the given area was dragged by delta, for a frame that has always the ratio of the
/// picture in it: a corner takes its vertical edge along, an edge grows the other two sides evenly about their middle,
/// and no edge of the screen holds it. A frame that is narrower than minimumWidth then is as wide as that, and has the
/// height that belongs to it.
///
/// @param area any that does not resize moves the frame
/// @param aspect width by height of the picture, above 0
QRect draggedAtAspect(HitArea area, const QRect& start, const QPoint& delta, int minimumWidth, float aspect);

/// Where a frame goes that was dragged by delta: it stays within the available area, but may go below it by
/// extraBelowPx.
QPoint moved(const QRect& start, const QPoint& delta, const QRect& available, int extraBelowPx);

} // namespace framegeometry
