// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/framegeometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace framegeometry {

namespace {

/// A rectangle by its edges, right and bottom included.
struct Edges
{
    int left;
    int top;
    int right;
    int bottom;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    QRect rect() const { return {left, top, width(), height()}; }
};

bool movesLeft(HitArea area)
{
    return area == HitArea::TopLeft || area == HitArea::BottomLeft || area == HitArea::Left;
}

bool movesRight(HitArea area)
{
    return area == HitArea::TopRight || area == HitArea::BottomRight || area == HitArea::Right;
}

bool movesTop(HitArea area)
{
    return area == HitArea::TopLeft || area == HitArea::TopRight || area == HitArea::Top;
}

bool movesBottom(HitArea area)
{
    return area == HitArea::BottomLeft || area == HitArea::BottomRight || area == HitArea::Bottom;
}

Edges edgesOf(const QRect& rect)
{
    return {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
}

/// Takes the edges of that area along with the mouse.
void drag(HitArea area, Edges& edges, const QPoint& delta)
{
    edges.left += movesLeft(area) ? delta.x() : 0;
    edges.right += movesRight(area) ? delta.x() : 0;
    edges.top += movesTop(area) ? delta.y() : 0;
    edges.bottom += movesBottom(area) ? delta.y() : 0;
}

/// Gives the frame the other dimension that belongs to the dragged one. Computes as precisely as the ratio is given.
template <typename Real>
void applyRatio(HitArea area, Edges& edges, const QRect& start, Real ratio)
{
    const int height = static_cast<int>(static_cast<Real>(edges.width()) / ratio);
    const int startBottom = start.top() + start.height();
    if (area == HitArea::Top || area == HitArea::Bottom) {
        const int grown = (static_cast<int>(static_cast<Real>(edges.height()) * ratio) - start.width()) / 2;
        edges.left = start.left() - grown;
        edges.right = start.left() + start.width() + grown;
    } else if (area == HitArea::Left || area == HitArea::Right) {
        const int grown = (height - start.height()) / 2;
        edges.top = start.top() - grown;
        edges.bottom = startBottom + grown;
    } else if (movesTop(area)) {
        edges.top = startBottom - height;
    } else {
        edges.bottom = start.top() + height;
    }
}

/// By the edge that the area drags.
void setWidth(HitArea area, Edges& edges, int width)
{
    if (movesLeft(area))
        edges.left = edges.right - width;
    else
        edges.right = edges.left + width;
}

void setHeight(HitArea area, Edges& edges, int height)
{
    if (movesTop(area))
        edges.top = edges.bottom - height;
    else
        edges.bottom = edges.top + height;
}

void applyMinimum(HitArea area, Edges& edges, const QSize& minimum)
{
    if (edges.width() < minimum.width())
        setWidth(area, edges, minimum.width());
    if (edges.height() < minimum.height() && (movesTop(area) || movesBottom(area)))
        setHeight(area, edges, minimum.height());
}

/// The smallest frame of that ratio, where neither width nor height is below the minimum.
void applyMinimumAtRatio(HitArea area, Edges& edges, const QRect& start, const QSize& minimum, double ratio)
{
    const int width = std::max(minimum.width(), static_cast<int>(std::ceil(minimum.height() * ratio)));
    if (edges.width() >= width)
        return;
    if (area == HitArea::Top || area == HitArea::Bottom)
        setHeight(area, edges, static_cast<int>(std::ceil(width / ratio)));
    else
        setWidth(area, edges, width);
    applyRatio(area, edges, start, ratio);
}

} // namespace

HitArea hitAreaAt(const QPoint& point, const QSize& frame)
{
    const int right = frame.width() - kMarginPx;
    const int bottom = frame.height() - kMarginPx;
    const int betweenX = right - kMarginPx;
    const int betweenY = bottom - kMarginPx;
    struct Handle
    {
        HitArea area = HitArea::None;
        QRect rect;
    };
    const std::array<Handle, 8> handles{{{HitArea::TopLeft, {0, 0, kMarginPx, kMarginPx}},
                                         {HitArea::TopRight, {right, 0, kMarginPx, kMarginPx}},
                                         {HitArea::BottomLeft, {0, bottom, kMarginPx, kMarginPx}},
                                         {HitArea::BottomRight, {right, bottom, kMarginPx, kMarginPx}},
                                         {HitArea::Left, {0, kMarginPx, kMarginPx, betweenY}},
                                         {HitArea::Right, {right, kMarginPx, kMarginPx, betweenY}},
                                         {HitArea::Top, {kMarginPx, 0, betweenX, kMarginPx}},
                                         {HitArea::Bottom, {kMarginPx, bottom, betweenX, kMarginPx}}}};
    const auto* const hit =
        std::find_if(handles.begin(), handles.end(), [&](const Handle& handle) { return handle.rect.contains(point); });
    return hit == handles.end() ? HitArea::Move : hit->area;
}

bool isResize(HitArea area)
{
    return area >= HitArea::TopLeft && area <= HitArea::Bottom;
}

Qt::CursorShape cursorOf(HitArea area)
{
    switch (area) {
    case HitArea::Drawing:
        return Qt::CrossCursor;
    case HitArea::TopLeft:
    case HitArea::BottomRight:
        return Qt::SizeFDiagCursor;
    case HitArea::TopRight:
    case HitArea::BottomLeft:
        return Qt::SizeBDiagCursor;
    case HitArea::Left:
    case HitArea::Right:
        return Qt::SizeHorCursor;
    case HitArea::Top:
    case HitArea::Bottom:
        return Qt::SizeVerCursor;
    case HitArea::Move:
        return Qt::SizeAllCursor;
    case HitArea::None:
        break;
    }
    return Qt::ArrowCursor;
}

QRect resized(HitArea area, const QRect& start, const QPoint& delta, const QSize& minimum, double ratio)
{
    if (!isResize(area))
        return start;
    Edges edges = edgesOf(start);
    drag(area, edges, delta);
    if (ratio > 0.0) {
        applyRatio(area, edges, start, ratio);
        applyMinimumAtRatio(area, edges, start, minimum, ratio);
    }
    applyMinimum(area, edges, minimum);
    return edges.rect();
}

QRect draggedAtAspect(HitArea area, const QRect& start, const QPoint& delta, int minimumWidth, float aspect)
{
    if (!isResize(area))
        return start.translated(delta);
    Edges edges = edgesOf(start);
    drag(area, edges, delta);
    applyRatio(area, edges, start, aspect);
    if (edges.width() < minimumWidth) {
        setWidth(area, edges, minimumWidth);
        setHeight(area, edges, static_cast<int>(static_cast<float>(minimumWidth) / aspect));
    }
    return edges.rect();
}

QPoint moved(const QRect& start, const QPoint& delta, const QRect& available, int extraBelowPx)
{
    const QPoint position = start.topLeft() + delta;
    const int rightmost = available.left() + available.width() - start.width();
    const int lowest = available.top() + available.height() + extraBelowPx - start.height();
    return {std::max(available.left(), std::min(rightmost, position.x())),
            std::max(available.top(), std::min(lowest, position.y()))};
}

} // namespace framegeometry
