#include "mainwindow/capturearea.h"

#include <cmath>

namespace {

/// Far above the rounding error of a product of screen size, far below what a pixel could mean.
constexpr double kRatioNoise = 1e-6;

} // namespace

int toPhysicalPx(int logicalPx, double devicePixelRatio)
{
    const double exact = logicalPx * devicePixelRatio;
    const double nearest = std::round(exact);
    return static_cast<int>(std::abs(exact - nearest) < kRatioNoise ? nearest : std::trunc(exact));
}

QPoint captureCentre(const QRect& rect)
{
    return {rect.left() + rect.width() / 2, rect.top() + rect.height() / 2};
}

QSize CaptureScreen::physicalSize() const
{
    return {toPhysicalPx(geometry.width(), devicePixelRatio), toPhysicalPx(geometry.height(), devicePixelRatio)};
}

void CaptureArea::setRect(const QRect& rect)
{
    m_left = rect.left();
    m_top = rect.top();
    m_right = rect.left() + rect.width();
    m_bottom = rect.top() + rect.height();
}

QRect CaptureArea::rect() const
{
    return {m_left, m_top, m_right - m_left, m_bottom - m_top};
}

QRect CaptureArea::rectOn(const CaptureScreen& screen) const
{
    return isUnset() ? screen.geometry : rect();
}

QSize CaptureArea::physicalSize(const CaptureScreen& screen) const
{
    const QSize size = rectOn(screen).size();
    return {toPhysicalPx(size.width(), screen.devicePixelRatio), toPhysicalPx(size.height(), screen.devicePixelRatio)};
}

CaptureMargins CaptureArea::margins(const CaptureScreen& screen) const
{
    const QRect area = rectOn(screen);
    const QRect& whole = screen.geometry;
    const double ratio = screen.devicePixelRatio;
    const QPoint beyond = QPoint(whole.width(), whole.height()) - QPoint(area.width(), area.height());
    const QPoint offset = area.topLeft() - whole.topLeft();
    return {toPhysicalPx(offset.x(), ratio), toPhysicalPx(offset.y(), ratio),
            toPhysicalPx(beyond.x() - offset.x(), ratio), toPhysicalPx(beyond.y() - offset.y(), ratio), area != whole};
}
