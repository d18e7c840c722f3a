// Smooth Blur's passes with SSE2: the horizontal one a pixel pair of one or
// two rows per instruction, up to four such recursions interleaved; the vertical one eight byte columns of a strip
// per instruction, the rows swept as in the scalar version. Bit-exact with
// the scalar passes.
#include <algorithm>
#include <cstring>

#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_row_groups.h"
#include "spatial/blur/blur_scratch.h"

#if defined(__SSE2__)
#include <emmintrin.h>

namespace zvf::filters {
namespace {

// The accumulator (32768 - a) x' + a p of eight columns as two multiply-adds
// of interleaved (x', p) with (32768 - a, a); both weights fit 16 bits for
// a in 1..32767, the only weights this version is used for.
struct Accumulate {
    explicit Accumulate(int32_t a)
        : weights(_mm_set1_epi32(
              static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)))) {}
    void operator()(__m128i centred, __m128i p, __m128i& lo, __m128i& hi) const {
        lo = _mm_madd_epi16(_mm_unpacklo_epi16(centred, p), weights);
        hi = _mm_madd_epi16(_mm_unpackhi_epi16(centred, p), weights);
    }
    __m128i weights;
};

// Bytes of N = 8 or 4 columns, centred: (x - 128) * 256 is x << 8 with its
// top bit flipped.
template <int N>
__m128i Centred(const uint8_t* p) {
    __m128i bytes;
    if constexpr (N == 8) {
        bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    } else {
        int32_t word;
        std::memcpy(&word, p, 4);
        bytes = _mm_cvtsi32_si128(word);
    }
    const __m128i x = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    return _mm_xor_si128(_mm_slli_epi16(x, 8), _mm_set1_epi16(static_cast<int16_t>(0x8000)));
}

template <int N>
void PutBytes(uint8_t* p, __m128i v) {
    const __m128i bytes = _mm_packus_epi16(v, v);
    if constexpr (N == 8) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), bytes);
    } else {
        const int32_t word = _mm_cvtsi128_si32(bytes);
        std::memcpy(p, &word, 4);
    }
}

// 16-bit states of N columns.
template <int N>
__m128i States(const int16_t* p) {
    if constexpr (N == 8) return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
template <int N>
void PutStates(int16_t* p, __m128i v) {
    if constexpr (N == 8) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    } else {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
    }
}

// 32-bit accumulators of N columns, as the scalar version keeps them.
template <int N>
void PutAccumulators(int32_t* p, __m128i lo, __m128i hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), lo);
    if constexpr (N == 8) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), hi);
}
template <int N>
void Accumulators(const int32_t* p, __m128i& lo, __m128i& hi) {
    lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    hi = N == 8 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 4)) : _mm_setzero_si128();
}

// The next states: accumulators shifted down, truncating, saturated to 16 bits.
__m128i NextStates(__m128i lo, __m128i hi) { return _mm_packs_epi32(_mm_srai_epi32(lo, 15), _mm_srai_epi32(hi, 15)); }

template <int N>
void Up(const Accumulate& acc, const uint8_t* in, int16_t* state, int32_t* here) {
    __m128i lo, hi;
    acc(Centred<N>(in), States<N>(state), lo, hi);
    PutAccumulators<N>(here, lo, hi);
    PutStates<N>(state, NextStates(lo, hi));
}

template <int N>
void Down(const Accumulate& acc, uint8_t* row, int16_t* state, const int32_t* here) {
    __m128i lo, hi, flo, fhi;
    acc(Centred<N>(row), States<N>(state), lo, hi);
    PutStates<N>(state, NextStates(lo, hi));
    Accumulators<N>(here, flo, fhi);
    // Sums of two accumulators fit 32 bits; >> 16 and saturate, >> 8
    // flooring, back to 0..255 around 128.
    const __m128i v =
        _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo, flo), 16), _mm_srai_epi32(_mm_add_epi32(hi, fhi), 16));
    PutBytes<N>(row, _mm_add_epi16(_mm_srai_epi16(v, 8), _mm_set1_epi16(128)));
}

template <int N>
void Start(const uint8_t* in, int16_t* state) {
    PutStates<N>(state, Centred<N>(in));
}

// The upward sweep climbs the field against the hardware prefetchers'
// direction; the rows it reaches a few steps later are asked for ahead.
constexpr int32_t kAhead = 16;

void Prefetch(const uint8_t* row, int32_t bytes) {
    for (int32_t j = 0; j < bytes; j += 64) _mm_prefetch(reinterpret_cast<const char*>(row + j), _MM_HINT_T0);
}

// One pair of each of two rows, centred: row 0 in the low four 16-bit lanes,
// row 1 in the high four.
__m128i CentredPairs(const uint8_t* row0, const uint8_t* row1) {
    int32_t w0, w1;
    std::memcpy(&w0, row0, 4);
    std::memcpy(&w1, row1, 4);
    const __m128i bytes = _mm_unpacklo_epi32(_mm_cvtsi32_si128(w0), _mm_cvtsi32_si128(w1));
    const __m128i x = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    return _mm_xor_si128(_mm_slli_epi16(x, 8), _mm_set1_epi16(static_cast<int16_t>(0x8000)));
}

// One row: the high lanes repeat it and only its accumulators are kept, 16
// bytes per pair as in the scalar pass (for scratch too small for two rows).
void OneRow(const Accumulate& acc, const uint8_t* s0, uint8_t* d0, int32_t pairs, int32_t* fwd) {
    __m128i lo, hi;
    __m128i p = CentredPairs(s0, s0);
    for (int32_t i = 0; i < pairs; ++i) {
        acc(CentredPairs(s0 + 4 * i, s0 + 4 * i), p, lo, hi);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(fwd + 4 * i), lo);
        p = NextStates(lo, hi);
    }
    const int32_t last = 4 * (pairs - 1);
    p = CentredPairs(s0 + last, s0 + last);
    for (int32_t i = pairs - 1; i >= 0; --i) {
        acc(CentredPairs(s0 + 4 * i, s0 + 4 * i), p, lo, hi);
        p = NextStates(lo, hi);
        const __m128i f = _mm_loadu_si128(reinterpret_cast<const __m128i*>(fwd + 4 * i));
        const __m128i v =
            _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo, f), 16), _mm_srai_epi32(_mm_add_epi32(hi, f), 16));
        const __m128i o = _mm_add_epi16(_mm_srai_epi16(v, 8), _mm_set1_epi16(128));
        const int32_t w0 = _mm_cvtsi128_si32(_mm_packus_epi16(o, o));
        std::memcpy(d0 + 4 * i, &w0, 4);
    }
}

// Up to 2 * C rows at once, as C independent recursions of two rows each, so
// that one row's dependent steps overlap the others'. Rows s[k] into d[k]
// (null: a repeated row whose results are not wanted); their accumulators
// take 32 * C bytes per pair. At each pair every row is read before any is
// written, so repeated rows and src == dst are safe.
template <int C>
void RowGroup(const Accumulate& acc, const uint8_t* const (&s)[2 * C], uint8_t* const (&d)[2 * C], int32_t pairs,
              int32_t* fwd) {
    __m128i p[C];
    for (int c = 0; c < C; ++c) p[c] = CentredPairs(s[2 * c], s[2 * c + 1]);
    for (int32_t i = 0; i < pairs; ++i) {
        for (int c = 0; c < C; ++c) {
            __m128i lo, hi;
            acc(CentredPairs(s[2 * c] + 4 * i, s[2 * c + 1] + 4 * i), p[c], lo, hi);
            int32_t* f = fwd + 8 * (C * i + c);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(f), lo);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(f + 4), hi);
            p[c] = NextStates(lo, hi);
        }
    }
    const int32_t last = 4 * (pairs - 1);
    for (int c = 0; c < C; ++c) p[c] = CentredPairs(s[2 * c] + last, s[2 * c + 1] + last);
    for (int32_t i = pairs - 1; i >= 0; --i) {
        __m128i bytes[C];
        for (int c = 0; c < C; ++c) {
            __m128i lo, hi;
            acc(CentredPairs(s[2 * c] + 4 * i, s[2 * c + 1] + 4 * i), p[c], lo, hi);
            p[c] = NextStates(lo, hi);
            const int32_t* f = fwd + 8 * (C * i + c);
            const __m128i flo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(f));
            const __m128i fhi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(f + 4));
            const __m128i v = _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo, flo), 16),
                                              _mm_srai_epi32(_mm_add_epi32(hi, fhi), 16));
            const __m128i o = _mm_add_epi16(_mm_srai_epi16(v, 8), _mm_set1_epi16(128));
            bytes[c] = _mm_packus_epi16(o, o);
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
void RowsInGroups(const FieldView& v, const Accumulate& acc, int32_t* fwd) {
    ForEachRowGroup<1, 2 * C>(v, [&](const auto& s, const auto& d) { RowGroup<C>(acc, s[0], d[0], v.pairs, fwd); });
}

}  // namespace

void SmoothRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    if (a < 1 || a > 32767) {  // weights a hand-edited set can reach; no radius gives them
        SmoothRowsScalar(v, a, fwd);
        return;
    }
    const Accumulate acc(a);
    // Four recursions in flight where the scratch holds their accumulators;
    // with room for one row only, one row at a time.
    const size_t rowPairs = fwd.size() / (8 * static_cast<size_t>(v.pairs));
    if (rowPairs >= 4 && v.rows > 4) {
        RowsInGroups<4>(v, acc, fwd.data());
    } else if (rowPairs >= 2 && v.rows > 2) {
        RowsInGroups<2>(v, acc, fwd.data());
    } else if (rowPairs >= 1) {
        RowsInGroups<1>(v, acc, fwd.data());
    } else {
        for (int32_t r = 0; r < v.rows; ++r) {
            OneRow(acc, v.src + r * v.step, v.dst + r * v.step, v.pairs, fwd.data());
        }
    }
}

void SmoothStripSse2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    if (a < 1 || a > 32767) {  // weights a hand-edited set can reach; no radius gives them
        // The scalar pass keeps state for kStripPairs pairs; columns are
        // independent, so a wider strip goes in pieces.
        for (int32_t c = 0; c < lanes; c += 4 * kStripPairs)
            SmoothStripScalar(base + c, step, rows, std::min(4 * kStripPairs, lanes - c), a, up);
        return;
    }
    const Accumulate acc(a);
    const int32_t whole = lanes & ~7;
    alignas(16) int16_t state[4 * kWideStripPairs];

    const uint8_t* bottom = base + (rows - 1) * step;
    int32_t j = 0;
    for (; j < whole; j += 8) Start<8>(bottom + j, state + j);
    if (j < lanes) Start<4>(bottom + j, state + j);
    for (int32_t k = rows - 1; k >= 0; --k) {
        const uint8_t* in = base + k * step;
        int32_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        if (k >= kAhead) Prefetch(in - kAhead * step, lanes);
        for (j = 0; j < whole; j += 8) Up<8>(acc, in + j, state + j, here + j);
        if (j < lanes) Up<4>(acc, in + j, state + j, here + j);
    }

    for (j = 0; j < whole; j += 8) Start<8>(base + j, state + j);
    if (j < lanes) Start<4>(base + j, state + j);
    for (int32_t k = 0; k < rows; ++k) {
        uint8_t* row = base + k * step;
        const int32_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        for (j = 0; j < whole; j += 8) Down<8>(acc, row + j, state + j, here + j);
        if (j < lanes) Down<4>(acc, row + j, state + j, here + j);
    }
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

// No SSE2 on this target: the scalar versions stand in.
void SmoothRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd) { SmoothRowsScalar(v, a, fwd); }

void SmoothStripSse2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    SmoothStripScalar(base, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
