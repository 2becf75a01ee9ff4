#include "mainwindow/capturearea.h"

#include <algorithm>
#include <cmath>

namespace {

/// Far above the rounding error of a product of screen size, far below what a pixel could mean.
constexpr double kRatioNoise = 1e-6;

int truncated(double exact)
{
    const double nearest = std::round(exact);
    return static_cast<int>(std::abs(exact - nearest) < kRatioNoise ? nearest : std::trunc(exact));
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

QRect toLogicalRect(const QRect& physical, double devicePixelRatio)
{
    const auto logical = [devicePixelRatio](int value) {
        return static_cast<int>(std::lround(value / devicePixelRatio));
    };
    return {logical(physical.x()), logical(physical.y()), logical(physical.width()), logical(physical.height())};
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

void CaptureArea::setRegion(const QRect& region, const CaptureScreen& screen)
{
    setRect(region & screen.geometry);
    if (rect() != screen.geometry)
        m_left = std::max(m_left, 1);
}

void CaptureArea::moveTo(const QPoint& topLeft)
{
    setRect(QRect({std::max(topLeft.x(), 1), topLeft.y()}, rect().size()));
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
