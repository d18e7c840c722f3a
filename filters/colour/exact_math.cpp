#include "exact_math.h"

#include <cmath>

namespace zvf::filters {
namespace {

// pi / 2 in three parts; the first two have 33 significant bits, so k times
// either is exact for |k| < 2^20.
constexpr double kPio2Hi = 1.5707963267341256;
constexpr double kPio2Mid = 6.077100506303966e-11;
constexpr double kPio2Lo = 2.0222662487959506e-21;
constexpr double kTwoOverPi = 0.6366197723675814;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kPio4 = 0.7853981633974483;
constexpr double kTanPi8 = 0.41421356237309503;

// Taylor series on |r| <= pi / 4; the first omitted terms are below 2^-60.
ZVF_EXACT_FLOAT double SinPoly(double r) {
    const double r2 = r * r;
    double p = 1.0 / 355687428096000.0;  // 1 / 17!
    p = -1.0 / 1307674368000.0 + r2 * p;
    p = 1.0 / 6227020800.0 + r2 * p;
    p = -1.0 / 39916800.0 + r2 * p;
    p = 1.0 / 362880.0 + r2 * p;
    p = -1.0 / 5040.0 + r2 * p;
    p = 1.0 / 120.0 + r2 * p;
    p = -1.0 / 6.0 + r2 * p;
    return r + r * r2 * p;
}

ZVF_EXACT_FLOAT double CosPoly(double r) {
    const double r2 = r * r;
    double p = 1.0 / 6402373705728000.0;  // 1 / 18!
    p = -1.0 / 20922789888000.0 + r2 * p;
    p = 1.0 / 87178291200.0 + r2 * p;
    p = -1.0 / 479001600.0 + r2 * p;
    p = 1.0 / 3628800.0 + r2 * p;
    p = -1.0 / 40320.0 + r2 * p;
    p = 1.0 / 720.0 + r2 * p;
    p = -1.0 / 24.0 + r2 * p;
    p = 0.5 + r2 * p;
    return 1.0 - r2 * p;
}

// atan on |u| <= tan(pi / 8): odd series, 24 terms reach below 2^-60.
ZVF_EXACT_FLOAT double AtanSeries(double u) {
    const double u2 = u * u;
    double p = 0;
    for (int n = 47; n >= 3; n -= 2) p = (((n / 2) % 2 == 0) ? 1.0 : -1.0) / n + u2 * p;
    return u + u * u2 * p;
}

// atan on 0 <= t <= 1.
ZVF_EXACT_FLOAT double AtanUnit(double t) {
    if (t <= kTanPi8) return AtanSeries(t);
    return kPio4 + AtanSeries((t - 1.0) / (t + 1.0));
}

}  // namespace

ZVF_EXACT_FLOAT double RoundHalfEven(double v) {
    if (!(std::fabs(v) < 4503599627370496.0)) return v;  // 2^52 and beyond are integers (or NaN)
    const double f = std::floor(v);
    const double d = v - f;  // exact here, or rounded only where the result does not change
    if (d > 0.5) return f + 1.0;
    if (d < 0.5) return f;
    return std::fmod(f, 2.0) == 0.0 ? f : f + 1.0;
}

ZVF_EXACT_FLOAT SinCos ExactSinCos(double x) {
    if (!std::isfinite(x)) return {0.0, 1.0};
    if (std::fabs(x) >= 1048576.0) x = std::fmod(x, kTwoPi);  // fmod is exact
    const double k = RoundHalfEven(x * kTwoOverPi);
    const double r = ((x - k * kPio2Hi) - k * kPio2Mid) - k * kPio2Lo;
    const double s = SinPoly(r);
    const double c = CosPoly(r);
    const double q = k - 4.0 * std::floor(k / 4.0);  // 0..3, exact
    if (q == 0.0) return {s, c};
    if (q == 1.0) return {c, -s};
    if (q == 2.0) return {-s, -c};
    return {-c, s};
}

ZVF_EXACT_FLOAT double ExactAtan2(double y, double x) {
    if (!std::isfinite(x) || !std::isfinite(y) || (x == 0.0 && y == 0.0)) return 0.0;
    const double ax = std::fabs(x);
    const double ay = std::fabs(y);
    // First octant, then mirrored into place.
    double a = ay <= ax ? AtanUnit(ay / ax) : 2.0 * kPio4 - AtanUnit(ax / ay);
    if (x < 0) a = 4.0 * kPio4 - a;
    return y < 0 ? -a : a;
}

}  // namespace zvf::filters
