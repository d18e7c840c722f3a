// The SIMD noise kernels against the scalar one at every level this
// processor has: every width from 2 to 130 pixels, odd offsets, both fields,
// widths on both sides of the wide layout's threshold, every weight the
// record can give (the wrapped ones too), random and extreme pictures and
// seeds. Guard bytes around the destination frame and the rows of the other
// field must stay as they were; in-place rendering must give the same bytes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/services.h"
#include "temporal/video_noise/video_noise_kernel.h"

namespace zvf::filters {
namespace {

constexpr size_t kGuard = 37;  // odd, so rows start off any alignment
constexpr uint8_t kGuardByte = 0x5A;

struct Twin {
    SimdLevel level;
    NoiseKernel kernel;
};

std::vector<Twin> TwinsAboveScalar() {
    const SimdLevel top = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<Twin> twins;
    for (SimdLevel l : {SimdLevel::sse2, SimdLevel::avx2, SimdLevel::avx512})
        if (l <= top) twins.push_back({l, SelectNoiseKernel(l)});
    return twins;
}

enum class Fill { Random, Zero, Full };

uint32_t XorShift(uint32_t& x) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    return x;
}

// A source frame and a guarded destination frame of random bytes.
struct Arena {
    Arena(int32_t width, int32_t left, int32_t frameRows, int32_t field, Fill fill, uint32_t seed) {
        const int32_t pitch = (left + width + 3) * 2;
        const size_t frame = static_cast<size_t>(pitch) * static_cast<size_t>(frameRows);
        src.resize(frame);
        dst.assign(frame + 2 * kGuard, kGuardByte);
        uint32_t x = seed | 1u;
        for (uint8_t& b : src) {
            const uint8_t r = static_cast<uint8_t>(XorShift(x));
            b = fill == Fill::Random ? r : (fill == Fill::Zero ? 0 : 255);
        }
        for (size_t i = kGuard; i < kGuard + frame; ++i) dst[i] = static_cast<uint8_t>(XorShift(x) >> 8);
        const ptrdiff_t start = ptrdiff_t{field} * pitch + ptrdiff_t{left} * 2;
        view.src = src.data() + start;
        view.dst = dst.data() + kGuard + start;
        view.step = ptrdiff_t{2} * pitch;
        view.rows = (frameRows - field + 1) / 2;
        view.pairs = width / 2;
        view.pitch = pitch;
        view.width_px = width;
        view.left = left;
        view.odd = field;
        view.firstRow = field;
    }
    bool GuardsIntact() const {
        for (size_t i = 0; i < kGuard; ++i)
            if (dst[i] != kGuardByte || dst[dst.size() - 1 - i] != kGuardByte) return false;
        return true;
    }
    std::vector<uint8_t> src, dst;
    FieldView view;
};

struct Case {
    int32_t width, left, frameRows, field;
    Fill fill;
    uint32_t ratio, seed;
    bool gray;
};

std::string Describe(SimdLevel level, const Case& c) {
    return std::string(SimdLevelName(level)) + ": width " + std::to_string(c.width) + " left " +
           std::to_string(c.left) + " rows " + std::to_string(c.frameRows) + " field " + std::to_string(c.field) +
           " ratio " + std::to_string(c.ratio) + " seed " + std::to_string(c.seed) + (c.gray ? " gray" : " colour");
}

// Runs one case through the scalar kernel and the twin; returns whether the
// twin's frame equals the scalar one byte for byte with its guards intact.
::testing::AssertionResult SameAsScalar(const Twin& twin, const Case& c) {
    const uint32_t fillSeed = c.seed * 2654435761u + static_cast<uint32_t>(c.width);
    Arena a(c.width, c.left, c.frameRows, c.field, c.fill, fillSeed);
    Arena b(c.width, c.left, c.frameRows, c.field, c.fill, fillSeed);
    AddNoiseField(a.view, NoiseWeight(c.ratio), c.gray, c.seed);
    twin.kernel(b.view, NoiseWeight(c.ratio), c.gray, c.seed);
    if (!b.GuardsIntact()) return ::testing::AssertionFailure() << Describe(twin.level, c) << ": guard bytes changed";
    for (size_t i = 0; i < a.dst.size(); ++i)
        if (a.dst[i] != b.dst[i])
            return ::testing::AssertionFailure() << Describe(twin.level, c) << ": first difference at byte "
                                                 << static_cast<int64_t>(i) - static_cast<int64_t>(kGuard);
    return ::testing::AssertionSuccess();
}

TEST(VideoNoiseSimd, EveryLevelMatchesScalarForEveryWidthAndOffset) {
    const std::vector<Twin> twins = TwinsAboveScalar();
    if (twins.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    const uint32_t ratios[] = {0, 1, 5, 50, 100, 199, 200, 255};
    const Fill fills[] = {Fill::Random, Fill::Zero, Fill::Full, Fill::Random};
    for (const Twin& twin : twins) {
        uint32_t n = 0;
        for (int32_t width = 2; width <= 130; ++width) {
            for (int32_t left : {0, 1, 3}) {
                for (int32_t field : {0, 1}) {
                    for (bool gray : {false, true}) {
                        ++n;
                        const Case c{width, left, 7, field, fills[n % 4], ratios[n % 8], n * 0x9E3779B9u, gray};
                        ASSERT_TRUE(SameAsScalar(twin, c));
                    }
                }
            }
        }
    }
}

// Widths around 512 pairs, where lines stop sharing one stream, and wider
// ones with every remainder of the vector stretches; extreme seeds.
TEST(VideoNoiseSimd, EveryLevelMatchesScalarAroundAndAboveTheWideLayout) {
    const std::vector<Twin> twins = TwinsAboveScalar();
    if (twins.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    const uint32_t seeds[] = {0u, 0xFFFFFFFFu, 0x12345678u, 0x0000FFFFu};
    for (const Twin& twin : twins) {
        uint32_t n = 0;
        for (int32_t width : {990, 1000, 1016, 1017, 1018, 1019, 1020, 1021, 1022, 1023, 1024, 1025, 1026, 1027,
                              1028, 1030, 1034, 1038, 1046, 1054, 1086, 1150, 1920, 1921}) {
            for (bool gray : {false, true}) {
                for (int32_t frameRows : {1, 2, 9}) {
                    ++n;
                    const Case c{width, static_cast<int32_t>(n % 3), frameRows, static_cast<int32_t>(n % 2),
                                 n % 5 == 0 ? Fill::Full : Fill::Random, n % 2 ? 100u : 255u, seeds[n % 4], gray};
                    ASSERT_TRUE(SameAsScalar(twin, c));
                }
            }
        }
    }
}

// Every ratio the record can load (its lowest byte) on a narrow and a wide
// region: weights up to 32604 and the wrapped ones from 200 on.
TEST(VideoNoiseSimd, EveryLevelMatchesScalarForEveryLoadableRatio) {
    const std::vector<Twin> twins = TwinsAboveScalar();
    if (twins.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    for (const Twin& twin : twins) {
        for (uint32_t ratio = 0; ratio <= 255; ++ratio) {
            for (int32_t width : {77, 1031}) {
                for (bool gray : {false, true}) {
                    const Fill fill = ratio % 3 == 0 ? Fill::Zero : (ratio % 3 == 1 ? Fill::Full : Fill::Random);
                    const Case c{width, 1, 4, 0, fill, ratio, ratio * 747796405u + 1u, gray};
                    ASSERT_TRUE(SameAsScalar(twin, c));
                }
            }
        }
    }
}

// One frame as source and destination gives the bytes of a separate
// destination, at every level, for every row count from 1 to 9.
TEST(VideoNoiseSimd, InPlaceGivesTheCopyingBytesAtEveryLevel) {
    std::vector<Twin> twins = TwinsAboveScalar();
    twins.insert(twins.begin(), Twin{SimdLevel::scalar, SelectNoiseKernel(SimdLevel::scalar)});
    for (const Twin& twin : twins) {
        for (int32_t width : {2, 17, 66, 130, 1023, 1024, 1100}) {
            for (int32_t frameRows = 1; frameRows <= 9; ++frameRows) {
                for (bool gray : {false, true}) {
                    const int32_t field = frameRows % 2;
                    const uint32_t seed = static_cast<uint32_t>(width * 31 + frameRows);
                    if ((frameRows - field + 1) / 2 == 0) continue;
                    Arena a(width, 1, frameRows, field, Fill::Random, seed);
                    twin.kernel(a.view, NoiseWeight(60), gray, seed);
                    Arena b(width, 1, frameRows, field, Fill::Random, seed);
                    b.dst.assign(kGuard, kGuardByte);
                    b.dst.insert(b.dst.end(), b.src.begin(), b.src.end());
                    b.dst.insert(b.dst.end(), kGuard, kGuardByte);
                    b.view.dst = b.dst.data() + kGuard + (b.view.src - b.src.data());
                    b.view.src = b.view.dst;
                    twin.kernel(b.view, NoiseWeight(60), gray, seed);
                    ASSERT_TRUE(b.GuardsIntact()) << SimdLevelName(twin.level);
                    for (int32_t r = 0; r < a.view.rows; ++r) {
                        const uint8_t* x = a.view.dst + r * a.view.step;
                        const uint8_t* y = b.view.dst + r * b.view.step;
                        ASSERT_TRUE(std::equal(x, x + 4 * a.view.pairs, y))
                            << SimdLevelName(twin.level) << ": width " << width << " rows " << frameRows << " row "
                            << r << (gray ? " gray" : " colour");
                    }
                }
            }
        }
    }
}

TEST(VideoNoiseSimd, SelectionFollowsTheLevel) {
    EXPECT_EQ(SelectNoiseKernel(SimdLevel::scalar), &AddNoiseField);
#if defined(__i386__) || defined(__x86_64__)
    EXPECT_EQ(SelectNoiseKernel(SimdLevel::sse2), &AddNoiseFieldSse2);
    EXPECT_EQ(SelectNoiseKernel(SimdLevel::avx2), &AddNoiseFieldAvx2);
#endif
}

}  // namespace
}  // namespace zvf::filters
