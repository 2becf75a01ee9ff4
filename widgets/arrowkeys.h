// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widgets/framegeometry.h"

class QKeyEvent;

/// Arrow keys move and resize windows, as the pointer does. Logical pixels.
namespace arrowkeys {

/// 10 pixels, with Shift one; null for other keys.
QPoint stepOf(const QKeyEvent& event);

/// With Ctrl the right or lower edge, else the whole window.
framegeometry::HitArea areaOf(const QKeyEvent& event);

/// The user can still see what is there.
bool isInSight(const QRect& window);

} // namespace arrowkeys
