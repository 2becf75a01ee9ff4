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

/// The position nearest to the top centre of the screen outside the recorded area and its frame (4 px, 30 px more
/// above); if there is none the top centre, for the top edge only. Logical pixels.
/// @param recorded empty without video
/// @param canBeExcluded the system keeps the toolbar out of captures at any position
ToolbarPlacement placeToolbar(const QRect& screen, const QSize& toolbar, const QRect& recorded, bool canBeExcluded);
