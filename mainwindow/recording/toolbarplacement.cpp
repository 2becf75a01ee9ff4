// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/toolbarplacement.h"

#include <algorithm>
#include <array>

namespace {

/// The border of the frame around a recorded region, and the height of the bar on top of it.
constexpr int kFrameBorderPx = 4;
constexpr int kFrameBarHeightPx = 30;

QRect withFrame(const QRect& recorded)
{
    return recorded.adjusted(-kFrameBorderPx, -kFrameBorderPx - kFrameBarHeightPx, kFrameBorderPx, kFrameBorderPx);
}

} // namespace

QPoint toolbarTopCentre(const QRect& screen, const QSize& toolbar)
{
    return {screen.x() + (screen.width() - toolbar.width()) / 2, screen.y()};
}

ToolbarPlacement placeToolbar(const QRect& screen, const QSize& toolbar, const QRect& recorded, bool canBeExcluded)
{
    const QPoint topCentre = toolbarTopCentre(screen, toolbar);
    const QRect taken = withFrame(recorded);
    if (canBeExcluded || recorded.isEmpty() || !taken.intersects(QRect(topCentre, toolbar)))
        return {topCentre, false};

    // The shortest ways out of one rectangle: straight to the left, to the right or down.
    std::array<QPoint, 3> candidates{QPoint(taken.x() - toolbar.width(), topCentre.y()),
                                     QPoint(taken.x() + taken.width(), topCentre.y()),
                                     QPoint(topCentre.x(), taken.y() + taken.height())};
    std::ranges::stable_sort(candidates, {}, [&](const QPoint& one) { return (one - topCentre).manhattanLength(); });
    const auto* const found = std::ranges::find_if(
        candidates, [&](const QPoint& position) { return screen.contains(QRect(position, toolbar)); });
    return found != candidates.end() ? ToolbarPlacement{*found, false} : ToolbarPlacement{topCentre, true};
}
