// YUV Curve's pair tables against the per-byte tables they are built from:
// known entries, every width at odd offsets in place and not with guard
// bytes untouched, and the per-field cache across changing curves and
// concurrent renders.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "colour/yuv_curve/yuv_curve_kernel.h"
#include "colour/yuv_curve/yuv_curve_pair_tables.h"

namespace zvf::filters {
namespace {

constexpr int kRows = 3;
constexpr int kGuard = 16;
constexpr uint8_t kMarker = 0xA5;

struct Tables {
    uint8_t t[3][256];
};

Tables RandomTables(std::mt19937& rng) {
    Tables t;
    for (auto& table : t.t)
        for (uint8_t& b : table) b = static_cast<uint8_t>(rng());
    return t;
}

// A field of kRows rows, `width` pixels wide, `offset` bytes into rows
// padded with guard bytes; src and dst are separate unless inPlace.
struct Field {
    std::vector<uint8_t> src, dst;
    FieldView view;

    Field(int width, int offset, bool inPlace, std::mt19937& rng) {
        const int stride = 2 * width + 2 * kGuard + offset;
        src.resize(static_cast<size_t>(stride) * 2 * kRows);
        for (uint8_t& b : src) b = rng() % 5 == 0 ? static_cast<uint8_t>((rng() & 1) * 255) : static_cast<uint8_t>(rng());
        dst = inPlace ? src : std::vector<uint8_t>(src.size(), kMarker);
        view.src = (inPlace ? dst.data() : src.data()) + kGuard + offset;
        view.dst = dst.data() + kGuard + offset;
        view.step = 2 * static_cast<ptrdiff_t>(stride);
        view.rows = kRows;
        view.pairs = width / 2;
        view.width_px = width;
    }
};

std::vector<uint8_t> ByBytes(int width, int offset, bool inPlace, const Tables& t, uint32_t seed) {
    std::mt19937 rng(seed);
    Field f(width, offset, inPlace, rng);
    RenderCurveTables(f.view, t.t);
    return f.dst;
}

TEST(YuvCurvePairs, EntriesHoldBothOutputBytesInMemoryOrder) {
    Tables t;
    for (int x = 0; x < 256; ++x) {
        t.t[kCurveY][x] = static_cast<uint8_t>(255 - x);
        t.t[kCurveU][x] = static_cast<uint8_t>(x / 2);
        t.t[kCurveV][x] = static_cast<uint8_t>(x ^ 0x55);
    }
    auto pairs = std::make_unique<CurvePairTables>();
    BuildCurvePairTables(t.t, *pairs);
    struct Case {
        uint8_t y, chroma;
        uint8_t wantYu[2], wantYv[2];
    };
    const Case cases[] = {
        {0, 0, {255, 0}, {255, 0x55}},
        {10, 200, {245, 100}, {245, 200 ^ 0x55}},
        {255, 255, {0, 127}, {0, 0xAA}},
        {128, 1, {127, 0}, {127, 0x54}},
    };
    for (const Case& c : cases) {
        const uint8_t in[2] = {c.y, c.chroma};
        uint16_t at;
        std::memcpy(&at, in, 2);
        uint8_t yu[2], yv[2];
        std::memcpy(yu, &pairs->yu[at], 2);
        std::memcpy(yv, &pairs->yv[at], 2);
        EXPECT_EQ(yu[0], c.wantYu[0]) << int{c.y} << "," << int{c.chroma};
        EXPECT_EQ(yu[1], c.wantYu[1]) << int{c.y} << "," << int{c.chroma};
        EXPECT_EQ(yv[0], c.wantYv[0]) << int{c.y} << "," << int{c.chroma};
        EXPECT_EQ(yv[1], c.wantYv[1]) << int{c.y} << "," << int{c.chroma};
    }
}

TEST(YuvCurvePairs, SameBytesAsThePerByteTablesAtEveryWidthAndOffset) {
    std::mt19937 rng(71);
    auto pairs = std::make_unique<CurvePairTables>();
    for (int width = 2; width <= 130; ++width) {
        const Tables t = RandomTables(rng);
        BuildCurvePairTables(t.t, *pairs);
        for (int offset = 0; offset < 4; ++offset)
            for (bool inPlace : {false, true}) {
                const uint32_t seed = static_cast<uint32_t>(rng());
                std::mt19937 again(seed);
                Field f(width, offset, inPlace, again);
                RenderCurvePairTables(f.view, *pairs);
                ASSERT_EQ(f.dst, ByBytes(width, offset, inPlace, t, seed))
                    << "width " << width << " offset " << offset << (inPlace ? " in place" : "");
            }
    }
}

TEST(YuvCurvePairs, CacheFollowsTheCurvesOfEachFieldSelector) {
    std::mt19937 rng(72);
    Tables zero{};  // all-zero curves: the first build must not be mistaken for one already made
    const Tables a = RandomTables(rng), b = RandomTables(rng);
    struct Step {
        int32_t field;
        const Tables* tables;
    };
    const Step steps[] = {{1, &zero}, {1, &a}, {2, &b}, {1, &b}, {1, &a}, {2, &b}, {0, &a}, {2, &zero}};
    CurvePairCache cache;
    for (const Step& s : steps) {
        const uint32_t seed = static_cast<uint32_t>(rng());
        std::mt19937 again(seed);
        Field f(40, 1, false, again);
        ASSERT_TRUE(cache.Render(s.field, f.view, s.tables->t));
        ASSERT_EQ(f.dst, ByBytes(40, 1, false, *s.tables, seed)) << "field " << s.field;
    }
}

// Renders of one field selector at once: whoever finds the tables busy is
// told so and writes nothing; whoever renders gets the right bytes.
TEST(YuvCurvePairs, ConcurrentRendersOfOneFieldAreExactOrDeclined) {
    std::mt19937 rng(73);
    const Tables curves[2] = {RandomTables(rng), RandomTables(rng)};
    CurvePairCache cache;
    constexpr int kThreads = 4, kRenders = 40;
    std::vector<int> failures(kThreads, 0);
    std::vector<std::thread> threads;
    for (int k = 0; k < kThreads; ++k)
        threads.emplace_back([&, k] {
            for (int i = 0; i < kRenders; ++i) {
                const Tables& t = curves[(i + k) % 2];
                const uint32_t seed = static_cast<uint32_t>(k * 1000 + i);
                std::mt19937 again(seed);
                Field f(64, 2, false, again);
                const std::vector<uint8_t> untouched = f.dst;
                const bool rendered = cache.Render(1, f.view, t.t);
                if (f.dst != (rendered ? ByBytes(64, 2, false, t, seed) : untouched)) ++failures[k];
            }
        });
    for (std::thread& t : threads) t.join();
    for (int k = 0; k < kThreads; ++k) EXPECT_EQ(failures[k], 0) << "thread " << k;
}

}  // namespace
}  // namespace zvf::filters
