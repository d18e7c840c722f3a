// Strobe/Freeze's capture row with SSE2, 16 bytes per step, bit-exact with
// CaptureRow. (a + 2c + b) >> 2 is the floor average of c with the floor
// average of a and b: when a + b is even the inner average is exact, and when
// it is odd a + b + 2c is odd too, so dropping the inner half never crosses a
// multiple of 4. A floor average is pavgb's rounded-up one less the low bit
// of x ^ y.
#include "strobe_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

inline __m128i FloorAverage(__m128i x, __m128i y, __m128i one) {
    return _mm_sub_epi8(_mm_avg_epu8(x, y), _mm_and_si128(_mm_xor_si128(x, y), one));
}

}  // namespace
#endif

void CaptureRowSse2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead) {
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i one = _mm_set1_epi8(1);
    for (; i + 16 <= n; i += 16) {
        if (i % static_cast<size_t>(kPrefetchSpan) == 0) PrefetchNextRow(c + i, b + i, out + i, ahead);
        const __m128i outer = FloorAverage(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i)),
                                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i)), one);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                         FloorAverage(outer, _mm_loadu_si128(reinterpret_cast<const __m128i*>(c + i)), one));
    }
#else
    (void)ahead;
#endif
    CaptureRow(a + i, c + i, b + i, out + i, n - i);
}

}  // namespace zvf::filters
