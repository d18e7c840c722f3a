// Anti Flicker's blend: each row of the field mixed with the adjacent rows
// of the other field, every byte of a pair alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "zvf/simd_level.h"

namespace zvf::filters {

// w = power * 4096 / 100, truncated; power 100 gives 4096. Powers above 200
// (only a hand-made record carries them) would make the blend weights
// negative and act as 200, where a row becomes the mean of its neighbours.
int32_t AntiFlickerWeight(uint32_t power);

// The weight of power 100, the default and the dialog's highest. It makes
// both blends means of bytes: an edge row (c + n) >> 1, a middle row
// (a + b + 2c) >> 2, which is floor((floor((a + b) / 2) + c) / 2). The SIMD
// rows take them without widening to 16 bits, about half the instructions.
constexpr int32_t kAntiFlickerMeanWeight = 4096;

// How the SIMD rows form a middle row for a weight: in 16-bit lanes with 4w
// folded into the multiplier (below 8192), with w itself (8192), or as
// byte means (kAntiFlickerMeanWeight). WithMiddleBlend runs `loop` with the
// kind as a compile-time constant (a std::integral_constant).
enum class MiddleBlend { kWeighted, kFull, kMean };
template <class Loop>
void WithMiddleBlend(int32_t w, Loop loop) {
    using M = MiddleBlend;
    if (w == kAntiFlickerMeanWeight)
        loop(std::integral_constant<M, M::kMean>{});
    else if (w < 8192)
        loop(std::integral_constant<M, M::kWeighted>{});
    else
        loop(std::integral_constant<M, M::kFull>{});
}

// The row kernels BlendField runs; every version is bit-exact with the
// scalar one on every input, for weights 0..8192. `ahead` is the distance to
// the next row the field walk works on (0 when there is none): the SIMD
// versions fetch the lines there that the next call reads first (its current
// row and its new neighbour row, c + ahead and n or b + ahead) and the
// destination line it writes, as a field's rows are too far apart for the
// hardware prefetcher. Those lines are never read or written here.
struct BlendRows {
    // o = (c * (8192 - w) + n * w) >> 13
    void (*edge)(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t ahead);
    // o = ((a + b) * w + c * (16384 - 2w)) >> 14
    void (*middle)(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w,
                   ptrdiff_t ahead);
};
BlendRows ScalarBlendRows();
BlendRows Sse2BlendRows();  // anti_flicker_kernel_sse2.cpp
BlendRows Avx2BlendRows();  // anti_flicker_kernel_avx2.cpp, x86 only
BlendRows Avx512BlendRows();  // anti_flicker_kernel_avx512.cpp, x86 only (AVX2 rows on 32-bit x86)
// The fastest rows the level allows.
BlendRows BlendRowsFor(SimdLevel level);

// `cur` is the first pair of the region's first field row in the frame this
// field comes from, `nb` the same place in the frame the other field was last
// seen in; its rows one `pitch` above and below are the other field's lines.
// Field rows are 2 * pitch apart; `dst` is the destination at the same place.
// Only `pairs * 4` bytes of each row are written.
//   w = 0 or one row: the rows are copied.
//   first row:  (cur * (8192 - w) + below * w) >> 13
//   middle:     ((above + below) * w + cur * (16384 - 2w)) >> 14
//   last row:   (cur * (8192 - w) + above * w) >> 13, only from three rows on;
//   with two rows the second destination row is left as it was.
// Results are saturated to 0..255; there is no rounding term.
void BlendField(const uint8_t* cur, const uint8_t* nb, uint8_t* dst, ptrdiff_t pitch, int32_t rows, int32_t pairs,
                int32_t w, const BlendRows& kernels = ScalarBlendRows());

}  // namespace zvf::filters
