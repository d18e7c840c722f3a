// Monotone's AVX2 kernel: eight pairs per 32-byte step; the last one to
// seven pairs of every row go through the SSE2 kernel once all rows are
// done. Every 64 bytes the same column of the field's next row is asked
// for. Nothing is called while a 256-bit value is live, so none has to be
// kept on the (16-byte aligned) Windows stack.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "monotone_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {

void MonotoneAvx2(const FieldView& v, uint8_t u, uint8_t vv) {
    const uint32_t pattern32 = (uint32_t{u} << 8) | (uint32_t{vv} << 24);
    const __m256i mask = _mm256_set1_epi32(0x00FF00FF);
    const __m256i pattern = _mm256_set1_epi32(static_cast<int>(pattern32));
    const int32_t wide = v.pairs & ~7;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        const ptrdiff_t ahead = NextRowDistance(r, v.rows, v.step);
        for (int32_t i = 0; i < wide;) {
            // One request per 64 bytes, outside the inner loop.
            PrefetchBelow(s + 4 * i, d + 4 * i, ahead);
            const int32_t block = wide - i < 16 ? wide : i + 16;
            for (; i < block; i += 8) {
                const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 4 * i));
                const __m256i out = _mm256_xor_si256(_mm256_and_si256(x, mask), pattern);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 4 * i), out);
            }
        }
    }
    if (wide < v.pairs) {
        FieldView rest = v;
        rest.src = v.src + 4 * wide;
        rest.dst = v.dst + 4 * wide;
        rest.pairs = v.pairs - wide;
        MonotoneSse2(rest, u, vv);
    }
}

}  // namespace zvf::filters
#endif
