// Curves from control points and their 256-entry tables. Every evaluation is
// plain double arithmetic, the same on every build.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "yuv_curve_record.h"

namespace zvf::filters {

// Straight segments: no points 0, one point its y; otherwise the first
// segment whose right end is at or past x, the last segment beyond the last
// point. A segment of zero width gives its right end's y.
double EvaluateSegments(std::span<const CurvePoint> points, double x);

// Natural cubic spline (end second derivatives 0) through three or more
// points with strictly ascending x, continued beyond the end points along
// its end tangents (where its second derivative is already 0). Fewer
// points, or x not strictly ascending, give straight segments.
class NaturalSpline {
public:
    explicit NaturalSpline(std::span<const CurvePoint> points);
    double operator()(double x) const;

private:
    struct Piece {
        double h, b, c, d;
    };
    Piece PieceAt(size_t i) const;

    std::span<const CurvePoint> points_;
    std::vector<double> second_;  // second derivative at each point
};

// One table: the curve at 0..255, clamped to lo..hi, rounded to nearest with
// ties to even.
void BuildTable(std::span<const CurvePoint> points, bool linear, int lo, int hi, uint8_t table[256]);
// All three tables of a record from its points, modes and safe colour.
void RebuildTables(YuvCurveRecord& record);

}  // namespace zvf::filters
