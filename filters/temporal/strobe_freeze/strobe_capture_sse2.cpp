// Strobe/Freeze's capture row with SSE2, 16 bytes per step, bit-exact with
// CaptureRow: (a + 2c + b) >> 2 as two floor means of bytes
// (zvf/floor_mean.h).
#include "strobe_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#include "zvf/floor_mean.h"
#endif

namespace zvf::filters {

void CaptureRowSse2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead) {
    size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= n; i += 16) {
        if (i % static_cast<size_t>(kPrefetchSpan) == 0) PrefetchNextRow(c + i, b + i, out + i, ahead);
        const __m128i outer = FloorMean(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i)),
                                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                         FloorMean(outer, _mm_loadu_si128(reinterpret_cast<const __m128i*>(c + i))));
    }
#else
    (void)ahead;
#endif
    CaptureRow(a + i, c + i, b + i, out + i, n - i);
}

}  // namespace zvf::filters
