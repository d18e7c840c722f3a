// AVX2 twins of Anti Flicker's row kernels: the SSE2 arithmetic on 32 bytes
// per step, except that the middle rows form a + b with one pmaddubsw over
// the interleaved bytes (the same exact 16-bit sum, one instruction fewer
// per half), and that the weight of power 100 takes byte means (see
// kAntiFlickerMeanWeight). The byte unpacks and the saturating pack both
// work within each 128-bit half, so every half is exactly the SSE2 step on
// its 16 bytes. The bytes before the current row reaches a 32-byte boundary
// (zvf/row_alignment.h) and the last 0..31 go through the SSE2 rows.
// Helpers are inlined so no 256-bit value is passed to a call or kept on the
// stack across one.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "anti_flicker_kernel.h"
#include "zvf/floor_mean.h"
#include "zvf/row_alignment.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

#define ZVF_AF_INLINE inline __attribute__((always_inline))

ZVF_AF_INLINE __m256i Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

// c + floor(8 (n - c) w / 65536) for sixteen 16-bit lanes.
ZVF_AF_INLINE __m256i Edge16(const __m256i& c, const __m256i& n, const __m256i& w) {
    return _mm256_add_epi16(c, _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(n, c), 3), w));
}

// c + floor((s - 2c) w / 16384) for sixteen 16-bit lanes, s = a + b,
// `w4` being 4w (which fits 16 bits up to w = 8191) or, for kFull, w itself.
template <bool kFull>
ZVF_AF_INLINE __m256i Middle16(const __m256i& s, const __m256i& c, const __m256i& w4) {
    if constexpr (kFull) {
        const __m256i d = _mm256_sub_epi16(_mm256_slli_epi16(s, 2), _mm256_slli_epi16(c, 3));
        return _mm256_add_epi16(c, _mm256_mulhi_epi16(d, w4));
    } else {
        const __m256i d = _mm256_sub_epi16(s, _mm256_add_epi16(c, c));
        return _mm256_add_epi16(c, _mm256_mulhi_epi16(d, w4));
    }
}

// One 32-byte step of each row kernel at byte i.
ZVF_AF_INLINE void EdgeStep(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t i, const __m256i& w) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i cv = Load(c + i), nv = Load(n + i);
    const __m256i lo = Edge16(_mm256_unpacklo_epi8(cv, zero), _mm256_unpacklo_epi8(nv, zero), w);
    const __m256i hi = Edge16(_mm256_unpackhi_epi8(cv, zero), _mm256_unpackhi_epi8(nv, zero), w);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + i), _mm256_packus_epi16(lo, hi));
}

template <bool kFull>
ZVF_AF_INLINE void MiddleStep(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t i,
                              const __m256i& w4) {
    const __m256i zero = _mm256_setzero_si256();
    // a + b straight from the interleaved bytes: pmaddubsw with unit weights
    // (at most 510, so it never saturates).
    const __m256i ones = _mm256_set1_epi8(1);
    const __m256i av = Load(a + i), bv = Load(b + i), cv = Load(c + i);
    const __m256i lo =
        Middle16<kFull>(_mm256_maddubs_epi16(_mm256_unpacklo_epi8(av, bv), ones), _mm256_unpacklo_epi8(cv, zero), w4);
    const __m256i hi =
        Middle16<kFull>(_mm256_maddubs_epi16(_mm256_unpackhi_epi8(av, bv), ones), _mm256_unpackhi_epi8(cv, zero), w4);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + i), _mm256_packus_epi16(lo, hi));
}

// Two steps per 64-byte line, so each line of the next row is asked for once.
template <bool kMean>
void EdgeLoop(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead) {
    const __m256i wv = _mm256_set1_epi16(static_cast<int16_t>(w));
    const auto step = [&](size_t at) {
        if constexpr (kMean)
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + at), FloorMean(Load(c + at), Load(n + at)));
        else
            EdgeStep(c, n, o, at, wv);
    };
    size_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        PrefetchLine(c + ahead + i);
        PrefetchLine(n + ahead + i);
        PrefetchLineForWrite(o + ahead + i);
        step(i);
        step(i + 32);
    }
    if (i + 32 <= bytes) {
        step(i);
        i += 32;
    }
    if (i < bytes) Sse2BlendRows().edge(c + i, n + i, o + i, bytes - i, w, 0);
}

void EdgeRowAvx2(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead) {
    const size_t head = BytesToAlignment(c, bytes, 32);
    if (head > 0) {
        Sse2BlendRows().edge(c, n, o, head, w, ahead);
        c += head, n += head, o += head, bytes -= head;
    }
    w == kAntiFlickerMeanWeight ? EdgeLoop<true>(c, n, o, bytes, w, ahead) : EdgeLoop<false>(c, n, o, bytes, w, ahead);
}

template <MiddleBlend kKind>
void MiddleLoop(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                ptrdiff_t ahead) {
    constexpr bool kFull = kKind == MiddleBlend::kFull;
    const __m256i wv = _mm256_set1_epi16(static_cast<int16_t>(kFull ? w : 4 * w));
    const auto step = [&](size_t at) {
        if constexpr (kKind == MiddleBlend::kMean)
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + at),
                                FloorMean(FloorMean(Load(a + at), Load(b + at)), Load(c + at)));
        else
            MiddleStep<kFull>(a, c, b, o, at, wv);
    };
    size_t i = 0;
    for (; i + 64 <= bytes; i += 64) {
        PrefetchLine(c + ahead + i);
        PrefetchLine(b + ahead + i);
        PrefetchLineForWrite(o + ahead + i);
        step(i);
        step(i + 32);
    }
    if (i + 32 <= bytes) {
        step(i);
        i += 32;
    }
    if (i < bytes) Sse2BlendRows().middle(a + i, c + i, b + i, o + i, bytes - i, w, 0);
}

void MiddleRowAvx2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                   ptrdiff_t ahead) {
    const size_t head = BytesToAlignment(c, bytes, 32);
    if (head > 0) {
        Sse2BlendRows().middle(a, c, b, o, head, w, ahead);
        a += head, c += head, b += head, o += head, bytes -= head;
    }
    WithMiddleBlend(w, [&](auto kind) { MiddleLoop<decltype(kind)::value>(a, c, b, o, bytes, w, ahead); });
}

#undef ZVF_AF_INLINE

}  // namespace

BlendRows Avx2BlendRows() { return {EdgeRowAvx2, MiddleRowAvx2}; }

}  // namespace zvf::filters
#endif
