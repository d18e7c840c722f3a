// Mirror's row reversal, eight pairs per 32 bytes: one byte shuffle reverses
// the four pairs of each 128-bit half and exchanges their lumas, then the
// halves trade places. Two of those per step; the SSE2 twin finishes the
// row's last pairs. The streaming twin writes its whole steps with
// non-temporal stores.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "mirror_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

// Eight pairs reversed; inlined, so the shuffle order never crosses a call.
__attribute__((always_inline)) inline __m256i Eight(const uint8_t* from, const __m256i& order) {
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    return _mm256_permute4x64_epi64(_mm256_shuffle_epi8(x, order), _MM_SHUFFLE(1, 0, 3, 2));
}

// kStream: whole steps written around the cache from a 32-byte boundary
// of the destination on (the caller peels the pairs before it).
template <bool kStream>
void Reverse(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    // Destination pair p of a half takes source pair 3 - p as Y1 Cb Y0 Cr.
    const __m256i order = _mm256_setr_epi8(14, 13, 12, 15, 10, 9, 8, 11, 6, 5, 4, 7, 2, 1, 0, 3,  //
                                           14, 13, 12, 15, 10, 9, 8, 11, 6, 5, 4, 7, 2, 1, 0, 3);
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(pairs);
    const ptrdiff_t srcAhead = nextSrc - src, dstAhead = nextDst - dst;
    int32_t j = 0;
    // Sixteen pairs (a line's worth) per step; both lines the step's 64
    // bytes may straddle are asked for in the next row, which measured
    // better than one request per line at both frame sizes.
    for (; j + 16 <= pairs; j += 16, dst += 64) {
        s -= 64;
        PrefetchLine(s + srcAhead);
        PrefetchLine(s + 63 + srcAhead);
        if constexpr (kStream) {
            _mm256_stream_si256(reinterpret_cast<__m256i*>(dst), Eight(s + 32, order));
            _mm256_stream_si256(reinterpret_cast<__m256i*>(dst + 32), Eight(s, order));
        } else {
            PrefetchLineForWrite(dst + dstAhead);
            PrefetchLineForWrite(dst + 63 + dstAhead);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), Eight(s + 32, order));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 32), Eight(s, order));
        }
    }
    if (j + 8 <= pairs) {
        s -= 32;
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), Eight(s, order));
        j += 8;
        dst += 32;
    }
    if (j < pairs) ReverseRowSse2(dst, src, pairs - j, src, dst);
}

}  // namespace

void ReverseRowAvx2(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    Reverse<false>(dst, src, pairs, nextSrc, nextDst);
}

void ReverseRowAvx2Stream(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    if (PeelToBoundary(dst, src, pairs, nextDst, 32))
        Reverse<true>(dst, src, pairs, nextSrc, nextDst);
    else
        Reverse<false>(dst, src, pairs, nextSrc, nextDst);
}

}  // namespace zvf::filters
#endif
