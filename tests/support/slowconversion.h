// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

/// The conversion of pixels to BT.709, full range, one sample at a time and in whole numbers: what a fast one is judged
/// by.
namespace slowconversion {

/// Blue, green, red.
using Pixel = std::array<std::uint8_t, 3>;

/// What the weights of one pixel, and of four, add up to.
inline constexpr std::int64_t kOne = 32768;
inline constexpr std::int64_t kFour = 4 * kOne;

inline std::int64_t weighted(const Pixel& pixel, const std::array<std::int64_t, 3>& weights)
{
    return weights[0] * pixel[0] + weights[1] * pixel[1] + weights[2] * pixel[2];
}

/// Rounded to the nearest, and kept in a byte.
inline std::uint8_t rounded(std::int64_t value, std::int64_t unit)
{
    const auto whole = static_cast<std::int64_t>(
        std::floor(static_cast<double>(2 * value + unit) / (2.0 * static_cast<double>(unit))));
    return static_cast<std::uint8_t>(std::clamp<std::int64_t>(whole, 0, 255));
}

inline std::uint8_t luma(const Pixel& pixel)
{
    return rounded(weighted(pixel, {2366, 23436, 6966}), kOne);
}

/// A chroma sample of the four pixels that share it.
inline std::uint8_t chroma(const std::array<Pixel, 4>& pixels, const std::array<std::int64_t, 3>& weights)
{
    std::int64_t sum = 128 * kFour;
    for (const Pixel& pixel : pixels)
        sum += weighted(pixel, weights);
    return rounded(sum, kFour);
}

inline std::uint8_t cb(const std::array<Pixel, 4>& pixels)
{
    return chroma(pixels, {16384, -12630, -3754});
}

inline std::uint8_t cr(const std::array<Pixel, 4>& pixels)
{
    return chroma(pixels, {-1502, -14882, 16384});
}

} // namespace slowconversion
