// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineF>
#include <QList>
#include <QPen>
#include <QPolygonF>
#include <QRegion>

class QPainter;

/// Freehand strokes of one pen, in logical pixels of the widget that is drawn on.
class PenStrokes
{
public:
    enum class Click
    {
        LeavesDot,
        LeavesNothing
    };

    /// @param click what a press and a release at the same position leave
    PenStrokes(const QPen& pen, Click click) : m_pen(pen), m_click(click) {}

    /// Begins a stroke. A stroke that was not finished is dropped.
    void begin(const QPointF& position);

    /// Extends the current stroke, if there is one.
    ///
    /// @return the pixels that change
    QRect extend(const QPointF& position);

    /// Ends the current stroke, if there is one, at that position and keeps it.
    void finish(const QPointF& position);

    void clear();

    QColor color() const { return m_pen.color(); }
    /// The pixels that the strokes cover.
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
