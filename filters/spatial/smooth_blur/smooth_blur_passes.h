// Smooth Blur's wide-register passes, written once for the AVX2 and AVX-512
// units that include this header. `V` is the unit's register set:
//   Reg, kBytes (bytes per register) and kRows (rows of one pixel pair per
//   register, kBytes / 4);
//   Load, Store; Centred, Accumulate, NextStates and Output, the recursion's
//   arithmetic on byte columns (see the AVX2 unit);
//   OnePair, PutOnePair, FourPairs and PutFourPairs, one or four pixel pairs
//   of kRows rows (rows without a destination, null, left alone).
// Its byte and word unpacks and packs work inside 128-bit lanes at both
// widths, so the lane order they make is undone the same way. Everything is
// forced inline: register values are never passed to a call (the Windows
// stack is only 16-byte aligned).
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace zvf::filters::smooth_passes {
namespace {

#define ZVF_PASS_INLINE __attribute__((always_inline)) inline

// One step of kBytes columns (or of a pair of kRows rows) held as bytes,
// with the states as two sets of 16-bit lanes: the accumulators into acc,
// the states moved on.
template <class V>
ZVF_PASS_INLINE void Advance(const typename V::Reg& weights, const typename V::Reg& bytes, typename V::Reg& plo,
                             typename V::Reg& phi, typename V::Reg (&acc)[4]) {
    typename V::Reg xlo, xhi;
    V::Centred(bytes, xlo, xhi);
    V::Accumulate(weights, xlo, plo, acc[0], acc[1]);
    V::Accumulate(weights, xhi, phi, acc[2], acc[3]);
    plo = V::NextStates(acc[0], acc[1]);
    phi = V::NextStates(acc[2], acc[3]);
}

// The backward step: the states move on from the backward accumulators,
// and the forward ones are formed again from the same samples and the
// 16-bit states the forward sweep entered this step with (f: the lanes of
// lo, then those of hi).
template <class V>
ZVF_PASS_INLINE typename V::Reg BackwardStep(const typename V::Reg& weights, const typename V::Reg& bytes,
                                             typename V::Reg& plo, typename V::Reg& phi, const int16_t* f) {
    typename V::Reg xlo, xhi, acc[4], fwd[4];
    V::Centred(bytes, xlo, xhi);
    V::Accumulate(weights, xlo, plo, acc[0], acc[1]);
    V::Accumulate(weights, xhi, phi, acc[2], acc[3]);
    plo = V::NextStates(acc[0], acc[1]);
    phi = V::NextStates(acc[2], acc[3]);
    V::Accumulate(weights, xlo, V::Load(f), fwd[0], fwd[1]);
    V::Accumulate(weights, xhi, V::Load(f + V::kBytes / 2), fwd[2], fwd[3]);
    return V::Output(acc, fwd);
}

// Keeps the states a forward step is entered with, half the bytes of its
// accumulators.
template <class V>
ZVF_PASS_INLINE void PutStates(int16_t* f, const typename V::Reg& lo, const typename V::Reg& hi) {
    V::Store(f, lo);
    V::Store(f + V::kBytes / 2, hi);
}

// The forward sweep reads 2 kRows rows side by side, more streams than the
// hardware prefetchers follow well; each row's line a few ahead is asked for
// once per line.
constexpr int32_t kRowAhead = 512;

template <class V, int G>
ZVF_PASS_INLINE void PrefetchRows(const uint8_t* const (&s)[G][V::kRows], int32_t at) {
    for (int g = 0; g < G; ++g)
        for (int k = 0; k < V::kRows; ++k) _mm_prefetch(reinterpret_cast<const char*>(s[g][k] + at), _MM_HINT_T0);
}

// 16-bit lanes a pair of a group keeps: the states the forward step was
// entered with, then the step's samples as the transpose left them.
template <class V>
constexpr int32_t kEntry = 3 * V::kBytes / 2;

// G groups of kRows rows at once, 2 G recursions in flight. Rows s[g][k]
// into d[g][k] (null: a repeated row whose results are not wanted). Four
// pairs at a time through the transpose, the pairs past the last four one at
// a time. The backward sweep takes the samples from the entries rather than
// reading the rows and transposing them again. Every row's pairs are read
// before the same pairs are written, so repeated rows and src == dst are
// safe.
template <class V, int G>
ZVF_PASS_INLINE void RowGroups(const typename V::Reg& weights, const uint8_t* const (&s)[G][V::kRows],
                               uint8_t* const (&d)[G][V::kRows], int32_t pairs, int16_t* fwd) {
    using Reg = typename V::Reg;
    constexpr int32_t kE = kEntry<V>;
    const int32_t whole = pairs & ~3;
    Reg lo[G], hi[G], acc[4];
    for (int g = 0; g < G; ++g) V::Centred(V::OnePair(s[g], 0), lo[g], hi[g]);
    for (int32_t i = 0; i < whole; i += 4) {
        if ((i & 15) == 0 && 4 * i + kRowAhead < 4 * pairs) PrefetchRows<V, G>(s, 4 * i + kRowAhead);
        for (int g = 0; g < G; ++g) {
            Reg q[4];
            V::FourPairs(s[g], 4 * i, q);
            for (int t = 0; t < 4; ++t) {
                int16_t* e = fwd + kE * (G * (i + t) + g);
                PutStates<V>(e, lo[g], hi[g]);
                V::Store(e + V::kBytes, q[t]);
                Advance<V>(weights, q[t], lo[g], hi[g], acc);
            }
        }
    }
    for (int32_t i = whole; i < pairs; ++i)
        for (int g = 0; g < G; ++g) {
            PutStates<V>(fwd + kE * (G * i + g), lo[g], hi[g]);
            Advance<V>(weights, V::OnePair(s[g], 4 * i), lo[g], hi[g], acc);
        }

    for (int g = 0; g < G; ++g) V::Centred(V::OnePair(s[g], 4 * (pairs - 1)), lo[g], hi[g]);
    for (int32_t i = pairs - 1; i >= whole; --i)
        for (int g = 0; g < G; ++g)
            V::PutOnePair(d[g], 4 * i,
                          BackwardStep<V>(weights, V::OnePair(s[g], 4 * i), lo[g], hi[g], fwd + kE * (G * i + g)));
    for (int32_t i = whole - 4; i >= 0; i -= 4) {
        for (int g = 0; g < G; ++g) {
            Reg q[4];
            for (int t = 3; t >= 0; --t) {
                const int16_t* e = fwd + kE * (G * (i + t) + g);
                q[t] = BackwardStep<V>(weights, V::Load(e + V::kBytes), lo[g], hi[g], e);
            }
            V::PutFourPairs(d[g], 4 * i, q);
        }
    }
}

// Keeping the 32-bit accumulators rather than the 16-bit states saves the
// downward sweep a quarter of its vector work, but doubles the scratch a
// strip sweeps twice. Measured, it pays while that scratch stays well inside
// the second-level cache (a 540-row field of 128-byte strips, 270 KiB) and
// costs more than it saves beyond (a 1080-row one, 540 KiB).
constexpr int64_t kSumsBytes = 320 * 1024;

// The upward sweeps climb the field against the hardware prefetchers'
// direction; the rows they reach this many steps later are asked for ahead.
constexpr int32_t kUpAhead = 16;

ZVF_PASS_INLINE void PrefetchRow(const uint8_t* row, int32_t bytes) {
    for (int32_t j = 0; j < bytes; j += 64) _mm_prefetch(reinterpret_cast<const char*>(row + j), _MM_HINT_T0);
}

// Every column of a strip N kBytes wide, the rows swept as in the scalar
// version. The states of all N steps stay in registers from row to row.
// With Sums the upward sweep keeps each row's 32-bit accumulators, in the
// order the unpacks make them, which is the order Output takes them in, and
// the downward sweep reads them back as they are (the scratch has a 32-bit
// lane per column and row). Without, it keeps per row the 16-bit state it
// entered the row with, half the bytes, and the downward sweep forms the
// accumulator again from the row's sample as it forms the output.
template <class V, int N, bool Sums>
ZVF_PASS_INLINE void Strip(const typename V::Reg& weights, uint8_t* base, ptrdiff_t step, int32_t rows,
                           int32_t* sums) {
    using Reg = typename V::Reg;
    constexpr int32_t kB = V::kBytes;
    constexpr int32_t kWidth = kB * N;
    Reg lo[N], hi[N], acc[4], back[4];
    const uint8_t* bottom = base + (rows - 1) * step;
    for (int n = 0; n < N; ++n) V::Centred(V::Load(bottom + kB * n), lo[n], hi[n]);
    if constexpr (Sums) {
        for (int32_t k = rows - 1; k >= 0; --k) {
            const uint8_t* in = base + k * step;
            int32_t* here = sums + static_cast<ptrdiff_t>(k) * kWidth;
            if (k >= kUpAhead) PrefetchRow(in - kUpAhead * step, kWidth);
            for (int n = 0; n < N; ++n) {
                Advance<V>(weights, V::Load(in + kB * n), lo[n], hi[n], acc);
                for (int t = 0; t < 4; ++t) V::Store(here + kB * n + kB / 4 * t, acc[t]);
            }
        }
        for (int n = 0; n < N; ++n) V::Centred(V::Load(base + kB * n), lo[n], hi[n]);
        for (int32_t k = 0; k < rows; ++k) {
            uint8_t* row = base + k * step;
            const int32_t* here = sums + static_cast<ptrdiff_t>(k) * kWidth;
            for (int n = 0; n < N; ++n) {
                Advance<V>(weights, V::Load(row + kB * n), lo[n], hi[n], acc);
                for (int t = 0; t < 4; ++t) back[t] = V::Load(here + kB * n + kB / 4 * t);
                V::Store(row + kB * n, V::Output(acc, back));
            }
        }
        return;
    }
    int16_t* up = reinterpret_cast<int16_t*>(sums);
    for (int32_t k = rows - 1; k >= 1; --k) {
        const uint8_t* in = base + k * step;
        int16_t* here = up + static_cast<ptrdiff_t>(k) * kWidth;
        if (k >= kUpAhead) PrefetchRow(in - kUpAhead * step, kWidth);
        for (int n = 0; n < N; ++n) {
            PutStates<V>(here + kB * n, lo[n], hi[n]);
            Advance<V>(weights, V::Load(in + kB * n), lo[n], hi[n], acc);
        }
    }
    for (int n = 0; n < N; ++n) PutStates<V>(up + kB * n, lo[n], hi[n]);
    for (int n = 0; n < N; ++n) V::Centred(V::Load(base + kB * n), lo[n], hi[n]);
    for (int32_t k = 0; k < rows; ++k) {
        uint8_t* row = base + k * step;
        const int16_t* here = up + static_cast<ptrdiff_t>(k) * kWidth;
        for (int n = 0; n < N; ++n)
            V::Store(row + kB * n, BackwardStep<V>(weights, V::Load(row + kB * n), lo[n], hi[n], here + kB * n));
    }
}

// A strip of `whole` columns (a multiple of kBytes) in runs of up to three
// steps whose states stay in registers.
template <class V>
ZVF_PASS_INLINE void Strips(const typename V::Reg& weights, uint8_t* base, ptrdiff_t step, int32_t rows,
                            int32_t whole, int32_t* up) {
    constexpr int32_t kRun = 3 * V::kBytes;
    const bool sums = static_cast<int64_t>(rows) * (whole < kRun ? whole : kRun) * 4 <= kSumsBytes;
    for (int32_t c = 0; c < whole; c += kRun) {
        uint8_t* at = base + c;
        switch ((whole - c < kRun ? whole - c : kRun) / V::kBytes + (sums ? 3 : 0)) {
            case 1:
                Strip<V, 1, false>(weights, at, step, rows, up);
                break;
            case 2:
                Strip<V, 2, false>(weights, at, step, rows, up);
                break;
            case 3:
                Strip<V, 3, false>(weights, at, step, rows, up);
                break;
            case 4:
                Strip<V, 1, true>(weights, at, step, rows, up);
                break;
            case 5:
                Strip<V, 2, true>(weights, at, step, rows, up);
                break;
            default:
                Strip<V, 3, true>(weights, at, step, rows, up);
                break;
        }
    }
}

#undef ZVF_PASS_INLINE

}  // namespace
}  // namespace zvf::filters::smooth_passes
