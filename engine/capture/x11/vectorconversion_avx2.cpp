// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/vectorconversion.h"
#include "engine/capture/x11/vectorconversion_x86.h"

#include <immintrin.h>

namespace {

/// Two halves of 128 bits, which packs and shuffles keep apart.
struct Avx2
{
    using Register = __m256i;
    static constexpr int kPixels = 8;

    static Register load(const std::uint8_t* from)
    {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }
    static Register all32(std::int32_t value) { return _mm256_set1_epi32(value); }
    static Register pairs(std::int16_t low, std::int16_t high)
    {
        return _mm256_unpacklo_epi16(_mm256_set1_epi16(low), _mm256_set1_epi16(high));
    }

    static Register lowBytes(Register words) { return _mm256_and_si256(words, _mm256_set1_epi16(0xFF)); }
    static Register highBytes(Register words) { return _mm256_srli_epi16(words, 8); }
    static Register multiplyPairs(Register values, Register weights) { return _mm256_madd_epi16(values, weights); }
    static Register add16(Register left, Register right) { return _mm256_add_epi16(left, right); }
    static Register add32(Register left, Register right) { return _mm256_add_epi32(left, right); }
    template <int bits>
    static Register shiftRight32(Register values)
    {
        return _mm256_srai_epi32(values, bits);
    }

    static Register addNeighbours(Register left, Register right)
    {
        const __m256 first = _mm256_castsi256_ps(left);
        const __m256 second = _mm256_castsi256_ps(right);
        return add16(_mm256_castps_si256(_mm256_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0))),
                     _mm256_castps_si256(_mm256_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1))));
    }

    static Register pack16(Register left, Register right) { return _mm256_packs_epi32(left, right); }
    static Register pack8(Register left, Register right) { return _mm256_packus_epi16(left, right); }

    /// The low half has the first four of each eight pixels.
    static void storeLuma(std::uint8_t* to, Register packed)
    {
        const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_permutevar8x32_epi32(packed, order));
    }

    /// Of each four samples the low half has the first two; Cb stands below Cr in both.
    static void storeChroma(std::uint8_t* cb, std::uint8_t* cr, Register packed)
    {
        const __m128i low = _mm256_castsi256_si128(packed);
        const __m128i high = _mm256_extracti128_si256(packed, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cb), _mm_unpacklo_epi16(low, high));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cr), _mm_unpackhi_epi16(low, high));
    }
};

} // namespace

int convertRowPairAvx2(const RowPair& rows, int widthPx)
{
    return RowPairConverter<Avx2>().convert(rows, widthPx);
}
