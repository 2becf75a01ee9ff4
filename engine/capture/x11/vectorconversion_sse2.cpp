// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/vectorconversion.h"
#include "engine/capture/x11/vectorconversion_x86.h"

#include <emmintrin.h>

namespace {

struct Sse2
{
    using Register = __m128i;
    static constexpr int kPixels = 4;

    static Register load(const std::uint8_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
    static Register all32(std::int32_t value) { return _mm_set1_epi32(value); }
    static Register pairs(std::int16_t low, std::int16_t high)
    {
        return _mm_set_epi16(high, low, high, low, high, low, high, low);
    }

    static Register lowBytes(Register words) { return _mm_and_si128(words, _mm_set1_epi16(0xFF)); }
    static Register highBytes(Register words) { return _mm_srli_epi16(words, 8); }
    static Register multiplyPairs(Register values, Register weights) { return _mm_madd_epi16(values, weights); }
    static Register add16(Register left, Register right) { return _mm_add_epi16(left, right); }
    static Register add32(Register left, Register right) { return _mm_add_epi32(left, right); }
    template <int bits>
    static Register shiftRight32(Register values)
    {
        return _mm_srai_epi32(values, bits);
    }

    static Register addNeighbours(Register left, Register right)
    {
        const __m128 first = _mm_castsi128_ps(left);
        const __m128 second = _mm_castsi128_ps(right);
        return add16(_mm_castps_si128(_mm_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0))),
                     _mm_castps_si128(_mm_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1))));
    }

    static Register pack16(Register left, Register right) { return _mm_packs_epi32(left, right); }
    static Register pack8(Register left, Register right) { return _mm_packus_epi16(left, right); }

    static void storeLuma(std::uint8_t* to, Register packed)
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), packed);
    }
    static void storeChroma(std::uint8_t* cb, std::uint8_t* cr, Register packed)
    {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cb), packed);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cr), _mm_unpackhi_epi64(packed, packed));
    }
};

} // namespace

int convertRowPairSse2(const RowPair& rows, int widthPx)
{
    return RowPairConverter<Sse2>().convert(rows, widthPx);
}
