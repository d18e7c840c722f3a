#include "matrix_narrow.h"

namespace zvf::filters {

bool NarrowMatrix(const MatrixCoefficients& c, MatrixNarrow* out) {
    // The largest power of two dividing every coefficient; 12 is the most a
    // shift by 12 can absorb, and unnormalised sums are not shifted at all.
    int32_t t = c.normalize ? 12 : 0;
    for (const auto& row : c.rows)
        for (int k = 0; k < 3; ++k)
            while (t > 0 && (row[k] & ((1 << t) - 1)) != 0) --t;
    MatrixNarrow n;
    int32_t magnitude = 0, total = 0;
    for (int r = 0; r < 3; ++r) {
        for (int k = 0; k < 3; ++k) {
            const int32_t w = c.rows[r][k] / (1 << t);  // exact: t divides it
            if (w < -128 || w > 127) return false;
            n.weights[r][k] = static_cast<int8_t>(w);
            magnitude += w < 0 ? -w : w;
            total += w;
        }
    }
    if (magnitude > 128) return false;
    n.shift = c.normalize ? 12 - t : 0;
    n.chromaBias = static_cast<int16_t>(-128 * total);
    *out = n;
    return true;
}

}  // namespace zvf::filters
