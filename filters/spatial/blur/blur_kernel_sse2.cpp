// Blur's passes with SSE2: the horizontal one two rows per instruction, one
// pixel pair of each, with up to four such recursions interleaved; the
// vertical one sixteen byte columns of a strip at a time, the rows swept as
// in the scalar version. Bit-exact with the scalar passes.
#include <cstring>

#include "blur_kernel.h"
#include "blur_row_groups.h"
#include "blur_scratch.h"

#if defined(__SSE2__)
#include <emmintrin.h>

namespace zvf::filters {
namespace {

// The scalar step's numerator (32768 - a) x + a p + 16384 is 32768 x plus
// a (p - x) + 16384, and 32768 x passes the shift whole, so the step is
// x + ((a (p - x) + 16384) >> 15). With x and p whole bytes, d = p - x times
// 64 fits 16 bits, and the high half of (64 d) a is floor(d a / 1024); the
// rounding add and the shift are both multiples of 1024, so adding 16 and
// shifting by 5 finishes the same rounding exactly. Used for a in 0..32767.
struct Step {
    explicit Step(int32_t a) : weight(_mm_set1_epi16(static_cast<int16_t>(a))), round(_mm_set1_epi16(16)) {}
    __m128i operator()(__m128i x, __m128i p) const {
        const __m128i d = _mm_slli_epi16(_mm_sub_epi16(p, x), 6);
        return _mm_add_epi16(x, _mm_srai_epi16(_mm_add_epi16(_mm_mulhi_epi16(d, weight), round), 5));
    }
    __m128i weight;
    __m128i round;
};

// a = 32768 (no radius gives it, a hand-edited set can): the step keeps p.
struct Keep {
    explicit Keep(int32_t) {}
    __m128i operator()(__m128i, __m128i p) const { return p; }
};

// N = 16, 8 or 4 byte columns of one row, widened to 16-bit lanes (the
// second half only for 16), and back to bytes in the same order.
template <int N>
struct Columns {
    static void Load(const uint8_t* p, __m128i& lo, __m128i& hi) {
        __m128i bytes;
        if constexpr (N == 16) {
            bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        } else if constexpr (N == 8) {
            bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        } else {
            int32_t word;
            std::memcpy(&word, p, 4);
            bytes = _mm_cvtsi32_si128(word);
        }
        lo = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
        hi = _mm_unpackhi_epi8(bytes, _mm_setzero_si128());
    }
    static void Store(uint8_t* p, __m128i lo, __m128i hi) {
        const __m128i bytes = _mm_packus_epi16(lo, hi);
        if constexpr (N == 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bytes);
        } else if constexpr (N == 8) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p), bytes);
        } else {
            const int32_t word = _mm_cvtsi128_si32(bytes);
            std::memcpy(p, &word, 4);
        }
    }
};

// The bottom-up step of N columns: here = step(in, below), all bytes.
template <int N, class S>
void Up(const S& blur, const uint8_t* in, const uint8_t* below, uint8_t* here) {
    __m128i xl, xh, pl, ph;
    Columns<N>::Load(in, xl, xh);
    Columns<N>::Load(below, pl, ph);
    Columns<N>::Store(here, blur(xl, pl), N == 16 ? blur(xh, ph) : xh);
}

// The top-down step of N columns: the state moves on and the output is the
// floored average with the bottom-up value.
template <int N, class S>
void Down(const S& blur, const uint8_t* in, uint8_t* state, const uint8_t* up, uint8_t* out) {
    __m128i xl, xh, pl, ph, ul, uh;
    Columns<N>::Load(in, xl, xh);
    Columns<N>::Load(state, pl, ph);
    Columns<N>::Load(up, ul, uh);
    const __m128i zl = blur(xl, pl);
    const __m128i zh = N == 16 ? blur(xh, ph) : xh;
    Columns<N>::Store(state, zl, zh);
    Columns<N>::Store(out, _mm_srli_epi16(_mm_add_epi16(ul, zl), 1), _mm_srli_epi16(_mm_add_epi16(uh, zh), 1));
}

// The upward sweep climbs the field against the hardware prefetchers'
// direction; the rows it reaches a few steps later are asked for ahead.
constexpr int32_t kAhead = 16;

void Prefetch(const uint8_t* row, int32_t bytes) {
    for (int32_t j = 0; j < bytes; j += 64) _mm_prefetch(reinterpret_cast<const char*>(row + j), _MM_HINT_T0);
}

// Every column of a strip, the rows swept as in the scalar version; the
// bottom-up values and the top-down state are kept as bytes (every value of
// the recursion is a whole byte), `lanes` per row.
template <class S>
void Strip(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, uint8_t* up) {
    const S blur(a);
    const int32_t by16 = lanes & ~15;
    uint8_t* state = up + static_cast<ptrdiff_t>(rows) * lanes;
    // A step from a sample to itself keeps it.
    std::memcpy(up + static_cast<ptrdiff_t>(rows - 1) * lanes, src + (rows - 1) * step, static_cast<size_t>(lanes));
    for (int32_t k = rows - 2; k >= 0; --k) {
        const uint8_t* in = src + k * step;
        uint8_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        const uint8_t* below = here + lanes;
        if (k >= kAhead) Prefetch(in - kAhead * step, lanes);
        int32_t j = 0;
        for (; j < by16; j += 16) Up<16>(blur, in + j, below + j, here + j);
        if (lanes - j >= 8) {
            Up<8>(blur, in + j, below + j, here + j);
            j += 8;
        }
        if (j < lanes) Up<4>(blur, in + j, below + j, here + j);
    }
    std::memcpy(state, src, static_cast<size_t>(lanes));
    for (int32_t k = 0; k < rows; ++k) {
        const uint8_t* in = src + k * step;
        uint8_t* out = dst + k * step;
        const uint8_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        int32_t j = 0;
        for (; j < by16; j += 16) Down<16>(blur, in + j, state + j, here + j, out + j);
        if (lanes - j >= 8) {
            Down<8>(blur, in + j, state + j, here + j, out + j);
            j += 8;
        }
        if (j < lanes) Down<4>(blur, in + j, state + j, here + j, out + j);
    }
}

// One pair of each of two rows in 16-bit lanes: row 0 low, row 1 high.
__m128i TwoPairs(const uint8_t* row0, const uint8_t* row1) {
    int32_t w0, w1;
    std::memcpy(&w0, row0, 4);
    std::memcpy(&w1, row1, 4);
    return _mm_unpacklo_epi8(_mm_unpacklo_epi32(_mm_cvtsi32_si128(w0), _mm_cvtsi32_si128(w1)), _mm_setzero_si128());
}

// Up to 2 * C rows at once, as C independent recursions of two rows each, so
// that one row's dependent steps overlap the others'. Rows s[k] into d[k]
// (null: a repeated row whose results are not wanted). The forward results,
// 16 bits per lane, take 16 * C bytes per pair. At each pair every row is
// read before any is written, so repeated rows and src == dst are safe.
template <int C, class S>
void RowGroup(const S& blur, const uint8_t* const (&s)[2 * C], uint8_t* const (&d)[2 * C], int32_t pairs,
              uint8_t* fwd) {
    __m128i p[C];
    for (int c = 0; c < C; ++c) p[c] = TwoPairs(s[2 * c], s[2 * c + 1]);
    for (int32_t i = 0; i < pairs; ++i) {
        for (int c = 0; c < C; ++c) {
            p[c] = blur(TwoPairs(s[2 * c] + 4 * i, s[2 * c + 1] + 4 * i), p[c]);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(fwd + 16 * (C * i + c)), p[c]);
        }
    }
    const int32_t last = 4 * (pairs - 1);
    for (int c = 0; c < C; ++c) p[c] = TwoPairs(s[2 * c] + last, s[2 * c + 1] + last);
    for (int32_t i = pairs - 1; i >= 0; --i) {
        __m128i bytes[C];
        for (int c = 0; c < C; ++c) {
            p[c] = blur(TwoPairs(s[2 * c] + 4 * i, s[2 * c + 1] + 4 * i), p[c]);
            const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(fwd + 16 * (C * i + c)));
            const __m128i out = _mm_srli_epi16(_mm_add_epi16(y, p[c]), 1);
            bytes[c] = _mm_packus_epi16(out, out);
        }
        for (int c = 0; c < C; ++c) {
            const int32_t w0 = _mm_cvtsi128_si32(bytes[c]);
            const int32_t w1 = _mm_cvtsi128_si32(_mm_srli_si128(bytes[c], 4));
            if (d[2 * c] != nullptr) std::memcpy(d[2 * c] + 4 * i, &w0, 4);
            if (d[2 * c + 1] != nullptr) std::memcpy(d[2 * c + 1] + 4 * i, &w1, 4);
        }
    }
}

// Every row of the field in groups of 2 * C.
template <int C, class S>
void RowsInGroups(const FieldView& v, const S& blur, uint8_t* fwd) {
    ForEachRowGroup<1, 2 * C>(v, [&](const auto& s, const auto& d) { RowGroup<C>(blur, s[0], d[0], v.pairs, fwd); });
}

template <class S>
void Rows(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    const S blur(a);
    auto* words = reinterpret_cast<uint8_t*>(fwd.data());
    // Four recursions in flight where the scratch holds their results.
    const size_t groups = fwd.size() / (4 * static_cast<size_t>(v.pairs));
    if (groups >= 4 && v.rows > 4) {
        RowsInGroups<4>(v, blur, words);
    } else if (groups >= 2 && v.rows > 2) {
        RowsInGroups<2>(v, blur, words);
    } else {
        RowsInGroups<1>(v, blur, words);
    }
}

}  // namespace

void BlurRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    if (a > 32767) {
        Rows<Keep>(v, a, fwd);
    } else {
        Rows<Step>(v, a, fwd);
    }
}

void BlurStripSse2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up) {
    auto* bytes = reinterpret_cast<uint8_t*>(up);
    if (a > 32767) {
        Strip<Keep>(src, dst, step, rows, lanes, a, bytes);
    } else {
        Strip<Step>(src, dst, step, rows, lanes, a, bytes);
    }
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

// No SSE2 on this target: the scalar versions stand in.
void BlurRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd) { BlurRowsScalar(v, a, fwd); }

void BlurStripSse2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up) {
    BlurStripScalar(src, dst, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
