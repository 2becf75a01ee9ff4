// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"
#include "engine/capture/x11/conversionkind.h"

#include <vector>

class QRect;

/// What this processor can convert with, fastest first; the last one is plain C++. Any thread.
const std::vector<VideoConversionKind>& videoConversionKinds();

/// Converts pixels into a frame of the same size: BT.709, full range, chroma as the mean of two by two pixels.
///
/// A rectangle with odd edges grows by a row or a column, because a chroma sample covers two by two pixels; what lies
/// outside of the image is left out, and so are the last column of an odd width and the last row of an odd height.
/// Nothing else in the frame is written. Any thread.
///
/// @param rect in pixels
void convertToI420(const PixelView& from, const I420View& to, const QRect& rect);
void convertToI420(const PixelView& from, const I420View& to, const QRect& rect, const VideoConversionKind& kind);
