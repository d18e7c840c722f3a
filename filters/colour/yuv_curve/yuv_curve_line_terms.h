// The line kernel's constants laid out for the vector twins, once per render.
//
// Each byte x becomes ((x * slope) >> 8) + intercept. With x << 8 in a
// 16-bit lane and the slope's 16 bits read as unsigned (s_u = slope + 65536
// when slope < 0), the unsigned high product is floor(x * s_u / 256) =
// ((x * slope) >> 8) + 256 x [slope < 0]; taking away (x << 8) where the
// slope is negative gives the signed result, which always fits 16 bits
// (|x * slope / 256| <= 255 * 32768 / 256).
#pragma once

#include <cstdint>

#include "yuv_curve_kernel.h"

namespace zvf::filters {

struct LineLanes {
    uint64_t slope;      // four 16-bit lanes Y U Y V: the slopes' bits
    uint64_t negative;   // 0xFFFF in a lane whose slope is negative
    uint64_t intercept;  // the intercepts
    uint32_t low;        // four byte lanes Y U Y V: the lower limit
    uint32_t high;       // the upper limit
};

inline LineLanes LineLanesOf(const LineTerms (&terms)[3], bool limited) {
    constexpr Curve kLaneCurve[4] = {kCurveY, kCurveU, kCurveY, kCurveV};
    LineLanes out{0, 0, 0, limited ? 0x10101010u : 0u, limited ? 0xF0EBF0EBu : 0xFFFFFFFFu};
    for (int k = 0; k < 4; ++k) {
        const LineTerms& t = terms[kLaneCurve[k]];
        const int shift = 16 * k;
        out.slope |= uint64_t{static_cast<uint16_t>(t.slope)} << shift;
        out.negative |= uint64_t{t.slope < 0 ? 0xFFFFu : 0u} << shift;
        out.intercept |= uint64_t{static_cast<uint16_t>(t.intercept)} << shift;
    }
    return out;
}

}  // namespace zvf::filters
