// AVX-512 (BW) twins of Anti Flicker's row kernels: the AVX2 steps on 64
// bytes, one per line of the next row asked for, byte means for the weight
// of power 100 included. The byte unpacks and the saturating pack work
// within each 128-bit lane, so every lane is exactly the SSE2 step on its 16
// bytes. The bytes before the current row reaches a 64-byte boundary
// (zvf/row_alignment.h) and the last 0..63 go through the AVX2 rows. Helpers
// are inlined so no 512-bit value is passed to a call or kept on the stack
// across one.
#include "anti_flicker_kernel.h"

#if defined(__x86_64__) || defined(_M_X64)
#include "zvf/avx512.h"
#include "zvf/floor_mean.h"
#include "zvf/row_alignment.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

#define ZVF_AF_INLINE inline __attribute__((always_inline))

// c + floor(8 (n - c) w / 65536) for 32 16-bit lanes.
ZVF_AF_INLINE __m512i Edge16(const __m512i& c, const __m512i& n, const __m512i& w) {
    return _mm512_add_epi16(c, _mm512_mulhi_epi16(_mm512_slli_epi16(_mm512_sub_epi16(n, c), 3), w));
}

// c + floor((s - 2c) w / 16384), s = a + b, as the AVX2 Middle16.
template <bool kFull>
ZVF_AF_INLINE __m512i Middle16(const __m512i& s, const __m512i& c, const __m512i& w4) {
    if constexpr (kFull) {
        const __m512i d = _mm512_sub_epi16(_mm512_slli_epi16(s, 2), _mm512_slli_epi16(c, 3));
        return _mm512_add_epi16(c, _mm512_mulhi_epi16(d, w4));
    } else {
        const __m512i d = _mm512_sub_epi16(s, _mm512_add_epi16(c, c));
        return _mm512_add_epi16(c, _mm512_mulhi_epi16(d, w4));
    }
}

template <bool kMean>
void EdgeLoop(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead) {
    const __m512i wv = _mm512_set1_epi16(static_cast<int16_t>(w));
    const __m512i zero = _mm512_setzero_si512();
    size_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        PrefetchLine(c + ahead + i);
        PrefetchLine(n + ahead + i);
        PrefetchLineForWrite(o + ahead + i);
        const __m512i cv = _mm512_loadu_si512(c + i), nv = _mm512_loadu_si512(n + i);
        if constexpr (kMean) {
            _mm512_storeu_si512(o + i, FloorMean(cv, nv));
            continue;
        }
        const __m512i lo = Edge16(_mm512_unpacklo_epi8(cv, zero), _mm512_unpacklo_epi8(nv, zero), wv);
        const __m512i hi = Edge16(_mm512_unpackhi_epi8(cv, zero), _mm512_unpackhi_epi8(nv, zero), wv);
        _mm512_storeu_si512(o + i, _mm512_packus_epi16(lo, hi));
    }
    if (i < bytes) Avx2BlendRows().edge(c + i, n + i, o + i, bytes - i, w, 0);
}

void EdgeRowAvx512(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead) {
    const size_t head = BytesToAlignment(c, bytes, 64);
    if (head > 0) {
        Avx2BlendRows().edge(c, n, o, head, w, ahead);
        c += head, n += head, o += head, bytes -= head;
    }
    w == kAntiFlickerMeanWeight ? EdgeLoop<true>(c, n, o, bytes, w, ahead) : EdgeLoop<false>(c, n, o, bytes, w, ahead);
}

template <MiddleBlend kKind>
void MiddleLoop(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                ptrdiff_t ahead) {
    constexpr bool kFull = kKind == MiddleBlend::kFull;
    const __m512i wv = _mm512_set1_epi16(static_cast<int16_t>(kFull ? w : 4 * w));
    const __m512i zero = _mm512_setzero_si512();
    // a + b straight from the interleaved bytes (at most 510, never saturating).
    const __m512i ones = _mm512_set1_epi8(1);
    size_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        PrefetchLine(c + ahead + i);
        PrefetchLine(b + ahead + i);
        PrefetchLineForWrite(o + ahead + i);
        const __m512i av = _mm512_loadu_si512(a + i), bv = _mm512_loadu_si512(b + i), cv = _mm512_loadu_si512(c + i);
        if constexpr (kKind == MiddleBlend::kMean) {
            _mm512_storeu_si512(o + i, FloorMean(FloorMean(av, bv), cv));
            continue;
        }
        const __m512i lo = Middle16<kFull>(_mm512_maddubs_epi16(_mm512_unpacklo_epi8(av, bv), ones),
                                           _mm512_unpacklo_epi8(cv, zero), wv);
        const __m512i hi = Middle16<kFull>(_mm512_maddubs_epi16(_mm512_unpackhi_epi8(av, bv), ones),
                                           _mm512_unpackhi_epi8(cv, zero), wv);
        _mm512_storeu_si512(o + i, _mm512_packus_epi16(lo, hi));
    }
    if (i < bytes) Avx2BlendRows().middle(a + i, c + i, b + i, o + i, bytes - i, w, 0);
}

void MiddleRowAvx512(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                     ptrdiff_t ahead) {
    const size_t head = BytesToAlignment(c, bytes, 64);
    if (head > 0) {
        Avx2BlendRows().middle(a, c, b, o, head, w, ahead);
        a += head, c += head, b += head, o += head, bytes -= head;
    }
    WithMiddleBlend(w, [&](auto kind) { MiddleLoop<decltype(kind)::value>(a, c, b, o, bytes, w, ahead); });
}

#undef ZVF_AF_INLINE

}  // namespace

BlendRows Avx512BlendRows() { return {EdgeRowAvx512, MiddleRowAvx512}; }

}  // namespace zvf::filters

#else

namespace zvf::filters {

BlendRows Avx512BlendRows() { return Avx2BlendRows(); }

}  // namespace zvf::filters

#endif
