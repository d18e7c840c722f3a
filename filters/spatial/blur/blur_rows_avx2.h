// Eight-row access shared by the AVX2 passes of Blur and Smooth Blur: the
// horizontal passes keep one pixel pair of eight rows in a register as bytes,
// rows 0-3 in the low half and rows 4-7 in the high half; the vertical passes
// ask for the rows their upward sweeps reach a few steps later. Include only
// from translation units compiled for AVX2. Helpers are forced inline:
// 256-bit values are never passed to a call (misaligned stack spills on some
// Windows toolchains).
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace zvf::filters {
namespace {

#define ZVF_BLUR_INLINE __attribute__((always_inline)) inline

ZVF_BLUR_INLINE int32_t Word(const uint8_t* p) {
    int32_t w;
    std::memcpy(&w, p, 4);
    return w;
}

// One pair of each of eight rows.
ZVF_BLUR_INLINE __m256i OnePair(const uint8_t* const (&s)[8], int32_t at) {
    return _mm256_setr_epi32(Word(s[0] + at), Word(s[1] + at), Word(s[2] + at), Word(s[3] + at), Word(s[4] + at),
                             Word(s[5] + at), Word(s[6] + at), Word(s[7] + at));
}

// Rows without a destination (null) are left alone.
ZVF_BLUR_INLINE void PutOnePair(uint8_t* const (&d)[8], int32_t at, const __m256i& v) {
    alignas(32) int32_t w[8];
    _mm256_store_si256(reinterpret_cast<__m256i*>(w), v);
    for (int k = 0; k < 8; ++k)
        if (d[k] != nullptr) std::memcpy(d[k] + at, &w[k], 4);
}

// A 4 x 4 transpose of 32-bit pairs within each half: four pairs of four rows
// become the four rows' values of each pair, and back.
ZVF_BLUR_INLINE void Transpose(__m256i (&v)[4]) {
    const __m256i t0 = _mm256_unpacklo_epi32(v[0], v[1]), t1 = _mm256_unpackhi_epi32(v[0], v[1]);
    const __m256i t2 = _mm256_unpacklo_epi32(v[2], v[3]), t3 = _mm256_unpackhi_epi32(v[2], v[3]);
    v[0] = _mm256_unpacklo_epi64(t0, t2);
    v[1] = _mm256_unpackhi_epi64(t0, t2);
    v[2] = _mm256_unpacklo_epi64(t1, t3);
    v[3] = _mm256_unpackhi_epi64(t1, t3);
}

// Pairs at..at+3 of eight rows, one register per pair.
ZVF_BLUR_INLINE void FourPairs(const uint8_t* const (&s)[8], int32_t at, __m256i (&q)[4]) {
    for (int k = 0; k < 4; ++k)
        q[k] = _mm256_inserti128_si256(
            _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s[k] + at))),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[k + 4] + at)), 1);
    Transpose(q);
}

ZVF_BLUR_INLINE void PutFourPairs(uint8_t* const (&d)[8], int32_t at, __m256i (&q)[4]) {
    Transpose(q);
    for (int k = 0; k < 4; ++k) {
        if (d[k] != nullptr) _mm_storeu_si128(reinterpret_cast<__m128i*>(d[k] + at), _mm256_castsi256_si128(q[k]));
        if (d[k + 4] != nullptr)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d[k + 4] + at), _mm256_extracti128_si256(q[k], 1));
    }
}

// The upward sweeps climb the field against the hardware prefetchers'
// direction; the rows they reach a few steps later are asked for ahead.
constexpr int32_t kAhead = 16;

ZVF_BLUR_INLINE void PrefetchRow(const uint8_t* row, int32_t bytes) {
    for (int32_t j = 0; j < bytes; j += 64) _mm_prefetch(reinterpret_cast<const char*>(row + j), _MM_HINT_T0);
}

#undef ZVF_BLUR_INLINE

}  // namespace
}  // namespace zvf::filters
