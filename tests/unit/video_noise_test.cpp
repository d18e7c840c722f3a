#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "kit/frame.h"
#include "temporal/video_noise/video_noise_dialog.h"
#include "temporal/video_noise/video_noise_kernel.h"
#include "temporal/video_noise/video_noise_record.h"
#include "zvf/record.h"

namespace zvf::filters {
namespace {

// A frame of random bytes with a kept copy of its input.
struct NoiseFrame {
    NoiseFrame(int32_t w, int32_t h, uint32_t fill_seed) : src(w, h), dst(w, h) {
        std::mt19937 rng(fill_seed);
        for (size_t i = 0; i < src.Bytes(); ++i) src.Pixels()[i] = static_cast<uint8_t>(rng());
        for (size_t i = 0; i < dst.Bytes(); ++i) dst.Pixels()[i] = static_cast<uint8_t>(rng());
        before.assign(dst.Pixels(), dst.Pixels() + dst.Bytes());
    }
    std::vector<uint8_t> Render(const Rect& r, int32_t field, uint32_t ratio, bool gray, uint32_t seed) {
        FieldView v;
        EXPECT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
        AddNoiseField(v, NoiseWeight(ratio), gray, seed);
        return {dst.Pixels(), dst.Pixels() + dst.Bytes()};
    }
    void Flat(uint8_t value) { std::fill_n(src.Pixels(), src.Bytes(), value); }
    host::Frame src;
    host::Frame dst;
    std::vector<uint8_t> before;
};

TEST(NoiseGenerators, FirstDrawsOfBothGeneratorsFromSeedZero) {
    // A: 0 * 1664525 + 1013904223 = 0x3C6EF35F; B: 0 * 1566083941 + 69069 = 0x00010DCD.
    EXPECT_EQ(NoiseStepA(0), 0x3C6EF35Fu);
    EXPECT_EQ(NoiseStepA(0x3C6EF35F), 0x47502932u);
    EXPECT_EQ(NoiseStepB(0), 0x00010DCDu);
    // Bytes 1 and 2 less 128: 0xF3 -> 115, 0x6E -> -18; 0x0D -> -115, 0x01 -> -127.
    EXPECT_EQ(NoiseLow(0x3C6EF35F), 115);
    EXPECT_EQ(NoiseHigh(0x3C6EF35F), -18);
    EXPECT_EQ(NoiseLow(0x00010DCD), -115);
    EXPECT_EQ(NoiseHigh(0x00010DCD), -127);
}

TEST(NoiseStream, NarrowRegionsRunOneStreamAcrossLines) {
    NoiseStream gray(0, false);
    gray.StartLine();
    EXPECT_EQ(gray.Gray(), 0x3C6EF35Fu);
    gray.StartLine();  // no effect on a narrow region
    EXPECT_EQ(gray.Gray(), 0x47502932u);
    EXPECT_EQ(gray.Gray(), 0xD1CCF6E9u);

    NoiseStream colour(0, false);
    uint32_t r1 = 0, r2 = 0;
    colour.StartLine();
    colour.Colour(&r1, &r2);
    EXPECT_EQ(r1, 0x3C6EF35Fu);
    EXPECT_EQ(r2, 0x47502932u);
    colour.StartLine();
    colour.Colour(&r1, &r2);
    EXPECT_EQ(r1, 0xD1CCF6E9u);
    EXPECT_EQ(r2, 0xAAF95334u);
}

TEST(NoiseStream, WideRegionsJuggleTwoSlotsPerLine) {
    // Seed 0x12345678: S = 0x56781234, M = 0x12345678. Line 0 exchanges and
    // rotates, so both slots hold 0x56781234.
    struct Draw {
        uint32_t r1, r2;
    };
    // Colour: A runs on one slot, B on the other.
    //   line 0: A(0x56781234) = 0x3EDC9803, B(0x56781234) = 0x75227851,
    //           A(0x3EDC9803) = 0x2A7EDD86, B(0x75227851) = 0xB6C680C2;
    //   line 1: S = rot16(0x2A7EDD86) = 0xDD862A7E, M = 0xB6C680C2;
    //           r1 = A(0xB6C680C2) = 0x2EC2C939, r2 = B(0xDD862A7E) = 0xA0523B83.
    const Draw colour[2][2] = {{{0x3EDC9803, 0x75227851}, {0x2A7EDD86, 0xB6C680C2}},
                               {{0x2EC2C939, 0xA0523B83}, {0xDF10E144, 0xF2CAA97C}}};
    NoiseStream c(0x12345678, true);
    for (int line = 0; line < 2; ++line) {
        c.StartLine();
        for (int pair = 0; pair < 2; ++pair) {
            uint32_t r1 = 0, r2 = 0;
            c.Colour(&r1, &r2);
            EXPECT_EQ(r1, colour[line][pair].r1) << line << "," << pair;
            EXPECT_EQ(r2, colour[line][pair].r2) << line << "," << pair;
        }
    }
    // Grayscale: line 1 takes back M = 0x56781234 and rotates it to the seed:
    // A(0x12345678) = 0x75432777, A(0x75432777) = 0xCD305E6A.
    const uint32_t gray[2][2] = {{0x3EDC9803, 0x2A7EDD86}, {0x75432777, 0xCD305E6A}};
    NoiseStream g(0x12345678, true);
    for (int line = 0; line < 2; ++line) {
        g.StartLine();
        for (int pair = 0; pair < 2; ++pair) EXPECT_EQ(g.Gray(), gray[line][pair]) << line << "," << pair;
    }
}

TEST(NoiseJump, JumpsLandWhereSingleStepsDo) {
    // Known answers: from 0, A's second state is 0x47502932 and B's first 0x00010DCD.
    EXPECT_EQ(NoiseJumpBy(kMulA, kAddA, 2)(0), 0x47502932u);
    EXPECT_EQ(NoiseJumpBy(kMulB, kAddB, 1)(0), 0x00010DCDu);
    EXPECT_EQ(NoiseJumpBy(kMulA, kAddA, 0)(0xDEADBEEF), 0xDEADBEEFu);
    for (uint32_t k : {0u, 1u, 2u, 3u, 7u, 8u, 16u, 31u, 32u, 511u, 512u, 1000u, 65535u}) {
        for (uint32_t x0 : {0u, 1u, 0x12345678u, 0xFFFFFFFFu}) {
            uint32_t a = x0, b = x0;
            for (uint32_t i = 0; i < k; ++i) {
                a = NoiseStepA(a);
                b = NoiseStepB(b);
            }
            EXPECT_EQ(NoiseJumpBy(kMulA, kAddA, k)(x0), a) << "A, k " << k << " from " << x0;
            EXPECT_EQ(NoiseJumpBy(kMulB, kAddB, k)(x0), b) << "B, k " << k << " from " << x0;
        }
    }
}

TEST(NoiseStream, SkipsLeaveTheSlotsWhereDrawsOneByOneWould) {
    for (bool wide : {false, true}) {
        for (int32_t n : {1, 5, 512, 700}) {
            const NoiseJump an = NoiseJumpBy(kMulA, kAddA, static_cast<uint32_t>(n));
            const NoiseJump bn = NoiseJumpBy(kMulB, kAddB, static_cast<uint32_t>(n));
            NoiseStream gray(0xA5A5F00D, wide), grayOne(0xA5A5F00D, wide);
            NoiseStream colour(0xA5A5F00D, wide), colourOne(0xA5A5F00D, wide);
            for (int line = 0; line < 3; ++line) {
                gray.StartLine();
                grayOne.StartLine();
                colour.StartLine();
                colourOne.StartLine();
                gray.SkipGray(an);
                colour.SkipColour(an, bn);
                for (int32_t i = 0; i < n; ++i) {
                    uint32_t r1, r2;
                    grayOne.Gray();
                    colourOne.Colour(&r1, &r2);
                }
                ASSERT_EQ(gray.Working(), grayOne.Working()) << wide << " n " << n << " line " << line;
                ASSERT_EQ(gray.Saved(), grayOne.Saved()) << wide << " n " << n << " line " << line;
                ASSERT_EQ(colour.Working(), colourOne.Working()) << wide << " n " << n << " line " << line;
                ASSERT_EQ(colour.Saved(), colourOne.Saved()) << wide << " n " << n << " line " << line;
            }
        }
    }
}

TEST(NoiseWeight, OneFourteenFractionOfThePercentage) {
    struct Case {
        uint32_t ratio;
        int32_t w;
    };
    const Case cases[] = {
        {0, 0},       {1, 163},     {5, 819},  {50, 8192}, {99, 16220}, {100, 16384},
        {199, 32604},  // 3260416 / 100, the last weight that fits the lane
        {200, -32768},  // 32768 wraps in the 16-bit lane
        {255, -23757},  // 41779 - 65536
    };
    for (const Case& c : cases) EXPECT_EQ(NoiseWeight(c.ratio), c.w) << c.ratio;
}

TEST(NoiseMix, AddsScaledNoiseRoundingTowardMinusInfinity) {
    struct Case {
        uint8_t p;
        int32_t n;
        int32_t w;
        uint8_t out;
    };
    const Case cases[] = {
        {128, 115, 16384, 243},  // full weight: p + n
        {128, -18, 16384, 110},
        {128, 115, 819, 133},  // (94185 + 2097152) >> 14 = 133.75 -> 133
        {128, -18, 819, 127},  // (-14742 + 2097152) >> 14 = 127.1 -> 127
        {128, -1, 819, 127},   // -819 + 2097152 >> 14 = 127.95 -> 127
        {0, -1, 1, 0},         // -1 >> 14 = -1, clamped
        {250, 127, 16384, 255},
        {5, -128, 16384, 0},
        {77, -128, 0, 77},  // no weight, no change
        {200, 100, -32768, 0},  // wrapped weight turns the noise around
    };
    for (const Case& c : cases) EXPECT_EQ(MixNoise(c.p, c.n, c.w), c.out) << int{c.p} << " " << c.n << " " << c.w;
}

TEST(VideoNoiseKernel, FixedSeedGivesTheHandComputedBytes) {
    // Flat 128 at ratio 100: every output byte is the draw's byte itself.
    NoiseFrame f(4, 4, 1);
    f.Flat(128);
    const std::vector<uint8_t> gray = f.Render({0, 0, 4, 4}, 0, 100, true, 0);
    // Draws 0x3C6EF35F, 0x47502932 on row 0, 0xD1CCF6E9, 0xAAF95334 on row 2.
    const uint8_t grayRows[2][8] = {{0xF3, 128, 0x6E, 128, 0x29, 128, 0x50, 128},
                                    {0xF6, 128, 0xCC, 128, 0x53, 128, 0xF9, 128}};
    for (int k = 0; k < 2; ++k)
        for (int i = 0; i < 8; ++i) EXPECT_EQ(gray[2 * k * 8 + i], grayRows[k][i]) << k << "," << i;

    const std::vector<uint8_t> colour = f.Render({0, 0, 4, 4}, 1, 5, false, 0);
    // Pair 0 of row 1: r1 = 0x3C6EF35F (115, -18), r2 = 0x47502932 (-87, -48)
    // at w = 819: 133, (-71253 + 2097152) >> 14 = 123, 127, (-39312 + 2097152) >> 14 = 125.
    const uint8_t pair0[4] = {133, 123, 127, 125};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(colour[8 + i], pair0[i]) << i;
}

TEST(VideoNoiseKernel, WideRegionsStartEveryLineFromTheJuggledSlots) {
    // 512 pairs: the juggled layout. Flat 128 at ratio 100 shows the draws.
    NoiseFrame f(1024, 4, 2);
    f.Flat(128);
    const std::vector<uint8_t> out = f.Render({0, 0, 1024, 4}, 0, 100, false, 0x12345678);
    const size_t row2 = 2 * 1024 * 2;
    // Line 0 pair 0: r1 = 0x3EDC9803, r2 = 0x75227851.
    const uint8_t line0[4] = {0x98, 0x78, 0xDC, 0x22};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], line0[i]) << i;
    // After 512 pairs one slot holds A^512 and the other B^512 of 0x56781234;
    // line 1 rotates the A slot and feeds it to B, and feeds the B slot to A.
    uint32_t a = 0x56781234, b = 0x56781234;
    for (int i = 0; i < 512; ++i) {
        a = NoiseStepA(a);
        b = NoiseStepB(b);
    }
    const uint32_t r1 = NoiseStepA(b);
    const uint32_t r2 = NoiseStepB((a >> 16) | (a << 16));
    const uint32_t line1[4] = {(r1 >> 8) & 0xFF, (r2 >> 8) & 0xFF, (r1 >> 16) & 0xFF, (r2 >> 16) & 0xFF};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(out[row2 + i], line1[i]) << i;
    // 511 pairs: one stream, so line 1 starts with draw 512 of generator A.
    NoiseFrame n(1022, 4, 3);
    n.Flat(128);
    const std::vector<uint8_t> narrow = n.Render({0, 0, 1022, 4}, 0, 100, true, 0x12345678);
    uint32_t x = 0x12345678;
    for (int i = 0; i < 512; ++i) x = NoiseStepA(x);
    EXPECT_EQ(narrow[2 * 1022 * 2], (x >> 8) & 0xFF);
    EXPECT_EQ(narrow[2 * 1022 * 2 + 2], (x >> 16) & 0xFF);
}

TEST(VideoNoiseKernel, PropertiesHoldForEveryModeAndSeed) {
    struct Case {
        int32_t w, h;
        Rect r;
        int32_t field;
    };
    const Case cases[] = {
        {16, 8, {0, 0, 16, 8}, 0},   {16, 8, {3, 1, 12, 7}, 1},      {17, 9, {1, 2, 17, 9}, 2},
        {1100, 6, {0, 0, 1100, 6}, 1}, {1100, 6, {37, 1, 1099, 5}, 0},  // wide, odd offsets and width
    };
    for (const Case& c : cases) {
        for (bool gray : {false, true}) {
            for (uint32_t seed : {0u, 1u, 0xDEADBEEFu}) {
                NoiseFrame f(c.w, c.h, seed + 7);
                const uint8_t* in = f.src.Pixels();
                const std::vector<uint8_t> same = f.Render(c.r, c.field, 0, gray, seed);
                const std::vector<uint8_t> full = f.Render(c.r, c.field, 100, gray, seed);
                const int odd = c.field == 1 ? 1 : 0;
                const int32_t pairs = (c.r.right - c.r.left) / 2;
                for (int32_t y = 0; y < c.h; ++y) {
                    for (int32_t b = 0; b < 2 * c.w; ++b) {
                        const size_t at = static_cast<size_t>(y) * 2 * c.w + b;
                        const bool inside = y >= c.r.top && y < c.r.bottom && (y & 1) == odd &&
                                            b >= 2 * c.r.left && b < 2 * c.r.left + 4 * pairs;
                        if (!inside) {
                            ASSERT_EQ(full[at], f.before[at]) << "outside, row " << y << " byte " << b;
                            continue;
                        }
                        ASSERT_EQ(same[at], in[at]) << "ratio 0, row " << y << " byte " << b;
                        const bool chroma = ((b - 2 * c.r.left) & 1) != 0;
                        if (gray && chroma) {
                            ASSERT_EQ(full[at], in[at]) << "chroma, row " << y << " byte " << b;
                        }
                        ASSERT_LE(std::abs(int{full[at]} - int{in[at]}), 128) << "row " << y << " byte " << b;
                    }
                }
            }
        }
    }
}

TEST(VideoNoiseRecord, LoadKeepsTheLowestByteOfEachField) {
    struct Case {
        uint32_t ratio, grayscale;
        uint32_t loadedRatio, loadedGray;
    };
    const Case cases[] = {
        {100, 1, 100, 1}, {5, 0, 5, 0}, {300, 0, 44, 0}, {256, 0x100, 0, 0}, {0x01020364, 0xFF00FF01, 100, 1},
    };
    for (const Case& c : cases) {
        uint8_t payload[8];
        for (int i = 0; i < 4; ++i) {
            payload[i] = static_cast<uint8_t>(c.ratio >> (8 * i));
            payload[4 + i] = static_cast<uint8_t>(c.grayscale >> (8 * i));
        }
        const VideoNoiseRecord r = DecodeVideoNoise(payload);
        EXPECT_EQ(r.ratio, c.loadedRatio) << c.ratio;
        EXPECT_EQ(r.grayscale, c.loadedGray) << c.grayscale;
    }
}

TEST(VideoNoiseRecord, DescriptionMatchesTheRecordAndItsDefaults) {
    uint8_t payload[8];
    WriteDefaults(kVideoNoiseRecord, payload);
    const VideoNoiseRecord defaults;
    EXPECT_EQ(std::memcmp(payload, &defaults, sizeof defaults), 0);
    EXPECT_EQ(kVideoNoiseRecord.payloadSize, sizeof(VideoNoiseRecord));
    const FieldDesc* ratio = FindField(kVideoNoiseRecord, "ratio");
    ASSERT_NE(ratio, nullptr);
    WriteFieldValue(*ratio, payload, 250);  // clamped to the dialog's range
    EXPECT_EQ(ReadFieldValue(*ratio, payload), 100);
}

TEST(VideoNoiseDialog, WritesThroughAndCancelRestoresTheShownValues) {
    VideoNoiseRecord record;
    VideoNoiseSetupDialog dialog(&record);
    dialog.OnShown();
    dialog.SetRatio(40);
    EXPECT_EQ(record.ratio, 40u);  // the preview follows at once
    dialog.SetRatio(400);
    EXPECT_EQ(record.ratio, 100u);
    dialog.SetRatio(-3);
    EXPECT_EQ(record.ratio, 0u);
    dialog.SetGrayscale(true);
    EXPECT_EQ(record.grayscale, 1u);
    EXPECT_EQ(dialog.Shown().ratio, 5u);
    dialog.Cancel();
    EXPECT_EQ(record.ratio, 5u);
    EXPECT_EQ(record.grayscale, 0u);
    dialog.SetRatio(70);
    dialog.OnShown();  // showing again takes a new copy; OK keeps the record
    dialog.Cancel();
    EXPECT_EQ(dialog.Current().ratio, 70u);
}

}  // namespace
}  // namespace zvf::filters
