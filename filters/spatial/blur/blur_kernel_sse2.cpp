// Blur's passes with SSE2: the horizontal one two rows per instruction, one
// pixel pair of each, with up to four such recursions interleaved; the vertical one eight byte columns of a
// strip per instruction, the rows swept as in the scalar version. Bit-exact
// with the scalar passes.
#include <cstring>

#include "blur_kernel.h"
#include "blur_row_groups.h"
#include "blur_scratch.h"

#if defined(__SSE2__)
#include <emmintrin.h>

namespace zvf::filters {
namespace {

// Loads and stores of N = 8 or 4 columns: bytes widened to 16-bit lanes, and
// the 16-bit recursion values this version keeps in the scratch buffer.
template <int N>
struct Columns;

template <>
struct Columns<8> {
    static __m128i Bytes(const uint8_t* p) {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
    }
    static void PutBytes(uint8_t* p, __m128i v) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
    }
    static __m128i Words(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static void PutWords(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
};

template <>
struct Columns<4> {
    static __m128i Bytes(const uint8_t* p) {
        int32_t word;
        std::memcpy(&word, p, 4);
        return _mm_unpacklo_epi8(_mm_cvtsi32_si128(word), _mm_setzero_si128());
    }
    static void PutBytes(uint8_t* p, __m128i v) {
        const int32_t word = _mm_cvtsi128_si32(_mm_packus_epi16(v, v));
        std::memcpy(p, &word, 4);
    }
    static __m128i Words(const uint8_t* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
    static void PutWords(uint8_t* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
};

// The scalar step's numerator (32768 - a) x + a p + 16384 is 32768 x plus
// a (p - x) + 16384, and 32768 x passes the shift whole, so the step is
// x + ((a (p - x) + 16384) >> 15). a (p - x) comes from one multiply-add of
// (d, d) with (a - 16384, 16384), both halves fitting 16 bits for every
// a in 0..32768. x and p are whole bytes, so nothing saturates.
struct Step {
    explicit Step(int32_t a)
        : weights(_mm_set1_epi32(static_cast<int32_t>((16384u << 16) | static_cast<uint16_t>(a - 16384)))),
          round(_mm_set1_epi32(16384)) {}
    __m128i operator()(__m128i x, __m128i p) const {
        const __m128i d = _mm_sub_epi16(p, x);
        __m128i lo = _mm_madd_epi16(_mm_unpacklo_epi16(d, d), weights);
        __m128i hi = _mm_madd_epi16(_mm_unpackhi_epi16(d, d), weights);
        lo = _mm_srai_epi32(_mm_add_epi32(lo, round), 15);
        hi = _mm_srai_epi32(_mm_add_epi32(hi, round), 15);
        return _mm_adds_epi16(x, _mm_packs_epi32(lo, hi));
    }
    __m128i weights;
    __m128i round;
};

template <int N>
void Bottom(const uint8_t* in, uint8_t* up) {
    Columns<N>::PutWords(up, Columns<N>::Bytes(in));  // a step from the sample to itself keeps it
}

template <int N>
void Up(const Step& step, const uint8_t* in, const uint8_t* below, uint8_t* here) {
    Columns<N>::PutWords(here, step(Columns<N>::Bytes(in), Columns<N>::Words(below)));
}

template <int N>
void Down(const Step& step, const uint8_t* in, uint8_t* out, const uint8_t* up, uint8_t* state) {
    const __m128i z = step(Columns<N>::Bytes(in), Columns<N>::Words(state));
    Columns<N>::PutWords(state, z);
    Columns<N>::PutBytes(out, _mm_srli_epi16(_mm_add_epi16(Columns<N>::Words(up), z), 1));
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
template <int C>
void RowGroup(const Step& blur, const uint8_t* const (&s)[2 * C], uint8_t* const (&d)[2 * C], int32_t pairs,
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
template <int C>
void RowsInGroups(const FieldView& v, const Step& blur, uint8_t* fwd) {
    ForEachRowGroup<1, 2 * C>(v, [&](const auto& s, const auto& d) { RowGroup<C>(blur, s[0], d[0], v.pairs, fwd); });
}

}  // namespace

void BlurRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    const Step blur(a);
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

void BlurStripSse2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up) {
    const Step blur(a);
    // 16-bit values, two bytes per column: half of what the scratch holds.
    auto* words = reinterpret_cast<uint8_t*>(up);
    const ptrdiff_t rowWords = ptrdiff_t{2} * lanes;
    const int32_t whole = lanes & ~7;

    const uint8_t* bottom = src + (rows - 1) * step;
    uint8_t* last = words + (rows - 1) * rowWords;
    int32_t j = 0;
    for (; j < whole; j += 8) Bottom<8>(bottom + j, last + 2 * j);
    if (j < lanes) Bottom<4>(bottom + j, last + 2 * j);
    for (int32_t k = rows - 2; k >= 0; --k) {
        const uint8_t* in = src + k * step;
        uint8_t* here = words + k * rowWords;
        const uint8_t* below = here + rowWords;
        for (j = 0; j < whole; j += 8) Up<8>(blur, in + j, below + 2 * j, here + 2 * j);
        if (j < lanes) Up<4>(blur, in + j, below + 2 * j, here + 2 * j);
    }

    alignas(16) uint8_t state[2 * 4 * kStripPairs];
    for (j = 0; j < whole; j += 8) Bottom<8>(src + j, state + 2 * j);
    if (j < lanes) Bottom<4>(src + j, state + 2 * j);
    for (int32_t k = 0; k < rows; ++k) {
        const uint8_t* in = src + k * step;
        uint8_t* out = dst + k * step;
        const uint8_t* here = words + k * rowWords;
        for (j = 0; j < whole; j += 8) Down<8>(blur, in + j, out + j, here + 2 * j, state + 2 * j);
        if (j < lanes) Down<4>(blur, in + j, out + j, here + 2 * j, state + 2 * j);
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
