// Smooth Blur's passes with AVX2 (smooth_blur_passes.h on 256-bit
// registers): the horizontal one a pixel pair of eight rows per register,
// four pairs of them loaded and transposed at a time, two groups of eight
// rows in flight; the vertical one 32 byte columns of a strip at a time, the
// rows swept as in the scalar version, columns left over past the last 32
// going to the SSE2 pass. Helpers are forced inline: 256-bit values are never
// passed to a call (misaligned stack spills on some Windows toolchains).
#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_row_groups.h"
#include "spatial/blur/blur_scratch.h"

#if defined(__AVX2__)
#include <immintrin.h>

#include "smooth_blur_passes.h"
#include "spatial/blur/blur_rows_avx2.h"

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

// The register set of the shared passes: 32 byte columns, or one pixel pair
// of eight rows (rows 0-3 in the low half, 4-7 in the high one).
struct Avx2 {
    using Reg = __m256i;
    static constexpr int32_t kBytes = 32;
    static constexpr int kRows = 8;

    static ZVF_INLINE Reg Load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
    static ZVF_INLINE void Store(void* p, const Reg& v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }

    // Bytes x as the centred (x - 128) * 256: the byte x ^ 0x80 is x - 128
    // as a signed byte, and unpacking it above a zero byte multiplies by
    // 256. Two sets of 16-bit lanes from the two in-lane unpacks.
    static ZVF_INLINE void Centred(const Reg& bytes, Reg& lo, Reg& hi) {
        const __m256i flipped = _mm256_xor_si256(bytes, _mm256_set1_epi8(static_cast<char>(0x80)));
        lo = _mm256_unpacklo_epi8(_mm256_setzero_si256(), flipped);
        hi = _mm256_unpackhi_epi8(_mm256_setzero_si256(), flipped);
    }

    // (32768 - a) x' + a p of sixteen 16-bit lanes as two multiply-adds of
    // interleaved (x', p).
    static ZVF_INLINE void Accumulate(const Reg& weights, const Reg& x, const Reg& p, Reg& lo, Reg& hi) {
        lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(x, p), weights);
        hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(x, p), weights);
    }

    static ZVF_INLINE Reg NextStates(const Reg& lo, const Reg& hi) {
        return _mm256_packs_epi32(_mm256_srai_epi32(lo, 15), _mm256_srai_epi32(hi, 15));
    }

    // Output bytes of 32 columns from the accumulators of both directions,
    // four sets of eight in the order the unpacks made them. |G + F| stays
    // within 2^31, so (G + F) >> 16 never saturates and the output is
    // ((G + F) >> 24) + 128, a signed byte with its top bit flipped; the
    // packs restore the column order of the unpacks.
    static ZVF_INLINE Reg Output(const Reg (&g)[4], const Reg (&f)[4]) {
        __m256i v[4];
        for (int k = 0; k < 4; ++k) v[k] = _mm256_srai_epi32(_mm256_add_epi32(g[k], f[k]), 24);
        const __m256i bytes = _mm256_packs_epi16(_mm256_packs_epi32(v[0], v[1]), _mm256_packs_epi32(v[2], v[3]));
        return _mm256_xor_si256(bytes, _mm256_set1_epi8(static_cast<char>(0x80)));
    }

    static ZVF_INLINE Reg OnePair(const uint8_t* const (&s)[8], int32_t at) { return filters::OnePair(s, at); }
    static ZVF_INLINE void PutOnePair(uint8_t* const (&d)[8], int32_t at, const Reg& v) {
        filters::PutOnePair(d, at, v);
    }
    static ZVF_INLINE void FourPairs(const uint8_t* const (&s)[8], int32_t at, Reg (&q)[4]) {
        filters::FourPairs(s, at, q);
    }
    static ZVF_INLINE void PutFourPairs(uint8_t* const (&d)[8], int32_t at, Reg (&q)[4]) {
        filters::PutFourPairs(d, at, q);
    }
};

ZVF_INLINE __m256i Weights(int32_t a) {
    // (32768 - a) x' + a p as multiply-adds of interleaved (x', p).
    return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
}

}  // namespace

void SmoothRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 96 bytes per pair and group of eight rows, 24 lanes of the scratch. Two
    // groups where the field and the scratch have room for them. Other
    // weights: see the SSE2 pass.
    const size_t room = fwd.size() / (smooth_passes::kEntry<Avx2> / 2 * static_cast<size_t>(v.pairs));
    if (room < 1 || v.rows < 5 || a < 1 || a > 32767) {
        SmoothRowsSse2(v, a, fwd);
        return;
    }
    const __m256i weights = Weights(a);
    int16_t* states = reinterpret_cast<int16_t*>(fwd.data());
    if (room >= 2 && v.rows > 8) {
        ForEachRowGroup<2, 8>(v, [&](const auto& s, const auto& d) {
            smooth_passes::RowGroups<Avx2, 2>(weights, s, d, v.pairs, states);
        });
    } else {
        ForEachRowGroup<1, 8>(v, [&](const auto& s, const auto& d) {
            smooth_passes::RowGroups<Avx2, 1>(weights, s, d, v.pairs, states);
        });
    }
}

void SmoothStripAvx2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    const int32_t whole = (a >= 1 && a <= 32767) ? lanes & ~31 : 0;  // other weights: see the SSE2 pass
    if (whole > 0) smooth_passes::Strips<Avx2>(Weights(a), base, step, rows, whole, up);
    // The columns past the last 32, in a strip of their own (columns are independent).
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
