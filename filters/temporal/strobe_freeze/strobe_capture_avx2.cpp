// Strobe/Freeze's capture row with AVX2, 32 bytes per step, the SSE2 twin's
// floor averages (see there); bit-exact with CaptureRow. The last 0..31
// bytes go through the SSE2 row. Helpers are inlined, so no 256-bit value
// crosses a call.
#include "strobe_kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace zvf::filters {

#if defined(__AVX2__)
namespace {

__attribute__((always_inline)) inline __m256i FloorAverage(const __m256i& x, const __m256i& y, const __m256i& one) {
    return _mm256_sub_epi8(_mm256_avg_epu8(x, y), _mm256_and_si256(_mm256_xor_si256(x, y), one));
}

}  // namespace

void CaptureRowAvx2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead) {
    const __m256i one = _mm256_set1_epi8(1);
    size_t i = 0;
    for (; i + 32 <= n; i += 32) {
        if (i % static_cast<size_t>(kPrefetchSpan) == 0) PrefetchNextRow(c + i, b + i, out + i, ahead);
        const __m256i outer = FloorAverage(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + i)),
                                           _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + i)), one);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                            FloorAverage(outer, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c + i)), one));
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
