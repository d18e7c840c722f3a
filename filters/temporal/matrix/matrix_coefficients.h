// Matrix's coefficients: the kernel turned into three rows of four 16-bit
// values (the fourth always 0, so a row fills one 64-bit packed register).
#pragma once

#include <cstdint>

#include "matrix_record.h"

namespace zvf::filters {

struct MatrixCoefficients {
    int16_t rows[3][4] = {};  // [line above, line, line below][left, centre, right, 0]
    int32_t valid = 0;        // 0: the kernel cannot be applied and the field is copied
    int32_t normalize = 0;    // 1: sums are shifted right by 12
};

// Without normalisation each coefficient is the kernel value; with it,
// value * 4096 / sum, truncated toward zero. Either way the result is cut to
// 16 bits, so a centre of 9 in a kernel summing to 1 wraps to -28672: kept,
// since saved projects render that way. A zero sum with normalisation makes
// the kernel invalid.
MatrixCoefficients DeriveMatrixCoefficients(const MatrixRecord& record);

}  // namespace zvf::filters
