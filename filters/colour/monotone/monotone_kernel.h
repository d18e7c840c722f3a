// Monotone's kernels: every pair of the field's rows becomes (Y0, u, Y1, v),
// that is (in AND FF 00 FF 00) XOR (00 u 00 v). Source and destination may be
// the same buffer. Every variant is bit-exact with the scalar one.
#pragma once

#include <cstdint>

#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

using MonotoneKernel = void (*)(const FieldView& v, uint8_t u, uint8_t vv);

void MonotoneScalar(const FieldView& v, uint8_t u, uint8_t vv);
// Bit-exact with MonotoneScalar; x86 only.
void MonotoneSse2(const FieldView& v, uint8_t u, uint8_t vv);
// Bit-exact with MonotoneScalar; x86 only.
void MonotoneAvx2(const FieldView& v, uint8_t u, uint8_t vv);

// The fastest kernel the level allows; the scalar one at SimdLevel::scalar.
MonotoneKernel SelectMonotoneKernel(SimdLevel level);

}  // namespace zvf::filters
