#include "matrix_narrow.h"

#include <algorithm>
#include <numeric>

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

namespace {

int32_t Magnitude(int32_t v) { return v < 0 ? -v : v; }

// The split form with factor g: each weight the nearest multiple of g,
// the residual what is left.
bool SplitBy(const MatrixCoefficients& c, int32_t g, MatrixNarrow& n) {
    int32_t weights = 0, residuals = 0, weightTotal = 0, residualTotal = 0;
    for (int r = 0; r < 3; ++r) {
        for (int k = 0; k < 3; ++k) {
            const int32_t v = c.rows[r][k];
            const int32_t w = v >= 0 ? (v + g / 2) / g : -((g / 2 - v) / g);
            const int32_t rest = v - g * w;
            weights += Magnitude(w);
            residuals += Magnitude(rest);
            if (weights > 128 || residuals > 128 || w > 127 || rest > 127) return false;
            n.weights[r][k] = static_cast<int8_t>(w);
            n.residuals[r][k] = static_cast<int8_t>(rest);
            weightTotal += w;
            residualTotal += rest;
        }
    }
    n.chromaBias = static_cast<int16_t>(-128 * weightTotal);
    n.residualBias = static_cast<int16_t>(-128 * residualTotal);
    n.shift = 0;
    n.scale = static_cast<int16_t>(g);
    n.split = true;
    return true;
}

// The split form, for a kernel already known to lack the others. The
// largest coefficient m has some weight w, and then g is within one of m / w
// whenever the residuals are small next to g, as for normalised kernels.
// Since sum |c| <= 128 g + 128, g has a floor, which ends the search early.
bool SplitForm(const MatrixCoefficients& c, MatrixNarrow* out) {
    int32_t most = 0, all = 0;
    for (const auto& row : c.rows) {
        for (int k = 0; k < 3; ++k) {
            most = std::max(most, Magnitude(row[k]));
            all += Magnitude(row[k]);
        }
    }
    MatrixNarrow n;
    for (int32_t w = 1; w <= 127; ++w) {
        const int32_t near = (most + w / 2) / w;
        if (near < 2 || all > 128 * (near + 1) + 128) return false;
        for (int32_t g = near - 1; g <= near + 1; ++g) {
            if (g < 2 || g > 32767 || !SplitBy(c, g, n)) continue;
            *out = n;
            return true;
        }
    }
    return false;
}

}  // namespace

bool SplitMatrix(const MatrixCoefficients& c, MatrixNarrow* out) {
    MatrixNarrow unused;
    return !NarrowMatrix(c, &unused) && !ScaledForm(c, &unused) && SplitForm(c, out);
}

bool SixteenBitMatrix(const MatrixCoefficients& c, MatrixNarrow* out) {
    return NarrowMatrix(c, out) || ScaledForm(c, out) || SplitForm(c, out);
}

bool SeparateMatrix(const MatrixNarrow& n, MatrixSeparable* out) {
    if (n.split) return false;
    // The first nonzero row, divided by its common factor and made to start
    // positive, is the only candidate for `across` up to sign and scale.
    int r0 = 0;
    while (r0 < 3 && n.weights[r0][0] == 0 && n.weights[r0][1] == 0 && n.weights[r0][2] == 0) ++r0;
    if (r0 == 3) return false;
    const int8_t (&row)[3] = n.weights[r0];
    int32_t g = 0, first = 0;
    for (int k = 2; k >= 0; --k) {
        const int32_t w = row[k];
        if (w == 0) continue;
        first = w;
        g = std::gcd(g, w < 0 ? -w : w);
    }
    MatrixSeparable s;
    int32_t wide = 0, tall = 0;
    for (int k = 0; k < 3; ++k) {
        s.across[k] = static_cast<int8_t>(row[k] / (first < 0 ? -g : g));
        wide += s.across[k] != 0;
    }
    int k0 = 0;
    while (s.across[k0] == 0) ++k0;
    for (int r = 0; r < 3; ++r) {
        const int32_t d = n.weights[r][k0] / s.across[k0];
        for (int k = 0; k < 3; ++k)
            if (n.weights[r][k] != d * s.across[k]) return false;
        s.down[r] = static_cast<int8_t>(d);
        tall += d != 0;
    }
    if (wide < 2 || tall < 2) return false;
    *out = s;
    return true;
}

MatrixFinish FinishOf(const MatrixNarrow& n, bool normalize) {
    if (n.split) return MatrixFinish::kSplit;
    if (n.scale == 0) return n.shift != 0 ? MatrixFinish::kShifted : MatrixFinish::kUnshifted;
    return normalize && n.scale < 2048 ? MatrixFinish::kScaledHigh : MatrixFinish::kScaled;
}

}  // namespace zvf::filters
