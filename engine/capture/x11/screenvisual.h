// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class QString;

/// How the X server stores the pixels of a screen: of its root visual, and of its images of that depth.
struct ScreenVisual
{
    int depth;
    int bitsPerPixel;
    bool isLittleEndian;
    std::uint32_t redMask;
    std::uint32_t greenMask;
    std::uint32_t blueMask;
};

/// Whether images of this screen are pixels as PixelView has them.
///
/// @return why not, for the log; empty when they are
QString unsupportedVisual(const ScreenVisual& visual);
