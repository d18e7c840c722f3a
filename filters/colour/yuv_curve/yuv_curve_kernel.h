// YUV Curve's render kernels: a table lookup per byte, or, when every curve
// is one straight line, an 8.8 fixed-point line per byte. Lanes are Y, U,
// Y, V.
#pragma once

#include <cstdint>

#include "yuv_curve_record.h"
#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// What a render reads of the record, copied at once under the record lock.
struct CurveSnapshot {
    YuvCurveFixed fixed;
    CurvePoint ends[3][2] = {};  // the two points of each curve that has exactly two
};
CurveSnapshot TakeSnapshot(const YuvCurveRecord& record);

enum class CurveKernel { Table, Line, LineLimited };
// The line kernel when all three curves have two points, none of them a
// step of one x that climbs or falls by 128 or more (its slope would not
// fit 16 bits); limited when safe colour is on. Points outside 0..255 or
// not ascending, which loaded blobs may hold, also take the tables.
CurveKernel ChooseCurveKernel(const CurveSnapshot& s);

struct LineTerms {
    int16_t slope;      // ((y1 - y0) x 256) / (x1 - x0), truncated
    int16_t intercept;  // (x1 y0 - x0 y1) / (x1 - x0), truncated
};
LineTerms LineTermsOf(CurvePoint a, CurvePoint b);

// Each byte through its component's table.
void RenderCurveTables(const FieldView& v, const uint8_t (&tables)[3][256]);
// The same bytes with AVX2, bit-exact with RenderCurveTables on every input.
void RenderCurveTablesAvx2(const FieldView& v, const uint8_t (&tables)[3][256]);
// The same bytes with AVX-512 (F, BW, VBMI) on x86-64, bit-exact with
// RenderCurveTables on every input; elsewhere RenderCurveTables itself.
void RenderCurveTablesAvx512(const FieldView& v, const uint8_t (&tables)[3][256]);
// Each byte x becomes clamp(((x slope) >> 8) + intercept, 0, 255), then
// 16..235 (Y) or 16..240 (U, V) when limited.
void RenderCurveLines(const FieldView& v, const LineTerms (&terms)[3], bool limited);
// The same bytes with SSE2, bit-exact with RenderCurveLines on every input.
void RenderCurveLinesSse2(const FieldView& v, const LineTerms (&terms)[3], bool limited);
// The same bytes with AVX2, bit-exact with RenderCurveLines on every input.
void RenderCurveLinesAvx2(const FieldView& v, const LineTerms (&terms)[3], bool limited);
// The kernel ChooseCurveKernel names, at the given instruction-set level.
void RenderCurve(const FieldView& v, const CurveSnapshot& s, SimdLevel level = SimdLevel::scalar);

}  // namespace zvf::filters
