// Matrix's convolution kernel over one field.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "matrix_coefficients.h"
#include "matrix_narrow.h"
#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// Copies the pairs of the field's rows unchanged (the path for an invalid
// kernel and for a region one field line tall).
void CopyMatrixField(const FieldView& v);

// Applies the 3 x 3 kernel (or copies, when the kernel is invalid or the
// region is one field line tall) to luma and to each chroma channel of the
// field's rows. Horizontal taps are neighbouring samples of one channel (luma
// 2 bytes apart, chroma 4); vertical taps are the field lines above and
// below. The first line takes the span one line lower, so it comes out as
// the second line does; the left end replicates the first sample. Reads
// beyond the right end and the last line use the frame's own samples and are
// clamped by replication at the frame's edge, so nothing outside the frame is
// read. Luma sums are shifted right logically when normalising (negative
// responses turn white), chroma sums arithmetically; chroma gets 128 back;
// results are truncated and saturated. Works in place. Returns false, having
// written nothing, when its line buffers cannot be allocated. Every level
// gives the same bytes; the scalar one defines them.
bool ConvolveMatrixField(const FieldView& v, const MatrixCoefficients& c, SimdLevel level = SimdLevel::scalar);

// One output line, bytes [from, to) (multiples of 4), from three buffered
// lines (above, same, below). Each buffered line carries, before its first
// byte and after its last, the edge neighbours of every channel: bytes -3,
// -2, -1 hold the first Cb, Y and Cr; bytes to, to + 1 and to + 3 the next
// Y, Cb and Cr. The SSE2, AVX2 and AVX-512 versions are bit-exact with the
// scalar one; they read up to 4 bytes on either side of [from, to) as well.
using MatrixLineFn = void (*)(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                              const MatrixCoefficients& c);
void MatrixLine(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                const MatrixCoefficients& c);
void MatrixLineSse2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c);
void MatrixLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c);
// Where a field's SIMD line kernels read the three lines of an output line
// (above, same, below), or the four of two output lines, one below the
// other: the buffered ones, and for the whole steps inside [frameFrom,
// frameTo) the lines' places in the frame, which hold every byte of the
// region (each step reads 4 bytes on either side). Both bounds are whole
// steps of every level from the line's start; the kernels' `from` is too.
template <int kLines>
struct MatrixSourcesOf {
    const uint8_t* buffered[kLines] = {};
    const uint8_t* frame[kLines] = {};
    ptrdiff_t frameFrom = 0, frameTo = 0;

    // The buffered lines only.
    static MatrixSourcesOf Buffered(const uint8_t* const (&lines)[kLines]) {
        MatrixSourcesOf s;
        for (int r = 0; r < kLines; ++r) s.buffered[r] = s.frame[r] = lines[r];
        return s;
    }

    // The three lines of one of a pair's output lines: `first` 0 for the
    // upper, 1 for the lower.
    MatrixSourcesOf<3> Three(int first) const {
        MatrixSourcesOf<3> s;
        for (int r = 0; r < 3; ++r) {
            s.buffered[r] = buffered[first + r];
            s.frame[r] = frame[first + r];
        }
        s.frameFrom = frameFrom;
        s.frameTo = frameTo;
        return s;
    }

    // Runs step(lines, o) for the whole steps of `width` bytes from `from`
    // on, up to `to`: on the buffers before the frame's range, on the frame
    // in it, on the buffers after. Returns where the steps stopped.
    template <typename Step>
    ptrdiff_t Steps(ptrdiff_t from, ptrdiff_t to, ptrdiff_t width, Step step) const {
        ptrdiff_t o = from;
        for (; o + width <= to && o + width <= frameFrom; o += width) step(buffered, o);
        for (; o + width <= to && o + width <= frameTo; o += width) step(frame, o);
        for (; o + width <= to; o += width) step(buffered, o);
        return o;
    }

    // Runs a line kernel over [from, to) in up to three spans, on the
    // buffers before the frame's range, on the frame in it, on the buffers
    // after.
    void RunLine(MatrixLineFn line, uint8_t* out, ptrdiff_t from, ptrdiff_t to, const MatrixCoefficients& c) const
        requires(kLines == 3)
    {
        const ptrdiff_t a = std::clamp(frameFrom, from, to);
        const ptrdiff_t b = std::clamp(frameTo, a, to);
        if (from < a) line(buffered, out, from, a, c);
        if (a < b) line(frame, out, a, b, c);
        if (b < to) line(buffered, out, b, to, c);
    }
};
using MatrixSources = MatrixSourcesOf<3>;
using MatrixPairSources = MatrixSourcesOf<4>;

// MatrixLineAvx2's two paths, for callers that work out once per field
// which one a kernel takes: the 16-bit one for a kernel with a narrow form,
// and the 32-bit one for any kernel.
void MatrixNarrowLineAvx2(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c, const MatrixNarrow& narrow);
void MatrixWideLineAvx2(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c);
// Two output lines of the 32-bit path at once: out[0] from lines 0 to 2,
// out[1] (the line below) from lines 1 to 3. The two middle lines' shuffles
// serve both outputs.
void MatrixWidePairAvx2(const MatrixPairSources& lines, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c);
// The same at AVX-512 (BW) on x86-64, 64 output bytes per step; elsewhere
// the AVX2 ones.
void MatrixLineAvx512(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                      const MatrixCoefficients& c);
void MatrixNarrowLineAvx512(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                            const MatrixCoefficients& c, const MatrixNarrow& narrow);
void MatrixWideLineAvx512(const MatrixSources& lines, uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c);
void MatrixWidePairAvx512(const MatrixPairSources& lines, uint8_t* const (&out)[2], ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c);

// Separable kernels (SeparateMatrix), whose lines' sums across are shared
// by the output lines that take them. A line's sums cover the whole steps of
// [0, to) (32 bytes at AVX2, 64 at AVX-512), one 16-bit word per byte in the
// lane order of that level's 16-bit loop. Steps that read the line's edge
// bytes take it from `line`, the buffered line, the others from `row`, its
// place in the frame (not yet written); so the buffered line need hold only
// its first and last kMatrixEnds bytes and its edge bytes, which also
// covers the bytes past the whole steps.
constexpr ptrdiff_t kMatrixEnds = 128;
// One line's sums across into `across`.
void MatrixAcrossAvx2(const uint8_t* line, const uint8_t* row, int16_t* across, ptrdiff_t to,
                      const MatrixSeparable& s);
void MatrixAcrossAvx512(const uint8_t* line, const uint8_t* row, int16_t* across, ptrdiff_t to,
                        const MatrixSeparable& s);
// One output line: the sums across of the line below (lines[2], at `row` in
// the frame) into across[2], on the way to the output, which adds them to
// those of the lines above and on it, across[0] and across[1].
void MatrixSeparableLineAvx2(int16_t* const (&across)[3], const uint8_t* const (&lines)[3], const uint8_t* row,
                             uint8_t* out, ptrdiff_t to, const MatrixCoefficients& c, const MatrixNarrow& narrow,
                             const MatrixSeparable& s);
void MatrixSeparableLineAvx512(int16_t* const (&across)[3], const uint8_t* const (&lines)[3], const uint8_t* row,
                               uint8_t* out, ptrdiff_t to, const MatrixCoefficients& c, const MatrixNarrow& narrow,
                               const MatrixSeparable& s);

// The SIMD 32-bit loops' constants, each for every 32-bit lane (or pair of
// lanes): two coefficients as the lane's 16-bit halves, low half first, for
// one multiply-add of two taps.
struct MatrixWideWords {
    uint32_t leftCentre[3];   // each line's (left, centre)
    uint32_t topMiddleRight;  // (top line's right, middle line's right)
    uint32_t bottomRight;     // (bottom line's right, 0)
    // Where the sums start: 0 in a luma lane (the lower of a pair), and in a
    // chroma lane -128 times the coefficients' total, which re-centres the
    // samples (the same integer as the sum of centred products), plus 128,
    // which re-centres the result, shifted up by 12 when normalising so that
    // the arithmetic shift adds it exactly.
    uint64_t start;
};
MatrixWideWords WideWordsOf(const MatrixCoefficients& c);

// How the bottom line's coefficients follow the top line's, for the SIMD
// 32-bit loops, which then fold the two lines' taps before multiplying: +1
// the same (a blur, most kernels normalised by their sum), -1 the same
// negated (a vertical gradient), 0 neither.
int MatrixMirroredRows(const MatrixCoefficients& c);

// Runs `steps` with the kernel's MatrixMirroredRows as a compile-time
// constant (a std::integral_constant<int, ...>), for the 32-bit loops;
// returns what it returns.
template <class Steps>
ptrdiff_t WithMirroredRows(const MatrixCoefficients& c, Steps steps) {
    switch (MatrixMirroredRows(c)) {
        case 1:
            return steps(std::integral_constant<int, 1>{});
        case -1:
            return steps(std::integral_constant<int, -1>{});
        default:
            return steps(std::integral_constant<int, 0>{});
    }
}

}  // namespace zvf::filters
