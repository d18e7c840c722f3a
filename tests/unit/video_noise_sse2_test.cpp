// The SSE2 noise kernel against the scalar one: every width from 2 to 130
// pixels, odd offsets, wide regions, random and extreme pictures, every kind
// of weight; the bytes around the region must stay as they were.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kit/frame.h"
#include "temporal/video_noise/video_noise_kernel.h"

namespace zvf::filters {
namespace {

enum class Fill { Random, Zero, Full };

struct Pictures {
    Pictures(int32_t w, int32_t h, Fill fill, uint32_t seed) : src(w, h), scalar(w, h), simd(w, h) {
        std::mt19937 rng(seed);
        for (size_t i = 0; i < src.Bytes(); ++i) {
            const uint8_t r = static_cast<uint8_t>(rng());
            src.Pixels()[i] = fill == Fill::Random ? r : (fill == Fill::Zero ? 0 : 255);
            scalar.Pixels()[i] = simd.Pixels()[i] = static_cast<uint8_t>(rng());  // guard bytes
        }
    }
    host::Frame src, scalar, simd;
};

bool SameBytes(const host::Frame& a, const host::Frame& b) {
    return std::equal(a.Pixels(), a.Pixels() + a.Bytes(), b.Pixels());
}

TEST(VideoNoiseSse2, ByteIdenticalToScalarForEveryWidthAndOffset) {
    const uint32_t ratios[] = {0, 1, 5, 50, 100, 199, 200, 255};
    uint32_t seed = 1;
    for (int32_t width = 2; width <= 130; ++width) {
        for (int32_t left : {0, 1, 3}) {
            for (bool gray : {false, true}) {
                const Fill fill = width % 3 == 0 ? Fill::Random : (width % 3 == 1 ? Fill::Zero : Fill::Full);
                const uint32_t ratio = ratios[(width + left) % 8];
                Pictures p(left + width + 2, 5, width % 5 == 0 ? Fill::Random : fill, ++seed);
                const Rect r{left, 1, left + width, 5};
                FieldView a, b;
                ASSERT_EQ(OpenField(&p.scalar, &p.src, &r, 1, &a), status::ok);
                ASSERT_EQ(OpenField(&p.simd, &p.src, &r, 1, &b), status::ok);
                AddNoiseField(a, NoiseWeight(ratio), gray, seed * 2654435761u);
                AddNoiseFieldSse2(b, NoiseWeight(ratio), gray, seed * 2654435761u);
                ASSERT_TRUE(SameBytes(p.scalar, p.simd))
                    << "width " << width << " left " << left << (gray ? " gray" : " colour") << " ratio " << ratio;
            }
        }
    }
}

TEST(VideoNoiseSse2, ByteIdenticalOnWideRegionsAndInPlace) {
    for (int32_t width : {1024, 1025, 1030, 1166}) {
        for (bool gray : {false, true}) {
            for (uint32_t ratio : {5u, 100u, 255u}) {
                Pictures p(width + 1, 6, Fill::Random, static_cast<uint32_t>(width) + ratio);
                const Rect r{1, 0, width + 1, 6};
                FieldView a, b;
                ASSERT_EQ(OpenField(&p.scalar, &p.src, &r, 0, &a), status::ok);
                ASSERT_EQ(OpenField(&p.simd, &p.src, &r, 0, &b), status::ok);
                AddNoiseField(a, NoiseWeight(ratio), gray, 0xC0FFEE);
                AddNoiseFieldSse2(b, NoiseWeight(ratio), gray, 0xC0FFEE);
                ASSERT_TRUE(SameBytes(p.scalar, p.simd)) << width << (gray ? " gray" : " colour") << " " << ratio;
                // In place over a copy of the source.
                host::Frame inPlace(width + 1, 6);
                std::copy(p.src.Pixels(), p.src.Pixels() + p.src.Bytes(), inPlace.Pixels());
                FieldView c;
                ASSERT_EQ(OpenField(&inPlace, &inPlace, &r, 0, &c), status::ok);
                AddNoiseFieldSse2(c, NoiseWeight(ratio), gray, 0xC0FFEE);
                for (int32_t y = 0; y < 6; y += 2) {
                    const size_t row = static_cast<size_t>(y) * (width + 1) * 2;
                    ASSERT_TRUE(std::equal(inPlace.Pixels() + row + 2, inPlace.Pixels() + row + 2 + 4 * (width / 2),
                                           p.scalar.Pixels() + row + 2))
                        << "in place, width " << width << " row " << y;
                }
            }
        }
    }
}

}  // namespace
}  // namespace zvf::filters
