#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

class QWidget;

/// The tool tip that is on the screen; null when there is none.
QWidget* visibleToolTip();

/// Tool tips of small bars that float over the desktop while it is recorded. A tip has its place below the pointer,
/// which there may be in the picture, and no system keeps it out. Logical pixels of the desktop.
namespace bartip {

/// Where a tip goes: straight above the bar, below it, or beside it on the left or the right, whichever is the first
/// that lies on the screen and not in the picture. Nothing where there is no such place.
///
/// @param left where the part of the bar begins that the tip tells of
std::optional<QPoint> placeFor(const QSize& tip, const QRect& bar, int left, const QRect& screen, const QRect& picture);

/// Shows the tip of a widget on a bar, which is its window, or hides it where it has no place.
///
/// @param picture what is recorded; empty when nothing is
void show(QWidget& widget, const QRect& picture);

} // namespace bartip
