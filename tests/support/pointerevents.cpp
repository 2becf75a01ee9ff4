// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/pointerevents.h"

#include <QApplication>
#include <QEnterEvent>
#include <QMouseEvent>

namespace pointerevents {

void mouse(QWidget& widget, QEvent::Type type, const QPoint& global, Qt::MouseButton changed, Qt::MouseButtons held)
{
    QMouseEvent event(type, widget.mapFromGlobal(global), global, changed, held, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

void press(QWidget& widget, const QPoint& global)
{
    mouse(widget, QEvent::MouseButtonPress, global, Qt::LeftButton, Qt::LeftButton);
}

void moveHeld(QWidget& widget, const QPoint& global)
{
    mouse(widget, QEvent::MouseMove, global, Qt::NoButton, Qt::LeftButton);
}

void release(QWidget& widget, const QPoint& global)
{
    mouse(widget, QEvent::MouseButtonRelease, global, Qt::LeftButton);
}

void drag(QWidget& widget, const QPoint& from, const QPoint& distance)
{
    press(widget, from);
    moveHeld(widget, from + distance / 2);
    moveHeld(widget, from + distance);
    release(widget, from + distance);
}

void enter(QWidget& widget)
{
    QEnterEvent event(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(&widget, &event);
}

void leave(QWidget& widget)
{
    QEvent event(QEvent::Leave);
    QApplication::sendEvent(&widget, &event);
}

} // namespace pointerevents
