// The SSE2 passes of Blur and Smooth Blur against the scalar ones that define
// the results: random
// and extreme pictures and weights, every width from 2 to 130 pixels at odd
// offsets, odd and even row counts, guard bytes around the rectangle
// untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kit/frame.h"
#include "spatial/blur/blur_kernel.h"
#include "spatial/blur/blur_scratch.h"
#include "spatial/smooth_blur/smooth_blur_kernel.h"

namespace zvf::filters {
namespace {

enum class Picture { Random, Black, White, ByteStripes, RowStripes, Impulses };

void Paint(std::vector<uint8_t>& p, int32_t w, Picture kind, uint32_t seed) {
    std::mt19937 rng(seed);
    for (size_t i = 0; i < p.size(); ++i) {
        const size_t row = i / (static_cast<size_t>(w) * 2);
        switch (kind) {
            case Picture::Random:
                p[i] = static_cast<uint8_t>(rng());
                break;
            case Picture::Black:
                p[i] = 0;
                break;
            case Picture::White:
                p[i] = 255;
                break;
            case Picture::ByteStripes:
                p[i] = (i & 1) ? 255 : 0;
                break;
            case Picture::RowStripes:
                p[i] = (row / 2) & 1 ? 255 : 0;
                break;
            case Picture::Impulses:
                p[i] = rng() % 23 == 0 ? 255 : 0;
                break;
        }
    }
}

using FieldKernel = bool (*)(const FieldView&, int32_t, std::span<int32_t>, SimdLevel);

struct Kernel {
    const char* name;
    FieldKernel run;
};
const Kernel kKernels[] = {{"Blur", BlurField}, {"Smooth Blur", SmoothBlurField}};

// Renders one field with the given level into a copy of `marker`.
std::vector<uint8_t> Render(const Kernel& kernel, const std::vector<uint8_t>& pixels,
                            const std::vector<uint8_t>& marker, int32_t w, int32_t h, const Rect& r, int32_t field,
                            int32_t a, SimdLevel level, bool inPlace) {
    std::vector<uint8_t> in = pixels;
    std::vector<uint8_t> out = inPlace ? pixels : marker;
    host::Frame src(in.data(), w, h), dst(out.data(), w, h);
    FieldView v;
    EXPECT_EQ(OpenField(&dst, inPlace ? &dst : &src, &r, field, &v), status::ok);
    std::vector<int32_t> scratch(kLanes * FullScratchEntries(v.rows, v.pairs));
    EXPECT_TRUE(kernel.run(v, a, scratch, level));
    return out;
}

TEST(BlurSimd, Sse2PassesAreByteIdenticalToScalar) {
    const int32_t weights[] = {0, 128, 2048, 10809, 31000, 32768};
    const Picture pictures[] = {Picture::Random,      Picture::Black,      Picture::White,
                                Picture::ByteStripes, Picture::RowStripes, Picture::Impulses};
    int checked = 0;
    for (const Kernel& kernel : kKernels)
        for (int32_t width = 2; width <= 130; ++width) {
            for (int32_t left : {1, 3}) {
                // Guard columns left and right, guard rows above and below; the
                // field holds 5 or 6 rows.
                const int32_t w = left + width + 3, h = 13 + ((width / 2) & 1);
                const Rect r{left, 1, left + width, h - 2};
                const int32_t field = width & 1;
                const int32_t a = weights[width % 6];
                const Picture kind = pictures[(width / 6 + left) % 6];
                std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 2);
                Paint(pixels, w, kind, static_cast<uint32_t>(width * 7 + left));
                const std::vector<uint8_t> marker(pixels.size(), 0xC3);
                for (bool inPlace : {false, true}) {
                    const std::vector<uint8_t> base = inPlace ? pixels : marker;
                    const std::vector<uint8_t> scalar =
                        Render(kernel, pixels, marker, w, h, r, field, a, SimdLevel::scalar, inPlace);
                    const std::vector<uint8_t> sse2 =
                        Render(kernel, pixels, marker, w, h, r, field, a, SimdLevel::sse2, inPlace);
                    ASSERT_EQ(sse2, scalar) << kernel.name << " width " << width << " left " << left << " weight " << a
                                            << " picture " << static_cast<int>(kind) << (inPlace ? " in place" : "");
                    // Guard bytes: everything outside the field's pairs of the rectangle.
                    const int32_t end = left + 2 * (width / 2);
                    for (int32_t y = 0; y < h; ++y)
                        for (int32_t x = 0; x < w; ++x) {
                            if (y >= r.top && y < r.bottom && (y & 1) == field && x >= left && x < end) continue;
                            const size_t at = (static_cast<size_t>(y) * w + x) * 2;
                            ASSERT_EQ(sse2[at], base[at]) << "guard " << x << "," << y << " width " << width;
                            ASSERT_EQ(sse2[at + 1], base[at + 1]) << "guard " << x << "," << y << " width " << width;
                        }
                    ++checked;
                }
            }
        }
    EXPECT_EQ(checked, 2 * 129 * 2 * 2);
}

// The scalar vertical pass over strips of any width: it keeps its state for
// at most kStripPairs pairs, so wider strips go in pieces (columns are
// independent).
void ScalarStrips(const uint8_t* src, uint8_t* dst, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a) {
    std::vector<int32_t> up(static_cast<size_t>(rows) * 4 * kStripPairs);
    for (int32_t c = 0; c < lanes; c += 4 * kStripPairs)
        BlurStripScalar(src + c, dst + c, step, rows, std::min(4 * kStripPairs, lanes - c), a, up.data());
}

TEST(BlurSimd, EveryWeightAndStripWidthOnRandomColumns) {
    std::mt19937 rng(99);
    for (int32_t lanes = 4; lanes <= 4 * 66; lanes += 4) {
        for (int32_t rows : {1, 2, 3, 17}) {
            const int32_t pick[] = {0, 1, 32767, 32768, static_cast<int32_t>(rng() % 32769)};
            const int32_t a = pick[(lanes / 4 + rows) % 5];
            const ptrdiff_t step = lanes + 5;
            std::vector<uint8_t> src(static_cast<size_t>(step) * rows + 8);
            for (uint8_t& b : src) b = static_cast<uint8_t>(rng() % 3 == 0 ? (rng() & 1) * 255 : rng());
            std::vector<uint8_t> scalar(src.size(), 0x3C), sse2(src.size(), 0x3C);
            ScalarStrips(src.data() + 1, scalar.data() + 1, step, rows, lanes, a);
            // Exactly the bytes the SIMD pass may use, so that an overrun shows
            // under the address sanitizer.
            std::vector<uint8_t> bytes(static_cast<size_t>(rows + 1) * lanes);
            BlurStripSse2(src.data() + 1, sse2.data() + 1, step, rows, lanes, a,
                          reinterpret_cast<int32_t*>(bytes.data()));
            ASSERT_EQ(sse2, scalar) << "lanes " << lanes << " rows " << rows << " weight " << a;
            if (lanes > 4 * kWideStripPairs) continue;
            // The scalar pass in pieces of kStripPairs pairs, the SIMD one with
            // one entry per pair and row.
            std::vector<int32_t> smoothUp(static_cast<size_t>(rows) * lanes);
            std::vector<uint8_t> smoothScalar = src, smoothSse2 = src;
            for (int32_t c = 0; c < lanes; c += 4 * kStripPairs)
                SmoothStripScalar(smoothScalar.data() + 1 + c, step, rows, std::min(4 * kStripPairs, lanes - c), a,
                                  smoothUp.data());
            SmoothStripSse2(smoothSse2.data() + 1, step, rows, lanes, a, smoothUp.data());
            ASSERT_EQ(smoothSse2, smoothScalar) << "smooth lanes " << lanes << " rows " << rows << " weight " << a;
        }
    }
}

}  // namespace
}  // namespace zvf::filters
