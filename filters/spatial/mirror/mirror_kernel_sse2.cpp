// Mirror's row reversal, four pairs per 16 bytes: the dwords (pairs) are
// reversed, and the lumas come from the same vector with every 16-bit word
// reversed, which exchanges Y0 and Y1 inside each pair while the chroma
// bytes stay where the dword reversal put them. Fewer than four pairs left
// at the row's end go through the scalar twin. The streaming twin writes
// its whole steps with non-temporal stores.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <emmintrin.h>

#include "mirror_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

inline __m128i ReverseFour(__m128i x, __m128i lumaMask) {
    const __m128i pairs = _mm_shuffle_epi32(x, _MM_SHUFFLE(0, 1, 2, 3));
    const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(pairs, _MM_SHUFFLE(2, 3, 0, 1)),
                                              _MM_SHUFFLE(2, 3, 0, 1));
    return _mm_or_si128(_mm_and_si128(words, lumaMask), _mm_andnot_si128(lumaMask, pairs));
}

// kStream: whole steps written around the cache from a 16-byte boundary
// of the destination on (the caller peels the pairs before it).
template <bool kStream>
void Reverse(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    const __m128i lumaMask = _mm_set1_epi32(0x00FF00FF);
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(pairs);
    const ptrdiff_t srcAhead = nextSrc - src, dstAhead = nextDst - dst;
    int32_t j = 0;
    for (; j + 8 <= pairs; j += 8, dst += 32) {
        s -= 32;
        PrefetchLine(s + srcAhead);
        const __m128i a = ReverseFour(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 16)), lumaMask);
        const __m128i b = ReverseFour(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)), lumaMask);
        if constexpr (kStream) {
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst), a);
            _mm_stream_si128(reinterpret_cast<__m128i*>(dst + 16), b);
        } else {
            PrefetchLineForWrite(dst + dstAhead);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), a);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 16), b);
        }
    }
    if (j + 4 <= pairs) {
        s -= 16;
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), ReverseFour(a, lumaMask));
        j += 4;
        dst += 16;
    }
    // The remaining destination pairs take the first source pairs.
    if (j < pairs) ReverseRowScalar(dst, src, pairs - j, src, dst);
}

}  // namespace

void ReverseRowSse2(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    Reverse<false>(dst, src, pairs, nextSrc, nextDst);
}

void ReverseRowSse2Stream(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst) {
    if (PeelToBoundary(dst, src, pairs, nextDst, 16))
        Reverse<true>(dst, src, pairs, nextSrc, nextDst);
    else
        Reverse<false>(dst, src, pairs, nextSrc, nextDst);
}

void EndStreamedRows() { _mm_sfence(); }

}  // namespace zvf::filters
#endif
