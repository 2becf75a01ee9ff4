// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/capturearea.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace {

/// Far above the rounding error of a product of a screen's size, far below a pixel.
constexpr double kRatioNoise = 1e-6;

int truncated(double exact)
{
    const double nearest = std::round(exact);
    return static_cast<int>(std::abs(exact - nearest) < kRatioNoise ? nearest : std::trunc(exact));
}

/// What lies beyond the area's far edge. An area that does not reach over the screen's edge leaves nothing negative
/// out.
/// @param farEdge, screenEdge logical, counted from the screen's near edge
int farMargin(int farEdge, int screenEdge, double screenPx, double devicePixelRatio)
{
    const int margin = truncated(screenPx - farEdge * devicePixelRatio);
    return farEdge <= screenEdge ? std::max(margin, 0) : margin;
}

struct Span
{
    int begin;
    int length;
};

/// @param step in physical pixels
Span grownTo(int step, const Span& span, const Span& screen, double devicePixelRatio)
{
    const bool isWhole = devicePixelRatio == std::floor(devicePixelRatio);
    int length = span.length;
    while (isWhole && toPhysicalPx(length, devicePixelRatio) % step != 0)
        ++length;
    if (length > screen.length)
        return span;
    return {std::min(span.begin, screen.begin + screen.length - length), length};
}

} // namespace

int toPhysicalPx(int logicalPx, double devicePixelRatio)
{
    return truncated(logicalPx * devicePixelRatio);
}

int toLogicalPx(int physicalPx, double devicePixelRatio)
{
    return truncated(physicalPx / devicePixelRatio);
}

QPoint captureCentre(const QRect& rect)
{
    return {rect.left() + rect.width() / 2, rect.top() + rect.height() / 2};
}

QSize CaptureScreen::physicalSize() const
{
    return {toPhysicalPx(geometry.width(), devicePixelRatio), toPhysicalPx(geometry.height(), devicePixelRatio)};
}

CaptureScreen captureScreen(const QScreen& screen)
{
    return {screen.geometry(), screen.devicePixelRatio()};
}

CaptureScreen primaryScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? captureScreen(*screen) : CaptureScreen{};
}

CaptureScreen withPixels(const CaptureScreen& screen, const QSize& pixels)
{
    const QSizeF rounded = QSizeF(screen.geometry.size()) * screen.devicePixelRatio;
    const auto isNear = [&screen](double one, double other) { return std::abs(one - other) < screen.devicePixelRatio; };
    CaptureScreen exact = screen;
    if (isNear(rounded.width(), pixels.width()) && isNear(rounded.height(), pixels.height()))
        exact.pixels = pixels;
    return exact;
}

int CaptureArea::firstColumnOf(const QRect& screen)
{
    return screen.left() < 0 ? screen.left() : std::max(screen.left(), kFirstColumn);
}

void CaptureArea::setRect(const QRect& rect)
{
    m_rect = rect;
    m_firstColumn = kFirstColumn;
}

void CaptureArea::setRegion(const QRect& region, const CaptureScreen& screen, const QSize& steps)
{
    const QRect& whole = screen.geometry;
    setRect(region & whole);
    if (m_rect == whole)
        return;
    const int first = firstColumnOf(whole);
    m_firstColumn = std::min(first, kFirstColumn);
    m_rect.setLeft(std::max(m_rect.left(), first));
    const double ratio = screen.devicePixelRatio;
    const Span columns =
        grownTo(steps.width(), {m_rect.x(), m_rect.width()}, {first, whole.right() + 1 - first}, ratio);
    const Span rows = grownTo(steps.height(), {m_rect.y(), m_rect.height()}, {whole.y(), whole.height()}, ratio);
    m_rect = QRect(columns.begin, rows.begin, columns.length, rows.length);
}

void CaptureArea::moveTo(const QPoint& topLeft)
{
    m_rect.moveTo(std::max(topLeft.x(), m_firstColumn), topLeft.y());
}

void CaptureArea::fitVideo(const QSize& videoPx, double devicePixelRatio)
{
    const auto logical = [devicePixelRatio](int px) {
        return static_cast<int>(std::ceil(px / devicePixelRatio - kRatioNoise));
    };
    m_rect.setSize({logical(videoPx.width()), logical(videoPx.height())});
}

QRect CaptureArea::rectOn(const CaptureScreen& screen) const
{
    return isUnset() ? screen.geometry : m_rect;
}

QSize CaptureArea::physicalSize(const CaptureScreen& screen) const
{
    const QSize size = rectOn(screen).size();
    if (!screen.pixels.isEmpty() && rectOn(screen) == screen.geometry)
        return screen.pixels;
    return {toPhysicalPx(size.width(), screen.devicePixelRatio), toPhysicalPx(size.height(), screen.devicePixelRatio)};
}

CaptureMargins CaptureArea::margins(const CaptureScreen& screen) const
{
    const QRect area = rectOn(screen);
    const QRect& whole = screen.geometry;
    if (area == whole)
        return {};
    const double ratio = screen.devicePixelRatio;
    const QSizeF pixels = screen.pixels.isEmpty() ? QSizeF(whole.size()) * ratio : QSizeF(screen.pixels);
    const QPoint offset = area.topLeft() - whole.topLeft();
    return {toPhysicalPx(offset.x(), ratio), toPhysicalPx(offset.y(), ratio),
            farMargin(offset.x() + area.width(), whole.width(), pixels.width(), ratio),
            farMargin(offset.y() + area.height(), whole.height(), pixels.height(), ratio), true};
}
