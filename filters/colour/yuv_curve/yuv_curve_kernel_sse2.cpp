// SSE2 twin of the line kernel: bit-exact with RenderCurveLines on every
// input. Four pairs a step, the remaining pairs through the scalar kernel.
#include "yuv_curve_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

// Words x (0..255) times the lane slopes, shifted right by 8: the 32-bit
// product's bits 8..23, which hold the whole result since it fits 16 bits.
inline __m128i LineWords(__m128i x, __m128i slope, __m128i intercept) {
    const __m128i lo = _mm_mullo_epi16(x, slope);
    const __m128i hi = _mm_mulhi_epi16(x, slope);
    const __m128i shifted = _mm_or_si128(_mm_srli_epi16(lo, 8), _mm_slli_epi16(hi, 8));
    // Saturating add: a sum beyond 16 bits is beyond 0..255 either way.
    return _mm_adds_epi16(shifted, intercept);
}

}  // namespace

void RenderCurveLinesSse2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    const LineTerms& ty = terms[kCurveY];
    const LineTerms& tu = terms[kCurveU];
    const LineTerms& tv = terms[kCurveV];
    const __m128i slope = _mm_setr_epi16(ty.slope, tu.slope, ty.slope, tv.slope, ty.slope, tu.slope, ty.slope, tv.slope);
    const __m128i intercept = _mm_setr_epi16(ty.intercept, tu.intercept, ty.intercept, tv.intercept, ty.intercept,
                                             tu.intercept, ty.intercept, tv.intercept);
    const __m128i lo = _mm_set1_epi8(limited ? 16 : 0);
    const __m128i hi = limited ? _mm_setr_epi8(static_cast<char>(235), static_cast<char>(240), static_cast<char>(235),
                                               static_cast<char>(240), static_cast<char>(235), static_cast<char>(240),
                                               static_cast<char>(235), static_cast<char>(240), static_cast<char>(235),
                                               static_cast<char>(240), static_cast<char>(235), static_cast<char>(240),
                                               static_cast<char>(235), static_cast<char>(240), static_cast<char>(235),
                                               static_cast<char>(240))
                               : _mm_set1_epi8(static_cast<char>(255));
    const __m128i zero = _mm_setzero_si128();
    const int32_t wide = v.pairs / 4;
    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + row * v.step;
        uint8_t* d = v.dst + row * v.step;
        for (int32_t i = 0; i < wide; ++i, s += 16, d += 16) {
            const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            const __m128i a = LineWords(_mm_unpacklo_epi8(in, zero), slope, intercept);
            const __m128i b = LineWords(_mm_unpackhi_epi8(in, zero), slope, intercept);
            __m128i out = _mm_packus_epi16(a, b);
            out = _mm_min_epu8(_mm_max_epu8(out, lo), hi);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), out);
        }
    }
    // The last pairs of every row, up to three.
    const int32_t rest = v.pairs - 4 * wide;
    if (rest > 0) {
        FieldView tail = v;
        tail.src = v.src + 16 * wide;
        tail.dst = v.dst + 16 * wide;
        tail.pairs = rest;
        RenderCurveLines(tail, terms, limited);
    }
}

#else

void RenderCurveLinesSse2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    RenderCurveLines(v, terms, limited);
}

#endif

}  // namespace zvf::filters
