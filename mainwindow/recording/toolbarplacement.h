// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// Where the floating recording toolbar stands, in logical pixels of the desktop.
struct ToolbarPlacement
{
    QPoint topLeft;
    /// The toolbar would be recorded there: it is shown only while the pointer is at the top edge.
    bool topEdgeOnly = false;
};

/// The position at the top of the screen, centred.
QPoint toolbarTopCentre(const QRect& screen, const QSize& toolbar);

/// The position nearest to the top centre of the screen outside the recorded area and the frame around it (4 px on each
/// side, 30 px more above); the top centre, for the top edge only, where there is none. Logical pixels of the desktop.
///
/// @param recorded        empty when no video is recorded
/// @param canBeExcluded   the system keeps the toolbar out of captures wherever it is
ToolbarPlacement placeToolbar(const QRect& screen, const QSize& toolbar, const QRect& recorded, bool canBeExcluded);
