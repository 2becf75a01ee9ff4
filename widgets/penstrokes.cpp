// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/penstrokes.h"

#include <QBitmap>
#include <QPainter>

#include <utility>

#include <algorithm>

void PenStrokes::begin(const QPointF& position)
{
    const bool isDropped = std::exchange(m_currentStroke, {position}).size() > 1;
    m_currentRegion = QRegion();
    if (isDropped)
        restoreRegion();
}

QRect PenStrokes::extend(const QPointF& position)
{
    if (m_currentStroke.isEmpty())
        return {};
    const QLineF added(m_currentStroke.constLast(), position);
    m_currentStroke.append(position);
    const QRegion covered = regionOf(added);
    m_currentRegion += covered;
    m_region += covered;
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
        add({m_currentStroke, m_currentRegion});
    m_currentStroke.clear();
}

void PenStrokes::clear()
{
    m_currentStroke.clear();
    if (!visible().empty())
        add({});
    m_region = QRegion();
}

void PenStrokes::reset()
{
    m_steps.clear();
    m_done = 0;
    m_currentStroke.clear();
    m_region = QRegion();
}

void PenStrokes::forgetHidden()
{
    const std::span<const Step> shown = visible();
    m_steps = QList<Step>(shown.begin(), shown.end());
    m_done = m_steps.size();
}

void PenStrokes::undo()
{
    if (!canUndo())
        return;
    if (m_currentStroke.isEmpty())
        --m_done;
    m_currentStroke.clear();
    restoreRegion();
}

void PenStrokes::redo()
{
    if (!canRedo())
        return;
    m_currentStroke.clear();
    ++m_done;
    restoreRegion();
}

void PenStrokes::add(const Step& step)
{
    m_steps.resize(m_done);
    m_steps.append(step);
    m_done = m_steps.size();
}

std::span<const PenStrokes::Step> PenStrokes::visible() const
{
    const std::span done(m_steps.constData(), static_cast<std::size_t>(m_done));
    const auto cleared =
        std::find_if(done.rbegin(), done.rend(), [](const Step& step) { return step.stroke.isEmpty(); });
    return {cleared.base(), done.end()};
}

void PenStrokes::restoreRegion()
{
    m_region = QRegion();
    for (const Step& step : visible())
        m_region += step.region;
}

void PenStrokes::paint(QPainter& painter) const
{
    painter.setPen(m_pen);
    for (const Step& step : visible())
        painter.drawPolyline(step.stroke);
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
