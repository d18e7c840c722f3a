// Emboss's kernels: every output byte is the source byte minus the byte in
// the same place of a reference pair, lifted to mid-grey and clamped:
//   out = clamp(s - t + 128, 0, 255)
// for luma and chroma alike, so flat areas become neutral grey. The
// reference pair lies `depth` field rows and/or pairs away in the direction
// opposite the chosen radio button, clamped into the field's rectangle.
// Source and destination must not overlap (the filter detaches the source).
#pragma once

#include <cstddef>
#include <cstdint>

#include "zvf/field.h"

namespace zvf::filters {

// Offset of the reference, per unit of depth, in field rows and pairs.
struct EmbossStep {
    int32_t dr;
    int32_t dc;
};
// Direction 0..7 as on the ring of radio buttons; above 7 is taken as 7.
EmbossStep EmbossDirection(uint32_t direction);

// out[i] = clamp(s[i] - t[i] + 128, 0, 255) for i < n. The scalar version
// defines the results; any other version is bit-exact with it.
using EmbossSpanFn = void (*)(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n);
void EmbossSpan(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n);
// SSE2 twin, bit-exact with EmbossSpan; only for instances whose level is at
// least SimdLevel::sse2.
void EmbossSpanSse2(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n);

// The relief of the view's rows for a depth of at least 1. A depth beyond
// the field's size gives the same result as the largest that fits, since
// the reference is clamped. Only the field's rows and whole pairs are
// written.
void EmbossField(const FieldView& v, uint32_t direction, uint32_t depth, EmbossSpanFn span = EmbossSpan);

// Depth 0: every pair of the view's rows becomes 80 80 80 80. Rows start at
// their own place (no drift for odd widths); the source is not read.
void GreyField(const FieldView& v);

}  // namespace zvf::filters
