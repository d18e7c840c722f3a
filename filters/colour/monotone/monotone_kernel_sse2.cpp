// Monotone's SSE2 kernel: four pairs per step, the last one to three pairs
// of every row through the scalar twin; every 64 bytes the same column of
// the field's next row is asked for.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <emmintrin.h>

#include "monotone_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {

void MonotoneSse2(const FieldView& v, uint8_t u, uint8_t vv) {
    const uint32_t pattern32 = (uint32_t{u} << 8) | (uint32_t{vv} << 24);
    const __m128i mask = _mm_set1_epi32(0x00FF00FF);
    const __m128i pattern = _mm_set1_epi32(static_cast<int>(pattern32));
    WalkPairs<4>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_xor_si128(_mm_and_si128(x, mask), pattern));
        },
        [&](const FieldView& rest) { MonotoneScalar(rest, u, vv); });
}

}  // namespace zvf::filters
#endif
