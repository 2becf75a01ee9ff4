// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/cursorblend.h"

#include <algorithm>
#include <cstddef>

namespace {

/// A channel of the image below, with the cursor's own channel over it. Some cursors are brighter than their alpha
/// allows.
std::uint8_t blended(unsigned below, std::uint32_t over, unsigned alpha)
{
    const unsigned covered = below * (255 - alpha) + 127;
    return static_cast<std::uint8_t>(std::min((over & 0xFF) + covered / 255, 255U));
}

void blendRow(std::uint8_t* pixels, const std::uint32_t* cursor, int widthPx)
{
    for (int x = 0; x < widthPx; ++x, pixels += 4) {
        const std::uint32_t over = cursor[x];
        const unsigned alpha = over >> 24;
        pixels[0] = blended(pixels[0], over, alpha);
        pixels[1] = blended(pixels[1], over >> 8, alpha);
        pixels[2] = blended(pixels[2], over >> 16, alpha);
    }
}

bool isWhole(const CursorImage& cursor)
{
    return cursor.widthPx > 0 && cursor.heightPx > 0 &&
           cursor.argbPremultiplied.size() >=
               static_cast<std::size_t>(cursor.widthPx) * static_cast<std::size_t>(cursor.heightPx);
}

} // namespace

QRect blendCursor(const MutablePixelView& onto, const CursorImage& cursor, QPoint position)
{
    if (!isWhole(cursor))
        return {};
    const QRect whole(position - cursor.hotSpot, QSize(cursor.widthPx, cursor.heightPx));
    const QRect drawn = whole & QRect(0, 0, onto.widthPx, onto.heightPx);
    if (drawn.isEmpty())
        return {};
    const auto left = static_cast<std::ptrdiff_t>(drawn.left());
    for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
        const auto cursorRow = static_cast<std::ptrdiff_t>(y - whole.top()) * cursor.widthPx;
        blendRow(onto.data + static_cast<std::ptrdiff_t>(y) * onto.strideBytes + 4 * left,
                 cursor.argbPremultiplied.data() + cursorRow + (left - whole.left()), drawn.width());
    }
    return drawn;
}
