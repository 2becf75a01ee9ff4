// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Included by sources that are compiled for one kind of processor: nothing here may leave code behind that others call.
#include <cstdint>
#include <vector>

/// Two rows of pixels, one above the other, and where their luma and their chroma go.
struct RowPair
{
    const std::uint8_t* upper;
    const std::uint8_t* lower;
    std::uint8_t* upperLuma;
    std::uint8_t* lowerLuma;
    std::uint8_t* cb;
    std::uint8_t* cr;
};

/// A way to convert that the processor has. All of them write the same bytes.
struct VideoConversionKind
{
    const char* name;
    /// Converts as much of the row pair from its left end as it can; at most widthPx, which is even.
    ///
    /// @return how many pixels of each row that is, an even number
    int (*convert)(const RowPair& rows, int widthPx);
};

/// The kinds that take several pixels at once and that this processor has, fastest first.
std::vector<VideoConversionKind> vectorConversionKinds();

/// BT.709, full range: the parts of blue, green and red as fractions of 2^15. Those of luma add up to 1 and those of
/// chroma to 0: grey stays grey.
namespace bt709 {

struct Weights
{
    std::int16_t blue;
    std::int16_t green;
    std::int16_t red;
};

inline constexpr Weights kLuma{2366, 23436, 6966};
inline constexpr Weights kCb{16384, -12630, -3754};
inline constexpr Weights kCr{-1502, -14882, 16384};

/// Luma is of one pixel; chroma of the sum of four, whose mean is never rounded.
inline constexpr int kLumaShift = 15;
inline constexpr int kChromaShift = kLumaShift + 2;
inline constexpr std::int32_t kLumaOffset = 1 << (kLumaShift - 1);
inline constexpr std::int32_t kChromaOffset = (128 << kChromaShift) + (1 << (kChromaShift - 1));

} // namespace bt709
