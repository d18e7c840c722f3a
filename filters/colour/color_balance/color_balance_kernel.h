// Color Balance's kernels. Per byte x of a pair (Y0 U Y1 V), with the lane's
// offset o and gain g (256ths):
//   offsets only:  clamp(x + o, 0, 255)
//   with gain:     clamp((((x - 128) * 256 * g) >> 16) + o + 128, 0, 255)
//                  (arithmetic shift: rounds toward minus infinity; luma is
//                  scaled about 128, not about black)
//   safe colour:   then Y limited to 16..235, U and V to 16..240.
// Source and destination may be the same buffer. Every variant is bit-exact
// with the scalar one.
#pragma once

#include <cstdint>

#include "color_balance_record.h"
#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// What the kernels read, prepared once per render from the record.
struct ColorBalanceParams {
    int32_t gainY = 256;  // 0..1272
    int32_t gainC = 256;
    int32_t offY = 0;     // -1024..1024
    int32_t offU = 0;
    int32_t offV = 0;
    bool gain = false;    // false: both settings 0, the offsets-only kernels
    bool safe = false;
};

// Settings outside -128..127 are taken at the nearest end; offsets are held
// to +-1024, beyond which every output saturates the same way anyway. Safe
// colour is on for any non-zero value.
ColorBalanceParams MakeColorBalanceParams(const ColorBalanceRecord& r);

using ColorBalanceKernel = void (*)(const FieldView& v, const ColorBalanceParams& p);

// The four scalar variants; the first two take unity gains.
void ColorBalanceOffsetsScalar(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceOffsetsSafeScalar(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceGainScalar(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceGainSafeScalar(const FieldView& v, const ColorBalanceParams& p);
// SSE2 twins, bit-exact with the scalar variants of the same name; x86 only.
void ColorBalanceOffsetsSse2(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceOffsetsSafeSse2(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceGainSse2(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceGainSafeSse2(const FieldView& v, const ColorBalanceParams& p);
// AVX2 twins, bit-exact with the scalar variants of the same name; x86 only.
void ColorBalanceOffsetsAvx2(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceOffsetsSafeAvx2(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceGainAvx2(const FieldView& v, const ColorBalanceParams& p);
void ColorBalanceGainSafeAvx2(const FieldView& v, const ColorBalanceParams& p);

// The variant for these parameters at the fastest level allowed.
ColorBalanceKernel SelectColorBalanceKernel(const ColorBalanceParams& p, SimdLevel level);

}  // namespace zvf::filters
