// Mirror's row reversal, eight pairs per 32 bytes: one byte shuffle reverses
// the four pairs of each 128-bit half and exchanges their lumas, then the
// halves trade places. The SSE2 twin finishes the row's last pairs.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "mirror_kernel.h"
#include "temporal/anti_flicker/row_prefetch.h"

namespace zvf::filters {

void ReverseRowAvx2(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    // Destination pair p of a half takes source pair 3 - p as Y1 Cb Y0 Cr.
    const __m256i order = _mm256_setr_epi8(14, 13, 12, 15, 10, 9, 8, 11, 6, 5, 4, 7, 2, 1, 0, 3,  //
                                           14, 13, 12, 15, 10, 9, 8, 11, 6, 5, 4, 7, 2, 1, 0, 3);
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(pairs);
    const ptrdiff_t srcAhead = nextSrc - src, dstAhead = nextDst - dst;
    int32_t j = 0;
    for (; j + 8 <= pairs; j += 8, dst += 32) {
        s -= 32;
        PrefetchLine(s + srcAhead);
        PrefetchLineForWrite(dst + dstAhead);
        const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
        const __m256i y = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(x, order), _MM_SHUFFLE(1, 0, 3, 2));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), y);
    }
    if (j < pairs) ReverseRowSse2(dst, src, pairs - j, src, dst);
}

}  // namespace zvf::filters
#endif
