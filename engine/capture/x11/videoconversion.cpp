// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/videoconversion.h"

#include <QRect>

#include <algorithm>
#include <cstddef>

namespace {

/// A pixel, or the sum of several.
struct Sums
{
    int blue;
    int green;
    int red;

    int weighted(const bt709::Weights& weights) const
    {
        return weights.blue * blue + weights.green * green + weights.red * red;
    }
};

/// Channel by channel, two pixels side by side in both rows.
Sums sumOfFour(const std::uint8_t* upper, const std::uint8_t* lower)
{
    return {upper[0] + upper[4] + lower[0] + lower[4], upper[1] + upper[5] + lower[1] + lower[5],
            upper[2] + upper[6] + lower[2] + lower[6]};
}

std::uint8_t chromaOf(const Sums& sums, const bt709::Weights& weights)
{
    // Pure blue and pure red come to 256.
    const int chroma = (sums.weighted(weights) + bt709::kChromaOffset) >> bt709::kChromaShift;
    return static_cast<std::uint8_t>(std::min(chroma, 255));
}

void convertLumaPlainly(const std::uint8_t* __restrict pixels, std::uint8_t* __restrict luma, int widthPx)
{
    for (std::ptrdiff_t x = 0; x < widthPx; ++x) {
        const Sums pixel{pixels[4 * x], pixels[4 * x + 1], pixels[4 * x + 2]};
        luma[x] = static_cast<std::uint8_t>((pixel.weighted(bt709::kLuma) + bt709::kLumaOffset) >> bt709::kLumaShift);
    }
}

void convertChromaPlainly(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower,
                          std::uint8_t* __restrict chroma, int widthPx, const bt709::Weights& weights)
{
    for (std::ptrdiff_t x = 0; x < widthPx / 2; ++x)
        chroma[x] = chromaOf(sumOfFour(upper + 8 * x, lower + 8 * x), weights);
}

int convertPlainly(const RowPair& rows, int widthPx)
{
    convertLumaPlainly(rows.upper, rows.upperLuma, widthPx);
    convertLumaPlainly(rows.lower, rows.lowerLuma, widthPx);
    convertChromaPlainly(rows.upper, rows.lower, rows.cb, widthPx, bt709::kCb);
    convertChromaPlainly(rows.upper, rows.lower, rows.cr, widthPx, bt709::kCr);
    return widthPx;
}

RowPair withoutLeft(const RowPair& rows, std::ptrdiff_t px)
{
    return {rows.upper + 4 * px, rows.lower + 4 * px, rows.upperLuma + px,
            rows.lowerLuma + px, rows.cb + px / 2,    rows.cr + px / 2};
}

RowPair rowPairAt(const PixelView& from, const I420View& to, int x, int y)
{
    const auto row = static_cast<std::ptrdiff_t>(y);
    const std::uint8_t* const pixels = from.data + row * from.strideBytes + 4 * static_cast<std::ptrdiff_t>(x);
    std::uint8_t* const luma = to.planes[0] + row * to.stridesBytes[0] + x;
    const auto chroma = [&](int plane) { return to.planes[plane] + row / 2 * to.stridesBytes[plane] + x / 2; };
    return {pixels, pixels + from.strideBytes, luma, luma + to.stridesBytes[0], chroma(1), chroma(2)};
}

/// The rectangle with even edges, within the image.
QRect evenRect(const PixelView& image, const QRect& rect)
{
    const QRect clipped = rect & QRect(0, 0, image.widthPx & ~1, image.heightPx & ~1);
    if (clipped.isEmpty())
        return {};
    return {QPoint(clipped.left() & ~1, clipped.top() & ~1), QPoint(clipped.right() | 1, clipped.bottom() | 1)};
}

} // namespace

const std::vector<VideoConversionKind>& videoConversionKinds()
{
    // Never destroyed: frames may be converted while exit() runs.
    static const auto& kinds = *new const std::vector<VideoConversionKind>([] {
        std::vector<VideoConversionKind> found = vectorConversionKinds();
        found.push_back({"plain", convertPlainly});
        return found;
    }());
    return kinds;
}

void convertToI420(const PixelView& from, const I420View& to, const QRect& rect)
{
    convertToI420(from, to, rect, videoConversionKinds().front());
}

void convertToI420(const PixelView& from, const I420View& to, const QRect& rect, const VideoConversionKind& kind)
{
    const QRect converted = evenRect(from, rect);
    for (int y = converted.top(); y < converted.bottom(); y += 2) {
        const RowPair rows = rowPairAt(from, to, converted.left(), y);
        const int done = kind.convert(rows, converted.width());
        convertPlainly(withoutLeft(rows, done), converted.width() - done);
    }
}
