// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// Moves and resizes frames, in logical pixels. An edge is between two pixels: the right edge is the left edge plus the
/// width.
namespace framegeometry {

/// Of the area at an edge that resizes.
inline constexpr int kMarginPx = 10;

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

/// Never None or Drawing; overlapping areas win in the order above.
HitArea hitAreaAt(const QPoint& point, const QSize& frame);

bool isResize(HitArea area);

Qt::CursorShape cursorOf(HitArea area);

/// Not below the minimum; any other area than an edge or corner returns start.
/// @param ratio width by height, which is kept, also at the minimum, or 0: a corner takes its vertical edge along, an
/// edge
///        grows the other two sides evenly
QRect resized(HitArea area, const QRect& start, const QPoint& delta, const QSize& minimum, double ratio);

/// As resized() with a ratio; an area that does not resize moves the frame.
QRect draggedAtAspect(HitArea area, const QRect& start, const QPoint& delta, int minimumWidth, float aspect);

/// Within the available area, but up to extraBelowPx below it.
QPoint moved(const QRect& start, const QPoint& delta, const QRect& available, int extraBelowPx);

} // namespace framegeometry
