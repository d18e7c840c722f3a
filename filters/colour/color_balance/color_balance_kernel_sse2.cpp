// Color Balance's SSE2 kernels: four pairs per step in 16-bit lanes
// (pmulhw keeps the upper half of the signed product, exactly the scalar
// arithmetic shift), saturating packs to bytes; the last one to three pairs
// of a row go through the scalar twin.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <emmintrin.h>

#include "color_balance_kernel.h"

namespace zvf::filters {
namespace {

// Lanes Y0 U Y1 V repeated, as 16-bit values.
inline __m128i PerLane(int32_t y, int32_t u, int32_t v) {
    return _mm_setr_epi16(static_cast<int16_t>(y), static_cast<int16_t>(u), static_cast<int16_t>(y),
                          static_cast<int16_t>(v), static_cast<int16_t>(y), static_cast<int16_t>(u),
                          static_cast<int16_t>(y), static_cast<int16_t>(v));
}

template <bool kGain, bool kSafe>
void Process(const FieldView& v, const ColorBalanceParams& p, ColorBalanceKernel tail) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i offset = kGain ? PerLane(p.offY + 128, p.offU + 128, p.offV + 128) : PerLane(p.offY, p.offU, p.offV);
    const __m128i gain = PerLane(p.gainY, p.gainC, p.gainC);
    const __m128i bias = _mm_set1_epi16(128);
    const __m128i safeLow = _mm_set1_epi8(16);
    const __m128i safeHigh = _mm_set1_epi32(static_cast<int>(0xF0EBF0EBu));  // 235 240 235 240 per pair
    const int32_t wide = v.pairs & ~3;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        for (int32_t i = 0; i < wide; i += 4) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 4 * i));
            __m128i lo = _mm_unpacklo_epi8(x, zero);
            __m128i hi = _mm_unpackhi_epi8(x, zero);
            if constexpr (kGain) {
                lo = _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(lo, bias), 8), gain);
                hi = _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(hi, bias), 8), gain);
            }
            __m128i out = _mm_packus_epi16(_mm_add_epi16(lo, offset), _mm_add_epi16(hi, offset));
            if constexpr (kSafe) out = _mm_min_epu8(_mm_max_epu8(out, safeLow), safeHigh);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * i), out);
        }
        if (wide < v.pairs) {
            FieldView rest = v;
            rest.src = s + 4 * wide;
            rest.dst = d + 4 * wide;
            rest.rows = 1;
            rest.pairs = v.pairs - wide;
            tail(rest, p);
        }
    }
}

}  // namespace

void ColorBalanceOffsetsSse2(const FieldView& v, const ColorBalanceParams& p) {
    Process<false, false>(v, p, ColorBalanceOffsetsScalar);
}
void ColorBalanceOffsetsSafeSse2(const FieldView& v, const ColorBalanceParams& p) {
    Process<false, true>(v, p, ColorBalanceOffsetsSafeScalar);
}
void ColorBalanceGainSse2(const FieldView& v, const ColorBalanceParams& p) {
    Process<true, false>(v, p, ColorBalanceGainScalar);
}
void ColorBalanceGainSafeSse2(const FieldView& v, const ColorBalanceParams& p) {
    Process<true, true>(v, p, ColorBalanceGainSafeScalar);
}

}  // namespace zvf::filters
#endif
