// Smooth Blur's passes with AVX2: the horizontal one a pixel pair of eight
// rows per register, four pairs of them loaded and transposed at a time, two
// groups of eight rows in flight; the vertical one 32 byte columns of a strip
// at a time, the rows swept as in the scalar version, columns left over past
// the last 32 going to the SSE2 pass. Helpers are forced inline: 256-bit
// values are never passed to a call (misaligned stack spills on some Windows
// toolchains).
#include <algorithm>

#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_row_groups.h"
#include "spatial/blur/blur_scratch.h"

#if defined(__AVX2__)
#include <immintrin.h>

#include "spatial/blur/blur_rows_avx2.h"

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

ZVF_INLINE __m256i Load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
ZVF_INLINE void Store(void* p, const __m256i& v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }

// Bytes x as the centred (x - 128) * 256: the byte x ^ 0x80 is x - 128 as a
// signed byte, and unpacking it above a zero byte multiplies by 256. Two sets
// of 16-bit lanes from the two in-lane unpacks.
ZVF_INLINE void Centred(const __m256i& bytes, __m256i& lo, __m256i& hi) {
    const __m256i flipped = _mm256_xor_si256(bytes, _mm256_set1_epi8(static_cast<char>(0x80)));
    lo = _mm256_unpacklo_epi8(_mm256_setzero_si256(), flipped);
    hi = _mm256_unpackhi_epi8(_mm256_setzero_si256(), flipped);
}

// (32768 - a) x' + a p of sixteen 16-bit lanes as two multiply-adds of
// interleaved (x', p), and the next states from them.
ZVF_INLINE void Accumulate(const __m256i& weights, const __m256i& x, const __m256i& p, __m256i& lo, __m256i& hi) {
    lo = _mm256_madd_epi16(_mm256_unpacklo_epi16(x, p), weights);
    hi = _mm256_madd_epi16(_mm256_unpackhi_epi16(x, p), weights);
}

ZVF_INLINE __m256i NextStates(const __m256i& lo, const __m256i& hi) {
    return _mm256_packs_epi32(_mm256_srai_epi32(lo, 15), _mm256_srai_epi32(hi, 15));
}

// Output bytes of 32 columns from the accumulators of both directions, four
// sets of eight in the order the unpacks made them. |G + F| stays within
// 2^31, so (G + F) >> 16 never saturates and the output is ((G + F) >> 24) +
// 128, a signed byte with its top bit flipped; the packs restore the column
// order of the unpacks.
ZVF_INLINE __m256i Output(const __m256i (&g)[4], const __m256i (&f)[4]) {
    __m256i v[4];
    for (int k = 0; k < 4; ++k) v[k] = _mm256_srai_epi32(_mm256_add_epi32(g[k], f[k]), 24);
    const __m256i bytes = _mm256_packs_epi16(_mm256_packs_epi32(v[0], v[1]), _mm256_packs_epi32(v[2], v[3]));
    return _mm256_xor_si256(bytes, _mm256_set1_epi8(static_cast<char>(0x80)));
}

// One step of 32 columns (or of a pair of eight rows) held as bytes, with the
// states as two sets of 16-bit lanes: the accumulators into acc, the states
// moved on.
ZVF_INLINE void Advance(const __m256i& weights, const __m256i& bytes, __m256i& plo, __m256i& phi, __m256i (&acc)[4]) {
    __m256i xlo, xhi;
    Centred(bytes, xlo, xhi);
    Accumulate(weights, xlo, plo, acc[0], acc[1]);
    Accumulate(weights, xhi, phi, acc[2], acc[3]);
    plo = NextStates(acc[0], acc[1]);
    phi = NextStates(acc[2], acc[3]);
}

// The backward step of 32 lanes: the states move on from the backward
// accumulators, and the forward ones are computed again from the same
// samples and the 16-bit states the forward sweep entered this step with
// (f: the lanes of lo, then those of hi).
ZVF_INLINE __m256i BackwardStep(const __m256i& weights, const __m256i& bytes, __m256i& plo, __m256i& phi,
                                const int16_t* f) {
    __m256i xlo, xhi, acc[4], fwd[4];
    Centred(bytes, xlo, xhi);
    Accumulate(weights, xlo, plo, acc[0], acc[1]);
    Accumulate(weights, xhi, phi, acc[2], acc[3]);
    plo = NextStates(acc[0], acc[1]);
    phi = NextStates(acc[2], acc[3]);
    Accumulate(weights, xlo, Load(f), fwd[0], fwd[1]);
    Accumulate(weights, xhi, Load(f + 16), fwd[2], fwd[3]);
    return Output(acc, fwd);
}

ZVF_INLINE void Begin(const __m256i& bytes, __m256i& plo, __m256i& phi) { Centred(bytes, plo, phi); }

// Keeps the states a forward step is entered with, half the bytes of its
// accumulators.
ZVF_INLINE void PutStates(int16_t* f, const __m256i& lo, const __m256i& hi) {
    Store(f, lo);
    Store(f + 16, hi);
}

// The forward sweep reads sixteen rows side by side, more streams than the
// hardware prefetchers follow well; each row's line a few ahead is asked for
// once per line.
constexpr int32_t kRowAhead = 512;

template <int G>
ZVF_INLINE void PrefetchRows(const uint8_t* const (&s)[G][8], int32_t at) {
    for (int g = 0; g < G; ++g)
        for (int k = 0; k < 8; ++k) _mm_prefetch(reinterpret_cast<const char*>(s[g][k] + at), _MM_HINT_T0);
}

constexpr int32_t kEntry = 48;

// G groups of eight rows at once, 2 G recursions in flight. Rows s[g][k] into
// d[g][k] (null: a repeated row whose results are not wanted). Four pairs at a
// time through the transpose, the pairs past the last four one at a time.
// Each pair of a group takes kEntry 16-bit lanes: the 16-bit states the forward
// step was entered with, then the step's samples as the transpose left them,
// so that the backward sweep neither reads the rows nor transposes them
// again. Every row's pairs are read before the same pairs are written, so
// repeated rows and src == dst are safe.
template <int G>
ZVF_INLINE void RowGroups(const __m256i& weights, const uint8_t* const (&s)[G][8], uint8_t* const (&d)[G][8],
                          int32_t pairs, int16_t* fwd) {
    const int32_t whole = pairs & ~3;
    __m256i lo[G], hi[G], acc[4];
    for (int g = 0; g < G; ++g) Begin(OnePair(s[g], 0), lo[g], hi[g]);
    for (int32_t i = 0; i < whole; i += 4) {
        if ((i & 15) == 0 && 4 * i + kRowAhead < 4 * pairs) PrefetchRows(s, 4 * i + kRowAhead);
        for (int g = 0; g < G; ++g) {
            __m256i q[4];
            FourPairs(s[g], 4 * i, q);
            for (int t = 0; t < 4; ++t) {
                int16_t* e = fwd + kEntry * (G * (i + t) + g);
                PutStates(e, lo[g], hi[g]);
                Store(e + 32, q[t]);
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
            __m256i q[4];
            for (int t = 3; t >= 0; --t) {
                const int16_t* e = fwd + kEntry * (G * (i + t) + g);
                q[t] = BackwardStep(weights, Load(e + 32), lo[g], hi[g], e);
            }
            PutFourPairs(d[g], 4 * i, q);
        }
    }
}

// Keeping the 32-bit accumulators rather than the 16-bit states saves the
// downward sweep a quarter of its vector work, but doubles the scratch a
// strip sweeps twice. Measured, it pays while that scratch stays well inside
// the second-level cache (a 540-row field of 128-byte strips, 270 KiB) and
// costs more than it saves beyond (a 1080-row one, 540 KiB).
constexpr int64_t kSumsBytes = 320 * 1024;

// Every column of a strip 32 N bytes wide, the rows swept as in the scalar
// version. The states of all N steps stay in registers from row to row.
// With Sums the upward sweep keeps each row's 32-bit accumulators, in the
// order the unpacks make them, which is the order Output takes them in, and
// the downward sweep reads them back as they are (the scratch has a 32-bit
// lane per column and row). Without, it keeps per row the 16-bit state it
// entered the row with, half the bytes, and the downward sweep computes the
// accumulator again from the row's sample (one more unpack and multiply-add
// per lane) as it forms the output.
template <int N, bool Sums>
ZVF_INLINE void Strip(const __m256i& weights, uint8_t* base, ptrdiff_t step, int32_t rows, int32_t* sums) {
    if constexpr (Sums) {
        constexpr int32_t kWidth = 32 * N;
        __m256i lo[N], hi[N], acc[4], back[4];
        const uint8_t* bottom = base + (rows - 1) * step;
        for (int n = 0; n < N; ++n) Begin(Load(bottom + 32 * n), lo[n], hi[n]);
        for (int32_t k = rows - 1; k >= 0; --k) {
            const uint8_t* in = base + k * step;
            int32_t* here = sums + static_cast<ptrdiff_t>(k) * kWidth;
            if (k >= kAhead) PrefetchRow(in - kAhead * step, kWidth);
            for (int n = 0; n < N; ++n) {
                Advance(weights, Load(in + 32 * n), lo[n], hi[n], acc);
                for (int t = 0; t < 4; ++t) Store(here + 32 * n + 8 * t, acc[t]);
            }
        }
        for (int n = 0; n < N; ++n) Begin(Load(base + 32 * n), lo[n], hi[n]);
        for (int32_t k = 0; k < rows; ++k) {
            uint8_t* row = base + k * step;
            const int32_t* here = sums + static_cast<ptrdiff_t>(k) * kWidth;
            for (int n = 0; n < N; ++n) {
                Advance(weights, Load(row + 32 * n), lo[n], hi[n], acc);
                for (int t = 0; t < 4; ++t) back[t] = Load(here + 32 * n + 8 * t);
                Store(row + 32 * n, Output(acc, back));
            }
        }
        return;
    }
    int16_t* up = reinterpret_cast<int16_t*>(sums);
    constexpr int32_t kWidth = 32 * N;
    __m256i lo[N], hi[N], acc[4], back[4];
    const uint8_t* bottom = base + (rows - 1) * step;
    for (int n = 0; n < N; ++n) Begin(Load(bottom + 32 * n), lo[n], hi[n]);
    for (int32_t k = rows - 1; k >= 1; --k) {
        const uint8_t* in = base + k * step;
        int16_t* here = up + static_cast<ptrdiff_t>(k) * kWidth;
        if (k >= kAhead) PrefetchRow(in - kAhead * step, kWidth);
        for (int n = 0; n < N; ++n) {
            Store(here + 32 * n, lo[n]);
            Store(here + 32 * n + 16, hi[n]);
            Advance(weights, Load(in + 32 * n), lo[n], hi[n], acc);
        }
    }
    for (int n = 0; n < N; ++n) {
        Store(up + 32 * n, lo[n]);
        Store(up + 32 * n + 16, hi[n]);
    }
    for (int n = 0; n < N; ++n) Begin(Load(base + 32 * n), lo[n], hi[n]);
    for (int32_t k = 0; k < rows; ++k) {
        uint8_t* row = base + k * step;
        const int16_t* here = up + static_cast<ptrdiff_t>(k) * kWidth;
        for (int n = 0; n < N; ++n) {
            __m256i xlo, xhi;
            Centred(Load(row + 32 * n), xlo, xhi);
            Accumulate(weights, xlo, lo[n], acc[0], acc[1]);
            Accumulate(weights, xhi, hi[n], acc[2], acc[3]);
            lo[n] = NextStates(acc[0], acc[1]);
            hi[n] = NextStates(acc[2], acc[3]);
            Accumulate(weights, xlo, Load(here + 32 * n), back[0], back[1]);
            Accumulate(weights, xhi, Load(here + 32 * n + 16), back[2], back[3]);
            Store(row + 32 * n, Output(acc, back));
        }
    }
}

}  // namespace

void SmoothRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 96 bytes per pair and group of eight rows (kEntry 16-bit lanes), 24
    // lanes of the scratch. Two groups where the field and the scratch have
    // room for them. Other weights: see the SSE2 pass.
    const size_t room = fwd.size() / (kEntry / 2 * static_cast<size_t>(v.pairs));
    if (room < 1 || v.rows < 5 || a < 1 || a > 32767) {
        SmoothRowsSse2(v, a, fwd);
        return;
    }
    const __m256i weights =
        _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
    int16_t* states = reinterpret_cast<int16_t*>(fwd.data());
    if (room >= 2 && v.rows > 8) {
        ForEachRowGroup<2, 8>(v, [&](const auto& s, const auto& d) { RowGroups<2>(weights, s, d, v.pairs, states); });
    } else {
        ForEachRowGroup<1, 8>(v, [&](const auto& s, const auto& d) { RowGroups<1>(weights, s, d, v.pairs, states); });
    }
}

void SmoothStripAvx2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    const int32_t whole = (a >= 1 && a <= 32767) ? lanes & ~31 : 0;  // other weights: see the SSE2 pass
    if (whole > 0) {
        // (32768 - a) x' + a p as multiply-adds of interleaved (x', p).
        const __m256i weights = _mm256_set1_epi32(
            static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
        // Up to three steps of 32 columns whose states stay in registers at a time.
        const bool sums = static_cast<int64_t>(rows) * std::min(whole, 96) * 4 <= kSumsBytes;
        for (int32_t c = 0; c < whole; c += 96) {
            uint8_t* at = base + c;
            switch (std::min(whole - c, 96) / 32 + (sums ? 3 : 0)) {
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
