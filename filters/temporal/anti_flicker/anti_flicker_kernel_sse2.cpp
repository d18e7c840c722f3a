// SSE2 twins of Anti Flicker's row kernels, sixteen bytes per step in 16-bit
// lanes. The blends are rewritten around the current byte, which the weights
// keep whole:
//   (c (8192 - w) + n w) >> 13          = c + floor(8 (n - c) w / 65536)
//   ((a + b) w + c (16384 - 2w)) >> 14  = c + floor(4 (a + b - 2c) w / 65536)
// and pmulhw gives floor(x w / 65536) exactly for the signed differences
// (|x| <= 2040) and weights 0..8192. Below 8192 the middle rows fold the 4
// into the weight instead (4w still fits 16 bits), two shifts fewer. The
// results lie in 0..255, so nothing saturates. The weight of power 100
// takes byte means instead (see kAntiFlickerMeanWeight). Bit-exact with the
// scalar rows for weights 0..8192.
#include "anti_flicker_kernel.h"
#include "zvf/row_prefetch.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#include "zvf/floor_mean.h"

namespace zvf::filters {
namespace {

inline uint8_t Saturate(uint32_t v) { return static_cast<uint8_t>(v > 255 ? 255 : v); }

inline __m128i Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// c + floor(8 (n - c) w / 65536) for eight 16-bit lanes.
inline __m128i Edge8(__m128i c, __m128i n, __m128i w) {
    return _mm_add_epi16(c, _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(n, c), 3), w));
}

// c + floor((a + b - 2c) w / 16384) for eight 16-bit lanes, `w4` being 4w
// (which fits 16 bits up to w = 8191) or, for kFull, w itself.
template <bool kFull>
inline __m128i Middle8(__m128i a, __m128i c, __m128i b, __m128i w4) {
    if constexpr (kFull) {
        const __m128i d = _mm_sub_epi16(_mm_slli_epi16(_mm_add_epi16(a, b), 2), _mm_slli_epi16(c, 3));
        return _mm_add_epi16(c, _mm_mulhi_epi16(d, w4));
    } else {
        const __m128i d = _mm_sub_epi16(_mm_add_epi16(a, b), _mm_add_epi16(c, c));
        return _mm_add_epi16(c, _mm_mulhi_epi16(d, w4));
    }
}

template <bool kMean>
void EdgeLoop(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i wv = _mm_set1_epi16(static_cast<int16_t>(w));
    size_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        const __m128i cv = Load(c + i), nv = Load(n + i);
        PrefetchLine(c + ahead + i);
        PrefetchLine(n + ahead + i);
        PrefetchLineForWrite(o + ahead + i);
        if constexpr (kMean) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(o + i), FloorMean(cv, nv));
            continue;
        }
        const __m128i lo = Edge8(_mm_unpacklo_epi8(cv, zero), _mm_unpacklo_epi8(nv, zero), wv);
        const __m128i hi = Edge8(_mm_unpackhi_epi8(cv, zero), _mm_unpackhi_epi8(nv, zero), wv);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(o + i), _mm_packus_epi16(lo, hi));
    }
    const auto wn = static_cast<uint32_t>(w);
    for (; i < bytes; ++i) o[i] = Saturate((c[i] * (8192u - wn) + n[i] * wn) >> 13);
}

void EdgeRowSse2(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead) {
    w == kAntiFlickerMeanWeight ? EdgeLoop<true>(c, n, o, bytes, w, ahead) : EdgeLoop<false>(c, n, o, bytes, w, ahead);
}

template <MiddleBlend kKind>
void MiddleLoop(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                ptrdiff_t ahead) {
    constexpr bool kFull = kKind == MiddleBlend::kFull;
    const __m128i zero = _mm_setzero_si128();
    const __m128i wv = _mm_set1_epi16(static_cast<int16_t>(kFull ? w : 4 * w));
    size_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        const __m128i av = Load(a + i), bv = Load(b + i), cv = Load(c + i);
        PrefetchLine(c + ahead + i);
        PrefetchLine(b + ahead + i);
        PrefetchLineForWrite(o + ahead + i);
        if constexpr (kKind == MiddleBlend::kMean) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(o + i), FloorMean(FloorMean(av, bv), cv));
            continue;
        }
        const __m128i lo =
            Middle8<kFull>(_mm_unpacklo_epi8(av, zero), _mm_unpacklo_epi8(cv, zero), _mm_unpacklo_epi8(bv, zero), wv);
        const __m128i hi =
            Middle8<kFull>(_mm_unpackhi_epi8(av, zero), _mm_unpackhi_epi8(cv, zero), _mm_unpackhi_epi8(bv, zero), wv);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(o + i), _mm_packus_epi16(lo, hi));
    }
    const auto wn = static_cast<uint32_t>(w);
    for (; i < bytes; ++i) o[i] = Saturate(((a[i] + b[i]) * wn + c[i] * (16384u - 2 * wn)) >> 14);
}

void MiddleRowSse2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                   ptrdiff_t ahead) {
    WithMiddleBlend(w, [&](auto kind) { MiddleLoop<decltype(kind)::value>(a, c, b, o, bytes, w, ahead); });
}

}  // namespace

BlendRows Sse2BlendRows() { return {EdgeRowSse2, MiddleRowSse2}; }

}  // namespace zvf::filters
#else
// A target without SSE2 runs the scalar rows at every level.
namespace zvf::filters {
BlendRows Sse2BlendRows() { return ScalarBlendRows(); }
}  // namespace zvf::filters
#endif
