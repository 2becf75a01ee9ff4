// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>

class QScreen;
class QWidget;

/// The screens of the desktop. Logical pixels.
namespace desktopscreens {

/// The primary one first; none in a session without a screen.
QList<QScreen*> all();

/// Whether the coordinates go on from each screen to the next. At a scale they do not: Qt leaves the corner of a screen
/// where it is and makes its size smaller.
bool areContiguous();

/// Where a window can be dragged, without the space of panels: over all screens or, where they are not contiguous, on
/// that below the pointer, else on its own. Empty without a screen.
QRect availableForDrag(const QWidget& window);

} // namespace desktopscreens
