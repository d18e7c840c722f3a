// Blur's passes with AVX2: the horizontal one four rows per instruction, one
// pixel pair of each, two such recursions interleaved; the vertical one 32
// byte columns of a strip at a time, the rows swept as in the scalar version,
// columns left over past the last 32 going to the SSE2 pass. Helpers are
// forced inline: 256-bit values are never passed to a call (misaligned
// stack spills on some Windows toolchains).
#include <cstring>

#include "blur_kernel.h"
#include "blur_row_groups.h"
#include "blur_scratch.h"

#if defined(__AVX2__)
#include <immintrin.h>

#include "blur_rows_avx2.h"

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

ZVF_INLINE __m256i Words(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

ZVF_INLINE void PutWords(uint8_t* p, const __m256i& v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// x + ((a (p - x) + 16384) >> 15) (see the SSE2 pass); the rounded high half
// of the product is exactly what mulhrs gives, for a in 0..32767.
struct Step {
    explicit Step(int32_t a) : weight(_mm256_set1_epi16(static_cast<int16_t>(a))) {}
    ZVF_INLINE __m256i operator()(const __m256i& x, const __m256i& p) const {
        return _mm256_add_epi16(x, _mm256_mulhrs_epi16(_mm256_sub_epi16(p, x), weight));
    }
    __m256i weight;
};

// a = 32768 (no radius gives it, a hand-edited set can): the step keeps p.
struct Keep {
    explicit Keep(int32_t) {}
    ZVF_INLINE __m256i operator()(const __m256i&, const __m256i& p) const { return p; }
};

// 32 byte columns of one row as two sets of 16-bit lanes; the in-lane
// unpacks and the pack undo each other, so columns come back in order.
ZVF_INLINE void Load(const uint8_t* p, __m256i& lo, __m256i& hi) {
    const __m256i bytes = Words(p);
    lo = _mm256_unpacklo_epi8(bytes, _mm256_setzero_si256());
    hi = _mm256_unpackhi_epi8(bytes, _mm256_setzero_si256());
}

ZVF_INLINE void Store(uint8_t* p, const __m256i& lo, const __m256i& hi) { PutWords(p, _mm256_packus_epi16(lo, hi)); }

// Every column of a strip `whole` bytes wide (a multiple of 32), the rows
// swept as in the scalar version; the bottom-up values and the top-down state
// are kept as bytes (every value of the recursion is a whole byte), `whole`
// per row of `up`, the state after the last row.
template <class S>
ZVF_INLINE void Strip(const S& blur, const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t whole,
                      uint8_t* up) {
    uint8_t* state = up + static_cast<ptrdiff_t>(rows) * whole;
    // A step from a sample to itself keeps it.
    std::memcpy(up + static_cast<ptrdiff_t>(rows - 1) * whole, src + (rows - 1) * step, static_cast<size_t>(whole));
    for (int32_t k = rows - 2; k >= 0; --k) {
        const uint8_t* in = src + k * step;
        uint8_t* here = up + static_cast<ptrdiff_t>(k) * whole;
        const uint8_t* below = here + whole;
        if (k >= kAhead) PrefetchRow(in - kAhead * step, whole);
        for (int32_t j = 0; j < whole; j += 32) {
            __m256i xl, xh, pl, ph;
            Load(in + j, xl, xh);
            Load(below + j, pl, ph);
            Store(here + j, blur(xl, pl), blur(xh, ph));
        }
    }
    std::memcpy(state, src, static_cast<size_t>(whole));
    const __m256i one = _mm256_set1_epi8(1);
    for (int32_t k = 0; k < rows; ++k) {
        const uint8_t* in = src + k * step;
        uint8_t* out = dst + k * step;
        const uint8_t* here = up + static_cast<ptrdiff_t>(k) * whole;
        for (int32_t j = 0; j < whole; j += 32) {
            __m256i xl, xh, pl, ph;
            Load(in + j, xl, xh);
            Load(state + j, pl, ph);
            const __m256i z = _mm256_packus_epi16(blur(xl, pl), blur(xh, ph));
            PutWords(state + j, z);
            // The floored average of bytes: the rounded one less the odd bit.
            const __m256i u = Words(here + j);
            PutWords(out + j, _mm256_sub_epi8(_mm256_avg_epu8(u, z), _mm256_and_si256(_mm256_xor_si256(u, z), one)));
        }
    }
}

// The horizontal pass keeps eight rows in one register as bytes: the pair of
// rows 0-3 in the low half, of rows 4-7 in the high half. Unpacking with zero
// gives the 16-bit lanes of rows 0, 1, 4, 5 and of rows 2, 3, 6, 7, two
// independent recursions; packing them returns the same order.

// The recursion of eight rows in 16-bit lanes, as two halves.
struct Rows8 {
    __m256i lo, hi;
};

ZVF_INLINE void Begin(Rows8& p, const __m256i& bytes) {
    p.lo = _mm256_unpacklo_epi8(bytes, _mm256_setzero_si256());
    p.hi = _mm256_unpackhi_epi8(bytes, _mm256_setzero_si256());
}

// One step of eight rows; the new state as bytes.
template <class S>
ZVF_INLINE __m256i Advance(const S& blur, Rows8& p, const __m256i& bytes) {
    p.lo = blur(_mm256_unpacklo_epi8(bytes, _mm256_setzero_si256()), p.lo);
    p.hi = blur(_mm256_unpackhi_epi8(bytes, _mm256_setzero_si256()), p.hi);
    return _mm256_packus_epi16(p.lo, p.hi);
}

// The floored average of bytes: the rounded one less the odd bit.
ZVF_INLINE __m256i FloorAverage(const __m256i& u, const __m256i& z) {
    return _mm256_sub_epi8(_mm256_avg_epu8(u, z), _mm256_and_si256(_mm256_xor_si256(u, z), _mm256_set1_epi8(1)));
}

// G groups of eight rows at once, G independent recursions in flight. Rows
// s[g][k] into d[g][k] (null: a repeated row whose results are not wanted).
// Four pairs at a time through the transpose, the pairs past the last four
// one at a time. The forward results, bytes, take 32 * G bytes per pair.
// Every row's pairs are read before the same pairs are written, so repeated
// rows and src == dst are safe.
template <int G, class S>
ZVF_INLINE void RowGroups(const S& blur, const uint8_t* const (&s)[G][8], uint8_t* const (&d)[G][8], int32_t pairs,
                          uint8_t* fwd) {
    const int32_t whole = pairs & ~3;
    Rows8 p[G];
    for (int g = 0; g < G; ++g) Begin(p[g], OnePair(s[g], 0));
    for (int32_t i = 0; i < whole; i += 4) {
        for (int g = 0; g < G; ++g) {
            __m256i q[4];
            FourPairs(s[g], 4 * i, q);
            for (int t = 0; t < 4; ++t) PutWords(fwd + 32 * (G * (i + t) + g), Advance(blur, p[g], q[t]));
        }
    }
    for (int32_t i = whole; i < pairs; ++i)
        for (int g = 0; g < G; ++g) PutWords(fwd + 32 * (G * i + g), Advance(blur, p[g], OnePair(s[g], 4 * i)));

    for (int g = 0; g < G; ++g) Begin(p[g], OnePair(s[g], 4 * (pairs - 1)));
    for (int32_t i = pairs - 1; i >= whole; --i)
        for (int g = 0; g < G; ++g) {
            const __m256i z = Advance(blur, p[g], OnePair(s[g], 4 * i));
            PutOnePair(d[g], 4 * i, FloorAverage(Words(fwd + 32 * (G * i + g)), z));
        }
    for (int32_t i = whole - 4; i >= 0; i -= 4) {
        for (int g = 0; g < G; ++g) {
            __m256i q[4];
            FourPairs(s[g], 4 * i, q);
            for (int t = 3; t >= 0; --t)
                q[t] = FloorAverage(Words(fwd + 32 * (G * (i + t) + g)), Advance(blur, p[g], q[t]));
            PutFourPairs(d[g], 4 * i, q);
        }
    }
}

template <class S>
void Rows(const FieldView& v, const S& blur, int32_t groups, uint8_t* fwd) {
    if (groups >= 2) {
        ForEachRowGroup<2, 8>(v, [&](const auto& s, const auto& d) { RowGroups<2>(blur, s, d, v.pairs, fwd); });
    } else {
        ForEachRowGroup<1, 8>(v, [&](const auto& s, const auto& d) { RowGroups<1>(blur, s, d, v.pairs, fwd); });
    }
}

}  // namespace

void BlurRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 32 bytes of forward results per pair and group of eight rows: 8 lanes.
    // Two groups where the field and the scratch have room for them.
    const size_t room = fwd.size() / (8 * static_cast<size_t>(v.pairs));
    if (room < 1 || v.rows < 5) {
        BlurRowsSse2(v, a, fwd);
        return;
    }
    const int32_t groups = room >= 2 && v.rows > 8 ? 2 : 1;
    auto* bytes = reinterpret_cast<uint8_t*>(fwd.data());
    if (a > 32767) {
        Rows(v, Keep(a), groups, bytes);
    } else {
        Rows(v, Step(a), groups, bytes);
    }
}

void BlurStripAvx2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up) {
    const int32_t whole = lanes & ~31;
    if (whole > 0) {
        auto* bytes = reinterpret_cast<uint8_t*>(up);
        if (a > 32767) {
            Strip(Keep(a), src, dst, step, rows, whole, bytes);
        } else {
            Strip(Step(a), src, dst, step, rows, whole, bytes);
        }
    }
    // The columns past the last 32, in a strip of their own (columns are independent).
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
