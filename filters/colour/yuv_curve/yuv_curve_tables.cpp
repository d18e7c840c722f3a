#include "yuv_curve_tables.h"

#include "../exact_math.h"

namespace zvf::filters {
namespace {

ZVF_EXACT_FLOAT double X(const CurvePoint& p) { return static_cast<double>(p.x); }
ZVF_EXACT_FLOAT double Y(const CurvePoint& p) { return static_cast<double>(p.y); }

bool StrictlyAscending(std::span<const CurvePoint> points) {
    for (size_t i = 1; i < points.size(); ++i)
        if (points[i].x <= points[i - 1].x) return false;
    return true;
}

// Second derivatives of the natural spline at each point: the tridiagonal
// system of the inner points solved forward and back (Thomas); the ends 0.
ZVF_EXACT_FLOAT std::vector<double> SecondDerivatives(std::span<const CurvePoint> points) {
    const size_t n = points.size();
    std::vector<double> m(n, 0.0), c(n, 0.0), d(n, 0.0);
    for (size_t i = 1; i + 1 < n; ++i) {
        const double h0 = X(points[i]) - X(points[i - 1]);
        const double h1 = X(points[i + 1]) - X(points[i]);
        const double rhs = 6.0 * ((Y(points[i + 1]) - Y(points[i])) / h1 - (Y(points[i]) - Y(points[i - 1])) / h0);
        const double diag = 2.0 * (h0 + h1) - h0 * c[i - 1];
        c[i] = h1 / diag;
        d[i] = (rhs - h0 * d[i - 1]) / diag;
    }
    for (size_t i = n - 2; i >= 1; --i) m[i] = d[i] - c[i] * m[i + 1];
    return m;
}

}  // namespace

ZVF_EXACT_FLOAT double EvaluateSegments(std::span<const CurvePoint> points, double x) {
    const size_t n = points.size();
    if (n == 0) return 0.0;
    if (n == 1) return Y(points[0]);
    size_t i = 1;
    while (i < n - 1 && X(points[i]) < x) ++i;
    const double dx = X(points[i]) - X(points[i - 1]);
    if (dx == 0.0) return Y(points[i]);
    return Y(points[i - 1]) + (Y(points[i]) - Y(points[i - 1])) / dx * (x - X(points[i - 1]));
}

NaturalSpline::NaturalSpline(std::span<const CurvePoint> points) : points_(points) {
    if (points.size() >= 3 && StrictlyAscending(points)) second_ = SecondDerivatives(points);
}

// Piece i runs from point i to point i + 1 as y_i + t (b + t (c + t d)).
ZVF_EXACT_FLOAT NaturalSpline::Piece NaturalSpline::PieceAt(size_t i) const {
    const double h = X(points_[i + 1]) - X(points_[i]);
    const double m0 = second_[i], m1 = second_[i + 1];
    Piece p;
    p.h = h;
    p.b = (Y(points_[i + 1]) - Y(points_[i])) / h - h * (2.0 * m0 + m1) / 6.0;
    p.c = m0 / 2.0;
    p.d = (m1 - m0) / (6.0 * h);
    return p;
}

ZVF_EXACT_FLOAT double NaturalSpline::operator()(double x) const {
    if (second_.empty()) return EvaluateSegments(points_, x);
    const size_t n = points_.size();
    if (x < X(points_[0])) return Y(points_[0]) + PieceAt(0).b * (x - X(points_[0]));
    if (x >= X(points_[n - 1])) {
        const Piece p = PieceAt(n - 2);
        const double slope = p.b + p.h * (2.0 * p.c + p.h * 3.0 * p.d);
        return Y(points_[n - 1]) + slope * (x - X(points_[n - 1]));
    }
    size_t i = 0;
    while (i + 2 < n && X(points_[i + 1]) <= x) ++i;
    const Piece p = PieceAt(i);
    const double t = x - X(points_[i]);
    return Y(points_[i]) + t * (p.b + t * (p.c + t * p.d));
}

ZVF_EXACT_FLOAT void BuildTable(std::span<const CurvePoint> points, bool linear, int lo, int hi, uint8_t table[256]) {
    const NaturalSpline spline(linear ? std::span<const CurvePoint>() : points);
    for (int i = 0; i < 256; ++i) {
        double v = linear ? EvaluateSegments(points, i) : spline(i);
        if (!(v >= lo)) v = lo;  // NaN included
        if (v > hi) v = hi;
        table[i] = static_cast<uint8_t>(RoundHalfEven(v));
    }
}

void RebuildTables(YuvCurveRecord& record) {
    const bool safe = record.fixed.safeColour != 0;
    for (int c = 0; c < 3; ++c) {
        const int hi = safe ? (c == kCurveY ? 235 : 240) : 255;
        BuildTable(record.points[c], record.fixed.linear[c] != 0, safe ? 16 : 0, hi, record.fixed.table[c]);
    }
}

}  // namespace zvf::filters
