// Matrix's narrow form: many kernels (sharpen, emboss, small Gaussians, most
// unnormalised edge kernels) have coefficients that are small integers times
// a common power of two. Their sums then fit 16 bits exactly, so a kernel
// can multiply bytes by signed bytes and add in 16 bits, without widening
// every tap to 32 bits, and still give the same bytes as the 32-bit sums.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "matrix_coefficients.h"

namespace zvf::filters {

struct MatrixNarrow {
    int8_t weights[3][3] = {};  // coefficient / 2^t (or / scale), row-major like MatrixCoefficients::rows
    int32_t shift = 0;          // 12 - t when normalising (0 <= t <= 12), else 0
    int16_t chromaBias = 0;     // -128 x the weights' total: re-centres chroma after the products
    // 0 for the power-of-two form. Otherwise the coefficients' common factor
    // (2..32767), which the 16-bit sums are multiplied by in 32 bits before
    // the usual normalising shift; `shift` is then 0.
    int16_t scale = 0;
    // The split form: each coefficient is scale x weight + residual, and a
    // second 16-bit sum takes the residuals. Zero in the other forms.
    bool split = false;
    int8_t residuals[3][3] = {};
    int16_t residualBias = 0;  // -128 x the residuals' total
};

// True, filling `out`, when every sum of the instance's kernel is exact in
// 16 bits in this form: with normalisation, t is the largest power of two
// (at most 12) dividing every coefficient, and the 32-bit sum shifted right
// by 12 equals the 16-bit weighted sum shifted right by 12 - t (a negative
// luma sum, turned white by the logical shift, stays recognisable by its
// sign); without it, t = 0. Every weight must fit a signed byte and the
// weights' magnitudes must total at most 128, so that no sum of products of
// samples 0..255 leaves 16 bits (128 x 255 = 32640).
bool NarrowMatrix(const MatrixCoefficients& c, MatrixNarrow* out);

// True, filling `out` with a scaled form, for a kernel without the form
// above whose coefficients are such weights times their greatest common
// divisor g (2..32767): a normalised box of 455s, say. The 16-bit sum S of
// the weighted samples (chroma re-centred) is exact, and g x S is the
// 32-bit sum itself.
bool ScaledMatrix(const MatrixCoefficients& c, MatrixNarrow* out);

// True, filling `out` with a split form, for a kernel without either form
// above whose coefficients are g x w + r, with w and r both such small
// weights and g in 2..32767: a kernel normalised by a sum that does not
// divide 4096 evenly, such as 1 2 1 / 2 5 2 / 1 2 1 (240, 481 and 1204 are
// 240 x (1, 2, 5) + (0, 1, 4)). Both 16-bit sums, Sw of the weights and Sr
// of the residuals, are exact, and g Sw + Sr is the 32-bit sum: one 16-bit
// multiply-add. Searched from the largest coefficient's likely weights, so
// it may miss a form that exists; a miss only costs speed.
bool SplitMatrix(const MatrixCoefficients& c, MatrixNarrow* out);

// Any of the three forms, cheapest first: whether the kernel's sums fit 16
// bits, for the SIMD loops that choose once per field or line.
bool SixteenBitMatrix(const MatrixCoefficients& c, MatrixNarrow* out);

// A 16-bit form (other than the split one) whose weights are the products
// down[r] x across[k] of a column and a row of small integers: a box or a
// binomial blur. Each line's sum across its three taps, H = sum across[k] x
// sample, can then be formed once and shared by the three output lines that
// take the line, which add sum down[r] x H_r. That is the form's 16-bit sum
// S itself; the products and sums may wrap in 16 bits on the way, since S
// fits them.
struct MatrixSeparable {
    int8_t down[3] = {};
    int8_t across[3] = {};
};

// True, filling `out`, when the form's weights factor so, with at least two
// nonzero factors each way: a kernel of one row or column, or of one tap,
// costs no more taken directly.
bool SeparateMatrix(const MatrixNarrow& n, MatrixSeparable* out);

// How a 16-bit form's sums become output bytes: shifted by `shift` (or not
// at all), or multiplied by `scale` as the high half of S x 16 scale when
// normalising with a scale below 2048 (exactly (scale S) >> 12), else in
// 32 bits; the split form's two sums meet in 32 bits.
enum class MatrixFinish { kShifted, kUnshifted, kScaled, kScaledHigh, kSplit };
MatrixFinish FinishOf(const MatrixNarrow& n, bool normalize);

// Runs `steps` with the finish as a compile-time constant (a
// std::integral_constant), for the SIMD loops written once for every finish;
// returns what it returns.
template <class Steps>
ptrdiff_t WithFinish(MatrixFinish finish, Steps steps) {
    using F = MatrixFinish;
    switch (finish) {
        case F::kShifted:
            return steps(std::integral_constant<F, F::kShifted>{});
        case F::kUnshifted:
            return steps(std::integral_constant<F, F::kUnshifted>{});
        case F::kScaled:
            return steps(std::integral_constant<F, F::kScaled>{});
        case F::kScaledHigh:
            return steps(std::integral_constant<F, F::kScaledHigh>{});
        case F::kSplit:
            break;
    }
    return steps(std::integral_constant<F, F::kSplit>{});
}

}  // namespace zvf::filters
