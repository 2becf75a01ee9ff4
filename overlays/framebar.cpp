// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/framebar.h"

#include <QRegion>

#include <algorithm>
#include <array>

namespace {

/// Between the corner of the frame, or of the screen, and a bar inside.
constexpr int kInsetPx = 4;

int areaOf(const QRect& rect)
{
    return rect.isEmpty() ? 0 : rect.width() * rect.height();
}

/// That holds most of the frame; empty where none holds any.
QRect screenOf(const QRect& frame, const QList<QRect>& screens)
{
    QRect most;
    for (const QRect& screen : screens) {
        if (areaOf(screen & frame) > areaOf(most & frame))
            most = screen;
    }
    return most;
}

bool isOn(const QList<QRect>& screens, const QRect& part)
{
    QRegion desktop;
    for (const QRect& screen : screens)
        desktop += screen;
    return (QRegion(part) - desktop).isEmpty();
}

/// The columns of the frame that are on the screen, at least as many as the bar needs.
QRect columnsOn(const QRect& screen, const QRect& frame, int leastWidthPx)
{
    const int left = std::max(screen.left(), frame.left());
    const int width = std::max(std::min(screen.right(), frame.right()) - left + 1, leastWidthPx);
    return {std::max(screen.left(), std::min(left, screen.right() + 1 - width)), frame.top(), width, frame.height()};
}

QRect inside(const QRect& frame, const framebar::Size& bar, const QRect& screen)
{
    const QRect visible = screen & frame;
    const int left = visible.right() + 1 - kInsetPx - bar.compactWidthPx;
    return {std::max(screen.left(), left), visible.top() + kInsetPx, bar.compactWidthPx, bar.heightPx};
}

} // namespace

QRect framebar::placed(const QRect& frame, const Size& bar, const QList<QRect>& screens, bool mayCover)
{
    const QRect whole(frame.topLeft(), frame.size().expandedTo(QSize(bar.leastWidthPx, 0)));
    const auto above = [&bar](const QRect& columns) {
        return QRect(columns.left(), columns.top() - bar.heightPx, columns.width(), bar.heightPx);
    };
    const auto below = [&bar](const QRect& columns) {
        return QRect(columns.left(), columns.bottom() + 1, columns.width(), bar.heightPx);
    };
    const QRect screen = screenOf(frame, screens);
    if (screen.isEmpty())
        return above(whole);
    const QRect cut = columnsOn(screen, whole, bar.leastWidthPx);
    const std::array<QRect, 4> candidates{above(whole), above(cut), below(whole), below(cut)};
    const auto* const found = std::ranges::find_if(candidates, [&](const QRect& candidate) {
        return isOn(screens, QRect(candidate.topLeft(), QSize(bar.leastWidthPx, bar.heightPx)));
    });
    if (found != candidates.end())
        return *found;
    return mayCover ? inside(frame, bar, screen) : above(whole);
}
