// Color Wheel's render kernels: the colour-difference vector is rotated by
// the record's sine and cosine terms and scaled by the saturation gain; luma
// takes the contrast gain about 128 and the bright offset.
#pragma once

#include <cstdint>

#include "color_wheel_record.h"
#include "colour/color_balance/color_balance_record.h"  // GainFromSetting, shared with Color Balance
#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// What a render needs, derived once from the record.
struct WheelPlan {
    bool gain = false;     // gain kernel; otherwise offset-and-rotation
    bool safe = false;     // limit Y to 16..235 and U, V to 16..240 last
    int32_t kc = 16384;    // cosine x saturation gain / 256, floored, in 2^-14
    int32_t ks = 0;        // sine likewise
    int32_t lumaGain = 256;
    int32_t bright = 0;
};
WheelPlan PlanWheel(const ColorWheelRecord& record);

// Every pair of the field's rows, source to destination (in place allowed).
// Per pair, with U' = U - 128 and V' = V - 128:
//   U = sat8(((U' kc - V' ks) >> 14) + 128), V = sat8(((U' ks + V' kc) >> 14) + 128)
//   Y = sat8((((Y - 128) x 256 x lumaGain) >> 16) + bright + 128)
// in 32-bit integers with arithmetic shifts. With the saturation setting 0,
// kc and ks are the record's terms themselves; with contrast 0 the luma line
// is Y + bright. Both kernels, at every level, give exactly these bytes.
void RenderWheel(const FieldView& v, const WheelPlan& plan, SimdLevel level = SimdLevel::scalar);

// The levels one by one: the scalar code defines the bytes, the others are
// its twins (x86 only) for every plan PlanWheel makes (luma gain 0..1272,
// bright -128..127, |kc| and |ks| at most 162816).
void RenderWheelScalar(const FieldView& v, const WheelPlan& plan);
void RenderWheelSse2(const FieldView& v, const WheelPlan& plan);
void RenderWheelAvx2(const FieldView& v, const WheelPlan& plan);

}  // namespace zvf::filters
