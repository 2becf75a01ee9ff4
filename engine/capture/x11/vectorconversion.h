// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/x11/conversionkind.h"

#include <cstddef>

/// The conversion of a row pair, once for all sizes of registers. Each source that includes this is compiled for
/// another kind of processor, so everything is local to the source.
///
/// Vector has the register and its operations; kPixels pixels of 32 bits fit in. Operations on a pair of registers may
/// interleave them in any way, as long as store() undoes it.
namespace {

/// Pixels as pairs of 16 bits.
template <typename Vector>
struct Pixels
{
    typename Vector::Register blueRed;
    typename Vector::Register greenUnused;
};

/// Weights, as pairs of 16 bits.
template <typename Vector>
struct PairedWeights
{
    explicit PairedWeights(const bt709::Weights& weights)
        : blueRed(Vector::pairs(weights.blue, weights.red)), greenUnused(Vector::pairs(weights.green, 0))
    {}

    /// The weighted sum of each pixel in 32 bits.
    typename Vector::Register sum(const Pixels<Vector>& pixels) const
    {
        return Vector::add32(Vector::multiplyPairs(pixels.blueRed, blueRed),
                             Vector::multiplyPairs(pixels.greenUnused, greenUnused));
    }

    typename Vector::Register blueRed;
    typename Vector::Register greenUnused;
};

/// What the pixels of two registers above two others come to.
template <typename Vector>
struct Converted
{
    typename Vector::Register upperLuma16;
    typename Vector::Register lowerLuma16;
    typename Vector::Register cb32;
    typename Vector::Register cr32;
};

template <typename Vector>
class RowPairConverter
{
public:
    int convert(const RowPair& rows, int widthPx) const
    {
        constexpr std::ptrdiff_t kStep = 4 * Vector::kPixels;
        std::ptrdiff_t x = 0;
        for (; x + kStep <= widthPx; x += kStep) {
            const auto left = convertQuad(rows.upper + 4 * x, rows.lower + 4 * x);
            const auto right = convertQuad(rows.upper + 4 * (x + kStep / 2), rows.lower + 4 * (x + kStep / 2));
            Vector::storeLuma(rows.upperLuma + x, Vector::pack8(left.upperLuma16, right.upperLuma16));
            Vector::storeLuma(rows.lowerLuma + x, Vector::pack8(left.lowerLuma16, right.lowerLuma16));
            Vector::storeChroma(
                rows.cb + x / 2, rows.cr + x / 2,
                Vector::pack8(Vector::pack16(left.cb32, right.cb32), Vector::pack16(left.cr32, right.cr32)));
        }
        return static_cast<int>(x);
    }

private:
    using Register = typename Vector::Register;

    static Pixels<Vector> load(const std::uint8_t* from)
    {
        const Register pixels = Vector::load(from);
        return {Vector::lowBytes(pixels), Vector::highBytes(pixels)};
    }

    static Pixels<Vector> sum(const Pixels<Vector>& left, const Pixels<Vector>& right)
    {
        return {Vector::add16(left.blueRed, right.blueRed), Vector::add16(left.greenUnused, right.greenUnused)};
    }

    /// The sums of neighbours.
    static Pixels<Vector> narrowed(const Pixels<Vector>& left, const Pixels<Vector>& right)
    {
        return {Vector::addNeighbours(left.blueRed, right.blueRed),
                Vector::addNeighbours(left.greenUnused, right.greenUnused)};
    }

    Register luma32(const Pixels<Vector>& pixels) const
    {
        return Vector::template shiftRight32<bt709::kLumaShift>(Vector::add32(m_luma.sum(pixels), m_lumaOffset));
    }

    Register chroma32(const PairedWeights<Vector>& weights, const Pixels<Vector>& sums) const
    {
        return Vector::template shiftRight32<bt709::kChromaShift>(Vector::add32(weights.sum(sums), m_chromaOffset));
    }

    Converted<Vector> convertQuad(const std::uint8_t* upper, const std::uint8_t* lower) const
    {
        const auto upperLeft = load(upper);
        const auto upperRight = load(upper + 4 * Vector::kPixels);
        const auto lowerLeft = load(lower);
        const auto lowerRight = load(lower + 4 * Vector::kPixels);
        const auto sums = narrowed(sum(upperLeft, lowerLeft), sum(upperRight, lowerRight));
        return {Vector::pack16(luma32(upperLeft), luma32(upperRight)),
                Vector::pack16(luma32(lowerLeft), luma32(lowerRight)), chroma32(m_cb, sums), chroma32(m_cr, sums)};
    }

    PairedWeights<Vector> m_luma{bt709::kLuma};
    PairedWeights<Vector> m_cb{bt709::kCb};
    PairedWeights<Vector> m_cr{bt709::kCr};
    Register m_lumaOffset = Vector::all32(bt709::kLumaOffset);
    Register m_chromaOffset = Vector::all32(bt709::kChromaOffset);
};

} // namespace
