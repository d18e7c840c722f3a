// Video Noise through the loaded module: the load rule, the render's
// properties, and the bytes against the kernel once the call's seed is
// recovered from its output.
#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <vector>

#include "temporal/video_noise/video_noise_kernel.h"
#include "tests/module/module_fixture.h"

namespace zvf::test {
namespace {

using filters::NoiseStepA;
using filters::NoiseStream;

const std::string kNoiseId = "Velmora Co., Ltd. Noise Video Filter";

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

std::vector<uint8_t> NoiseBlob(uint32_t ratio, uint32_t grayscale, uint32_t version = 0x00020000) {
    std::vector<uint8_t> b;
    PutU32(b, 0x00010000);
    PutU32(b, static_cast<uint32_t>(2 * kNoiseId.size() + 4));
    for (char c : kNoiseId) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, version);
    PutU32(b, ratio);
    PutU32(b, grayscale);
    return b;
}

// Inverse of generator A: the multiplier's inverse modulo 2^32 by Newton's
// iteration (each step doubles the correct low bits).
uint32_t UndoStepA(uint32_t y) {
    uint32_t inv = 1664525u;
    for (int i = 0; i < 5; ++i) inv *= 2u - 1664525u * inv;
    return (y - 1013904223u) * inv;
}

// The seed of a call that rendered flat 128 at ratio 100 on its first two
// lines, where each output byte is a byte of a draw: the first pair gives
// bits 8..23 of the first A draw; the other bits are searched and the first
// eight pairs of both lines confirm. Bits 24..31 never reach bits 8..23 of
// later draws of one stream, so only the second line pins them down where
// the line start rotates them into view.
std::optional<uint32_t> RecoverSeed(const uint8_t* line0, const uint8_t* line1, int32_t pairs, bool gray) {
    const bool wide = pairs >= filters::kWideNoisePairs;
    const uint32_t known = (uint32_t{line0[2]} << 16) | (uint32_t{line0[0]} << 8);
    for (uint32_t rest = 0; rest < 0x10000; ++rest) {
        const uint32_t first = known | (rest & 0xFF) | ((rest >> 8) << 24);
        uint32_t seed = UndoStepA(first);
        if (wide) seed = (seed >> 16) | (seed << 16);
        NoiseStream s(seed, wide);
        bool match = true;
        for (const uint8_t* row : {line0, line1}) {
            s.StartLine();
            for (int pair = 0; pair < pairs && match; ++pair) {
                uint32_t r1, r2;
                if (gray) {
                    r1 = s.Gray();
                    r2 = 0x00808000u;  // chroma stays at 128
                } else {
                    s.Colour(&r1, &r2);
                }
                if (pair >= 8) continue;  // run on to the line's end unchecked
                const uint8_t* p = row + 4 * pair;
                match = p[0] == ((r1 >> 8) & 0xFF) && p[1] == ((r2 >> 8) & 0xFF) && p[2] == ((r1 >> 16) & 0xFF) &&
                        p[3] == ((r2 >> 16) & 0xFF);
            }
            if (!match || !wide) break;  // a narrow stream runs on; its second line is not checked
        }
        if (match) return seed;
    }
    return std::nullopt;
}

TEST(VideoNoiseFilter, SavesFullValuesAndLoadsTheLowestBytes) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t vn = *m->Find("Video Noise");
    std::vector<uint8_t> saved;
    ASSERT_EQ(m->Create(vn)->Save(&saved), status::ok);
    EXPECT_EQ(saved, NoiseBlob(5, 0));
    EXPECT_EQ(saved.size(), kNoiseId.size() * 2 + 4 + 20);
    struct Case {
        std::vector<uint8_t> blob;
        uint32_t ratio, grayscale;
    };
    std::vector<uint8_t> shortByOne = NoiseBlob(100, 1);
    shortByOne.pop_back();
    const Case cases[] = {
        {NoiseBlob(100, 1), 100, 1},
        {NoiseBlob(300, 0), 44, 0},
        {NoiseBlob(256, 0x100), 0, 0},
        {NoiseBlob(0xABCDEF07, 0x12345601), 7, 1},
        {NoiseBlob(100, 1, 0x00020001), 5, 0},  // too new
        {shortByOne, 5, 0},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(vn, &c.blob);
        ASSERT_TRUE(inst);
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok);
        EXPECT_EQ(again, NoiseBlob(c.ratio, c.grayscale)) << c.ratio;
    }
}

TEST(VideoNoiseFilter, RendersLikeTheKernelWithTheCallsSeed) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t vn = *m->Find("Video Noise");
    struct Case {
        int32_t w;
        bool gray;
        bool inPlace;
    };
    const Case cases[] = {{64, true, false}, {64, false, true}, {1030, true, true}, {1030, false, false}};
    for (const Case& c : cases) {
        const std::vector<uint8_t> blob = NoiseBlob(100, c.gray ? 1 : 0);
        auto inst = m->Create(vn, &blob);
        // Rows 1 and 3 flat 128 give the seed away; the rest is random.
        TestFrame src(c.w, 8), dst(c.w, 8);
        std::mt19937 rng(static_cast<uint32_t>(c.w));
        for (size_t i = 0; i < src.frame.Bytes(); ++i) src.frame.Pixels()[i] = static_cast<uint8_t>(rng());
        std::fill_n(src.Row(1), 2 * c.w, 128);
        std::fill_n(src.Row(3), 2 * c.w, 128);
        const std::vector<uint8_t> input = src.Bytes();
        host::Frame& out = c.inPlace ? src.frame : dst.frame;
        const std::vector<uint8_t> before{out.Pixels(), out.Pixels() + out.Bytes()};
        ASSERT_EQ(inst->RenderField(out, src.frame, {0, 1, c.w, 8}, 1), status::ok);
        const uint8_t* row1 = out.Pixels() + 2 * c.w;
        const std::optional<uint32_t> seed =
            RecoverSeed(row1, row1 + 4 * c.w, c.w / 2, c.gray);
        ASSERT_TRUE(seed) << c.w << (c.gray ? " gray" : " colour");

        host::Frame kin(c.w, 8), kout(c.w, 8);
        std::copy(input.begin(), input.end(), kin.Pixels());
        std::copy(before.begin(), before.end(), kout.Pixels());
        FieldView v;
        const Rect r{0, 1, c.w, 8};
        ASSERT_EQ(OpenField(&kout, &kin, &r, 1, &v), status::ok);
        filters::AddNoiseField(v, filters::NoiseWeight(100), c.gray, *seed);
        size_t differ = 0;
        while (differ < out.Bytes() && out.Pixels()[differ] == kout.Pixels()[differ]) ++differ;
        EXPECT_EQ(differ, out.Bytes()) << c.w << (c.gray ? " gray" : " colour") << ": first difference at byte "
                                       << differ;
    }
}

TEST(VideoNoiseFilter, RatioZeroIsExactAndGrayscaleKeepsChromaOnBothThreads) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t vn = *m->Find("Video Noise");
    for (bool gray : {false, true}) {
        const std::vector<uint8_t> blob = NoiseBlob(gray ? 100 : 0, gray ? 1 : 0);
        auto inst = m->Create(vn, &blob);
        TestFrame src(48, 10), dst(48, 10, 0x11);
        std::mt19937 rng(5);
        for (size_t i = 0; i < src.frame.Bytes(); ++i) src.frame.Pixels()[i] = static_cast<uint8_t>(rng());
        ASSERT_EQ(inst->RenderFrame(dst.frame, src.frame, 0, true), status::ok);
        for (size_t i = 0; i < src.frame.Bytes(); ++i) {
            if (gray && (i & 1) == 0) continue;  // noisy luma
            ASSERT_EQ(dst.frame.Pixels()[i], src.frame.Pixels()[i]) << gray << " byte " << i;
        }
    }
}

TEST(VideoNoiseFilter, TheOtherFieldAndBadRectanglesStayUntouched) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Video Noise"));
    TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
    ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, 16, 8}, 0), status::ok);
    for (int y = 1; y < 8; y += 2)
        for (int x = 0; x < 32; ++x) ASSERT_EQ(dst.Row(y)[x], 0x11) << y << "," << x;
    const std::vector<uint8_t> after = dst.Bytes();
    struct Case {
        Rect r;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {{0, 0, 17, 8}, 0, status::invalid_arg}, {{-1, 0, 16, 8}, 0, status::invalid_arg},
        {{0, 0, 16, 9}, 1, status::invalid_arg}, {{3, 0, 4, 8}, 0, status::fail},
        {{0, 0, 16, 1}, 1, status::fail},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.r, c.field), c.expected);
        EXPECT_EQ(dst.Bytes(), after);
    }
}

TEST(VideoNoiseFilter, PairCountsAreSixteenBit) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    // Ratio 0 copies, so written pairs show as 128 on a destination of 0.
    const std::vector<uint8_t> blob = NoiseBlob(0, 0);
    auto inst = m->Create(*m->Find("Video Noise"), &blob);
    struct Case {
        int32_t width;
        Status status;
        int32_t pairsWritten;
    };
    // 65536 pairs wrap to none; 65537 to one.
    const Case cases[] = {{131072, status::fail, 0}, {131074, status::ok, 1}, {131070, status::ok, 65535}};
    for (const Case& c : cases) {
        TestFrame src(c.width, 1, 128), dst(c.width, 1, 0);
        ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, c.width, 1}, 0), c.status) << c.width;
        int32_t written = 0;
        while (written < c.width / 2 && dst.Row(0)[4 * written] == 128) ++written;
        EXPECT_EQ(written, c.pairsWritten) << c.width;
        for (int32_t b = 4 * c.pairsWritten; b < 2 * c.width; ++b) ASSERT_EQ(dst.Row(0)[b], 0) << c.width << " " << b;
    }
}

}  // namespace
}  // namespace zvf::test
