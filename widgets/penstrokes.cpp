// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/penstrokes.h"

#include <QBitmap>
#include <QPainter>

#include <utility>

void PenStrokes::begin(const QPointF& position)
{
    if (std::exchange(m_currentStroke, {position}).size() < 2)
        return;
    m_region = QRegion();
    for (const QPolygonF& stroke : std::as_const(m_strokes)) {
        for (qsizetype end = 1; end < stroke.size(); ++end)
            m_region += regionOf({stroke.at(end - 1), stroke.at(end)});
    }
}

QRect PenStrokes::extend(const QPointF& position)
{
    if (m_currentStroke.isEmpty())
        return {};
    const QLineF added(m_currentStroke.constLast(), position);
    m_currentStroke.append(position);
    m_region += regionOf(added);
    // Includes the end of the previous part, whose cap becomes a corner.
    return boundsOf(added);
}

void PenStrokes::finish(const QPointF& position)
{
    if (m_currentStroke.isEmpty())
        return;
    if (m_click == Click::LeavesDot || m_currentStroke.constLast() != position)
        extend(position);
    if (m_currentStroke.size() > 1)
        m_strokes.append(m_currentStroke);
    m_currentStroke.clear();
}

void PenStrokes::clear()
{
    m_strokes.clear();
    m_currentStroke.clear();
    m_region = QRegion();
}

void PenStrokes::paint(QPainter& painter) const
{
    painter.setPen(m_pen);
    for (const QPolygonF& stroke : m_strokes)
        painter.drawPolyline(stroke);
    painter.drawPolyline(m_currentStroke);
}

/// All pixels that a part of a stroke may touch, with its caps and corners.
QRect PenStrokes::boundsOf(const QLineF& part) const
{
    const int reach = 2 * m_pen.width();
    return QRectF(part.p1(), part.p2()).normalized().toAlignedRect().adjusted(-reach, -reach, reach, reach);
}

QRegion PenStrokes::regionOf(const QLineF& part) const
{
    const QRect bounds = boundsOf(part);
    QBitmap covered(bounds.size());
    covered.clear();
    QPainter painter(&covered);
    painter.translate(-bounds.topLeft());
    painter.setPen(m_pen);
    painter.drawPolyline(QPolygonF({part.p1(), part.p2()}));
    painter.end();
    return QRegion(covered).translated(bounds.topLeft());
}
