// Color Wheel's SSE2 twin, four pairs per 16 bytes. The colour differences
// (U', V') of a pair sit in one 32-bit lane as two 16-bit values, so pmaddwd
// against (kc, -ks) and (ks, kc) gives the two rotated sums exactly. When a
// coefficient does not fit 16 bits (saturation gains above about 2), it is
// split as 256 h + l with 0 <= l < 256 and the sums are rebuilt as
// (madd(h) << 8) + madd(l), still exact in 32 bits. Luma is the Color
// Balance lane arithmetic (pmulhw keeps the upper half of the signed
// product, the scalar arithmetic shift). The last one to three pairs of a
// row go through the scalar twin.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <emmintrin.h>

#include "color_wheel_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

// Two 16-bit coefficients in every 32-bit lane: lo multiplies U', hi V'.
inline __m128i Coefficients(int32_t lo, int32_t hi) {
    return _mm_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(lo) & 0xFFFFu) |
                                               (static_cast<uint32_t>(hi) << 16)));
}

inline bool Fits16(int32_t x) { return x >= -32768 && x <= 32767; }

template <bool kGain, bool kSafe, bool kWide>
void Rows(const FieldView& v, const WheelPlan& p) {
    const __m128i bias = _mm_set1_epi16(128);
    const __m128i flip = _mm_set1_epi16(static_cast<int16_t>(0x8000));
    const __m128i lumaMask = _mm_set1_epi32(0x00FF00FF);
    const __m128i lowHalf = _mm_set1_epi32(0xFFFF);
    const __m128i gain = _mm_set1_epi16(static_cast<int16_t>(p.lumaGain));
    const __m128i offset = _mm_set1_epi16(static_cast<int16_t>(kGain ? p.bright + 128 : p.bright));
    const __m128i safeLow = _mm_set1_epi8(16);
    const __m128i safeHigh = _mm_set1_epi32(static_cast<int>(0xF0EBF0EBu));  // 235 240 235 240 per pair
    // Narrow: the coefficients themselves; wide: their high parts h, and l.
    const int32_t shift = kWide ? 8 : 0;
    const __m128i uHigh = Coefficients(p.kc >> shift, -p.ks >> shift);
    const __m128i vHigh = Coefficients(p.ks >> shift, p.kc >> shift);
    const __m128i uLow = Coefficients(p.kc & 0xFF, -p.ks & 0xFF);
    const __m128i vLow = Coefficients(p.ks & 0xFF, p.kc & 0xFF);
    const int32_t wide = v.pairs & ~3;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        // The same column of the next row, source and destination, is
        // fetched as this one is worked on.
        const ptrdiff_t ahead = r + 1 < v.rows ? v.step : 0;
        for (int32_t i = 0; i < wide; i += 4) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 4 * i));
            PrefetchLine(s + ahead + 4 * i);
            PrefetchLineForWrite(d + ahead + 4 * i);
            // U' and V' as the low and high 16 bits of each pair's lane.
            const __m128i uv = _mm_sub_epi16(_mm_srli_epi16(x, 8), bias);
            __m128i su = _mm_madd_epi16(uv, uHigh);
            __m128i sv = _mm_madd_epi16(uv, vHigh);
            if constexpr (kWide) {
                su = _mm_add_epi32(_mm_slli_epi32(su, 8), _mm_madd_epi16(uv, uLow));
                sv = _mm_add_epi32(_mm_slli_epi32(sv, 8), _mm_madd_epi16(uv, vLow));
            }
            // |sum| < 2^27, so the shifted sums fit 16 bits: U's in the low
            // half, V's as the high half of sv << 2 (one shift fewer than
            // shifting down and back up).
            const __m128i chroma = _mm_add_epi16(
                _mm_or_si128(_mm_and_si128(_mm_srai_epi32(su, 14), lowHalf), _mm_andnot_si128(lowHalf, _mm_slli_epi32(sv, 2))),
                bias);
            // Y0 and Y1 as 16-bit values; for the gain, (Y - 128) << 8 is
            // Y << 8 with its top bit flipped.
            const __m128i y = kGain ? _mm_add_epi16(_mm_mulhi_epi16(_mm_xor_si128(_mm_slli_epi16(x, 8), flip), gain), offset)
                                    : _mm_add_epi16(_mm_and_si128(x, lumaMask), offset);
            __m128i out = _mm_packus_epi16(_mm_unpacklo_epi16(y, chroma), _mm_unpackhi_epi16(y, chroma));
            if constexpr (kSafe) out = _mm_min_epu8(_mm_max_epu8(out, safeLow), safeHigh);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * i), out);
        }
    }
    // The last pairs of every row, one call for the whole column.
    if (wide < v.pairs) {
        FieldView rest = v;
        rest.src = v.src + 4 * wide;
        rest.dst = v.dst + 4 * wide;
        rest.pairs = v.pairs - wide;
        RenderWheelScalar(rest, p);
    }
}

template <bool kWide>
void Dispatch(const FieldView& v, const WheelPlan& p) {
    if (p.gain) {
        p.safe ? Rows<true, true, kWide>(v, p) : Rows<true, false, kWide>(v, p);
    } else {
        p.safe ? Rows<false, true, kWide>(v, p) : Rows<false, false, kWide>(v, p);
    }
}

}  // namespace

void RenderWheelSse2(const FieldView& v, const WheelPlan& p) {
    if (Fits16(p.kc) && Fits16(p.ks) && Fits16(-p.ks))
        Dispatch<false>(v, p);
    else
        Dispatch<true>(v, p);
}

}  // namespace zvf::filters
#endif
