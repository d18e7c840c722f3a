// Matrix's narrow form: many kernels (sharpen, emboss, small Gaussians, most
// unnormalised edge kernels) have coefficients that are small integers times
// a common power of two. Their sums then fit 16 bits exactly, so a kernel
// can multiply bytes by signed bytes and add in 16 bits, without widening
// every tap to 32 bits, and still give the same bytes as the 32-bit sums.
#pragma once

#include <cstdint>

#include "matrix_coefficients.h"

namespace zvf::filters {

struct MatrixNarrow {
    int8_t weights[3][3] = {};  // coefficient / 2^t, row-major like MatrixCoefficients::rows
    int32_t shift = 0;          // 12 - t when normalising (0 <= t <= 12), else 0
    int16_t chromaBias = 0;     // -128 x the weights' total: re-centres chroma after the products
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

}  // namespace zvf::filters
