// Smooth Blur's passes with AVX-512 (F, BW), the AVX2 passes at twice the
// width: the horizontal one a pixel pair of sixteen rows per register, four
// pairs of them loaded and transposed at a time, two groups of sixteen rows
// in flight; the vertical one 64 byte columns of a strip at a time, columns
// left over past the last 64 going to the AVX2 pass. The byte and word
// unpacks and packs work inside 128-bit lanes as in the narrower passes, so
// the lane order they make and undo is the same. Helpers are forced inline:
// 512-bit values are never passed to a call (the Windows stack is only
// 16-byte aligned).
#include <algorithm>
#include <cstring>

#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_row_groups.h"
#include "spatial/blur/blur_scratch.h"

#if defined(__x86_64__) || defined(_M_X64)
#include "zvf/avx512.h"

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

ZVF_INLINE __m512i Load(const void* p) { return _mm512_loadu_si512(p); }
ZVF_INLINE void Store(void* p, const __m512i& v) { _mm512_storeu_si512(p, v); }

// Bytes x as the centred (x - 128) * 256, two sets of 16-bit lanes.
ZVF_INLINE void Centred(const __m512i& bytes, __m512i& lo, __m512i& hi) {
    const __m512i flipped = _mm512_xor_si512(bytes, _mm512_set1_epi8(static_cast<char>(0x80)));
    lo = _mm512_unpacklo_epi8(_mm512_setzero_si512(), flipped);
    hi = _mm512_unpackhi_epi8(_mm512_setzero_si512(), flipped);
}

// (32768 - a) x' + a p as two multiply-adds of interleaved (x', p).
ZVF_INLINE void Accumulate(const __m512i& weights, const __m512i& x, const __m512i& p, __m512i& lo, __m512i& hi) {
    lo = _mm512_madd_epi16(_mm512_unpacklo_epi16(x, p), weights);
    hi = _mm512_madd_epi16(_mm512_unpackhi_epi16(x, p), weights);
}

ZVF_INLINE __m512i NextStates(const __m512i& lo, const __m512i& hi) {
    return _mm512_packs_epi32(_mm512_srai_epi32(lo, 15), _mm512_srai_epi32(hi, 15));
}

// Output bytes of 64 columns from both directions' accumulators: ((G + F)
// >> 24) + 128, as in the AVX2 pass.
ZVF_INLINE __m512i Output(const __m512i (&g)[4], const __m512i (&f)[4]) {
    __m512i v[4];
    for (int k = 0; k < 4; ++k) v[k] = _mm512_srai_epi32(_mm512_add_epi32(g[k], f[k]), 24);
    const __m512i bytes = _mm512_packs_epi16(_mm512_packs_epi32(v[0], v[1]), _mm512_packs_epi32(v[2], v[3]));
    return _mm512_xor_si512(bytes, _mm512_set1_epi8(static_cast<char>(0x80)));
}

ZVF_INLINE void Advance(const __m512i& weights, const __m512i& bytes, __m512i& plo, __m512i& phi, __m512i (&acc)[4]) {
    __m512i xlo, xhi;
    Centred(bytes, xlo, xhi);
    Accumulate(weights, xlo, plo, acc[0], acc[1]);
    Accumulate(weights, xhi, phi, acc[2], acc[3]);
    plo = NextStates(acc[0], acc[1]);
    phi = NextStates(acc[2], acc[3]);
}

// The backward step: states move on from the backward accumulators; the
// forward ones are formed again from the same samples and the kept 16-bit
// states f.
ZVF_INLINE __m512i BackwardStep(const __m512i& weights, const __m512i& bytes, __m512i& plo, __m512i& phi,
                                const int16_t* f) {
    __m512i xlo, xhi, acc[4], fwd[4];
    Centred(bytes, xlo, xhi);
    Accumulate(weights, xlo, plo, acc[0], acc[1]);
    Accumulate(weights, xhi, phi, acc[2], acc[3]);
    plo = NextStates(acc[0], acc[1]);
    phi = NextStates(acc[2], acc[3]);
    Accumulate(weights, xlo, Load(f), fwd[0], fwd[1]);
    Accumulate(weights, xhi, Load(f + 32), fwd[2], fwd[3]);
    return Output(acc, fwd);
}

ZVF_INLINE void Begin(const __m512i& bytes, __m512i& plo, __m512i& phi) { Centred(bytes, plo, phi); }

ZVF_INLINE void PutStates(int16_t* f, const __m512i& lo, const __m512i& hi) {
    Store(f, lo);
    Store(f + 32, hi);
}

ZVF_INLINE int32_t Word(const uint8_t* p) {
    int32_t w;
    std::memcpy(&w, p, 4);
    return w;
}

// One pair of each of sixteen rows, row k in 32-bit lane k.
ZVF_INLINE __m512i OnePair(const uint8_t* const (&s)[16], int32_t at) {
    return _mm512_setr_epi32(Word(s[0] + at), Word(s[1] + at), Word(s[2] + at), Word(s[3] + at), Word(s[4] + at),
                             Word(s[5] + at), Word(s[6] + at), Word(s[7] + at), Word(s[8] + at), Word(s[9] + at),
                             Word(s[10] + at), Word(s[11] + at), Word(s[12] + at), Word(s[13] + at),
                             Word(s[14] + at), Word(s[15] + at));
}

// Rows without a destination (null) are left alone.
ZVF_INLINE void PutOnePair(uint8_t* const (&d)[16], int32_t at, const __m512i& v) {
    alignas(64) int32_t w[16];
    _mm512_store_si512(w, v);
    for (int k = 0; k < 16; ++k)
        if (d[k] != nullptr) std::memcpy(d[k] + at, &w[k], 4);
}

// A 4 x 4 transpose of 32-bit pairs within each 128-bit lane.
ZVF_INLINE void Transpose(__m512i (&v)[4]) {
    const __m512i t0 = _mm512_unpacklo_epi32(v[0], v[1]), t1 = _mm512_unpackhi_epi32(v[0], v[1]);
    const __m512i t2 = _mm512_unpacklo_epi32(v[2], v[3]), t3 = _mm512_unpackhi_epi32(v[2], v[3]);
    v[0] = _mm512_unpacklo_epi64(t0, t2);
    v[1] = _mm512_unpackhi_epi64(t0, t2);
    v[2] = _mm512_unpacklo_epi64(t1, t3);
    v[3] = _mm512_unpackhi_epi64(t1, t3);
}

ZVF_INLINE __m128i Load128(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// Pairs at..at+3 of sixteen rows, one register per pair, rows in the order
// OnePair puts them: register k gets rows k, k + 4, k + 8 and k + 12 in its
// four lanes, and the transpose makes lane L of register t pair t of rows
// 4L..4L+3.
ZVF_INLINE void FourPairs(const uint8_t* const (&s)[16], int32_t at, __m512i (&q)[4]) {
    for (int k = 0; k < 4; ++k) {
        __m512i r = _mm512_castsi128_si512(Load128(s[k] + at));
        r = _mm512_inserti32x4(r, Load128(s[k + 4] + at), 1);
        r = _mm512_inserti32x4(r, Load128(s[k + 8] + at), 2);
        q[k] = _mm512_inserti32x4(r, Load128(s[k + 12] + at), 3);
    }
    Transpose(q);
}

ZVF_INLINE void PutFourPairs(uint8_t* const (&d)[16], int32_t at, __m512i (&q)[4]) {
    Transpose(q);
    for (int k = 0; k < 4; ++k) {
        if (d[k] != nullptr) _mm_storeu_si128(reinterpret_cast<__m128i*>(d[k] + at), _mm512_castsi512_si128(q[k]));
        if (d[k + 4] != nullptr)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d[k + 4] + at), _mm512_extracti32x4_epi32(q[k], 1));
        if (d[k + 8] != nullptr)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d[k + 8] + at), _mm512_extracti32x4_epi32(q[k], 2));
        if (d[k + 12] != nullptr)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d[k + 12] + at), _mm512_extracti32x4_epi32(q[k], 3));
    }
}

constexpr int32_t kRowAhead = 512;

template <int G>
ZVF_INLINE void PrefetchRows(const uint8_t* const (&s)[G][16], int32_t at) {
    for (int g = 0; g < G; ++g)
        for (int k = 0; k < 16; ++k) _mm_prefetch(reinterpret_cast<const char*>(s[g][k] + at), _MM_HINT_T0);
}

// 16-bit lanes per pair and group: the states the forward step was entered
// with (64), then the step's samples as the transpose left them (32).
constexpr int32_t kEntry = 96;

// G groups of sixteen rows at once; otherwise as the AVX2 pass's RowGroups.
template <int G>
ZVF_INLINE void RowGroups(const __m512i& weights, const uint8_t* const (&s)[G][16], uint8_t* const (&d)[G][16],
                          int32_t pairs, int16_t* fwd) {
    const int32_t whole = pairs & ~3;
    __m512i lo[G], hi[G], acc[4];
    for (int g = 0; g < G; ++g) Begin(OnePair(s[g], 0), lo[g], hi[g]);
    for (int32_t i = 0; i < whole; i += 4) {
        if ((i & 15) == 0 && 4 * i + kRowAhead < 4 * pairs) PrefetchRows(s, 4 * i + kRowAhead);
        for (int g = 0; g < G; ++g) {
            __m512i q[4];
            FourPairs(s[g], 4 * i, q);
            for (int t = 0; t < 4; ++t) {
                int16_t* e = fwd + kEntry * (G * (i + t) + g);
                PutStates(e, lo[g], hi[g]);
                Store(e + 64, q[t]);
                Advance(weights, q[t], lo[g], hi[g], acc);
            }
        }
    }
    for (int32_t i = whole; i < pairs; ++i)
        for (int g = 0; g < G; ++g) {
            PutStates(fwd + kEntry * (G * i + g), lo[g], hi[g]);
            Advance(weights, OnePair(s[g], 4 * i), lo[g], hi[g], acc);
        }

    for (int g = 0; g < G; ++g) Begin(OnePair(s[g], 4 * (pairs - 1)), lo[g], hi[g]);
    for (int32_t i = pairs - 1; i >= whole; --i)
        for (int g = 0; g < G; ++g)
            PutOnePair(d[g], 4 * i, BackwardStep(weights, OnePair(s[g], 4 * i), lo[g], hi[g], fwd + kEntry * (G * i + g)));
    for (int32_t i = whole - 4; i >= 0; i -= 4) {
        for (int g = 0; g < G; ++g) {
            __m512i q[4];
            for (int t = 3; t >= 0; --t) {
                const int16_t* e = fwd + kEntry * (G * (i + t) + g);
                q[t] = BackwardStep(weights, Load(e + 64), lo[g], hi[g], e);
            }
            PutFourPairs(d[g], 4 * i, q);
        }
    }
}

// As the AVX2 pass: 32-bit sums kept while a strip's data stays well inside
// the second-level cache.
constexpr int64_t kSumsBytes = 320 * 1024;
// The upward sweep asks for the rows it reaches this many steps later.
constexpr int32_t kAhead = 16;

ZVF_INLINE void PrefetchRow(const uint8_t* row, int32_t bytes) {
    for (int32_t j = 0; j < bytes; j += 64) _mm_prefetch(reinterpret_cast<const char*>(row + j), _MM_HINT_T0);
}

// Every column of a strip 64 N bytes wide; otherwise as the AVX2 pass's Strip.
template <int N, bool Sums>
ZVF_INLINE void Strip(const __m512i& weights, uint8_t* base, ptrdiff_t step, int32_t rows, int32_t* sums) {
    constexpr int32_t kWidth = 64 * N;
    __m512i lo[N], hi[N], acc[4], back[4];
    const uint8_t* bottom = base + (rows - 1) * step;
    if constexpr (Sums) {
        for (int n = 0; n < N; ++n) Begin(Load(bottom + 64 * n), lo[n], hi[n]);
        for (int32_t k = rows - 1; k >= 0; --k) {
            const uint8_t* in = base + k * step;
            int32_t* here = sums + static_cast<ptrdiff_t>(k) * kWidth;
            if (k >= kAhead) PrefetchRow(in - kAhead * step, kWidth);
            for (int n = 0; n < N; ++n) {
                Advance(weights, Load(in + 64 * n), lo[n], hi[n], acc);
                for (int t = 0; t < 4; ++t) Store(here + 64 * n + 16 * t, acc[t]);
            }
        }
        for (int n = 0; n < N; ++n) Begin(Load(base + 64 * n), lo[n], hi[n]);
        for (int32_t k = 0; k < rows; ++k) {
            uint8_t* row = base + k * step;
            const int32_t* here = sums + static_cast<ptrdiff_t>(k) * kWidth;
            for (int n = 0; n < N; ++n) {
                Advance(weights, Load(row + 64 * n), lo[n], hi[n], acc);
                for (int t = 0; t < 4; ++t) back[t] = Load(here + 64 * n + 16 * t);
                Store(row + 64 * n, Output(acc, back));
            }
        }
        return;
    }
    int16_t* up = reinterpret_cast<int16_t*>(sums);
    for (int n = 0; n < N; ++n) Begin(Load(bottom + 64 * n), lo[n], hi[n]);
    for (int32_t k = rows - 1; k >= 1; --k) {
        const uint8_t* in = base + k * step;
        int16_t* here = up + static_cast<ptrdiff_t>(k) * kWidth;
        if (k >= kAhead) PrefetchRow(in - kAhead * step, kWidth);
        for (int n = 0; n < N; ++n) {
            PutStates(here + 64 * n, lo[n], hi[n]);
            Advance(weights, Load(in + 64 * n), lo[n], hi[n], acc);
        }
    }
    for (int n = 0; n < N; ++n) PutStates(up + 64 * n, lo[n], hi[n]);
    for (int n = 0; n < N; ++n) Begin(Load(base + 64 * n), lo[n], hi[n]);
    for (int32_t k = 0; k < rows; ++k) {
        uint8_t* row = base + k * step;
        const int16_t* here = up + static_cast<ptrdiff_t>(k) * kWidth;
        for (int n = 0; n < N; ++n) Store(row + 64 * n, BackwardStep(weights, Load(row + 64 * n), lo[n], hi[n], here + 64 * n));
    }
}

ZVF_INLINE __m512i Weights(int32_t a) {
    return _mm512_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
}

}  // namespace

void SmoothRowsAvx512(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 192 bytes per pair and group of sixteen rows (kEntry 16-bit lanes), 48
    // lanes of the scratch. Other weights and short fields: the AVX2 pass.
    const size_t room = fwd.size() / (kEntry / 2 * static_cast<size_t>(v.pairs));
    if (room < 1 || v.rows < 9 || a < 1 || a > 32767) {
        SmoothRowsAvx2(v, a, fwd);
        return;
    }
    const __m512i weights = Weights(a);
    int16_t* states = reinterpret_cast<int16_t*>(fwd.data());
    if (room >= 2 && v.rows > 16) {
        ForEachRowGroup<2, 16>(v, [&](const auto& s, const auto& d) { RowGroups<2>(weights, s, d, v.pairs, states); });
    } else {
        ForEachRowGroup<1, 16>(v, [&](const auto& s, const auto& d) { RowGroups<1>(weights, s, d, v.pairs, states); });
    }
}

void SmoothStripAvx512(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    const int32_t whole = (a >= 1 && a <= 32767) ? lanes & ~63 : 0;  // other weights: see the SSE2 pass
    if (whole > 0) {
        const __m512i weights = Weights(a);
        // Up to three steps of 64 columns whose states stay in registers at a time.
        const bool sums = static_cast<int64_t>(rows) * std::min(whole, 192) * 4 <= kSumsBytes;
        for (int32_t c = 0; c < whole; c += 192) {
            uint8_t* at = base + c;
            switch (std::min(whole - c, 192) / 64 + (sums ? 3 : 0)) {
                case 1:
                    Strip<1, false>(weights, at, step, rows, up);
                    break;
                case 2:
                    Strip<2, false>(weights, at, step, rows, up);
                    break;
                case 3:
                    Strip<3, false>(weights, at, step, rows, up);
                    break;
                case 4:
                    Strip<1, true>(weights, at, step, rows, up);
                    break;
                case 5:
                    Strip<2, true>(weights, at, step, rows, up);
                    break;
                default:
                    Strip<3, true>(weights, at, step, rows, up);
                    break;
            }
        }
    }
    if (whole < lanes) SmoothStripAvx2(base + whole, step, rows, lanes - whole, a, up);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void SmoothRowsAvx512(const FieldView& v, int32_t a, std::span<int32_t> fwd) { SmoothRowsAvx2(v, a, fwd); }

void SmoothStripAvx512(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    SmoothStripAvx2(base, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
