// Monotone's SSE2 kernel: four pairs per step, then single pairs; every 64
// bytes the same column of the field's next row is asked for.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <emmintrin.h>

#include <cstring>

#include "monotone_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {

void MonotoneSse2(const FieldView& v, uint8_t u, uint8_t vv) {
    const uint32_t mask32 = 0x00FF00FFu;
    const uint32_t pattern32 = (uint32_t{u} << 8) | (uint32_t{vv} << 24);
    const __m128i mask = _mm_set1_epi32(static_cast<int>(mask32));
    const __m128i pattern = _mm_set1_epi32(static_cast<int>(pattern32));
    const int32_t wide = v.pairs & ~3;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        const ptrdiff_t ahead = NextRowDistance(r, v.rows, v.step);
        int32_t i = 0;
        while (i < wide) {
            // One request per 64 bytes, outside the inner loop.
            PrefetchBelow(s + 4 * i, d + 4 * i, ahead);
            const int32_t block = wide - i < 16 ? wide : i + 16;
            for (; i < block; i += 4) {
                const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 4 * i));
                const __m128i out = _mm_xor_si128(_mm_and_si128(x, mask), pattern);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * i), out);
            }
        }
        for (; i < v.pairs; ++i) {
            uint32_t w;
            std::memcpy(&w, s + 4 * i, 4);
            w = (w & mask32) ^ pattern32;
            std::memcpy(d + 4 * i, &w, 4);
        }
    }
}

}  // namespace zvf::filters
#endif
