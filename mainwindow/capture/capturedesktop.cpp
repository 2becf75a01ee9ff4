// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/capturedesktop.h"

#include "widgets/desktopscreens.h"

#include <QScreen>

#include <utility>

#include <algorithm>

namespace {

qint64 pixels(const QRect& area)
{
    return area.isEmpty() ? 0 : qint64{area.width()} * area.height();
}

int distance(const QPoint& position, const QRect& area)
{
    const QPoint nearest(std::clamp(position.x(), area.left(), area.right()),
                         std::clamp(position.y(), area.top(), area.bottom()));
    return (position - nearest).manhattanLength();
}

} // namespace

CaptureDesktop CaptureDesktop::present(bool engineSpans)
{
    QList<CaptureScreen> screens;
    for (const QScreen* const screen : desktopscreens::all())
        screens.append(captureScreen(*screen));
    return {screens, engineSpans && desktopscreens::areContiguous()};
}

CaptureScreen CaptureDesktop::screenOf(const QRect& area) const
{
    const auto found = std::ranges::max_element(m_screens, {}, [&](const CaptureScreen& screen) {
        return std::pair(pixels(screen.geometry & area), -distance(area.center(), screen.geometry));
    });
    return found == m_screens.end() ? CaptureScreen{} : *found;
}

CaptureScreen CaptureDesktop::around(const QRect& area) const
{
    CaptureScreen all = screenOf(area);
    for (const CaptureScreen& screen : m_screens) {
        if (m_spans && screen.geometry.intersects(area))
            all.geometry |= screen.geometry;
    }
    return all;
}

QRect CaptureDesktop::visiblePart(const QRect& area) const
{
    const CaptureScreen most = screenOf(area);
    QRect part = area & most.geometry;
    for (const CaptureScreen& screen : m_screens) {
        if (m_spans)
            part |= area & screen.geometry;
    }
    // One column more than an area of a single screen loses: the number of columns stays even where all are recorded.
    const bool isOfSeveral = !part.isEmpty() && !most.geometry.contains(part);
    if (isOfSeveral && part.left() >= 0 && part.left() < CaptureArea::kFirstColumn)
        part.setLeft(CaptureArea::kFirstColumn + 1);
    return part;
}

bool CaptureDesktop::isCutAt(const QRect& area) const
{
    const QRect part = visiblePart(area);
    return std::ranges::any_of(m_screens, [&](const CaptureScreen& screen) {
        const QRect there = screen.geometry & area;
        return !m_spans && !there.isEmpty() && !part.contains(there);
    });
}
