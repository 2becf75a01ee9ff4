// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/regionsize.h"

#include "engine/capture/exactpixels.h"
#include "mainwindow/capture/capturearea.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/// Far above the rounding error of such a product, far below a pixel.
constexpr double kNoise = 1e-6;

int roundedDown(double exact)
{
    return static_cast<int>(std::floor(exact + kNoise));
}

int roundedUp(double exact)
{
    return static_cast<int>(std::ceil(exact - kNoise));
}

/// The multiple of the step that is nearest to a length and within the limits.
int nearestStep(double length, int step, int smallest, int largest)
{
    const int multiple = static_cast<int>(std::lround(length / step)) * step;
    if (multiple > largest)
        return largest / step * step;
    return multiple < smallest ? (smallest + step - 1) / step * step : multiple;
}

int nearestLength(int length, int step, int smallest, int largest)
{
    return length == largest ? length : nearestStep(length, step, smallest, largest);
}

/// Of the two logical lengths around it, the one whose video is nearer.
int logicalLength(int videoPx, double ratio, int step, int screenLength)
{
    const auto deviation = [&](int length) {
        const int physical = toPhysicalPx(length, ratio);
        return std::abs(exactpixels::videoSize({physical, physical}, {step, step}, {}).width() - videoPx);
    };
    const int lower = roundedDown(videoPx / ratio);
    const int upper = roundedUp(videoPx / ratio);
    return std::min(deviation(lower) <= deviation(upper) ? lower : upper, screenLength);
}

/// Where a part of that length begins: at the settled edge, else about the middle.
int settledBegin(int begin, int end, int beginBefore, int endBefore, int length)
{
    if (begin == beginBefore)
        return begin;
    return end == endBefore ? end - length : begin + (end - begin - length) / 2;
}

} // namespace

QSize regionsize::nearest(const QSize& size, const Limits& limits)
{
    return {nearestLength(size.width(), limits.steps.width(), limits.smallest.width(), limits.largest.width()),
            nearestLength(size.height(), limits.steps.height(), limits.smallest.height(), limits.largest.height())};
}

QSize regionsize::atRatio(const QSize& size, double ratio, const Limits& limits)
{
    const double narrowest = std::max<double>(limits.smallest.width(), limits.smallest.height() * ratio);
    const double widest = std::min<double>(limits.largest.width(), limits.largest.height() * ratio);
    const double wanted = std::min(std::max<double>(size.width(), narrowest), widest);
    const int width = nearestStep(wanted, limits.steps.width(), limits.smallest.width(), limits.largest.width());
    return {width,
            nearestStep(width / ratio, limits.steps.height(), limits.smallest.height(), limits.largest.height())};
}

QSize regionsize::room(const CaptureScreen& screen)
{
    const int lost =
        roundedUp((CaptureArea::firstColumnOf(screen.geometry) - screen.geometry.left()) * screen.devicePixelRatio);
    return screen.wholePixels() - QSize(lost, 0);
}

QSize regionsize::fitted(const QSize& size, const CaptureScreen& screen, const QSize& steps)
{
    const QSize whole = screen.wholePixels();
    if (size.boundedTo(whole) == size)
        return size;
    const QSize scaled = size.scaled(whole, Qt::KeepAspectRatio);
    if (scaled == whole)
        return whole;
    const int width = std::min(scaled.width(), room(screen).width()) / steps.width() * steps.width();
    const double ratio = static_cast<double>(size.width()) / size.height();
    return {width, nearestStep(width / ratio, steps.height(), 0, whole.height())};
}

QSize regionsize::logical(const QSize& video, const CaptureScreen& screen, const QSize& steps)
{
    const QSize whole = screen.geometry.size();
    const double ratio = screen.devicePixelRatio;
    return {logicalLength(video.width(), ratio, steps.width(), whole.width()),
            logicalLength(video.height(), ratio, steps.height(), whole.height())};
}

QRect regionsize::around(const QRect& area, const QSize& size, const QRect& screen)
{
    const QPoint middle =
        area.topLeft() + QPoint((area.width() - size.width()) / 2, (area.height() - size.height()) / 2);
    const int leftmost = size.width() < screen.width() ? CaptureArea::firstColumnOf(screen) : screen.left();
    const int left = std::max(leftmost, std::min(middle.x(), screen.right() + 1 - size.width()));
    const int top = std::max(screen.top(), std::min(middle.y(), screen.bottom() + 1 - size.height()));
    return {QPoint(left, top), size};
}

QRect regionsize::atSettledEdges(const QRect& before, const QRect& resized, const QSize& size)
{
    return {QPoint(settledBegin(resized.left(), resized.right() + 1, before.left(), before.right() + 1, size.width()),
                   settledBegin(resized.top(), resized.bottom() + 1, before.top(), before.bottom() + 1, size.height())),
            size};
}
