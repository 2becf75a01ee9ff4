// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/toolbarplacement.h"

#include <algorithm>
#include <array>

namespace {

/// Around a recorded region.
constexpr int kFrameBorderPx = 4;

QRect withBorder(const QRect& recorded)
{
    return recorded.isEmpty() ? QRect()
                              : recorded.adjusted(-kFrameBorderPx, -kFrameBorderPx, kFrameBorderPx, kFrameBorderPx);
}

} // namespace

QPoint toolbarTopCentre(const QRect& screen, const QSize& toolbar)
{
    return {screen.x() + (screen.width() - toolbar.width()) / 2, screen.y()};
}

ToolbarPlacement placeToolbar(const QRect& screen, const QSize& toolbar, const QRect& recorded, const QRect& frameBar)
{
    const QPoint topCentre = toolbarTopCentre(screen, toolbar);
    const QRect taken = withBorder(recorded) | frameBar;
    if (!taken.intersects(QRect(topCentre, toolbar)))
        return {topCentre, false};

    // The shortest ways out of one rectangle: straight to the left, to the right or down.
    std::array<QPoint, 3> candidates{QPoint(taken.x() - toolbar.width(), topCentre.y()),
                                     QPoint(taken.x() + taken.width(), topCentre.y()),
                                     QPoint(topCentre.x(), taken.y() + taken.height())};
    std::ranges::stable_sort(candidates, {}, [&](const QPoint& one) { return (one - topCentre).manhattanLength(); });
    const auto* const found = std::ranges::find_if(
        candidates, [&](const QPoint& position) { return screen.contains(QRect(position, toolbar)); });
    if (found != candidates.end())
        return {*found, false};
    return {topCentre, withBorder(recorded).intersects(QRect(topCentre, toolbar))};
}
