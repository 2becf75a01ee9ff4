// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/arrowkeys.h"

#include <QGuiApplication>
#include <QKeyEvent>

using framegeometry::HitArea;

QPoint arrowkeys::stepOf(const QKeyEvent& event)
{
    constexpr int kStepPx = 10;
    const int length = event.modifiers().testFlag(Qt::ShiftModifier) ? 1 : kStepPx;
    switch (event.key()) {
    case Qt::Key_Left:
        return {-length, 0};
    case Qt::Key_Right:
        return {length, 0};
    case Qt::Key_Up:
        return {0, -length};
    case Qt::Key_Down:
        return {0, length};
    default:
        return {};
    }
}

HitArea arrowkeys::areaOf(const QKeyEvent& event)
{
    if (!event.modifiers().testFlag(Qt::ControlModifier))
        return HitArea::Move;
    return stepOf(event).x() != 0 ? HitArea::Right : HitArea::Bottom;
}

bool arrowkeys::isInSight(const QRect& window)
{
    return QGuiApplication::screenAt(window.center()) != nullptr;
}
