// Blur's and Smooth Blur's SIMD levels against the scalar passes at every
// level this processor has: fields of 1 to 19 rows (so that groups of rows
// run short), every width from 2 to 130 pixels at odd offsets, scratch from
// the fewest entries to full strips, in place and not, random and extreme
// pictures and weights, guard bytes around the rectangle untouched; and the
// AVX2 and AVX-512 vertical passes on every strip width directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kit/frame.h"
#include "kit/services.h"
#include "spatial/blur/blur_kernel.h"
#include "spatial/blur/blur_scratch.h"
#include "spatial/smooth_blur/smooth_blur_kernel.h"

namespace zvf::filters {
namespace {

constexpr uint8_t kMarker = 0xC3;

std::vector<SimdLevel> Levels() {
    const SimdLevel best = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<SimdLevel> levels;
    if (best >= SimdLevel::sse2) levels.push_back(SimdLevel::sse2);
    if (best >= SimdLevel::avx2) levels.push_back(SimdLevel::avx2);
    if (best >= SimdLevel::avx512) levels.push_back(SimdLevel::avx512);  // Smooth Blur's passes
    return levels;
}

using FieldKernel = bool (*)(const FieldView&, int32_t, std::span<int32_t>, SimdLevel);
struct Kernel {
    const char* name;
    FieldKernel run;
};
const Kernel kKernels[] = {{"Blur", BlurField}, {"Smooth Blur", SmoothBlurField}};

uint8_t Sample(std::mt19937& rng, int picture, size_t i) {
    switch (picture) {
        case 0:
            return static_cast<uint8_t>(rng());
        case 1:
            return 0;
        case 2:
            return 255;
        case 3:
            return (i & 1) ? 255 : 0;
        default:
            return rng() % 17 == 0 ? 255 : 0;
    }
}

// How much scratch a render gets: the fewest entries, a few more (strips of
// odd widths), or full strips.
enum class Scratch { Min, Odd, Full };

std::vector<uint8_t> Render(const Kernel& kernel, const std::vector<uint8_t>& pixels, int32_t w, int32_t h,
                            const Rect& r, int32_t field, int32_t a, Scratch size, bool inPlace, SimdLevel level) {
    std::vector<uint8_t> in = pixels;
    std::vector<uint8_t> out = inPlace ? pixels : std::vector<uint8_t>(pixels.size(), kMarker);
    host::Frame src(in.data(), w, h), dst(out.data(), w, h);
    FieldView v;
    EXPECT_EQ(OpenField(&dst, inPlace ? &dst : &src, &r, field, &v), status::ok);
    const size_t entries = size == Scratch::Full  ? FullScratchEntries(v.rows, v.pairs)
                           : size == Scratch::Odd ? MinScratchEntries(v.rows, v.pairs) + 3
                                                  : MinScratchEntries(v.rows, v.pairs);
    std::vector<int32_t> scratch(kLanes * entries);
    EXPECT_TRUE(kernel.run(v, a, scratch, level));
    return out;
}

TEST(BlurLevels, FieldsAreByteIdenticalToScalarAtEveryLevel) {
    const int32_t weights[] = {0, 1, 128, 10809, 20642, 32767, 32768};
    std::mt19937 rng(5);
    int checked = 0;
    for (SimdLevel level : Levels())
        for (const Kernel& kernel : kKernels)
            for (int32_t width = 2; width <= 130; ++width) {
                const int32_t left = 1 + 2 * (width % 2);
                const int32_t fieldRows = 1 + width % 19;
                const int32_t h = 2 * fieldRows + 3;
                const int32_t w = left + width + 2;
                const Rect r{left, 1, left + width, 1 + 2 * fieldRows};
                const int32_t field = 1;  // the rows from 1 on
                const int32_t a = weights[width % 7];
                std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 2);
                const int picture = width % 5;
                for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = Sample(rng, picture, i);
                for (Scratch size : {Scratch::Min, Scratch::Odd, Scratch::Full})
                    for (bool inPlace : {false, true}) {
                        const auto want = Render(kernel, pixels, w, h, r, field, a, size, inPlace, SimdLevel::scalar);
                        const auto got = Render(kernel, pixels, w, h, r, field, a, size, inPlace, level);
                        ASSERT_EQ(got, want) << kernel.name << " " << SimdLevelName(level) << " width " << width
                                             << " rows " << fieldRows << " weight " << a << " scratch "
                                             << static_cast<int>(size) << (inPlace ? " in place" : "");
                        // Outside the field's pairs of the rectangle nothing changed.
                        const int32_t end = left + 2 * (width / 2);
                        for (int32_t y = 0; y < h; ++y)
                            for (int32_t x = 0; x < w; ++x) {
                                if (y >= r.top && y < r.bottom && (y & 1) == field && x >= left && x < end) continue;
                                for (size_t b = 0; b < 2; ++b) {
                                    const size_t at = (static_cast<size_t>(y) * w + x) * 2 + b;
                                    ASSERT_EQ(got[at], inPlace ? pixels[at] : kMarker) << x << "," << y;
                                }
                            }
                        ++checked;
                    }
            }
    EXPECT_EQ(checked, static_cast<int>(Levels().size()) * 2 * 129 * 6);
}

// Fields wider than one vertical strip (several strips, the last one not a
// whole number of register steps) and taller than the sweeps' look-ahead.
TEST(BlurLevels, WideFieldsAreByteIdenticalToScalarAtEveryLevel) {
    struct Case {
        int32_t width, fieldRows, weight;
        int picture;
        Scratch size;
    };
    const Case cases[] = {
        {600, 40, 10809, 0, Scratch::Full}, {1030, 23, 31000, 4, Scratch::Full}, {1030, 40, 32768, 0, Scratch::Full},
        {1030, 40, 128, 0, Scratch::Min},   {601, 17, 20642, 3, Scratch::Odd},  {2050, 9, 2048, 0, Scratch::Full},
        // Narrow and tall with the fewest entries: room for one group of
        // eight rows at a time, the last group short.
        {14, 45, 10809, 0, Scratch::Min},   {15, 45, 31000, 4, Scratch::Odd},
        // Tall fields, strips of 24, 16 and 8 pairs: too many rows for
        // the vertical sweep to keep every row's 32-bit sums, so it keeps
        // the 16-bit states.
        {112, 900, 10809, 0, Scratch::Full}, {96, 1300, 31000, 4, Scratch::Full},
        {80, 2600, 2048, 3, Scratch::Full},
        // The AVX-512 vertical pass: strips of 48 pairs (three steps) with
        // 16-bit states, of 32 (two) with 32-bit sums, and of 16 (one).
        {200, 900, 10809, 0, Scratch::Full}, {130, 300, 31000, 4, Scratch::Full},
        {66, 1300, 20642, 0, Scratch::Full},
    };
    std::mt19937 rng(23);
    for (SimdLevel level : Levels())
        for (const Kernel& kernel : kKernels)
            for (const Case& c : cases) {
                const int32_t left = 3, w = left + c.width + 2, h = 2 * c.fieldRows + 3;
                const Rect r{left, 1, left + c.width, 1 + 2 * c.fieldRows};
                std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 2);
                for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = Sample(rng, c.picture, i);
                for (bool inPlace : {false, true}) {
                    const auto want = Render(kernel, pixels, w, h, r, 0, c.weight, c.size, inPlace, SimdLevel::scalar);
                    const auto got = Render(kernel, pixels, w, h, r, 0, c.weight, c.size, inPlace, level);
                    // The frame as a whole: the field's pairs and every guard byte around them.
                    ASSERT_EQ(got, want) << kernel.name << " " << SimdLevelName(level) << " width " << c.width
                                         << " rows " << c.fieldRows << " weight " << c.weight
                                         << (inPlace ? " in place" : "");
                }
            }
}

TEST(BlurLevels, Avx2AndAvx512StripsMatchScalarOnEveryStripWidth) {
    const SimdLevel best = LevelFromFeatures(host::DetectProcessorFeatures());
    if (best < SimdLevel::avx2) GTEST_SKIP() << "no AVX2";
    std::mt19937 rng(17);
    for (int32_t lanes = 4; lanes <= 4 * 66; lanes += 4) {
        for (int32_t rows : {1, 2, 3, 18}) {
            for (int32_t a : {0, 1, static_cast<int32_t>(rng() % 32769), 32767, 32768}) {
                const ptrdiff_t step = lanes + 7;
                std::vector<uint8_t> src(static_cast<size_t>(step) * rows + 8);
                for (uint8_t& b : src) b = static_cast<uint8_t>(rng() % 3 == 0 ? (rng() & 1) * 255 : rng());
                std::vector<uint8_t> scalar(src.size(), kMarker), avx2(src.size(), kMarker);
                // The scalar pass keeps state for kStripPairs pairs: wider
                // strips go in pieces (columns are independent).
                std::vector<int32_t> up(static_cast<size_t>(rows) * 4 * kStripPairs);
                for (int32_t c = 0; c < lanes; c += 4 * kStripPairs)
                    BlurStripScalar(src.data() + 1 + c, scalar.data() + 1 + c, step, rows,
                                    std::min(4 * kStripPairs, lanes - c), a, up.data());
                // Exactly the bytes the AVX2 pass may use.
                std::vector<uint8_t> bytes(static_cast<size_t>(rows + 1) * lanes);
                BlurStripAvx2(src.data() + 1, avx2.data() + 1, step, rows, lanes, a,
                              reinterpret_cast<int32_t*>(bytes.data()));
                ASSERT_EQ(avx2, scalar) << "lanes " << lanes << " rows " << rows << " weight " << a;
                if (lanes > 4 * kWide512StripPairs) continue;
                // The scalar pass in pieces of kStripPairs pairs, the SIMD ones with
                // one entry per pair and row.
                std::vector<int32_t> smoothUp(static_cast<size_t>(rows) * lanes);
                std::vector<uint8_t> smoothScalar = src;
                for (int32_t c = 0; c < lanes; c += 4 * kStripPairs)
                    SmoothStripScalar(smoothScalar.data() + 1 + c, step, rows, std::min(4 * kStripPairs, lanes - c), a,
                                      smoothUp.data());
                const struct {
                    SmoothStripFn run;
                    SimdLevel level;
                    int32_t widest;
                } twins[] = {{SmoothStripAvx2, SimdLevel::avx2, kWideStripPairs},
                             {SmoothStripAvx512, SimdLevel::avx512, kWide512StripPairs}};
                for (const auto& twin : twins) {
                    if (twin.level > best || lanes > 4 * twin.widest) continue;
                    std::vector<uint8_t> smooth = src;
                    twin.run(smooth.data() + 1, step, rows, lanes, a, smoothUp.data());
                    ASSERT_EQ(smooth, smoothScalar) << "smooth " << SimdLevelName(twin.level) << " lanes " << lanes
                                                    << " rows " << rows << " weight " << a;
                }
            }
        }
    }
}

}  // namespace
}  // namespace zvf::filters
