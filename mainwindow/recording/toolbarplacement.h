#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// Where the floating recording toolbar stands, in logical pixels of the desktop.
struct ToolbarPlacement
{
    QPoint topLeft;
    /// There it would be in the picture: it may be shown only while the pointer asks for it at the top edge.
    bool topEdgeOnly = false;
};

/// The place at the top of the screen, centred.
QPoint toolbarTopCentre(const QRect& screen, const QSize& toolbar);

/// The place nearest to the top centre of the screen where the toolbar lies neither in the recorded picture nor on the
/// frame and the bar that surround it (4 px on each side, 30 px more above). Where the screen has no such place it is
/// the top centre, for the top edge only.
///
/// All rectangles are in logical pixels of the desktop, screen being the primary screen wherever it lies.
///
/// @param recorded        the pixels in the picture; empty when no picture is recorded
/// @param canBeExcluded   the system keeps the toolbar out of the picture wherever it is; then it stands at the top
/// centre
ToolbarPlacement placeToolbar(const QRect& screen, const QSize& toolbar, const QRect& recorded, bool canBeExcluded);
