// Strobe/Freeze's capture row with AVX2, 32 bytes per step, the SSE2 twin's
// floor means (zvf/floor_mean.h); bit-exact with CaptureRow. The bytes
// before the row's own line reaches a 32-byte boundary, and the last 0..31,
// go through the SSE2 row. Helpers are inlined, so no 256-bit value crosses
// a call.
#include "strobe_kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>

#include "zvf/floor_mean.h"
#include "zvf/row_alignment.h"
#endif

namespace zvf::filters {

#if defined(__AVX2__)
void CaptureRowAvx2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead) {
    const size_t head = BytesToAlignment(c, n, 32);
    if (head > 0) {
        CaptureRowSse2(a, c, b, out, head, ahead);
        a += head, c += head, b += head, out += head, n -= head;
    }
    size_t i = 0;
    for (; i + 32 <= n; i += 32) {
        if (i % static_cast<size_t>(kPrefetchSpan) == 0) PrefetchNextRow(c + i, b + i, out + i, ahead);
        const __m256i outer = FloorMean(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + i)),
                                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + i)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                            FloorMean(outer, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c + i))));
    }
    CaptureRowSse2(a + i, c + i, b + i, out + i, n - i, ahead);
}

#else

// No AVX2 on this target: the SSE2 row stands in.
void CaptureRowAvx2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead) {
    CaptureRowSse2(a, c, b, out, n, ahead);
}

#endif

}  // namespace zvf::filters
