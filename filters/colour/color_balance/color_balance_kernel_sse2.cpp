// Color Balance's SSE2 kernels, four pairs per step; the last one to three
// pairs of a row go through the scalar twin; every 64 bytes the same column
// of the field's next row is asked for.
//  - Offsets only: clamp(x + o, 0, 255) is a saturating add of max(o, 0)
//    followed by a saturating subtract of max(-o, 0), one of them zero per
//    lane, both held to 255 (a larger step saturates the same way).
//  - Gain: (x - 128) * 256 is the byte x ^ 0x80 placed in the upper half of
//    a 16-bit lane; pmulhw keeps the upper half of its signed product with
//    the gain, exactly the scalar arithmetic shift; then the offset (plus
//    128) and a saturating pack.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <emmintrin.h>

#include "zvf/row_prefetch.h"
#include "color_balance_kernel.h"

namespace zvf::filters {
namespace {

// Lanes Y0 U Y1 V repeated, as 16-bit values.
inline __m128i PerLane16(int32_t y, int32_t u, int32_t v) {
    return _mm_setr_epi16(static_cast<int16_t>(y), static_cast<int16_t>(u), static_cast<int16_t>(y),
                          static_cast<int16_t>(v), static_cast<int16_t>(y), static_cast<int16_t>(u),
                          static_cast<int16_t>(y), static_cast<int16_t>(v));
}

// Lanes Y0 U Y1 V repeated, as bytes.
inline __m128i PerLane8(int32_t y, int32_t u, int32_t v) {
    const uint32_t word = static_cast<uint32_t>(y) | static_cast<uint32_t>(u) << 8 | static_cast<uint32_t>(y) << 16 |
                          static_cast<uint32_t>(v) << 24;
    return _mm_set1_epi32(static_cast<int>(word));
}

inline int32_t Up(int32_t o) { return o > 0 ? (o < 255 ? o : 255) : 0; }
inline int32_t Down(int32_t o) { return Up(-o); }

template <bool kGain, bool kSafe>
void Process(const FieldView& v, const ColorBalanceParams& p, ColorBalanceKernel tail) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i offset = PerLane16(p.offY + 128, p.offU + 128, p.offV + 128);
    const __m128i gain = PerLane16(p.gainY, p.gainC, p.gainC);
    const __m128i flip = _mm_set1_epi8(static_cast<char>(0x80));
    const __m128i up = PerLane8(Up(p.offY), Up(p.offU), Up(p.offV));
    const __m128i down = PerLane8(Down(p.offY), Down(p.offU), Down(p.offV));
    const __m128i safeLow = _mm_set1_epi8(16);
    const __m128i safeHigh = _mm_set1_epi32(static_cast<int>(0xF0EBF0EBu));  // 235 240 235 240 per pair
    WalkPairs<4>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            __m128i out;
            if constexpr (kGain) {
                const __m128i c = _mm_xor_si128(x, flip);
                const __m128i lo = _mm_mulhi_epi16(_mm_unpacklo_epi8(zero, c), gain);
                const __m128i hi = _mm_mulhi_epi16(_mm_unpackhi_epi8(zero, c), gain);
                out = _mm_packus_epi16(_mm_add_epi16(lo, offset), _mm_add_epi16(hi, offset));
            } else {
                out = _mm_subs_epu8(_mm_adds_epu8(x, up), down);
            }
            if constexpr (kSafe) out = _mm_min_epu8(_mm_max_epu8(out, safeLow), safeHigh);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), out);
        },
        [&](const FieldView& rest) { tail(rest, p); });
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
