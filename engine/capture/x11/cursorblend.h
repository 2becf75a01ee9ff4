// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"

#include <QPoint>
#include <QRect>

#include <cstdint>
#include <vector>

/// A pointer as the X server draws it. The pixels are those of a XFixes cursor image as XCB delivers it: 32 bits each,
/// row after row, without gaps. (Xlib makes each of them an unsigned long, of 64 bits.)
struct CursorImage
{
    int widthPx = 0;
    int heightPx = 0;
    /// The pixel that the pointer points with, from the top left corner.
    QPoint hotSpot;
    /// 0xAARRGGBB, the colours multiplied by alpha.
    std::vector<std::uint32_t> argbPremultiplied;
};

/// Draws a pointer over an image, as far as it is inside. Draws nothing when the cursor image lacks pixels. Any thread.
///
/// @param position of the hot spot, in pixels of the image
/// @return where the image may have changed; empty when nothing was drawn
QRect blendCursor(const MutablePixelView& onto, const CursorImage& cursor, QPoint position);
