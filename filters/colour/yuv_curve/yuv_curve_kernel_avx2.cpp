// AVX2 twin of the line kernel, bit-exact with RenderCurveLines on every
// input: the SSE2 arithmetic on eight pairs per 32 bytes (unpacks, products
// and the saturating pack stay inside their 128-bit half). The last one to
// seven pairs of every row go through the SSE2 twin once all rows are done;
// every 64 bytes the same column of the field's next row is asked for.
// Nothing is called while a 256-bit value is live, so none has to be kept on
// the (16-byte aligned) Windows stack.
#include "yuv_curve_kernel.h"

#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "zvf/row_prefetch.h"
#include "yuv_curve_line_terms.h"

namespace zvf::filters {

void RenderCurveLinesAvx2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    const LineLanes lanes = LineLanesOf(terms, limited);
    const __m256i slope = _mm256_set1_epi64x(static_cast<long long>(lanes.slope));
    const __m256i negative = _mm256_set1_epi64x(static_cast<long long>(lanes.negative));
    const __m256i intercept = _mm256_set1_epi64x(static_cast<long long>(lanes.intercept));
    const __m256i lo = _mm256_set1_epi32(static_cast<int>(lanes.low));
    const __m256i hi = _mm256_set1_epi32(static_cast<int>(lanes.high));
    const __m256i zero = _mm256_setzero_si256();
    WalkPairs<8>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
            const __m256i xa = _mm256_unpacklo_epi8(zero, in);
            const __m256i xb = _mm256_unpackhi_epi8(zero, in);
            const __m256i a = _mm256_sub_epi16(_mm256_mulhi_epu16(xa, slope), _mm256_and_si256(xa, negative));
            const __m256i b = _mm256_sub_epi16(_mm256_mulhi_epu16(xb, slope), _mm256_and_si256(xb, negative));
            __m256i out = _mm256_packus_epi16(_mm256_adds_epi16(a, intercept), _mm256_adds_epi16(b, intercept));
            out = _mm256_min_epu8(_mm256_max_epu8(out, lo), hi);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), out);
        },
        [&](const FieldView& rest) { RenderCurveLinesSse2(rest, terms, limited); });
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void RenderCurveLinesAvx2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    RenderCurveLines(v, terms, limited);
}

}  // namespace zvf::filters

#endif
