// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

class QWidget;

/// Null when there is none.
QWidget* visibleToolTip();

/// Tool tips of small bars that float over the desktop and must not get into the recording. Logical pixels of the
/// desktop.
namespace bartip {

/// A position above the bar, below it or beside it that is on the screen and outside the recorded area, if any.
///
/// @param left where the part of the bar begins that the tip belongs to
std::optional<QPoint> positionFor(const QSize& tip, const QRect& bar, int left, const QRect& screen,
                                  const QRect& recorded);

/// Shows the tip of a widget whose window is the bar, or hides it where it has no position.
///
/// @param recorded empty when nothing is recorded
void show(QWidget& widget, const QRect& recorded);

} // namespace bartip
