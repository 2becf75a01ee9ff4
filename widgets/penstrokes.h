// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineF>
#include <QList>
#include <QPen>
#include <QPolygonF>
#include <QRegion>

class QPainter;

/// Freehand strokes, in logical pixels of the widget.
class PenStrokes
{
public:
    enum class Click
    {
        LeavesDot,
        LeavesNothing
    };

    /// @param click what a press and release at the same position leave
    PenStrokes(const QPen& pen, Click click) : m_pen(pen), m_click(click) {}

    /// Drops an unfinished stroke.
    void begin(const QPointF& position);

    /// @return the pixels that change
    QRect extend(const QPointF& position);

    void finish(const QPointF& position);

    void clear();

    QColor color() const { return m_pen.color(); }
    const QRegion& region() const { return m_region; }
    void paint(QPainter& painter) const;

private:
    QRect boundsOf(const QLineF& part) const;
    QRegion regionOf(const QLineF& part) const;

    QPen m_pen;
    Click m_click;
    QList<QPolygonF> m_strokes;
    QPolygonF m_currentStroke;
    QRegion m_region;
};
