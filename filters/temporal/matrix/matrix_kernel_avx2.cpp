// AVX2 twin of Matrix's line kernel: eight pairs (32 output bytes) per step,
// the SSE2 arrangement in 256-bit registers; the shorter rest goes to the SSE2
// twin. The packing steps work within each 128-bit half, which holds four
// whole pairs, so the bytes come out in order.
// In the 32-bit loop each 32-bit lane holds one output byte: a byte shuffle
// of each line puts its left and centre taps side by side as 16-bit halves
// of the lane, so one multiply-add applies two coefficients; the top and
// middle lines' right taps share a third, the bottom line's takes a fourth.
// A bottom line that mirrors the top one is folded into it first. Luma and
// chroma share the registers; the sums start at a per-lane bias that
// re-centres chroma, and one arithmetic shift serves both, a negative luma
// sum being made white after packing, as in the 16-bit loop.
// Kernels with a narrow, scaled or split form take a cheaper loop: bytes
// times signed byte weights, two taps per product pair, summed in 16 bits,
// then shifted or multiplied by the kernel's common factor (the split form
// keeps a second sum for its residuals and adds it in the same multiply).
// A separable kernel forms each line's sums across once, into a 16-bit line
// in the same lane order, and each output line adds three of them.
#include "matrix_kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace zvf::filters {
#if defined(__AVX2__)
namespace {

// Forced inline: 256-bit values are never passed to a call (misaligned
// stack spills on some Windows toolchains).
__attribute__((always_inline)) inline __m256i Load(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

// The lines' middles are read from the frame (with two frames, or the line
// below in the separable loops), where at 2160p the hardware prefetchers
// fall behind; the line below's bytes this far ahead are asked for as the
// steps go: at every step of the 16-bit and 32-bit loops (testing for every
// other one cost them more at 1080p than the requests it saved), at every
// other step of the separable ones.
constexpr ptrdiff_t kAhead = 1024;

// Byte shuffle of a 16-byte window starting 4 bytes before eight outputs:
// output j's left and right taps side by side. Luma (even j) taps are 2
// bytes apart, chroma (odd j) 4.
alignas(32) constexpr int8_t kLeftRight[32] = {2, 6, 1, 9, 4, 8, 3, 11, 6, 10, 5, 13, 8, 12, 7, 15,
                                               2, 6, 1, 9, 4, 8, 3, 11, 6, 10, 5, 13, 8, 12, 7, 15};

// The 32-bit loop's byte shuffles of a 16-byte window starting 4 bytes
// before one pair: output j of the pair gets its left and centre taps as
// the 16-bit halves of lane j, or its right tap alone. The second 32 bytes
// are the same for a window starting 8 bytes before the pair.
alignas(32) constexpr int8_t kWideLeftCentre[64] = {
    2, -1, 4, -1, 1, -1, 5, -1, 4, -1, 6,  -1, 3, -1, 7,  -1, 2, -1, 4, -1, 1, -1, 5, -1, 4, -1, 6,  -1, 3, -1, 7,  -1,
    6, -1, 8, -1, 5, -1, 9, -1, 8, -1, 10, -1, 7, -1, 11, -1, 6, -1, 8, -1, 5, -1, 9, -1, 8, -1, 10, -1, 7, -1, 11, -1};
alignas(32) constexpr int8_t kWideRight[64] = {
    6,  -1, -1, -1, 9,  -1, -1, -1, 8,  -1, -1, -1, 11, -1, -1, -1,  // window 4 bytes before the pair
    6,  -1, -1, -1, 9,  -1, -1, -1, 8,  -1, -1, -1, 11, -1, -1, -1,
    10, -1, -1, -1, 13, -1, -1, -1, 12, -1, -1, -1, 15, -1, -1, -1,  // 8 bytes before
    10, -1, -1, -1, 13, -1, -1, -1, 12, -1, -1, -1, 15, -1, -1, -1};

__attribute__((always_inline)) inline __m256i Pair(int32_t first, int32_t second) {
    const auto low = static_cast<uint16_t>(static_cast<uint8_t>(first));
    const auto high = static_cast<uint16_t>(static_cast<uint8_t>(second) << 8);
    return _mm256_set1_epi16(static_cast<int16_t>(low | high));
}

// Adds the byte pairs of the low and high halves times their two weights.
__attribute__((always_inline)) inline void Accumulate(__m256i& lo, __m256i& hi, const __m256i& low,
                                                      const __m256i& high, const __m256i& weights) {
    lo = _mm256_add_epi16(lo, _mm256_maddubs_epi16(low, weights));
    hi = _mm256_add_epi16(hi, _mm256_maddubs_epi16(high, weights));
}

// `value` in every chroma (odd) word, 0 in the luma words.
__attribute__((always_inline)) inline __m256i ChromaWords(int32_t value) {
    return _mm256_and_si256(_mm256_set1_epi16(static_cast<int16_t>(value)), _mm256_set1_epi32(int32_t(0xFFFF0000u)));
}

// Where a 16-bit loop's sums start: the chroma bias (and, unshifted,
// chroma's 128 as well) in the chroma words.
template <MatrixFinish kFinish>
__attribute__((always_inline)) inline __m256i Start(int16_t bias) {
    return ChromaWords(bias + (kFinish == MatrixFinish::kUnshifted ? 128 : 0));
}

// From one step's 16-bit sums to its 32 bytes. Luma is capped at 255 as an
// unsigned value, so that a negative sum turns white when normalising (as
// the logical shift of the 32-bit sum makes it), while without
// normalisation the cap is off and the pack takes negatives to 0. In the
// scaled form each sum S is multiplied by the common factor g: when
// normalising with g below 2048, (g S) >> 12 is the high half of S times
// 16 g, and the sums finish as in the shifted form; otherwise the products
// go to 32 bits (low and high halves interleaved), are shifted, and are
// packed back to 16 bits for the same cap and 128. The split form's g Sw +
// Sr is one multiply-add of the interleaved sums by (g, 1), and it finishes
// as the scaled one.
template <MatrixFinish kFinish>
struct Finish {
    __m256i back, cap, factorAndOne, scale, scaleHigh;
    __m128i shift;
    bool normalize;

    Finish(const MatrixNarrow& n, bool normalise) : normalize(normalise) {
        back = ChromaWords(128);
        cap = normalize ? _mm256_or_si256(_mm256_set1_epi32(255), ChromaWords(-1)) : _mm256_set1_epi8(-1);
        factorAndOne = _mm256_set1_epi32(static_cast<int32_t>((1u << 16) | static_cast<uint16_t>(n.scale)));
        scale = _mm256_set1_epi16(n.scale);
        scaleHigh = _mm256_set1_epi16(static_cast<int16_t>(kFinish == MatrixFinish::kScaledHigh ? 16 * n.scale : 0));
        shift = _mm_cvtsi32_si128(n.shift);
    }

    // The sums of the lower and upper unpack halves, and the split form's
    // residual sums (ignored by the other forms).
    __attribute__((always_inline)) inline __m256i Bytes(const __m256i& sumsLo, const __m256i& sumsHi,
                                                        const __m256i& rlo, const __m256i& rhi) const {
        if constexpr (kFinish == MatrixFinish::kScaled || kFinish == MatrixFinish::kSplit) {
            __m256i p[4];
            for (int h = 0; h < 2; ++h) {
                const __m256i& sums = h == 0 ? sumsLo : sumsHi;
                if constexpr (kFinish == MatrixFinish::kSplit) {
                    // g Sw + Sr, exact in 32 bits.
                    const __m256i& residuals = h == 0 ? rlo : rhi;
                    p[2 * h] = _mm256_madd_epi16(_mm256_unpacklo_epi16(sums, residuals), factorAndOne);
                    p[2 * h + 1] = _mm256_madd_epi16(_mm256_unpackhi_epi16(sums, residuals), factorAndOne);
                    continue;
                }
                const __m256i low = _mm256_mullo_epi16(sums, scale), high = _mm256_mulhi_epi16(sums, scale);
                p[2 * h] = _mm256_unpacklo_epi16(low, high);
                p[2 * h + 1] = _mm256_unpackhi_epi16(low, high);
            }
            // One arithmetic shift for all: a negative luma sum then becomes a
            // negative word, which the unsigned cap turns white, as the logical
            // shift of the scalar kernel does. Chroma gets its 128 with a
            // saturating add, exact inside 16 bits and a clamp beyond.
            if (normalize)
                for (__m256i& v : p) v = _mm256_srai_epi32(v, 12);
            const __m256i a = _mm256_min_epu16(_mm256_adds_epi16(_mm256_packs_epi32(p[0], p[1]), back), cap);
            const __m256i b = _mm256_min_epu16(_mm256_adds_epi16(_mm256_packs_epi32(p[2], p[3]), back), cap);
            return _mm256_packus_epi16(a, b);
        } else {
            __m256i lo = sumsLo, hi = sumsHi;
            if constexpr (kFinish == MatrixFinish::kScaledHigh) {
                lo = _mm256_add_epi16(_mm256_min_epu16(_mm256_mulhi_epi16(lo, scaleHigh), cap), back);
                hi = _mm256_add_epi16(_mm256_min_epu16(_mm256_mulhi_epi16(hi, scaleHigh), cap), back);
            } else if constexpr (kFinish == MatrixFinish::kShifted) {
                lo = _mm256_add_epi16(_mm256_min_epu16(_mm256_sra_epi16(lo, shift), cap), back);
                hi = _mm256_add_epi16(_mm256_min_epu16(_mm256_sra_epi16(hi, shift), cap), back);
            } else {
                lo = _mm256_min_epu16(lo, cap);
                hi = _mm256_min_epu16(hi, cap);
            }
            return _mm256_packus_epi16(lo, hi);
        }
    }
};

// Whole steps of 32 output bytes from a 16-bit form; returns where it
// stopped. A 32-byte load 4 bytes before the step serves outputs 0-7 and
// 16-23, one 4 bytes after it outputs 8-15 and 24-31: the byte unpacks of a
// load at the step itself give the centre taps in that same order, and the
// in-lane pack of the two halves' sums puts every byte back in order. The
// outer lines' centre taps share one product pair; taps weighted 0 are
// skipped. The split form takes its residual sums from the same shuffled
// bytes.
template <MatrixFinish kFinish>
ptrdiff_t NarrowSteps(const MatrixSources& src, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                      const MatrixNarrow& n, bool normalize) {
    const __m256i leftRight = Load(reinterpret_cast<const uint8_t*>(kLeftRight));
    constexpr bool kSplit = kFinish == MatrixFinish::kSplit;
    const auto& m = n.residuals;
    __m256i sideWeights[3], sideResiduals[3];
    bool sides[3], residualSides[3];
    for (int r = 0; r < 3; ++r) {
        sideWeights[r] = Pair(n.weights[r][0], n.weights[r][2]);
        sideResiduals[r] = Pair(m[r][0], m[r][2]);
        residualSides[r] = m[r][0] != 0 || m[r][2] != 0;
        sides[r] = n.weights[r][0] != 0 || n.weights[r][2] != 0 || residualSides[r];
    }
    const __m256i outerCentres = Pair(n.weights[0][1], n.weights[2][1]);
    const __m256i middleCentre = Pair(n.weights[1][1], 0);
    const __m256i outerResiduals = Pair(m[0][1], m[2][1]);
    const __m256i middleResidual = Pair(m[1][1], 0);
    const bool residualOuter = m[0][1] != 0 || m[2][1] != 0, residualMiddle = m[1][1] != 0;
    const bool outer = n.weights[0][1] != 0 || n.weights[2][1] != 0 || residualOuter;
    const bool middle = n.weights[1][1] != 0 || residualMiddle;
    const __m256i bias = Start<kFinish>(n.chromaBias);
    const __m256i residualStart = ChromaWords(n.residualBias);
    const __m256i zero = _mm256_setzero_si256();
    const Finish<kFinish> finish(n, normalize);
    return src.Steps(from, to, 32, [&](const uint8_t* const(&lines)[3], ptrdiff_t o) {
        _mm_prefetch(reinterpret_cast<const char*>(lines[2] + o + kAhead), _MM_HINT_T0);
        // No sum leaves 16 bits: the narrow form bounds them all.
        __m256i lo = bias, hi = bias;
        __m256i rlo = residualStart, rhi = residualStart;  // the split form's second sums
        for (int r = 0; r < 3; ++r) {
            if (!sides[r]) continue;
            const __m256i a = _mm256_shuffle_epi8(Load(lines[r] + o - 4), leftRight);
            const __m256i b = _mm256_shuffle_epi8(Load(lines[r] + o + 4), leftRight);
            Accumulate(lo, hi, a, b, sideWeights[r]);
            if (kSplit && residualSides[r]) Accumulate(rlo, rhi, a, b, sideResiduals[r]);
        }
        if (outer) {
            const __m256i above = Load(lines[0] + o), below = Load(lines[2] + o);
            const __m256i a = _mm256_unpacklo_epi8(above, below), b = _mm256_unpackhi_epi8(above, below);
            Accumulate(lo, hi, a, b, outerCentres);
            if (kSplit && residualOuter) Accumulate(rlo, rhi, a, b, outerResiduals);
        }
        if (middle) {
            const __m256i same = Load(lines[1] + o);
            const __m256i a = _mm256_unpacklo_epi8(same, zero), b = _mm256_unpackhi_epi8(same, zero);
            Accumulate(lo, hi, a, b, middleCentre);
            if (kSplit && residualMiddle) Accumulate(rlo, rhi, a, b, middleResidual);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + o), finish.Bytes(lo, hi, rlo, rhi));
    });
}

// A line's sums across for one step of 32 bytes, in the 16-bit loop's lane
// order.
struct AcrossSums {
    __m256i leftRight, sideWeights, centreWeight;

    // A separable kernel has taps on both sides; a centre weighted 0 costs
    // a multiply-add, as a branch would.
    explicit AcrossSums(const MatrixSeparable& s)
        : leftRight(Load(reinterpret_cast<const uint8_t*>(kLeftRight))),
          sideWeights(Pair(s.across[0], s.across[2])),
          centreWeight(Pair(s.across[1], 0)) {}

    // The buffered line's ends (at least 40 bytes) serve the steps that read
    // its edge bytes; the frame serves the rest.
    __attribute__((always_inline)) inline void Step(const uint8_t* line, const uint8_t* row, ptrdiff_t o,
                                                    ptrdiff_t to, __m256i& lo, __m256i& hi) const {
        const uint8_t* at = o >= 4 && o + 36 <= to ? row : line;
        const __m256i a = _mm256_shuffle_epi8(Load(at + o - 4), leftRight);
        const __m256i b = _mm256_shuffle_epi8(Load(at + o + 4), leftRight);
        const __m256i same = Load(at + o), zero = _mm256_setzero_si256();
        lo = _mm256_maddubs_epi16(a, sideWeights);
        hi = _mm256_maddubs_epi16(b, sideWeights);
        Accumulate(lo, hi, _mm256_unpacklo_epi8(same, zero), _mm256_unpackhi_epi8(same, zero), centreWeight);
    }
};

__attribute__((always_inline)) inline void StoreWords(int16_t* p, const __m256i& v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

// Whole steps of a separable kernel: the sums across of the line below,
// kept for the next two output lines, and the output from them and those of
// the two lines above.
template <MatrixFinish kFinish, bool kOuterOnes, bool kMiddleOne>
ptrdiff_t DownSteps(int16_t* const (&across)[3], const uint8_t* line, const uint8_t* row, uint8_t* out,
                    ptrdiff_t to, const MatrixNarrow& n, const MatrixSeparable& s, bool normalize) {
    const AcrossSums sums(s);
    const __m256i bias = Start<kFinish>(n.chromaBias);
    const int16_t* const above[2] = {across[0], across[1]};
    int16_t* const below = across[2];
    __m256i down[3];
    for (int r = 0; r < 3; ++r) down[r] = _mm256_set1_epi16(s.down[r]);
    const Finish<kFinish> finish(n, normalize);
    ptrdiff_t o = 0;
    for (; o + 32 <= to; o += 32) {
        __m256i lo, hi;
        if ((o & 32) == 0) _mm_prefetch(reinterpret_cast<const char*>(row + o + kAhead), _MM_HINT_T0);
        sums.Step(line, row, o, to, lo, hi);
        StoreWords(below + o, lo);
        StoreWords(below + o + 16, hi);
        if (!kOuterOnes) {
            lo = _mm256_mullo_epi16(lo, down[2]);
            hi = _mm256_mullo_epi16(hi, down[2]);
        }
        lo = _mm256_add_epi16(lo, bias);
        hi = _mm256_add_epi16(hi, bias);
        for (int r = 0; r < 2; ++r) {
            __m256i a = Load(reinterpret_cast<const uint8_t*>(above[r] + o));
            __m256i b = Load(reinterpret_cast<const uint8_t*>(above[r] + o + 16));
            if (!(r == 1 ? kMiddleOne : kOuterOnes)) {
                a = _mm256_mullo_epi16(a, down[r]);
                b = _mm256_mullo_epi16(b, down[r]);
            }
            lo = _mm256_add_epi16(lo, a);
            hi = _mm256_add_epi16(hi, b);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + o), finish.Bytes(lo, hi, lo, hi));
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

void MatrixNarrowLineAvx2(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c, const MatrixNarrow& narrow) {
    const bool normalize = c.normalize != 0;
    const ptrdiff_t o = WithFinish(FinishOf(narrow, normalize), [&](auto finish) {
        return NarrowSteps<decltype(finish)::value>(lines, out, from, to, narrow, normalize);
    });
    lines.RunLine(MatrixLineSse2, out, o, to, c);
}

void MatrixAcrossAvx2(const uint8_t* line, const uint8_t* row, int16_t* across, ptrdiff_t to,
                      const MatrixSeparable& s) {
    const AcrossSums sums(s);
    for (ptrdiff_t o = 0; o + 32 <= to; o += 32) {
        __m256i lo, hi;
        sums.Step(line, row, o, to, lo, hi);
        StoreWords(across + o, lo);
        StoreWords(across + o + 16, hi);
    }
}

void MatrixSeparableLineAvx2(int16_t* const (&across)[3], const uint8_t* const (&lines)[3], const uint8_t* row,
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

void MatrixLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    MatrixNarrow narrow;
    if (SixteenBitMatrix(c, &narrow))
        MatrixNarrowLineAvx2(MatrixSources::Buffered(lines), out, from, to, c, narrow);
    else
        MatrixWideLineAvx2(MatrixSources::Buffered(lines), out, from, to, c);
}

namespace {

// The 32-bit loop's taps, coefficients and finish. Each output's lane takes
// its taps as 16-bit pairs, one multiply-add per pair: (left, centre) of
// each line, then the top and middle lines' right taps together (the
// middle's in the upper halves), and the bottom line's alone. With mirrored
// top and bottom lines (kMirror +1 or -1) the bottom line's taps are first
// added to or taken from the top line's, exactly in 16 bits (at most 510 in
// size), and three multiply-adds take what five did.
template <int kMirror>
struct WideKernel {
    // [0]: the first pair's window, 4 bytes before it; [1]: the others', 8.
    __m256i leftCentreTaps[2], rightTaps[2];
    __m256i leftCentre[3], topMiddleRight, bottomRight, bias, cap;
    bool normalize;

    explicit WideKernel(const MatrixCoefficients& c) : normalize(c.normalize != 0) {
        for (int late = 0; late < 2; ++late) {
            leftCentreTaps[late] = Load(reinterpret_cast<const uint8_t*>(kWideLeftCentre + 32 * late));
            rightTaps[late] = Load(reinterpret_cast<const uint8_t*>(kWideRight + 32 * late));
        }
        const MatrixWideWords words = WideWordsOf(c);
        for (int r = 0; r < 3; ++r) leftCentre[r] = _mm256_set1_epi32(static_cast<int32_t>(words.leftCentre[r]));
        topMiddleRight = _mm256_set1_epi32(static_cast<int32_t>(words.topMiddleRight));
        bottomRight = _mm256_set1_epi32(static_cast<int32_t>(words.bottomRight));
        bias = _mm256_set1_epi64x(static_cast<int64_t>(words.start));
        cap = _mm256_set1_epi32(static_cast<int32_t>(0xFFFF00FFu));
    }

    // Register p holds pairs p and p + 4 of the step, one output per lane;
    // the first loads 4 bytes before its pair, the others 8, so that no load
    // leaves the buffered line's edge bytes.
    __attribute__((always_inline)) static inline __m256i Window(const uint8_t* line, ptrdiff_t o, int p) {
        return Load(line + o + 4 * p - (p != 0 ? 8 : 4));
    }

    __attribute__((always_inline)) inline __m256i LeftCentre(const __m256i& window, int p) const {
        return _mm256_shuffle_epi8(window, leftCentreTaps[p != 0]);
    }

    // A line's right taps in the lower 16-bit halves of the lanes.
    __attribute__((always_inline)) inline __m256i Right(const __m256i& window, int p) const {
        return _mm256_shuffle_epi8(window, rightTaps[p != 0]);
    }

    // One register's sums from the three lines' (left, centre) taps and
    // right taps, top to bottom. The middle line's right taps move to the
    // upper halves by a shift, beside the top line's.
    __attribute__((always_inline)) inline __m256i Sums(const __m256i& top, const __m256i& middle,
                                                       const __m256i& bottom, const __m256i& topRight,
                                                       const __m256i& middleRight,
                                                       const __m256i& lowerRight) const {
        const __m256i middleRightHigh = _mm256_slli_epi32(middleRight, 16);
        __m256i sums = bias;
        const auto madd = [&sums](const __m256i& taps, const __m256i& weights) {
            sums = _mm256_add_epi32(sums, _mm256_madd_epi16(taps, weights));
        };
        if constexpr (kMirror != 0) {
            const auto fold = [](const __m256i& a, const __m256i& b) {
                return kMirror > 0 ? _mm256_add_epi16(a, b) : _mm256_sub_epi16(a, b);
            };
            madd(fold(top, bottom), leftCentre[0]);
            madd(middle, leftCentre[1]);
            madd(_mm256_or_si256(fold(topRight, lowerRight), middleRightHigh), topMiddleRight);
        } else {
            madd(top, leftCentre[0]);
            madd(middle, leftCentre[1]);
            madd(bottom, leftCentre[2]);
            madd(_mm256_or_si256(topRight, middleRightHigh), topMiddleRight);
            madd(lowerRight, bottomRight);
        }
        return sums;
    }

    __attribute__((always_inline)) inline __m256i Bytes(__m256i (&sums)[4]) const {
        if (normalize)
            for (__m256i& v : sums) v = _mm256_srai_epi32(v, 12);
        __m256i low = _mm256_packs_epi32(sums[0], sums[1]);   // pairs 0, 1 | 4, 5
        __m256i high = _mm256_packs_epi32(sums[2], sums[3]);  // pairs 2, 3 | 6, 7
        if (normalize) {
            // A negative luma word (a negative sum) turns white, as the
            // logical shift of the scalar kernel makes it.
            low = _mm256_min_epu16(low, cap);
            high = _mm256_min_epu16(high, cap);
        }
        return _mm256_packus_epi16(low, high);
    }
};

// Whole steps of 32 output bytes of the 32-bit loop; returns where it
// stopped.
template <int kMirror>
ptrdiff_t WideSteps(const MatrixSources& src, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    const WideKernel<kMirror> k(c);
    return src.Steps(from, to, 32, [&](const uint8_t* const(&lines)[3], ptrdiff_t o) {
        _mm_prefetch(reinterpret_cast<const char*>(lines[2] + o + kAhead), _MM_HINT_T0);
        __m256i sums[4];
        for (int p = 0; p < 4; ++p) {
            __m256i w[3];
            for (int r = 0; r < 3; ++r) w[r] = k.Window(lines[r], o, p);
            sums[p] = k.Sums(k.LeftCentre(w[0], p), k.LeftCentre(w[1], p), k.LeftCentre(w[2], p), k.Right(w[0], p),
                             k.Right(w[1], p), k.Right(w[2], p));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + o), k.Bytes(sums));
    });
}

// Whole steps of two output lines at once, the second one line lower: each
// of the four lines is loaded and shuffled once for both, so a step of
// 2 x 32 bytes takes 32 byte shuffles where two single steps take 48.
template <int kMirror>
ptrdiff_t WidePairSteps(const MatrixPairSources& src, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c) {
    const WideKernel<kMirror> k(c);
    return src.Steps(from, to, 32, [&](const uint8_t* const(&lines)[4], ptrdiff_t o) {
        // Both lower lines are new to this pair of output lines.
        _mm_prefetch(reinterpret_cast<const char*>(lines[2] + o + kAhead), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(lines[3] + o + kAhead), _MM_HINT_T0);
        __m256i upper[4], lower[4];
        for (int p = 0; p < 4; ++p) {
            __m256i lc[4], rt[4];
            for (int r = 0; r < 4; ++r) {
                const __m256i w = k.Window(lines[r], o, p);
                lc[r] = k.LeftCentre(w, p);
                rt[r] = k.Right(w, p);
            }
            upper[p] = k.Sums(lc[0], lc[1], lc[2], rt[0], rt[1], rt[2]);
            lower[p] = k.Sums(lc[1], lc[2], lc[3], rt[1], rt[2], rt[3]);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out[0] + o), k.Bytes(upper));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out[1] + o), k.Bytes(lower));
    });
}

}  // namespace

void MatrixWideLineAvx2(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c) {
    const ptrdiff_t o = WithMirroredRows(
        c, [&](auto mirror) { return WideSteps<decltype(mirror)::value>(lines, out, from, to, c); });
    lines.RunLine(MatrixLineSse2, out, o, to, c);
}

void MatrixWidePairAvx2(const MatrixPairSources& lines, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c) {
    const ptrdiff_t o = WithMirroredRows(
        c, [&](auto mirror) { return WidePairSteps<decltype(mirror)::value>(lines, out, from, to, c); });
    for (int i = 0; i < 2; ++i) lines.Three(i).RunLine(MatrixLineSse2, out[i], o, to, c);
}

#else

void MatrixNarrowLineAvx2(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c, const MatrixNarrow&) {
    lines.RunLine(MatrixLineSse2, out, from, to, c);
}

void MatrixLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    MatrixLineSse2(lines, out, from, to, c);
}

// Never reached (levels above SSE2 are taken only where this unit has AVX2),
// and the separable line would need whole buffered lines.
void MatrixAcrossAvx2(const uint8_t*, const uint8_t*, int16_t*, ptrdiff_t, const MatrixSeparable&) {}

void MatrixSeparableLineAvx2(int16_t* const (&)[3], const uint8_t* const (&lines)[3], const uint8_t*, uint8_t* out,
                             ptrdiff_t to, const MatrixCoefficients& c, const MatrixNarrow&, const MatrixSeparable&) {
    MatrixLineSse2(lines, out, 0, to, c);
}

void MatrixWideLineAvx2(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c) {
    lines.RunLine(MatrixLineSse2, out, from, to, c);
}

void MatrixWidePairAvx2(const MatrixPairSources& lines, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c) {
    for (int i = 0; i < 2; ++i) lines.Three(i).RunLine(MatrixLineSse2, out[i], from, to, c);
}

#endif

}  // namespace zvf::filters
