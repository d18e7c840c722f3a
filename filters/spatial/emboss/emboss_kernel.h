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
#include "zvf/simd_level.h"

namespace zvf::filters {

// Offset of the reference, per unit of depth, in field rows and pairs.
struct EmbossStep {
    int32_t dr;
    int32_t dc;
};
// Direction 0..7 as on the ring of radio buttons; above 7 is taken as 7.
EmbossStep EmbossDirection(uint32_t direction);

// out[i] = clamp(s[i] - t[i] + 128, 0, 255) for i < n. The scalar version
// defines the results; any other version is bit-exact with it. `ahead` and
// `refAhead` are the distances to the span the field walk works on next in
// the source and destination, and in the reference (0 when there is none):
// the SIMD versions fetch those lines while they work, as a field's rows are
// too far apart for the hardware prefetcher. They are never read or written.
using EmbossSpanFn = void (*)(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t ahead,
                              ptrdiff_t refAhead);
void EmbossSpan(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t ahead, ptrdiff_t refAhead);
// SSE2 and AVX2 twins, bit-exact with EmbossSpan; only for instances whose
// level is at least SimdLevel::sse2 or SimdLevel::avx2. AVX2 is x86 only.
void EmbossSpanSse2(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t ahead, ptrdiff_t refAhead);
void EmbossSpanAvx2(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t ahead, ptrdiff_t refAhead);
// The span at the fastest of the levels allowed.
EmbossSpanFn SelectEmbossSpan(SimdLevel level);

// The relief of the view's rows for a depth of at least 1. A depth beyond
// the field's size gives the same result as the largest that fits, since
// the reference is clamped. Only the field's rows and whole pairs are
// written.
void EmbossField(const FieldView& v, uint32_t direction, uint32_t depth, EmbossSpanFn span = EmbossSpan);

// Depth 0: every pair of the view's rows becomes 80 80 80 80. Rows start at
// their own place (no drift for odd widths); the source is not read.
void GreyField(const FieldView& v);

}  // namespace zvf::filters
