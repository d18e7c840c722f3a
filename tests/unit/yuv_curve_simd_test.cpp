// The SSE2 and AVX2 line kernels against their scalar twin, at every level
// this processor has: every width, odd start addresses, random and extreme
// terms (negative slopes included) and bytes, guard bytes untouched.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "colour/yuv_curve/yuv_curve_kernel.h"
#include "simd_levels.h"

namespace zvf::filters {
namespace {

constexpr int kRows = 3;
constexpr int kGuard = 32;

struct Buffers {
    std::vector<uint8_t> src, dst;
    FieldView view;
};

// A field of kRows rows, `width` pixels wide, starting `offset` bytes into
// its rows, inside guard bytes of 0xA5.
Buffers Make(int width, int offset, std::mt19937& rng, bool extremes) {
    const int stride = 2 * width + 2 * kGuard + offset;
    Buffers b;
    b.src.resize(static_cast<size_t>(stride) * 2 * kRows + kGuard);
    b.dst.assign(b.src.size(), 0xA5);
    for (uint8_t& x : b.src) x = extremes ? (rng() % 2 ? 255 : 0) : static_cast<uint8_t>(rng());
    b.view.src = b.src.data() + kGuard + offset;
    b.view.dst = b.dst.data() + kGuard + offset;
    b.view.step = 2 * static_cast<ptrdiff_t>(stride);
    b.view.rows = kRows;
    b.view.pairs = width / 2;
    b.view.width_px = width;
    return b;
}

using test::LevelsAboveScalar;

void CheckLineKernel(SimdLevel level) {
    std::mt19937 rng(2024);
    std::uniform_int_distribution<int> any16(-32768, 32767);
    const int16_t extremeTerms[] = {-32768, -32767, -256, -1, 0, 1, 255, 256, 32767};
    for (int trial = 0; trial < 12; ++trial) {
        const bool extremes = trial % 3 == 2;
        LineTerms terms[3];
        for (LineTerms& t : terms) {
            if (trial == 0) {
                t = LineTermsOf({0, 0}, {255, 255});
            } else if (extremes) {
                t = {extremeTerms[rng() % 9], extremeTerms[rng() % 9]};
            } else if (trial % 3 == 1) {  // lines through points in range
                const uint32_t x0 = static_cast<uint32_t>(rng() % 255);
                const uint32_t x1 = x0 + 1 + static_cast<uint32_t>(rng() % (255 - x0));
                t = LineTermsOf({x0, static_cast<uint32_t>(rng() % 256)}, {x1, static_cast<uint32_t>(rng() % 256)});
            } else {
                t = {static_cast<int16_t>(any16(rng)), static_cast<int16_t>(any16(rng))};
            }
        }
        for (bool limited : {false, true})
            for (int width = 2; width <= 130; ++width)
                for (int offset : {0, 1, 3}) {
                    Buffers scalar = Make(width, offset, rng, extremes);
                    Buffers simd = scalar;
                    simd.view.src = simd.src.data() + (scalar.view.src - scalar.src.data());
                    simd.view.dst = simd.dst.data() + (scalar.view.dst - scalar.dst.data());
                    RenderCurveLines(scalar.view, terms, limited);
                    const auto twin = level == SimdLevel::avx2 ? RenderCurveLinesAvx2 : RenderCurveLinesSse2;
                    twin(simd.view, terms, limited);
                    ASSERT_EQ(simd.dst, scalar.dst) << SimdLevelName(level) << " trial " << trial << " width " << width
                                                    << " offset " << offset << " limited " << limited;
                    // Guard bytes around each row's pairs stay as they were.
                    size_t touched = 0;
                    for (size_t i = 0; i < scalar.dst.size(); ++i) {
                        const ptrdiff_t at = static_cast<ptrdiff_t>(i) - (scalar.view.dst - scalar.dst.data());
                        const ptrdiff_t inRow = at % scalar.view.step;
                        const bool written = at >= 0 && at / scalar.view.step < kRows && inRow >= 0 &&
                                             inRow < 4 * scalar.view.pairs;
                        touched += !written && scalar.dst[i] != 0xA5;
                    }
                    ASSERT_EQ(touched, 0u) << "width " << width << " offset " << offset;
                }
    }
}

TEST(YuvCurveSimd, LineKernelMatchesScalarByteForByteAtEveryLevel) {
    for (SimdLevel level : LevelsAboveScalar()) CheckLineKernel(level);
}

}  // namespace
}  // namespace zvf::filters
