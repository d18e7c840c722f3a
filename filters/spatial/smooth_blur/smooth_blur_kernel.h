// Smooth Blur's kernel: Blur's separable recursive low-pass at higher
// precision. Samples are centred on 128 with 8 fraction bits, the recursion
// state is truncated to 16 bits at each step, and each output is formed from
// the untruncated 32-bit accumulators of both directions.
//
// This scalar version defines the results: any SIMD version must be
// bit-exact with it on every input.
#pragma once

#include <cstdint>
#include <span>

#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// (x - 128) * 256: the sample centred, with 8 fraction bits.
constexpr int32_t SmoothCentre(int32_t x) { return (x - 128) * 256; }
// The accumulator (32768 - a) x' + a p, without rounding. With a in
// 0..32768 and 16-bit x' and p its magnitude stays within 2^30, so the sum
// of two accumulators still fits 32 bits.
constexpr int32_t SmoothAccumulate(int32_t centred, int32_t p, int32_t a) { return (32768 - a) * centred + a * p; }
// The next state: the accumulator shifted down, truncating, saturated to 16 bits.
constexpr int32_t SmoothState(int32_t acc) {
    const int32_t s = acc >> 15;
    return s < -32768 ? -32768 : (s > 32767 ? 32767 : s);
}
// An output byte from the two directions' accumulators; the final shift by 8
// floors.
constexpr uint8_t SmoothOutput(int32_t backward, int32_t forward) {
    int32_t v = (backward + forward) >> 16;
    v = v < -32768 ? -32768 : (v > 32767 ? 32767 : v);
    const int32_t o = (v >> 8) + 128;
    return static_cast<uint8_t>(o < 0 ? 0 : (o > 255 ? 255 : o));
}

// Smooths the field's rows from v.src into v.dst (which may be the same
// frame), then its pair columns in place in v.dst. `weight` is
// KernelWeight() of the coefficient. `scratch` is in 32-bit lanes; with fewer
// than 4 * MinScratchEntries(rows, pairs) of them nothing is written and
// false is returned. `level` picks the instruction set of both passes;
// every level gives the same bytes.
bool SmoothBlurField(const FieldView& v, int32_t weight, std::span<int32_t> scratch,
                     SimdLevel level = SimdLevel::scalar);

// The horizontal pass over every row of the field, from v.src into v.dst,
// with `fwd` holding at least 4 * v.pairs lanes.
void SmoothRowsScalar(const FieldView& v, int32_t a, std::span<int32_t> fwd);
// One pixel pair per instruction, of two rows at once when `fwd` holds
// 8 * v.pairs lanes; bit-exact with SmoothRowsScalar.
void SmoothRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd);
// Eight rows per register, sixteen rows at once when `fwd` holds 48 * v.pairs
// lanes, eight when it holds 24 * v.pairs (otherwise the SSE2 pass);
// bit-exact with SmoothRowsScalar.
void SmoothRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd);
// Sixteen rows per register, sixteen rows at once when `fwd` holds
// 48 * v.pairs lanes (otherwise the AVX2 pass); AVX-512 F and BW on x86-64,
// elsewhere the AVX2 pass; bit-exact with SmoothRowsScalar.
void SmoothRowsAvx512(const FieldView& v, int32_t a, std::span<int32_t> fwd);

// The vertical pass over one strip of `lanes` byte columns (a multiple of 4)
// and `rows` rows `step` bytes apart, in place: a bottom-up recursion whose
// accumulators are kept per row in `up` (rows * lanes entries), then a
// top-down one that writes the outputs.
using SmoothStripFn = void (*)(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up);
void SmoothStripScalar(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up);
// Eight columns per instruction, for strips of up to kWideStripPairs pairs;
// bit-exact with SmoothStripScalar.
void SmoothStripSse2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up);
// 32 columns at a time, for strips of up to kWideStripPairs pairs; bit-exact
// with SmoothStripScalar.
void SmoothStripAvx2(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up);
// 64 columns at a time, for strips of up to kWide512StripPairs pairs;
// AVX-512 F and BW on x86-64, elsewhere the AVX2 pass; bit-exact with
// SmoothStripScalar.
void SmoothStripAvx512(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up);

}  // namespace zvf::filters
