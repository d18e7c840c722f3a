// AVX-512 (BW, VBMI, VNNI) twin of Matrix's line kernel: the AVX2 loops on
// sixteen pairs (64 output bytes) per step, both the 16-bit loop of kernels
// with a narrow form and the 32-bit one of the others, whose multiply-adds
// accumulate in one instruction, and the separable kernels' sums across and
// down; the shorter rest goes to the AVX2 loops. The 32-bit loop also runs
// two output lines at once, sharing the middle lines' loads and shuffles,
// which bound it.
// Every shuffle, unpack and pack works inside 128-bit lanes, each holding
// four whole pairs, exactly as in the AVX2 loops, so the bytes come out in
// order (the 32-bit loop's one two-window permute takes each lane's bytes
// from the same lane of both windows). Helpers are forced inline: 512-bit
// values are never passed to a call (the Windows stack is only 16-byte
// aligned).
#include "matrix_kernel.h"

#if defined(__x86_64__) || defined(_M_X64)
#include "zvf/avx512.h"

namespace zvf::filters {
namespace {

__attribute__((always_inline)) inline __m512i Load(const uint8_t* p) { return _mm512_loadu_si512(p); }

// How far ahead the line below is asked for (see the AVX2 loops).
constexpr ptrdiff_t kAhead = 1024;

// Byte shuffle of a 16-byte window starting 4 bytes before eight outputs:
// output j's left and right taps side by side (see the AVX2 loop).
alignas(16) constexpr int8_t kLeftRight[16] = {2, 6, 1, 9, 4, 8, 3, 11, 6, 10, 5, 13, 8, 12, 7, 15};

// The 32-bit loop's byte shuffles for windows starting 4 and 8 bytes before
// a pair (see the AVX2 loop), one 128-bit lane each.
alignas(16) constexpr int8_t kWideLeftCentre[32] = {2, -1, 4, -1, 1, -1, 5, -1, 4, -1, 6, -1, 3, -1, 7, -1,
                                                    6, -1, 8, -1, 5, -1, 9, -1, 8, -1, 10, -1, 7, -1, 11, -1};
alignas(16) constexpr int8_t kWideRight[32] = {6,  -1, -1, -1, 9,  -1, -1, -1, 8,  -1, -1, -1, 11, -1, -1, -1,
                                               10, -1, -1, -1, 13, -1, -1, -1, 12, -1, -1, -1, 15, -1, -1, -1};

// The top and middle lines' right taps side by side as the 16-bit halves
// of each output's lane, picked from both windows at once (indices 64 and
// up are the middle line's): lane k of the windows starting 4 and 8 bytes
// before a pair. The odd bytes are zeroed by the permute's mask.
constexpr __mmask64 kEvenBytes = 0x5555555555555555ull;
__attribute__((always_inline)) inline __m512i RightPairIndices(bool late) {
    int8_t idx[64];
    const int8_t taps[4] = {6, 9, 8, 11};
    for (int k = 0; k < 4; ++k)
        for (int j = 0; j < 4; ++j) {
            const int t = 16 * k + taps[j] + (late ? 4 : 0);
            idx[16 * k + 4 * j] = static_cast<int8_t>(t);
            idx[16 * k + 4 * j + 1] = 0;
            idx[16 * k + 4 * j + 2] = static_cast<int8_t>(64 + t);
            idx[16 * k + 4 * j + 3] = 0;
        }
    return _mm512_loadu_si512(idx);  // the Windows stack is only 16-byte aligned
}

__attribute__((always_inline)) inline __m512i Broadcast(const int8_t* lane) {
    return _mm512_broadcast_i32x4(_mm_load_si128(reinterpret_cast<const __m128i*>(lane)));
}

__attribute__((always_inline)) inline __m512i Pair(int32_t first, int32_t second) {
    const auto low = static_cast<uint16_t>(static_cast<uint8_t>(first));
    const auto high = static_cast<uint16_t>(static_cast<uint8_t>(second) << 8);
    return _mm512_set1_epi16(static_cast<int16_t>(low | high));
}

// `value` in every chroma (odd) word, 0 in the luma words.
__attribute__((always_inline)) inline __m512i ChromaWords(int32_t value) {
    return _mm512_and_si512(_mm512_set1_epi16(static_cast<int16_t>(value)), _mm512_set1_epi32(int32_t(0xFFFF0000u)));
}

// Where a 16-bit loop's sums start (see the AVX2 loop).
template <MatrixFinish kFinish>
__attribute__((always_inline)) inline __m512i Start(int16_t bias) {
    return ChromaWords(bias + (kFinish == MatrixFinish::kUnshifted ? 128 : 0));
}

// From one step's 16-bit sums to its 64 bytes, as in the AVX2 loop (the
// split form takes the 32-bit loop here).
template <MatrixFinish kFinish>
struct Finish {
    __m512i back, cap, scale, scaleHigh;
    __m128i shift;
    bool normalize;

    Finish(const MatrixNarrow& n, bool normalise) : normalize(normalise) {
        back = ChromaWords(128);
        cap = normalize ? _mm512_or_si512(_mm512_set1_epi32(255), ChromaWords(-1)) : _mm512_set1_epi8(-1);
        scale = _mm512_set1_epi16(n.scale);
        scaleHigh = _mm512_set1_epi16(static_cast<int16_t>(kFinish == MatrixFinish::kScaledHigh ? 16 * n.scale : 0));
        shift = _mm_cvtsi32_si128(n.shift);
    }

    __attribute__((always_inline)) inline __m512i Bytes(const __m512i& sumsLo, const __m512i& sumsHi) const {
        if constexpr (kFinish == MatrixFinish::kScaled) {
            __m512i p[4];
            for (int h = 0; h < 2; ++h) {
                const __m512i& sums = h == 0 ? sumsLo : sumsHi;
                const __m512i low = _mm512_mullo_epi16(sums, scale), high = _mm512_mulhi_epi16(sums, scale);
                p[2 * h] = _mm512_unpacklo_epi16(low, high);
                p[2 * h + 1] = _mm512_unpackhi_epi16(low, high);
            }
            // As the AVX2 loop: one arithmetic shift, the unsigned cap for luma.
            if (normalize)
                for (__m512i& v : p) v = _mm512_srai_epi32(v, 12);
            const __m512i a = _mm512_min_epu16(_mm512_adds_epi16(_mm512_packs_epi32(p[0], p[1]), back), cap);
            const __m512i b = _mm512_min_epu16(_mm512_adds_epi16(_mm512_packs_epi32(p[2], p[3]), back), cap);
            return _mm512_packus_epi16(a, b);
        } else {
            __m512i lo = sumsLo, hi = sumsHi;
            if constexpr (kFinish == MatrixFinish::kScaledHigh) {
                lo = _mm512_add_epi16(_mm512_min_epu16(_mm512_mulhi_epi16(lo, scaleHigh), cap), back);
                hi = _mm512_add_epi16(_mm512_min_epu16(_mm512_mulhi_epi16(hi, scaleHigh), cap), back);
            } else if constexpr (kFinish == MatrixFinish::kShifted) {
                lo = _mm512_add_epi16(_mm512_min_epu16(_mm512_sra_epi16(lo, shift), cap), back);
                hi = _mm512_add_epi16(_mm512_min_epu16(_mm512_sra_epi16(hi, shift), cap), back);
            } else {
                lo = _mm512_min_epu16(lo, cap);
                hi = _mm512_min_epu16(hi, cap);
            }
            return _mm512_packus_epi16(lo, hi);
        }
    }
};

// Whole steps of 64 output bytes from the narrow form; returns where it
// stopped. Loads 4 bytes before and after the step serve the first and the
// second eight outputs of each 128-bit lane (see the AVX2 loop).
template <MatrixFinish kFinish>
ptrdiff_t NarrowSteps(const MatrixSources& src, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                      const MatrixNarrow& n, bool normalize) {
    const __m512i leftRight = Broadcast(kLeftRight);
    __m512i sideWeights[3];
    bool sides[3];
    for (int r = 0; r < 3; ++r) {
        sideWeights[r] = Pair(n.weights[r][0], n.weights[r][2]);
        sides[r] = n.weights[r][0] != 0 || n.weights[r][2] != 0;
    }
    const __m512i outerCentres = Pair(n.weights[0][1], n.weights[2][1]);
    const __m512i middleCentre = Pair(n.weights[1][1], 0);
    const bool outer = n.weights[0][1] != 0 || n.weights[2][1] != 0;
    const bool middle = n.weights[1][1] != 0;
    const __m512i bias = Start<kFinish>(n.chromaBias);
    const __m512i zero = _mm512_setzero_si512();
    const Finish<kFinish> finish(n, normalize);
    return src.Steps(from, to, 64, [&](const uint8_t* const(&lines)[3], ptrdiff_t o) {
        _mm_prefetch(reinterpret_cast<const char*>(lines[2] + o + kAhead), _MM_HINT_T0);
        // No sum leaves 16 bits: the narrow form bounds them all.
        __m512i lo = bias, hi = bias;
        for (int r = 0; r < 3; ++r) {
            if (!sides[r]) continue;
            const __m512i a = _mm512_shuffle_epi8(Load(lines[r] + o - 4), leftRight);
            const __m512i b = _mm512_shuffle_epi8(Load(lines[r] + o + 4), leftRight);
            lo = _mm512_add_epi16(lo, _mm512_maddubs_epi16(a, sideWeights[r]));
            hi = _mm512_add_epi16(hi, _mm512_maddubs_epi16(b, sideWeights[r]));
        }
        if (outer) {
            const __m512i above = Load(lines[0] + o), below = Load(lines[2] + o);
            lo = _mm512_add_epi16(lo, _mm512_maddubs_epi16(_mm512_unpacklo_epi8(above, below), outerCentres));
            hi = _mm512_add_epi16(hi, _mm512_maddubs_epi16(_mm512_unpackhi_epi8(above, below), outerCentres));
        }
        if (middle) {
            const __m512i same = Load(lines[1] + o);
            lo = _mm512_add_epi16(lo, _mm512_maddubs_epi16(_mm512_unpacklo_epi8(same, zero), middleCentre));
            hi = _mm512_add_epi16(hi, _mm512_maddubs_epi16(_mm512_unpackhi_epi8(same, zero), middleCentre));
        }
        _mm512_storeu_si512(out + o, finish.Bytes(lo, hi));
    });
}

// A line's sums across for one step of 64 bytes (see the AVX2 loop).
struct AcrossSums {
    __m512i leftRight, sideWeights, centreWeight;

    explicit AcrossSums(const MatrixSeparable& s)
        : leftRight(Broadcast(kLeftRight)),
          sideWeights(Pair(s.across[0], s.across[2])),
          centreWeight(Pair(s.across[1], 0)) {}

    // The buffered line's ends (at least 72 bytes) serve the steps that read
    // its edge bytes; the frame serves the rest.
    __attribute__((always_inline)) inline void Step(const uint8_t* line, const uint8_t* row, ptrdiff_t o,
                                                    ptrdiff_t to, __m512i& lo, __m512i& hi) const {
        const uint8_t* at = o >= 4 && o + 68 <= to ? row : line;
        const __m512i same = Load(at + o), zero = _mm512_setzero_si512();
        const __m512i a = _mm512_maddubs_epi16(_mm512_unpacklo_epi8(same, zero), centreWeight);
        const __m512i b = _mm512_maddubs_epi16(_mm512_unpackhi_epi8(same, zero), centreWeight);
        lo = _mm512_add_epi16(a, _mm512_maddubs_epi16(_mm512_shuffle_epi8(Load(at + o - 4), leftRight), sideWeights));
        hi = _mm512_add_epi16(b, _mm512_maddubs_epi16(_mm512_shuffle_epi8(Load(at + o + 4), leftRight), sideWeights));
    }
};

// Whole steps of a separable kernel (see the AVX2 loop).
template <MatrixFinish kFinish, bool kOuterOnes, bool kMiddleOne>
ptrdiff_t DownSteps(int16_t* const (&across)[3], const uint8_t* line, const uint8_t* row, uint8_t* out,
                    ptrdiff_t to, const MatrixNarrow& n, const MatrixSeparable& s, bool normalize) {
    const AcrossSums sums(s);
    const __m512i bias = Start<kFinish>(n.chromaBias);
    const int16_t* const above[2] = {across[0], across[1]};
    int16_t* const below = across[2];
    __m512i down[3];
    for (int r = 0; r < 3; ++r) down[r] = _mm512_set1_epi16(s.down[r]);
    const Finish<kFinish> finish(n, normalize);
    ptrdiff_t o = 0;
    for (; o + 64 <= to; o += 64) {
        __m512i lo, hi;
        _mm_prefetch(reinterpret_cast<const char*>(row + o + kAhead), _MM_HINT_T0);
        sums.Step(line, row, o, to, lo, hi);
        _mm512_storeu_si512(below + o, lo);
        _mm512_storeu_si512(below + o + 32, hi);
        if (!kOuterOnes) {
            lo = _mm512_mullo_epi16(lo, down[2]);
            hi = _mm512_mullo_epi16(hi, down[2]);
        }
        lo = _mm512_add_epi16(lo, bias);
        hi = _mm512_add_epi16(hi, bias);
        for (int r = 0; r < 2; ++r) {
            __m512i a = _mm512_loadu_si512(above[r] + o);
            __m512i b = _mm512_loadu_si512(above[r] + o + 32);
            if (!(r == 1 ? kMiddleOne : kOuterOnes)) {
                a = _mm512_mullo_epi16(a, down[r]);
                b = _mm512_mullo_epi16(b, down[r]);
            }
            lo = _mm512_add_epi16(lo, a);
            hi = _mm512_add_epi16(hi, b);
        }
        _mm512_storeu_si512(out + o, finish.Bytes(lo, hi));
    }
    return o;
}

template <MatrixFinish kFinish>
ptrdiff_t SeparableSteps(int16_t* const (&across)[3], const uint8_t* line, const uint8_t* row, uint8_t* out,
                         ptrdiff_t to, const MatrixNarrow& n, const MatrixSeparable& s, bool normalize) {
    // Lines weighted 1 (all three in a box, the outer two in a binomial
    // blur) are added without multiplies.
    const bool outerOnes = s.down[0] == 1 && s.down[2] == 1;
    if (outerOnes && s.down[1] == 1) return DownSteps<kFinish, true, true>(across, line, row, out, to, n, s, normalize);
    if (outerOnes) return DownSteps<kFinish, true, false>(across, line, row, out, to, n, s, normalize);
    return DownSteps<kFinish, false, false>(across, line, row, out, to, n, s, normalize);
}

}  // namespace

void MatrixNarrowLineAvx512(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                            const MatrixCoefficients& c, const MatrixNarrow& narrow) {
    const bool normalize = c.normalize != 0;
    const MatrixFinish how = FinishOf(narrow, normalize);
    if (how == MatrixFinish::kSplit) {
        // Two 16-bit sums cost more here than the 32-bit loop, whose
        // multiply-adds accumulate in one instruction.
        MatrixWideLineAvx512(lines, out, from, to, c);
        return;
    }
    const ptrdiff_t o = WithFinish(how, [&](auto finish) -> ptrdiff_t {
        if constexpr (decltype(finish)::value == MatrixFinish::kSplit)
            return from;
        else
            return NarrowSteps<decltype(finish)::value>(lines, out, from, to, narrow, normalize);
    });
    if (o < to) MatrixNarrowLineAvx2(lines, out, o, to, c, narrow);
}

void MatrixAcrossAvx512(const uint8_t* line, const uint8_t* row, int16_t* across, ptrdiff_t to,
                        const MatrixSeparable& s) {
    const AcrossSums sums(s);
    for (ptrdiff_t o = 0; o + 64 <= to; o += 64) {
        __m512i lo, hi;
        sums.Step(line, row, o, to, lo, hi);
        _mm512_storeu_si512(across + o, lo);
        _mm512_storeu_si512(across + o + 32, hi);
    }
}

void MatrixSeparableLineAvx512(int16_t* const (&across)[3], const uint8_t* const (&lines)[3], const uint8_t* row,
                               uint8_t* out, ptrdiff_t to, const MatrixCoefficients& c, const MatrixNarrow& narrow,
                               const MatrixSeparable& s) {
    const bool normalize = c.normalize != 0;
    const ptrdiff_t o = WithFinish(FinishOf(narrow, normalize), [&](auto finish) -> ptrdiff_t {
        if constexpr (decltype(finish)::value == MatrixFinish::kSplit)
            return 0;  // never separable
        else
            return SeparableSteps<decltype(finish)::value>(across, lines[2], row, out, to, narrow, s, normalize);
    });
    if (o < to) MatrixNarrowLineAvx2(MatrixSources::Buffered(lines), out, o, to, c, narrow);
}

void MatrixLineAvx512(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                      const MatrixCoefficients& c) {
    MatrixNarrow narrow;
    if (SixteenBitMatrix(c, &narrow))
        MatrixNarrowLineAvx512(MatrixSources::Buffered(lines), out, from, to, c, narrow);
    else
        MatrixWideLineAvx512(MatrixSources::Buffered(lines), out, from, to, c);
}

namespace {

// The 32-bit loop's taps, coefficients and finish. Each output's lane
// takes its taps as 16-bit pairs, two per fused multiply-add: (left, centre)
// of each line, then the right taps of the top and middle lines together,
// picked from both windows by one permute, and the bottom line's alone. With
// mirrored top and bottom lines (kMirror +1 or -1) the bottom line's taps
// are first added to or taken from the top line's, exactly in 16 bits (at
// most 510 in size), and the lanes take three multiply-adds instead of five.
template <int kMirror>
struct WideKernel {
    __m512i leftCentreTaps[2], rightTaps[2], rightPair[2];  // [0]: the first pair's window, [1]: the others'
    __m512i leftCentre[3], topMiddleRight, bottomRight, bias, cap;
    bool normalize;

    explicit WideKernel(const MatrixCoefficients& c) : normalize(c.normalize != 0) {
        for (int late = 0; late < 2; ++late) {
            leftCentreTaps[late] = Broadcast(kWideLeftCentre + 16 * late);
            rightTaps[late] = Broadcast(kWideRight + 16 * late);
            rightPair[late] = RightPairIndices(late != 0);
        }
        const MatrixWideWords words = WideWordsOf(c);
        for (int r = 0; r < 3; ++r) leftCentre[r] = _mm512_set1_epi32(static_cast<int32_t>(words.leftCentre[r]));
        topMiddleRight = _mm512_set1_epi32(static_cast<int32_t>(words.topMiddleRight));
        bottomRight = _mm512_set1_epi32(static_cast<int32_t>(words.bottomRight));
        bias = _mm512_set1_epi64(static_cast<int64_t>(words.start));
        cap = _mm512_set1_epi32(static_cast<int32_t>(0xFFFF00FFu));
    }

    // Pair p's window (4 bytes before the step for the first, 8 before the
    // pair for the others) of a line at o.
    __attribute__((always_inline)) static inline __m512i Window(const uint8_t* line, ptrdiff_t o, int p) {
        return Load(line + o + 4 * p - (p == 0 ? 4 : 8));
    }

    __attribute__((always_inline)) inline __m512i LeftCentre(const __m512i& window, int p) const {
        return _mm512_shuffle_epi8(window, leftCentreTaps[p != 0]);
    }

    // One register's sums: the lines' (left, centre) taps and windows, top
    // to bottom.
    __attribute__((always_inline)) inline __m512i Sums(const __m512i& top, const __m512i& middle,
                                                       const __m512i& bottom, const __m512i (&windows)[3],
                                                       int p) const {
        const __m512i rt01 = _mm512_maskz_permutex2var_epi8(kEvenBytes, windows[0], rightPair[p != 0], windows[1]);
        const __m512i rt2 = _mm512_shuffle_epi8(windows[2], rightTaps[p != 0]);
        __m512i sums = bias;
        if constexpr (kMirror != 0) {
            const auto fold = [](const __m512i& a, const __m512i& b) {
                return kMirror > 0 ? _mm512_add_epi16(a, b) : _mm512_sub_epi16(a, b);
            };
            sums = _mm512_dpwssd_epi32(sums, fold(top, bottom), leftCentre[0]);
            sums = _mm512_dpwssd_epi32(sums, middle, leftCentre[1]);
            sums = _mm512_dpwssd_epi32(sums, fold(rt01, rt2), topMiddleRight);
        } else {
            sums = _mm512_dpwssd_epi32(sums, top, leftCentre[0]);
            sums = _mm512_dpwssd_epi32(sums, middle, leftCentre[1]);
            sums = _mm512_dpwssd_epi32(sums, bottom, leftCentre[2]);
            sums = _mm512_dpwssd_epi32(sums, rt01, topMiddleRight);
            sums = _mm512_dpwssd_epi32(sums, rt2, bottomRight);
        }
        return sums;
    }

    // Register p holds pairs p, p + 4, p + 8 and p + 12 (see the AVX2 loop);
    // the packs put them back in order.
    __attribute__((always_inline)) inline __m512i Bytes(__m512i (&sums)[4]) const {
        if (normalize)
            for (__m512i& v : sums) v = _mm512_srai_epi32(v, 12);
        __m512i low = _mm512_packs_epi32(sums[0], sums[1]);
        __m512i high = _mm512_packs_epi32(sums[2], sums[3]);
        if (normalize) {
            low = _mm512_min_epu16(low, cap);
            high = _mm512_min_epu16(high, cap);
        }
        return _mm512_packus_epi16(low, high);
    }
};

// Whole steps of 64 output bytes of the 32-bit loop; returns where it
// stopped.
template <int kMirror>
ptrdiff_t WideSteps(const MatrixSources& src, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    const WideKernel<kMirror> k(c);
    return src.Steps(from, to, 64, [&](const uint8_t* const(&lines)[3], ptrdiff_t o) {
        _mm_prefetch(reinterpret_cast<const char*>(lines[2] + o + kAhead), _MM_HINT_T0);
        __m512i sums[4];
        for (int p = 0; p < 4; ++p) {
            __m512i w[3];
            for (int r = 0; r < 3; ++r) w[r] = k.Window(lines[r], o, p);
            sums[p] = k.Sums(k.LeftCentre(w[0], p), k.LeftCentre(w[1], p), k.LeftCentre(w[2], p), w, p);
        }
        _mm512_storeu_si512(out + o, k.Bytes(sums));
    });
}

// Whole steps of two output lines at once, the second one line lower: each
// of the four lines is loaded and shuffled once for both, so a step of 2 x 64
// bytes takes 24 byte shuffles where two single steps take 32 (and 8
// permutes either way); the shuffles bound the loop.
template <int kMirror>
ptrdiff_t WidePairSteps(const MatrixPairSources& src, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c) {
    const WideKernel<kMirror> k(c);
    return src.Steps(from, to, 64, [&](const uint8_t* const(&lines)[4], ptrdiff_t o) {
        // Both lower lines are new to this pair of output lines.
        _mm_prefetch(reinterpret_cast<const char*>(lines[2] + o + kAhead), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(lines[3] + o + kAhead), _MM_HINT_T0);
        __m512i upper[4], lower[4];
        for (int p = 0; p < 4; ++p) {
            __m512i w[4], lc[4];
            for (int r = 0; r < 4; ++r) {
                w[r] = k.Window(lines[r], o, p);
                lc[r] = k.LeftCentre(w[r], p);
            }
            upper[p] = k.Sums(lc[0], lc[1], lc[2], {w[0], w[1], w[2]}, p);
            lower[p] = k.Sums(lc[1], lc[2], lc[3], {w[1], w[2], w[3]}, p);
        }
        _mm512_storeu_si512(out[0] + o, k.Bytes(upper));
        _mm512_storeu_si512(out[1] + o, k.Bytes(lower));
    });
}

}  // namespace

void MatrixWideLineAvx512(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c) {
    const ptrdiff_t o = WithMirroredRows(
        c, [&](auto mirror) { return WideSteps<decltype(mirror)::value>(lines, out, from, to, c); });
    if (o < to) MatrixWideLineAvx2(lines, out, o, to, c);
}

void MatrixWidePairAvx512(const MatrixPairSources& lines, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c) {
    const ptrdiff_t o = WithMirroredRows(
        c, [&](auto mirror) { return WidePairSteps<decltype(mirror)::value>(lines, out, from, to, c); });
    if (o < to)
        for (int i = 0; i < 2; ++i) MatrixWideLineAvx2(lines.Three(i), out[i], o, to, c);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void MatrixLineAvx512(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                      const MatrixCoefficients& c) {
    MatrixLineAvx2(lines, out, from, to, c);
}

void MatrixNarrowLineAvx512(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                            const MatrixCoefficients& c, const MatrixNarrow& narrow) {
    MatrixNarrowLineAvx2(lines, out, from, to, c, narrow);
}

void MatrixWideLineAvx512(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c) {
    MatrixWideLineAvx2(lines, out, from, to, c);
}

void MatrixWidePairAvx512(const MatrixPairSources& lines, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c) {
    for (int i = 0; i < 2; ++i) MatrixWideLineAvx2(lines.Three(i), out[i], from, to, c);
}

void MatrixAcrossAvx512(const uint8_t* line, const uint8_t* row, int16_t* across, ptrdiff_t to,
                        const MatrixSeparable& s) {
    MatrixAcrossAvx2(line, row, across, to, s);
}

void MatrixSeparableLineAvx512(int16_t* const (&across)[3], const uint8_t* const (&lines)[3], const uint8_t* row,
                               uint8_t* out, ptrdiff_t to, const MatrixCoefficients& c, const MatrixNarrow& narrow,
                               const MatrixSeparable& s) {
    MatrixSeparableLineAvx2(across, lines, row, out, to, c, narrow, s);
}

}  // namespace zvf::filters

#endif
