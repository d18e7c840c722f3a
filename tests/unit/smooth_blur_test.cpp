#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kit/frame.h"
#include "recursive_blur_reference.h"
#include "spatial/blur/blur_record.h"
#include "spatial/blur/blur_scratch.h"
#include "spatial/smooth_blur/smooth_blur_kernel.h"

namespace zvf::filters {
namespace {

std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> b(n);
    for (uint8_t& v : b) v = static_cast<uint8_t>(rng());
    return b;
}

// One field of a frame made from `pixels`, rendered into a copy of `before`
// with `entries` scratch entries (0: enough for full strips).
std::vector<uint8_t> RunSmooth(const std::vector<uint8_t>& pixels, std::vector<uint8_t> before, int32_t w, int32_t h,
                               const Rect& r, int32_t field, int32_t weight, size_t entries = 0, bool* done = nullptr,
                               SimdLevel level = SimdLevel::scalar) {
    std::vector<uint8_t> in = pixels;
    host::Frame src(in.data(), w, h), dst(before.data(), w, h);
    FieldView v;
    EXPECT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
    std::vector<int32_t> scratch(kLanes * (entries ? entries : FullScratchEntries(v.rows, v.pairs)));
    const bool ok = SmoothBlurField(v, weight, scratch, level);
    if (done) *done = ok;
    return before;
}

TEST(SmoothBlurKernel, OneRowByHandAndTheFlooringShift) {
    // Radius 2 (a = 2048), a one-row field of three pairs, every lane alike.
    // 128, 255, 128 centres to 0, 32512, 0: forward accumulators 0,
    // 998768640, 62423040; backward 62423040, 998768640, 0. Sums >> 16 give
    // 952, 30480, 952; >> 8 gives 3, 119, 3. Dark: 128, 0, 128 gives -960,
    // -30720, -960, and the flooring shift -4, -120, -4.
    struct Case {
        uint8_t side, middle;
        uint8_t outSide, outMiddle;
    };
    const Case cases[] = {
        {128, 255, 131, 247}, {128, 0, 124, 8}, {128, 128, 128, 128}, {0, 0, 0, 0}, {255, 255, 255, 255}};
    for (const Case& c : cases) {
        std::vector<uint8_t> pixels(12 * 2 * 2, 0x44);  // 6x2 pixels: 3 pairs, one even row
        for (int i = 0; i < 12; ++i) pixels[i] = i / 4 == 1 ? c.middle : c.side;
        const std::vector<uint8_t> out = RunSmooth(pixels, pixels, 6, 2, {0, 0, 6, 2}, 0, 2048);
        for (int i = 0; i < 12; ++i)
            EXPECT_EQ(out[i], i / 4 == 1 ? c.outMiddle : c.outSide) << int(c.middle) << " " << i;
        for (int i = 12; i < 24; ++i) EXPECT_EQ(out[i], 0x44);
    }
}

TEST(SmoothBlurKernel, UniformFramesStayUniformForEveryRadius) {
    const int32_t w = 14, h = 9;
    for (int32_t radius = 1; radius <= 100; ++radius) {
        for (uint8_t value : {0, 1, 127, 128, 129, 235, 255}) {
            const std::vector<uint8_t> flat(w * h * 2, value);
            for (int32_t field : {0, 1}) {
                const std::vector<uint8_t> out =
                    RunSmooth(flat, flat, w, h, {0, 0, w, h}, field, KernelWeight(BlurCoefficient(radius)));
                ASSERT_EQ(out, flat) << "radius " << radius << " value " << int(value) << " field " << field;
            }
        }
    }
}

TEST(SmoothBlurKernel, BrightPairSpreadsSymmetrically) {
    const int32_t w = 22, h = 22;  // 11 pairs, 11 rows per field
    for (int32_t radius : {1, 2, 5, 10, 100}) {
        std::vector<uint8_t> pixels(w * h * 2, 40);
        for (int i = 0; i < 4; ++i) pixels[10 * w * 2 + 20 + i] = 250;
        const std::vector<uint8_t> out =
            RunSmooth(pixels, pixels, w, h, {0, 0, w, h}, 0, KernelWeight(BlurCoefficient(radius)));
        auto at = [&](int fy, int px, int lane) { return out[2 * fy * w * 2 + px * 4 + lane]; };
        for (int fy = 0; fy < 11; ++fy)
            for (int px = 0; px < 11; ++px)
                for (int lane = 0; lane < 4; ++lane) {
                    ASSERT_EQ(at(fy, px, lane), at(fy, 10 - px, lane)) << radius;
                    ASSERT_EQ(at(fy, px, lane), at(10 - fy, px, lane)) << radius;
                }
        // At radius 100 the pair spreads so far that the centre floors back
        // to the background.
        EXPECT_GE(at(5, 5, 1), at(5, 4, 1)) << radius;
        if (radius <= 10) {
            EXPECT_GT(at(5, 5, 1), 40) << radius;
        }
        EXPECT_GE(at(5, 4, 1), at(5, 3, 1)) << radius;
    }
}

TEST(SmoothBlurKernel, TouchesOnlyTheFieldsPairsInsideTheRectangle) {
    const int32_t w = 12, h = 10;
    const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 8);
    const std::vector<uint8_t> marker(w * h * 2, 0xA5);
    struct Case {
        Rect r;
        int32_t field;
    };
    const Case cases[] = {
        {{1, 1, 8, 9}, 1}, {{1, 1, 8, 9}, 0}, {{0, 0, 3, 10}, 2}, {{4, 3, 12, 4}, 1}, {{2, 0, 5, 7}, 0}};
    for (const Case& c : cases) {
        const std::vector<uint8_t> out = RunSmooth(pixels, marker, w, h, c.r, c.field, 12000);
        const int32_t odd = c.field == 1 ? 1 : 0;
        const int32_t end = c.r.left + 2 * ((c.r.right - c.r.left) / 2);
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) {
                const bool inside = y >= c.r.top && y < c.r.bottom && (y & 1) == odd && x >= c.r.left && x < end;
                if (inside) continue;
                for (int b = 0; b < 2; ++b) ASSERT_EQ(out[(y * w + x) * 2 + b], 0xA5) << y << "," << x;
            }
    }
}

TEST(SmoothBlurKernel, OnePairWideIsFilteredVerticallyOnly) {
    const int32_t w = 8, h = 12;
    const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 21);
    const Rect r{3, 0, 5, 12};  // one pair per row
    std::vector<uint8_t> want = pixels;
    test::ReferenceField(want, pixels, w, r, 1, 18820, test::SmoothBlurLineReference);
    EXPECT_EQ(RunSmooth(pixels, pixels, w, h, r, 1, 18820), want);
    // A single row of a single pair comes through unchanged.
    EXPECT_EQ(RunSmooth(pixels, pixels, w, h, {3, 4, 5, 5}, 0, 18820), pixels);
}

TEST(SmoothBlurKernel, MatchesTheLineByLineReference) {
    const int32_t w = 40, h = 37;
    std::mt19937 rng(12);
    for (int iteration = 0; iteration < 60; ++iteration) {
        const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 200 + iteration);
        const int32_t left = rng() % w, top = rng() % h;
        const Rect r{left, top, left + 1 + static_cast<int32_t>(rng() % (w - left)),
                     top + 1 + static_cast<int32_t>(rng() % (h - top))};
        const int32_t field = static_cast<int32_t>(rng() % 3);
        // Every radius's weight, and the extremes a hand-edited set can reach.
        const int32_t weights[] = {0, 32768, KernelWeight(BlurCoefficient(1 + static_cast<int32_t>(rng() % 100)))};
        const int32_t a = weights[iteration % 3];
        std::vector<uint8_t> want = pixels;
        test::ReferenceField(want, pixels, w, r, field, a, test::SmoothBlurLineReference);
        FieldView probe;
        host::Frame pf(const_cast<uint8_t*>(pixels.data()), w, h);
        if (OpenField(&pf, &pf, &r, field, &probe) != status::ok) continue;
        EXPECT_EQ(RunSmooth(pixels, pixels, w, h, r, field, a), want) << "iteration " << iteration;
        std::vector<uint8_t> same = pixels;
        host::Frame sf(same.data(), w, h);
        FieldView v;
        ASSERT_EQ(OpenField(&sf, &sf, &r, field, &v), status::ok);
        std::vector<int32_t> scratch(kLanes * FullScratchEntries(v.rows, v.pairs));
        ASSERT_TRUE(SmoothBlurField(v, a, scratch));
        EXPECT_EQ(same, want) << "in place, iteration " << iteration;
    }
}

TEST(SmoothBlurKernel, ResultDoesNotDependOnTheScratchSize) {
    const int32_t w = 64, h = 30;
    const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 4);
    const Rect all{0, 0, w, h};
    const std::vector<uint8_t> full = RunSmooth(pixels, pixels, w, h, all, 1, 25000);
    // Below 64 entries the SSE2 rows go one at a time, from 64 two at a time.
    for (SimdLevel level : {SimdLevel::scalar, SimdLevel::sse2}) {
        for (size_t entries : {32, 33, 46, 63, 64, 15 * 5, 15 * 16, 10000}) {
            bool done = false;
            EXPECT_EQ(RunSmooth(pixels, pixels, w, h, all, 1, 25000, entries, &done, level), full)
                << entries << " entries, level " << SimdLevelName(level);
            EXPECT_TRUE(done);
        }
    }
    bool done = true;
    EXPECT_EQ(RunSmooth(pixels, pixels, w, h, all, 1, 25000, 31, &done), pixels);
    EXPECT_FALSE(done);
}

}  // namespace
}  // namespace zvf::filters
