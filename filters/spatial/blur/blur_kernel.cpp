#include "blur_kernel.h"

#include <algorithm>

#include "blur_scratch.h"

namespace zvf::filters {
namespace {

constexpr uint8_t Average(int32_t y, int32_t z) {
    const int32_t v = (y + z) >> 1;
    return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

// One row of `pairs` pairs: forward results into `fwd`, then the backward
// recursion writes the averages. The backward pass reads each source sample
// before writing the same place, so src may equal dst.
void BlurRow(const uint8_t* src, uint8_t* dst, int32_t pairs, int32_t a, int32_t* fwd) {
    const int32_t n = 4 * pairs;
    int32_t p[4] = {src[0], src[1], src[2], src[3]};
    for (int32_t i = 0; i < n; i += 4) {
        for (int32_t l = 0; l < 4; ++l) {
            p[l] = BlurStep(src[i + l], p[l], a);
            fwd[i + l] = p[l];
        }
    }
    for (int32_t l = 0; l < 4; ++l) p[l] = src[n - 4 + l];
    for (int32_t i = n - 4; i >= 0; i -= 4) {
        for (int32_t l = 0; l < 4; ++l) {
            p[l] = BlurStep(src[i + l], p[l], a);
            dst[i + l] = Average(fwd[i + l], p[l]);
        }
    }
}

}  // namespace

void BlurRowsScalar(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    for (int32_t r = 0; r < v.rows; ++r) BlurRow(v.src + r * v.step, v.dst + r * v.step, v.pairs, a, fwd.data());
}

// Each row is read before it is written, so src may equal dst. The inner
// loops run along the row, column by column independently.
void BlurStripScalar(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a,
                     int32_t* up) {
    const uint8_t* bottom = src + (rows - 1) * step;
    int32_t* u = up + static_cast<ptrdiff_t>(rows - 1) * lanes;
    for (int32_t j = 0; j < lanes; ++j) u[j] = BlurStep(bottom[j], bottom[j], a);
    for (int32_t k = rows - 2; k >= 0; --k) {
        const uint8_t* in = src + k * step;
        const int32_t* below = up + static_cast<ptrdiff_t>(k + 1) * lanes;
        int32_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        for (int32_t j = 0; j < lanes; ++j) here[j] = BlurStep(in[j], below[j], a);
    }
    int32_t down[4 * kStripPairs];
    for (int32_t j = 0; j < lanes; ++j) down[j] = src[j];
    for (int32_t k = 0; k < rows; ++k) {
        const uint8_t* in = src + k * step;
        uint8_t* out = dst + k * step;
        const int32_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        for (int32_t j = 0; j < lanes; ++j) {
            down[j] = BlurStep(in[j], down[j], a);
            out[j] = Average(here[j], down[j]);
        }
    }
}

bool BlurField(const FieldView& v, int32_t a, std::span<int32_t> scratch, SimdLevel level) {
    if (v.rows <= 0 || v.pairs <= 0) return true;
    const size_t entries = scratch.size() / kLanes;
    const bool sse2 = level >= SimdLevel::sse2;
    const int32_t strip = sse2 ? SimdStripPairs(entries, v.rows, v.pairs) : StripPairs(entries, v.rows, v.pairs);
    if (strip == 0) return false;

    const BlurRowsFn horizontal = level >= SimdLevel::avx2 ? BlurRowsAvx2 : sse2 ? BlurRowsSse2 : BlurRowsScalar;
    const BlurStripFn vertical = level >= SimdLevel::avx2 ? BlurStripAvx2 : sse2 ? BlurStripSse2 : BlurStripScalar;
    // One pair per row: the horizontal pass would change nothing.
    const uint8_t* vin = v.src;
    if (v.pairs > 1) {
        horizontal(v, a, scratch);
        vin = v.dst;
    }
    for (int32_t c = 0; c < v.pairs; c += strip) {
        const int32_t width = std::min(strip, v.pairs - c);
        vertical(vin + 4 * c, v.dst + 4 * c, v.step, v.rows, 4 * width, a, scratch.data());
    }
    return true;
}

}  // namespace zvf::filters
