// Blur's kernel: a separable, symmetric, first-order recursive low-pass on
// the four lanes Y0, Cb, Y1, Cr of each pixel pair, horizontally along each
// row of the field and then vertically along each pair column. Integer only;
// every intermediate is a whole 8-bit value, so flat areas stay flat.
//
// This scalar version defines the results: any SIMD version must be
// bit-exact with it on every input.
#pragma once

#include <cstdint>
#include <span>

#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// One step of the recursion: ((32768 - a) x + a p + 16384) >> 15, saturated
// to 16 bits; x is the input sample, p the previous output.
constexpr int32_t BlurStep(int32_t x, int32_t p, int32_t a) {
    const int32_t y = ((32768 - a) * x + a * p + 16384) >> 15;
    return y < -32768 ? -32768 : (y > 32767 ? 32767 : y);
}

// Smooths the field's rows then its pair columns, from v.src into v.dst
// (which may be the same frame). A field one pair wide is only filtered
// vertically, straight from the source. `weight` is KernelWeight() of the
// coefficient. `scratch` is in 32-bit lanes; with fewer than
// 4 * MinScratchEntries(rows, pairs) of them nothing is written and false is
// returned. `level` picks the instruction set of both passes; every
// level gives the same bytes.
bool BlurField(const FieldView& v, int32_t weight, std::span<int32_t> scratch, SimdLevel level = SimdLevel::scalar);

// The horizontal pass over every row of the field, from v.src into v.dst,
// with `fwd` holding at least 4 * v.pairs lanes.
using BlurRowsFn = void (*)(const FieldView& v, int32_t a, std::span<int32_t> fwd);
void BlurRowsScalar(const FieldView& v, int32_t a, std::span<int32_t> fwd);
// Two rows per instruction, one pixel pair of each, up to eight rows at once
// when `fwd` holds 4 * v.pairs lanes per two rows; bit-exact with
// BlurRowsScalar.
void BlurRowsSse2(const FieldView& v, int32_t a, std::span<int32_t> fwd);
// Eight rows per register, four pairs of them loaded and transposed at a
// time; sixteen rows at once when `fwd` holds 16 * v.pairs lanes, eight when
// it holds 8 * v.pairs (otherwise the SSE2 pass); bit-exact with
// BlurRowsScalar.
void BlurRowsAvx2(const FieldView& v, int32_t a, std::span<int32_t> fwd);

// The vertical pass over one strip of `lanes` byte columns (a multiple of 4)
// and `rows` rows `step` bytes apart, from src into dst (which may be the
// same): a bottom-up recursion kept per row in `up` (rows * lanes entries),
// then a top-down one that writes the averages.
using BlurStripFn = void (*)(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                             int32_t* up);
void BlurStripScalar(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                     int32_t* up);
// Sixteen columns at a time, using (rows + 1) * lanes bytes of `up` for any
// `lanes` (multiple of 4); bit-exact with BlurStripScalar.
void BlurStripSse2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up);
// 32 columns at a time, using (rows + 1) * lanes bytes of `up` for any
// `lanes`; bit-exact with BlurStripScalar.
void BlurStripAvx2(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                   int32_t* up);

}  // namespace zvf::filters
