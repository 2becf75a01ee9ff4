// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QEvent>
#include <QPoint>
#include <QWidget>

/// Mouse events that say where on the desktop they are, as the system's do; a window that moves with them may be
/// elsewhere by then. All positions in logical pixels of the desktop.
namespace pointerevents {

/// Any mouse event: the button that changed, and those that are held after it.
void mouse(QWidget& widget, QEvent::Type type, const QPoint& global, Qt::MouseButton changed = Qt::NoButton,
           Qt::MouseButtons held = Qt::NoButton);
/// The left button goes down.
void press(QWidget& widget, const QPoint& global);
/// A move with the left button held.
void moveHeld(QWidget& widget, const QPoint& global);
void release(QWidget& widget, const QPoint& global);
/// The left button goes down, moves by the distance in two steps, and comes up.
void drag(QWidget& widget, const QPoint& from, const QPoint& distance);

void enter(QWidget& widget);
void leave(QWidget& widget);

} // namespace pointerevents
