// Floor means of unsigned bytes, floor((x + y) / 2): pavgb's rounded-up mean
// less the low bit of x ^ y. Three rows blended as (a + 2c + b) >> 2 are
// FloorMean(FloorMean(a, b), c): when a + b is even the inner mean is exact,
// and when it is odd so is a + b + 2c, so dropping the inner half never
// crosses a multiple of 4. One version per register width the including
// unit is compiled for; forced inline, so no vector crosses a call.
#pragma once

#include <immintrin.h>

namespace zvf {

#if defined(__SSE2__)
__attribute__((always_inline)) inline __m128i FloorMean(const __m128i& x, const __m128i& y) {
    return _mm_sub_epi8(_mm_avg_epu8(x, y), _mm_and_si128(_mm_xor_si128(x, y), _mm_set1_epi8(1)));
}
#endif

#if defined(__AVX2__)
__attribute__((always_inline)) inline __m256i FloorMean(const __m256i& x, const __m256i& y) {
    return _mm256_sub_epi8(_mm256_avg_epu8(x, y), _mm256_and_si256(_mm256_xor_si256(x, y), _mm256_set1_epi8(1)));
}
#endif

#if defined(__AVX512BW__)
__attribute__((always_inline)) inline __m512i FloorMean(const __m512i& x, const __m512i& y) {
    return _mm512_sub_epi8(_mm512_avg_epu8(x, y), _mm512_and_si512(_mm512_xor_si512(x, y), _mm512_set1_epi8(1)));
}
#endif

}  // namespace zvf
