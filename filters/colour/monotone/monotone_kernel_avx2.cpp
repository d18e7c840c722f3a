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
    WalkPairs<8>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_xor_si256(_mm256_and_si256(x, mask), pattern));
        },
        [&](const FieldView& rest) { MonotoneSse2(rest, u, vv); });
}

}  // namespace zvf::filters
#endif
