// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/exactpixels.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// Beyond what the rounding of margins and the steps of a video come to together.
constexpr int kOtherSize = 6;

int toSteps(int length, int step, int screenLength)
{
    const bool growsByOne = length % step != 0 && (length + 1) % step == 0 && length != screenLength;
    return growsByOne ? length + 1 : length / step * step;
}

int grownToSteps(int length, int step, int screenLength)
{
    const int grown = (length + step - 1) / step * step;
    return grown <= screenLength ? grown : length / step * step;
}

/// Margins of one direction.
struct Margins
{
    int before;
    int after;
};

Margins cropLength(int videoLength, const Margins& crop, int screenLength)
{
    const int excess = screenLength - crop.before - crop.after - videoLength;
    if (std::abs(excess) >= kOtherSize)
        return crop;
    // A region may reach over the screen's far edge, where its margin is negative.
    const int after = crop.after < 0 ? crop.after + excess : std::max(crop.after + excess, 0);
    const int before = screenLength - videoLength - after;
    return before < std::min(crop.before, 0) ? crop : Margins{before, after};
}

} // namespace

QSize exactpixels::videoSize(const QSize& region, const QSize& steps, const QSize& screen)
{
    return {toSteps(region.width(), steps.width(), screen.width()),
            toSteps(region.height(), steps.height(), screen.height())};
}

QSize exactpixels::grownSize(const QSize& region, const QSize& steps, const QSize& screen)
{
    return {grownToSteps(region.width(), steps.width(), screen.width()),
            grownToSteps(region.height(), steps.height(), screen.height())};
}

QMargins exactpixels::cropTo(const QSize& video, const QMargins& crop, const QSize& screen)
{
    const Margins columns = cropLength(video.width(), {crop.left(), crop.right()}, screen.width());
    const Margins rows = cropLength(video.height(), {crop.top(), crop.bottom()}, screen.height());
    return {columns.before, rows.before, columns.after, rows.after};
}
