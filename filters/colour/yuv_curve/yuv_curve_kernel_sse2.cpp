// SSE2 twin of the line kernel: bit-exact with RenderCurveLines on every
// input. Four pairs a step, the remaining pairs through the scalar kernel;
// every 64 bytes the same column of the field's next row is asked for.
#include "yuv_curve_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#include "zvf/row_prefetch.h"
#include "yuv_curve_line_terms.h"
#endif

namespace zvf::filters {

#if defined(__SSE2__)

void RenderCurveLinesSse2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    const LineLanes lanes = LineLanesOf(terms, limited);
    const __m128i slope = _mm_set_epi64x(lanes.slope, lanes.slope);
    const __m128i negative = _mm_set_epi64x(lanes.negative, lanes.negative);
    const __m128i intercept = _mm_set_epi64x(lanes.intercept, lanes.intercept);
    const __m128i lo = _mm_set1_epi32(static_cast<int>(lanes.low));
    const __m128i hi = _mm_set1_epi32(static_cast<int>(lanes.high));
    const __m128i zero = _mm_setzero_si128();
    WalkPairs<4>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            // x << 8 in each 16-bit lane; see LineLanes for the product.
            const __m128i xa = _mm_unpacklo_epi8(zero, in);
            const __m128i xb = _mm_unpackhi_epi8(zero, in);
            const __m128i a = _mm_sub_epi16(_mm_mulhi_epu16(xa, slope), _mm_and_si128(xa, negative));
            const __m128i b = _mm_sub_epi16(_mm_mulhi_epu16(xb, slope), _mm_and_si128(xb, negative));
            // Saturating add: a sum beyond 16 bits is beyond 0..255 either way.
            __m128i out = _mm_packus_epi16(_mm_adds_epi16(a, intercept), _mm_adds_epi16(b, intercept));
            out = _mm_min_epu8(_mm_max_epu8(out, lo), hi);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), out);
        },
        [&](const FieldView& rest) { RenderCurveLines(rest, terms, limited); });
}

#else

void RenderCurveLinesSse2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    RenderCurveLines(v, terms, limited);
}

#endif

}  // namespace zvf::filters
