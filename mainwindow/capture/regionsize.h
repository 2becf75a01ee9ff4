// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>

struct CaptureScreen;

/// Sizes of regions: one that the user types, that a ratio asks for, or that a screen has room for.
namespace regionsize {

/// What a recorded size can be, in physical pixels.
struct Limits
{
    QSize smallest;
    QSize largest;
    /// The video's width and height are multiples of these, unless they are the largest.
    QSize steps = {1, 1};

    bool operator==(const Limits&) const = default;
};

/// The nearest size that can be recorded.
QSize nearest(const QSize& size, const Limits& limits);

/// The nearest size of that ratio that can be recorded: the width is reduced until the height has the ratio to the
/// pixel or to the step.
/// @param ratio width by height
QSize atRatio(const QSize& size, double ratio, const Limits& limits);

/// What a region can have of the screen without being all of it: it does not have the desktop's first column.
QSize room(const CaptureScreen& screen);

/// The largest size of the same ratio that a region can have on the screen. What fits stays as it is.
QSize fitted(const QSize& size, const CaptureScreen& screen, const QSize& steps);

/// The logical size of which the video has that size, or as nearly as the device pixel ratio allows; never larger than
/// the screen.
QSize logical(const QSize& video, const CaptureScreen& screen, const QSize& steps);

/// That size about the middle of the area, moved onto the screen as far as it fits. Logical pixels.
QRect around(const QRect& area, const QSize& size, const QRect& screen);

/// That size for a frame that was resized: edges that have not moved stay. Logical pixels.
QRect atSettledEdges(const QRect& before, const QRect& resized, const QSize& size);

} // namespace regionsize
