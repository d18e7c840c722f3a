// Blur's passes with AVX2: the horizontal one four rows per instruction, one
// pixel pair of each, two such recursions interleaved; the vertical one
// sixteen byte columns of a strip per instruction, the rows swept as in the
// scalar version, columns left over past the last sixteen going to the SSE2
// pass (columns are independent).
// The step is the SSE2 one in 256-bit registers; its unpacks and packs work
// within each 128-bit half, so the columns come back in order. Helpers are
// forced inline: 256-bit values are never passed to a call (misaligned
// stack spills on some Windows toolchains).
#include <cstring>

#include "blur_kernel.h"
#include "blur_row_groups.h"
#include "blur_scratch.h"

#if defined(__AVX2__)
#include <immintrin.h>

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

ZVF_INLINE __m256i Bytes(const uint8_t* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

ZVF_INLINE __m256i Words(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

ZVF_INLINE void PutWords(uint8_t* p, const __m256i& v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

ZVF_INLINE void PutBytes(uint8_t* p, const __m256i& v) {
    const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
}

// x + ((a (p - x) + 16384) >> 15), a (p - x) as one multiply-add of (d, d)
// with (a - 16384, 16384); see the SSE2 pass.
ZVF_INLINE __m256i Step(const __m256i& x, const __m256i& p, const __m256i& weights, const __m256i& round) {
    const __m256i d = _mm256_sub_epi16(p, x);
    __m256i lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(d, d), weights);
    __m256i hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(d, d), weights);
    lo = _mm256_srai_epi32(_mm256_add_epi32(lo, round), 15);
    hi = _mm256_srai_epi32(_mm256_add_epi32(hi, round), 15);
    return _mm256_adds_epi16(x, _mm256_packs_epi32(lo, hi));
}

// One pair of each of four rows in 16-bit lanes, row k in the k-th quarter.
ZVF_INLINE __m256i FourPairs(const uint8_t* const (&s)[4], int32_t at) {
    int32_t w[4];
    for (int k = 0; k < 4; ++k) std::memcpy(&w[k], s[k] + at, 4);
    const __m128i lo = _mm_unpacklo_epi32(_mm_cvtsi32_si128(w[0]), _mm_cvtsi32_si128(w[1]));
    const __m128i hi = _mm_unpacklo_epi32(_mm_cvtsi32_si128(w[2]), _mm_cvtsi32_si128(w[3]));
    return _mm256_cvtepu8_epi16(_mm_unpacklo_epi64(lo, hi));
}

// Up to 8 rows at once, as two independent recursions of four rows each.
// Rows s[k] into d[k] (null: a repeated row whose results are not wanted).
// The forward results, 16 bits per lane, take 64 bytes per pair. At each
// pair every row is read before any is written, so repeated rows and
// src == dst are safe.
ZVF_INLINE void EightRows(const __m256i& weights, const __m256i& round, const uint8_t* const (&s)[2][4],
               uint8_t* const (&d)[2][4], int32_t pairs, uint8_t* fwd) {
    __m256i p0 = FourPairs(s[0], 0), p1 = FourPairs(s[1], 0);
    for (int32_t i = 0; i < pairs; ++i) {
        p0 = Step(FourPairs(s[0], 4 * i), p0, weights, round);
        p1 = Step(FourPairs(s[1], 4 * i), p1, weights, round);
        PutWords(fwd + 64 * i, p0);
        PutWords(fwd + 64 * i + 32, p1);
    }
    const int32_t last = 4 * (pairs - 1);
    p0 = FourPairs(s[0], last);
    p1 = FourPairs(s[1], last);
    for (int32_t i = pairs - 1; i >= 0; --i) {
        p0 = Step(FourPairs(s[0], 4 * i), p0, weights, round);
        p1 = Step(FourPairs(s[1], 4 * i), p1, weights, round);
        const __m256i o0 = _mm256_srli_epi16(_mm256_add_epi16(Words(fwd + 64 * i), p0), 1);
        const __m256i o1 = _mm256_srli_epi16(_mm256_add_epi16(Words(fwd + 64 * i + 32), p1), 1);
        // Bytes of rows 0-3 of the first recursion, then of the second.
        const __m128i b0 = _mm_packus_epi16(_mm256_castsi256_si128(o0), _mm256_extracti128_si256(o0, 1));
        const __m128i b1 = _mm_packus_epi16(_mm256_castsi256_si128(o1), _mm256_extracti128_si256(o1, 1));
        int32_t w[2][4];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(w[0]), b0);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(w[1]), b1);
        for (int g = 0; g < 2; ++g)
            for (int k = 0; k < 4; ++k)
                if (d[g][k] != nullptr) std::memcpy(d[g][k] + 4 * i, &w[g][k], 4);
    }
}

}  // namespace

void BlurRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 64 bytes of forward results per pair: 16 lanes.
    if (fwd.size() < 16 * static_cast<size_t>(v.pairs) || v.rows < 5) {
        BlurRowsSse2(v, a, fwd);
        return;
    }
    const __m256i weights = _mm256_set1_epi32(static_cast<int32_t>((16384u << 16) | static_cast<uint16_t>(a - 16384)));
    const __m256i round = _mm256_set1_epi32(16384);
    auto* words = reinterpret_cast<uint8_t*>(fwd.data());
    ForEachRowGroup<2, 4>(v, [&](const auto& s, const auto& d) { EightRows(weights, round, s, d, v.pairs, words); });
}

void BlurStripAvx2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up) {
    const int32_t whole = lanes & ~15;
    if (whole > 0) {
        const __m256i weights =
            _mm256_set1_epi32(static_cast<int32_t>((16384u << 16) | static_cast<uint16_t>(a - 16384)));
        const __m256i round = _mm256_set1_epi32(16384);
        // 16-bit values, two bytes per column.
        auto* words = reinterpret_cast<uint8_t*>(up);
        const ptrdiff_t rowWords = ptrdiff_t{2} * whole;

        const uint8_t* bottom = src + (rows - 1) * step;
        uint8_t* last = words + (rows - 1) * rowWords;
        for (int32_t j = 0; j < whole; j += 16) PutWords(last + 2 * j, Bytes(bottom + j));
        for (int32_t k = rows - 2; k >= 0; --k) {
            const uint8_t* in = src + k * step;
            uint8_t* here = words + k * rowWords;
            const uint8_t* below = here + rowWords;
            for (int32_t j = 0; j < whole; j += 16)
                PutWords(here + 2 * j, Step(Bytes(in + j), Words(below + 2 * j), weights, round));
        }

        alignas(32) uint8_t state[2 * 4 * kStripPairs];
        for (int32_t j = 0; j < whole; j += 16) PutWords(state + 2 * j, Bytes(src + j));
        for (int32_t k = 0; k < rows; ++k) {
            const uint8_t* in = src + k * step;
            uint8_t* out = dst + k * step;
            const uint8_t* here = words + k * rowWords;
            for (int32_t j = 0; j < whole; j += 16) {
                const __m256i z = Step(Bytes(in + j), Words(state + 2 * j), weights, round);
                PutWords(state + 2 * j, z);
                PutBytes(out + j, _mm256_srli_epi16(_mm256_add_epi16(Words(here + 2 * j), z), 1));
            }
        }
    }
    if (whole < lanes) BlurStripSse2(src + whole, dst + whole, step, rows, lanes - whole, a, up);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

// No AVX2 on this target: the SSE2 versions stand in.
void BlurRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) { BlurRowsSse2(v, a, fwd); }

void BlurStripAvx2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up) {
    BlurStripSse2(src, dst, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
