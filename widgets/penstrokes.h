// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineF>
#include <QList>
#include <QPen>
#include <QPolygonF>
#include <QRegion>

#include <span>

class QPainter;

/// Freehand strokes, in logical pixels of the widget. Each stroke, and each clear(), is a step that can be undone.
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

    /// Also forgets the steps.
    void reset();

    /// What was cleared or undone does not come back.
    void forgetHidden();

    /// Of an unfinished stroke, that one.
    void undo();
    void redo();
    bool canUndo() const { return m_done > 0 || !m_currentStroke.isEmpty(); }
    bool canRedo() const { return m_done < m_steps.size(); }

    QColor color() const { return m_pen.color(); }
    const QRegion& region() const { return m_region; }
    void paint(QPainter& painter) const;

private:
    struct Step
    {
        /// Empty in a step that clears.
        QPolygonF stroke;
        QRegion region;
    };

    void add(const Step& step);
    /// The strokes since the last clear().
    std::span<const Step> visible() const;
    void restoreRegion();
    QRect boundsOf(const QLineF& part) const;
    QRegion regionOf(const QLineF& part) const;

    QPen m_pen;
    Click m_click;
    QList<Step> m_steps;
    /// The steps from here on are undone.
    qsizetype m_done = 0;
    QPolygonF m_currentStroke;
    QRegion m_currentRegion;
    QRegion m_region;
};
