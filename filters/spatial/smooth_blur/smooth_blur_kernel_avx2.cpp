// Smooth Blur's passes with AVX2: the horizontal one four rows per
// instruction, one pixel pair of each, two such recursions interleaved; the
// vertical one sixteen byte columns of a strip per instruction, the rows
// swept as in the scalar version, columns left over past the last sixteen
// going to the SSE2 pass (columns are independent). The vertical pass's
// per-row accumulators are kept in the order the 128-bit halves produce
// them, the same for both sweeps. Helpers are forced inline: 256-bit values
// are never passed to a call (misaligned stack spills on some Windows
// toolchains).
#include <cstring>

#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_row_groups.h"
#include "spatial/blur/blur_scratch.h"

#if defined(__AVX2__)
#include <immintrin.h>

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

// (x - 128) * 256 of sixteen columns: x << 8 with its top bit flipped.
ZVF_INLINE __m256i Centred(const uint8_t* p) {
    const __m256i x = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    return _mm256_xor_si256(_mm256_slli_epi16(x, 8), _mm256_set1_epi16(static_cast<int16_t>(0x8000)));
}

ZVF_INLINE __m256i Load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
ZVF_INLINE void Store(void* p, const __m256i& v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }

// One pair of each of four rows, centred, in 16-bit lanes: row k in the
// k-th quarter.
ZVF_INLINE __m256i FourCentredPairs(const uint8_t* const (&s)[4], int32_t at) {
    int32_t w[4];
    for (int k = 0; k < 4; ++k) std::memcpy(&w[k], s[k] + at, 4);
    const __m128i lo = _mm_unpacklo_epi32(_mm_cvtsi32_si128(w[0]), _mm_cvtsi32_si128(w[1]));
    const __m128i hi = _mm_unpacklo_epi32(_mm_cvtsi32_si128(w[2]), _mm_cvtsi32_si128(w[3]));
    const __m256i x = _mm256_cvtepu8_epi16(_mm_unpacklo_epi64(lo, hi));
    return _mm256_xor_si256(_mm256_slli_epi16(x, 8), _mm256_set1_epi16(static_cast<int16_t>(0x8000)));
}

// Up to 8 rows at once, as two independent recursions of four rows each.
// Rows s[g][k] into d[g][k] (null: a repeated row whose results are not
// wanted). The accumulators take 128 bytes per pair, in the order the
// 128-bit halves produce them. At each pair every row is read before any is
// written, so repeated rows and src == dst are safe.
ZVF_INLINE void EightRows(const __m256i& weights, const uint8_t* const (&s)[2][4], uint8_t* const (&d)[2][4],
                          int32_t pairs, int32_t* fwd) {
    __m256i p[2] = {FourCentredPairs(s[0], 0), FourCentredPairs(s[1], 0)};
    for (int32_t i = 0; i < pairs; ++i) {
        for (int g = 0; g < 2; ++g) {
            const __m256i x = FourCentredPairs(s[g], 4 * i);
            const __m256i lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(x, p[g]), weights);
            const __m256i hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(x, p[g]), weights);
            Store(fwd + 32 * i + 16 * g, lo);
            Store(fwd + 32 * i + 16 * g + 8, hi);
            p[g] = _mm256_packs_epi32(_mm256_srai_epi32(lo, 15), _mm256_srai_epi32(hi, 15));
        }
    }
    const int32_t last = 4 * (pairs - 1);
    p[0] = FourCentredPairs(s[0], last);
    p[1] = FourCentredPairs(s[1], last);
    for (int32_t i = pairs - 1; i >= 0; --i) {
        int32_t w[2][4];
        for (int g = 0; g < 2; ++g) {
            const __m256i x = FourCentredPairs(s[g], 4 * i);
            const __m256i lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(x, p[g]), weights);
            const __m256i hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(x, p[g]), weights);
            p[g] = _mm256_packs_epi32(_mm256_srai_epi32(lo, 15), _mm256_srai_epi32(hi, 15));
            const int32_t* f = fwd + 32 * i + 16 * g;
            const __m256i v = _mm256_packs_epi32(_mm256_srai_epi32(_mm256_add_epi32(lo, Load(f)), 16),
                                                 _mm256_srai_epi32(_mm256_add_epi32(hi, Load(f + 8)), 16));
            const __m256i o = _mm256_add_epi16(_mm256_srai_epi16(v, 8), _mm256_set1_epi16(128));
            const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(o), _mm256_extracti128_si256(o, 1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(w[g]), bytes);
        }
        for (int g = 0; g < 2; ++g)
            for (int k = 0; k < 4; ++k)
                if (d[g][k] != nullptr) std::memcpy(d[g][k] + 4 * i, &w[g][k], 4);
    }
}

}  // namespace

void SmoothRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 128 bytes of accumulators per pair: 32 lanes. Other weights: see the
    // SSE2 pass.
    if (fwd.size() < 32 * static_cast<size_t>(v.pairs) || v.rows < 5 || a < 1 || a > 32767) {
        SmoothRowsSse2(v, a, fwd);
        return;
    }
    const __m256i weights =
        _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
    ForEachRowGroup<2, 4>(v, [&](const auto& s, const auto& d) { EightRows(weights, s, d, v.pairs, fwd.data()); });
}

void SmoothStripAvx2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    const int32_t whole = (a >= 1 && a <= 32767) ? lanes & ~15 : 0;  // other weights: see the SSE2 pass
    if (whole > 0) {
        // (32768 - a) x' + a p as multiply-adds of interleaved (x', p).
        const __m256i weights = _mm256_set1_epi32(
            static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
        alignas(32) int16_t state[4 * kStripPairs];

        const uint8_t* bottom = base + (rows - 1) * step;
        for (int32_t j = 0; j < whole; j += 16) Store(state + j, Centred(bottom + j));
        for (int32_t k = rows - 1; k >= 0; --k) {
            const uint8_t* in = base + k * step;
            int32_t* here = up + static_cast<ptrdiff_t>(k) * whole;
            for (int32_t j = 0; j < whole; j += 16) {
                const __m256i x = Centred(in + j), p = Load(state + j);
                const __m256i lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(x, p), weights);
                const __m256i hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(x, p), weights);
                Store(here + j, lo);
                Store(here + j + 8, hi);
                Store(state + j, _mm256_packs_epi32(_mm256_srai_epi32(lo, 15), _mm256_srai_epi32(hi, 15)));
            }
        }

        for (int32_t j = 0; j < whole; j += 16) Store(state + j, Centred(base + j));
        for (int32_t k = 0; k < rows; ++k) {
            uint8_t* row = base + k * step;
            const int32_t* here = up + static_cast<ptrdiff_t>(k) * whole;
            for (int32_t j = 0; j < whole; j += 16) {
                const __m256i x = Centred(row + j), p = Load(state + j);
                const __m256i lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(x, p), weights);
                const __m256i hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(x, p), weights);
                Store(state + j, _mm256_packs_epi32(_mm256_srai_epi32(lo, 15), _mm256_srai_epi32(hi, 15)));
                // Sums of two accumulators fit 32 bits; >> 16 and saturate,
                // >> 8 flooring, back to 0..255 around 128.
                const __m256i v = _mm256_packs_epi32(_mm256_srai_epi32(_mm256_add_epi32(lo, Load(here + j)), 16),
                                                     _mm256_srai_epi32(_mm256_add_epi32(hi, Load(here + j + 8)), 16));
                const __m256i o = _mm256_add_epi16(_mm256_srai_epi16(v, 8), _mm256_set1_epi16(128));
                const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(o), _mm256_extracti128_si256(o, 1));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(row + j), bytes);
            }
        }
    }
    if (whole < lanes) SmoothStripSse2(base + whole, step, rows, lanes - whole, a, up);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

// No AVX2 on this target: the SSE2 versions stand in.
void SmoothRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) { SmoothRowsSse2(v, a, fwd); }

void SmoothStripAvx2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    SmoothStripSse2(base, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
