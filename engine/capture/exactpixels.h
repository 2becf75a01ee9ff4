// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMargins>
#include <QSize>

/// What keeps the pixels of a region as they are on the screen. Sizes and margins in physical pixels.
namespace exactpixels {

/// The size as multiples of the steps: grown by one if that is enough, else shrunk, as one as large as the screen is.
QSize videoSize(const QSize& region, const QSize& steps, const QSize& screen);

/// The size grown to multiples of the steps; shrunk where the screen is too small for that.
QSize grownSize(const QSize& region, const QSize& steps, const QSize& screen);

/// The crop that leaves exactly the size of the video, where the one asked for misses it by a few pixels: the far
/// margin changes, and the near one where the screen ends. Any other crop is stretched over the video, and stays as it
/// is.
QMargins cropTo(const QSize& video, const QMargins& crop, const QSize& screen);

} // namespace exactpixels
