#include "smooth_blur_kernel.h"

#include <algorithm>

#include "spatial/blur/blur_scratch.h"

namespace zvf::filters {
namespace {

// One row: forward accumulators into `fwd`, then the backward recursion
// writes the outputs. Each source sample is read before the same place is
// written, so src may equal dst.
void SmoothRow(const uint8_t* src, uint8_t* dst, int32_t pairs, int32_t a, int32_t* fwd) {
    const int32_t n = 4 * pairs;
    int32_t p[4];
    for (int32_t l = 0; l < 4; ++l) p[l] = SmoothCentre(src[l]);
    for (int32_t i = 0; i < n; i += 4) {
        for (int32_t l = 0; l < 4; ++l) {
            const int32_t acc = SmoothAccumulate(SmoothCentre(src[i + l]), p[l], a);
            fwd[i + l] = acc;
            p[l] = SmoothState(acc);
        }
    }
    for (int32_t l = 0; l < 4; ++l) p[l] = SmoothCentre(src[n - 4 + l]);
    for (int32_t i = n - 4; i >= 0; i -= 4) {
        for (int32_t l = 0; l < 4; ++l) {
            const int32_t acc = SmoothAccumulate(SmoothCentre(src[i + l]), p[l], a);
            p[l] = SmoothState(acc);
            dst[i + l] = SmoothOutput(acc, fwd[i + l]);
        }
    }
}

}  // namespace

void SmoothRowsScalar(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    for (int32_t r = 0; r < v.rows; ++r) SmoothRow(v.src + r * v.step, v.dst + r * v.step, v.pairs, a, fwd.data());
}

// Both recursions carry one state per column along the rows.
void SmoothStripScalar(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    int32_t state[4 * kStripPairs];
    const uint8_t* bottom = base + (rows - 1) * step;
    for (int32_t j = 0; j < lanes; ++j) state[j] = SmoothCentre(bottom[j]);
    for (int32_t k = rows - 1; k >= 0; --k) {
        const uint8_t* in = base + k * step;
        int32_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        for (int32_t j = 0; j < lanes; ++j) {
            const int32_t acc = SmoothAccumulate(SmoothCentre(in[j]), state[j], a);
            here[j] = acc;
            state[j] = SmoothState(acc);
        }
    }
    for (int32_t j = 0; j < lanes; ++j) state[j] = SmoothCentre(base[j]);
    for (int32_t k = 0; k < rows; ++k) {
        uint8_t* row = base + k * step;
        const int32_t* here = up + static_cast<ptrdiff_t>(k) * lanes;
        for (int32_t j = 0; j < lanes; ++j) {
            const int32_t acc = SmoothAccumulate(SmoothCentre(row[j]), state[j], a);
            state[j] = SmoothState(acc);
            row[j] = SmoothOutput(acc, here[j]);
        }
    }
}

bool SmoothBlurField(const FieldView& v, int32_t a, std::span<int32_t> scratch, SimdLevel level) {
    if (v.rows <= 0 || v.pairs <= 0) return true;
    const bool sse2 = level >= SimdLevel::sse2;
    const bool avx512 = level >= SimdLevel::avx512;
    const int32_t widest = avx512 ? kWide512StripPairs : sse2 ? kWideStripPairs : kStripPairs;
    const int32_t strip = StripPairs(scratch.size() / kLanes, v.rows, v.pairs, widest);
    if (strip == 0) return false;
    (avx512                        ? SmoothRowsAvx512
     : level >= SimdLevel::avx2    ? SmoothRowsAvx2
     : sse2                        ? SmoothRowsSse2
                                   : SmoothRowsScalar)(v, a, scratch);
    const SmoothStripFn vertical = avx512                       ? SmoothStripAvx512
                                   : level >= SimdLevel::avx2   ? SmoothStripAvx2
                                   : sse2                       ? SmoothStripSse2
                                                                : SmoothStripScalar;
    for (int32_t c = 0; c < v.pairs; c += strip) {
        const int32_t width = std::min(strip, v.pairs - c);
        vertical(v.dst + 4 * c, v.step, v.rows, 4 * width, a, scratch.data());
    }
    return true;
}

}  // namespace zvf::filters
