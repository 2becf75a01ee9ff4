// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/screenvisual.h"

#include <QString>

namespace {

constexpr int kBitsPerPixel = 32;
constexpr std::uint32_t kRedMask = 0xFF0000;
constexpr std::uint32_t kGreenMask = 0x00FF00;
constexpr std::uint32_t kBlueMask = 0x0000FF;

bool hasUsualMasks(const ScreenVisual& visual)
{
    return visual.redMask == kRedMask && visual.greenMask == kGreenMask && visual.blueMask == kBlueMask;
}

} // namespace

QString unsupportedVisual(const ScreenVisual& visual)
{
    if (visual.depth != 24 && visual.depth != 32)
        return QStringLiteral("the screen has a colour depth of %1 bits, not 24 or 32").arg(visual.depth);
    if (visual.bitsPerPixel != kBitsPerPixel)
        return QStringLiteral("the X server stores %1 bits for each pixel, not 32").arg(visual.bitsPerPixel);
    if (!visual.isLittleEndian)
        return QStringLiteral("the X server stores pixels with the highest byte first");
    if (!hasUsualMasks(visual))
        return QStringLiteral("the screen's colours are at 0x%1, 0x%2 and 0x%3, not at 0xff0000, 0xff00 and 0xff")
            .arg(QString::number(visual.redMask, 16), QString::number(visual.greenMask, 16),
                 QString::number(visual.blueMask, 16));
    return {};
}
