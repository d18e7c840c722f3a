#include "matrix_coefficients.h"

namespace zvf::filters {

MatrixCoefficients DeriveMatrixCoefficients(const MatrixRecord& record) {
    MatrixCoefficients c;
    c.valid = 1;
    c.normalize = record.normalize != 0 ? 1 : 0;
    if (!c.normalize) {
        for (int i = 0; i < 9; ++i) c.rows[i / 3][i % 3] = static_cast<int16_t>(record.kernel[i]);
        return c;
    }
    // 32-bit arithmetic throughout, wrapping as the stored values dictate.
    uint32_t total = 0;
    for (int32_t k : record.kernel) total += static_cast<uint32_t>(k);
    const auto sum = static_cast<int32_t>(total);
    if (sum == 0) {
        c.valid = 0;
        return c;
    }
    for (int i = 0; i < 9; ++i) {
        const auto scaled = static_cast<int32_t>(static_cast<uint32_t>(record.kernel[i]) * 4096u);
        // 64-bit so that the one overflowing quotient (INT32_MIN / -1) is defined.
        const int64_t q = int64_t{scaled} / sum;
        c.rows[i / 3][i % 3] = static_cast<int16_t>(q);
    }
    return c;
}

}  // namespace zvf::filters
