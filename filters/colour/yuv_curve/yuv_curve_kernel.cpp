#include "yuv_curve_kernel.h"

namespace zvf::filters {
namespace {

int32_t Clamp(int32_t v, int32_t lo, int32_t hi) { return v < lo ? lo : (v > hi ? hi : v); }

}  // namespace

CurveSnapshot TakeSnapshot(const YuvCurveRecord& record) {
    CurveSnapshot s;
    s.fixed = record.fixed;
    for (int c = 0; c < 3; ++c) {
        s.fixed.count[c] = static_cast<uint32_t>(record.points[c].size());
        if (record.points[c].size() == 2) {
            s.ends[c][0] = record.points[c][0];
            s.ends[c][1] = record.points[c][1];
        }
    }
    return s;
}

CurveKernel ChooseCurveKernel(const CurveSnapshot& s) {
    for (int c = 0; c < 3; ++c)
        if (s.fixed.count[c] != 2) return CurveKernel::Table;
    for (int c = 0; c < 3; ++c) {
        const CurvePoint a = s.ends[c][0], b = s.ends[c][1];
        if (a.x > 255 || a.y > 255 || b.x > 255 || b.y > 255 || b.x <= a.x) return CurveKernel::Table;
        const int32_t rise = static_cast<int32_t>(a.y) - static_cast<int32_t>(b.y);
        if (b.x == a.x + 1 && (rise >= 128 || rise <= -128)) return CurveKernel::Table;
    }
    return s.fixed.safeColour != 0 ? CurveKernel::LineLimited : CurveKernel::Line;
}

LineTerms LineTermsOf(CurvePoint a, CurvePoint b) {
    const int32_t x0 = static_cast<int32_t>(a.x), y0 = static_cast<int32_t>(a.y);
    const int32_t x1 = static_cast<int32_t>(b.x), y1 = static_cast<int32_t>(b.y);
    const int32_t dx = x1 - x0;
    if (dx == 0) return {0, 0};
    return {static_cast<int16_t>(((y1 - y0) * 256) / dx), static_cast<int16_t>((x1 * y0 - x0 * y1) / dx)};
}

void RenderCurveTables(const FieldView& v, const uint8_t (&tables)[3][256]) {
    const uint8_t* ty = tables[kCurveY];
    const uint8_t* tu = tables[kCurveU];
    const uint8_t* tv = tables[kCurveV];
    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + row * v.step;
        uint8_t* d = v.dst + row * v.step;
        for (int32_t i = 0; i < v.pairs; ++i, s += 4, d += 4) {
            d[0] = ty[s[0]];
            d[1] = tu[s[1]];
            d[2] = ty[s[2]];
            d[3] = tv[s[3]];
        }
    }
}

void RenderCurveLines(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    // Lane by lane: component and its limits.
    const LineTerms lane[4] = {terms[kCurveY], terms[kCurveU], terms[kCurveY], terms[kCurveV]};
    const int32_t lo = limited ? 16 : 0;
    const int32_t hi[4] = {limited ? 235 : 255, limited ? 240 : 255, limited ? 235 : 255, limited ? 240 : 255};
    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + row * v.step;
        uint8_t* d = v.dst + row * v.step;
        for (int32_t i = 0; i < v.pairs; ++i, s += 4, d += 4)
            for (int k = 0; k < 4; ++k)
                d[k] = static_cast<uint8_t>(Clamp(((s[k] * lane[k].slope) >> 8) + lane[k].intercept, lo, hi[k]));
    }
}

void RenderCurve(const FieldView& v, const CurveSnapshot& s, SimdLevel level) {
    const CurveKernel kernel = ChooseCurveKernel(s);
    if (kernel == CurveKernel::Table) {
        if (level >= SimdLevel::avx512)
            RenderCurveTablesAvx512(v, s.fixed.table);
        else if (level >= SimdLevel::avx2)
            RenderCurveTablesAvx2(v, s.fixed.table);
        else
            RenderCurveTables(v, s.fixed.table);
        return;
    }
    const LineTerms terms[3] = {LineTermsOf(s.ends[0][0], s.ends[0][1]), LineTermsOf(s.ends[1][0], s.ends[1][1]),
                                LineTermsOf(s.ends[2][0], s.ends[2][1])};
    if (level >= SimdLevel::avx2) {
        RenderCurveLinesAvx2(v, terms, kernel == CurveKernel::LineLimited);
    } else if (level >= SimdLevel::sse2) {
        RenderCurveLinesSse2(v, terms, kernel == CurveKernel::LineLimited);
    } else {
        RenderCurveLines(v, terms, kernel == CurveKernel::LineLimited);
    }
}

}  // namespace zvf::filters
