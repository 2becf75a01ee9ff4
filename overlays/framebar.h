// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>

/// Where the tool bar of a region frame is. Logical pixels of the desktop.
namespace framebar {

struct Size
{
    int heightPx = 0;
    /// Of its left part, which has the buttons.
    int leastWidthPx = 0;
    /// Inside the frame.
    int compactWidthPx = 0;
};

/// The first of these whose buttons are on the screens: on top of the frame and as wide, below it, both as far as the
/// frame is on its screen, in the top right corner inside.
/// @param mayCover false where what is inside is recorded with the bar: on top of the frame then, on a screen or not
QRect placed(const QRect& frame, const Size& bar, const QList<QRect>& screens, bool mayCover);

} // namespace framebar
