#include "matrix_narrow.h"

namespace zvf::filters {
namespace {

// Weights c / divisor, each a signed byte and their magnitudes totalling at
// most 128, into n; false otherwise. The divisor divides every coefficient.
bool SmallWeights(const MatrixCoefficients& c, int32_t divisor, MatrixNarrow& n) {
    int32_t magnitude = 0, total = 0;
    for (int r = 0; r < 3; ++r) {
        for (int k = 0; k < 3; ++k) {
            const int32_t w = c.rows[r][k] / divisor;
            if (w < -128 || w > 127) return false;
            n.weights[r][k] = static_cast<int8_t>(w);
            magnitude += w < 0 ? -w : w;
            total += w;
        }
    }
    if (magnitude > 128) return false;
    n.chromaBias = static_cast<int16_t>(-128 * total);
    return true;
}

}  // namespace

bool NarrowMatrix(const MatrixCoefficients& c, MatrixNarrow* out) {
    // The largest power of two dividing every coefficient; 12 is the most a
    // shift by 12 can absorb, and unnormalised sums are not shifted at all.
    int32_t t = c.normalize ? 12 : 0;
    for (const auto& row : c.rows)
        for (int k = 0; k < 3; ++k)
            while (t > 0 && (row[k] & ((1 << t) - 1)) != 0) --t;
    MatrixNarrow n;
    if (!SmallWeights(c, 1 << t, n)) return false;
    n.shift = c.normalize ? 12 - t : 0;
    *out = n;
    return true;
}

namespace {

// The scaled form, for a kernel already known to lack the other.
bool ScaledForm(const MatrixCoefficients& c, MatrixNarrow* out) {
    int32_t g = 0;
    for (const auto& row : c.rows)
        for (int k = 0; k < 3; ++k)
            for (int32_t v = row[k] < 0 ? -row[k] : row[k]; v != 0;) {  // Euclid
                const int32_t rest = g % v;
                g = v;
                v = rest;
            }
    // A factor of 32768 (-32768 alone) does not fit the 16-bit multiply.
    MatrixNarrow n;
    if (g < 2 || g > 32767 || !SmallWeights(c, g, n)) return false;
    n.shift = 0;
    n.scale = static_cast<int16_t>(g);
    *out = n;
    return true;
}

}  // namespace

bool ScaledMatrix(const MatrixCoefficients& c, MatrixNarrow* out) {
    MatrixNarrow unused;
    return !NarrowMatrix(c, &unused) && ScaledForm(c, out);
}

bool SixteenBitMatrix(const MatrixCoefficients& c, MatrixNarrow* out) {
    return NarrowMatrix(c, out) || ScaledForm(c, out);
}

MatrixFinish FinishOf(const MatrixNarrow& n, bool normalize) {
    if (n.scale == 0) return n.shift != 0 ? MatrixFinish::kShifted : MatrixFinish::kUnshifted;
    return normalize && n.scale < 2048 ? MatrixFinish::kScaledHigh : MatrixFinish::kScaled;
}

}  // namespace zvf::filters
