// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Memory of others that holds an image: pixels of four bytes (blue, green, red, unused), rows from top to bottom. The
/// stride is the distance between the starts of two rows.
struct PixelView
{
    const std::uint8_t* data;
    int strideBytes;
    int widthPx;
    int heightPx;
};

/// The same, to be drawn on.
struct MutablePixelView
{
    std::uint8_t* data;
    int strideBytes;
    int widthPx;
    int heightPx;
};

/// Memory of others that holds a frame: a plane of luma, and planes of Cb and Cr with half its width and height.
struct I420View
{
    std::uint8_t* planes[3];
    int stridesBytes[3];
};
