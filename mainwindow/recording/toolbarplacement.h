// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

struct ToolbarPlacement
{
    QPoint topLeft;
    /// Recorded there: visible only while the pointer is at the top edge.
    bool topEdgeOnly = false;
};

QPoint toolbarTopCentre(const QRect& screen, const QSize& toolbar);

/// The position nearest to the top centre of the screen that touches neither the recorded area with its border, 4 px,
/// nor the bar of its frame; if there is none the top centre. Logical pixels.
/// @param recorded empty without video, and where the toolbar is kept out of the video at any position
/// @param frameBar empty without one
ToolbarPlacement placeToolbar(const QRect& screen, const QSize& toolbar, const QRect& recorded, const QRect& frameBar);
