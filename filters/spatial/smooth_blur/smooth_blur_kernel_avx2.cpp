// Smooth Blur's vertical pass with AVX2: sixteen byte columns of a strip per
// instruction, the rows swept as in the scalar version; columns left over
// past the last sixteen go to the SSE2 pass (columns are independent). The
// per-row accumulators are kept in the order the 128-bit halves produce
// them, the same for both sweeps. Helpers are forced inline: 256-bit values
// are never passed to a call (misaligned stack spills on some Windows
// toolchains).
#include "smooth_blur_kernel.h"
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

}  // namespace

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

// No AVX2 on this target: the SSE2 version stands in.
void SmoothStripAvx2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    SmoothStripSse2(base, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
