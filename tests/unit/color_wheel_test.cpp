#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <cmath>
#include <mutex>
#include <random>
#include <vector>

#include "colour/color_wheel/color_wheel_dialog.h"
#include "colour/color_wheel/color_wheel_hue.h"
#include "colour/color_wheel/color_wheel_kernel.h"
#include "colour/exact_math.h"
#include "kit/frame.h"

namespace zvf::filters {
namespace {

using Pair = std::array<uint8_t, 4>;

// One pair through the kernel the record selects.
Pair RenderPair(const ColorWheelRecord& r, Pair in) {
    host::Frame src(2, 1), dst(2, 1);
    std::copy(in.begin(), in.end(), src.Pixels());
    const Rect rect{0, 0, 2, 1};
    FieldView v;
    EXPECT_EQ(OpenField(&dst, &src, &rect, 0, &v), status::ok);
    RenderWheel(v, PlanWheel(r));
    return {dst.Pixels()[0], dst.Pixels()[1], dst.Pixels()[2], dst.Pixels()[3]};
}

ColorWheelRecord WithHue(double hue) {
    ColorWheelRecord r;
    r.hue = hue;
    const HueTerms t = TermsFromHue(hue);
    r.sine = t.sine;
    r.cosine = t.cosine;
    return r;
}

// A frame whose pairs run through every (U, V) with varied luma: 256 x 256 pairs.
host::Frame& EveryChroma() {
    static host::Frame f(512, 256);
    for (int v = 0; v < 256; ++v)
        for (int u = 0; u < 256; ++u) {
            uint8_t* p = f.Pixels() + (v * 256 + u) * 4;
            p[0] = static_cast<uint8_t>(u ^ v);
            p[1] = static_cast<uint8_t>(u);
            p[2] = static_cast<uint8_t>(u + v);
            p[3] = static_cast<uint8_t>(v);
        }
    return f;
}

// Both fields of the whole frame through the kernel.
std::vector<uint8_t> RenderAll(host::Frame& src, const WheelPlan& plan) {
    host::Frame dst(src.Width(), src.Height());
    const Rect all{0, 0, src.Width(), src.Height()};
    for (int field : {0, 1}) {
        FieldView v;
        EXPECT_EQ(OpenField(&dst, &src, &all, field, &v), status::ok);
        RenderWheel(v, plan);
    }
    return {dst.Pixels(), dst.Pixels() + dst.Bytes()};
}

TEST(ColorWheelKernel, KnownAnswers) {
    ColorWheelRecord def;
    ColorWheelRecord quarter = WithHue(kPi / 2);
    ColorWheelRecord half = WithHue(kPi);
    ColorWheelRecord grey;
    grey.saturation = -128;
    ColorWheelRecord contrast;
    contrast.contrast = 127;
    ColorWheelRecord brighter;
    brighter.bright = 10;
    ColorWheelRecord darker;
    darker.bright = -10;
    ColorWheelRecord safe;
    safe.safeColour = 1;
    ColorWheelRecord lowContrast;
    lowContrast.contrast = -64;  // gain 128: half the distance from 128
    ColorWheelRecord doubled;
    doubled.saturation = 32;  // gain 512
    struct Case {
        const char* what;
        const ColorWheelRecord& r;
        Pair in, out;
    };
    const Case cases[] = {
        {"default", def, {1, 2, 3, 4}, {1, 2, 3, 4}},
        {"hue pi/2 turns U' 10 into V' 10", quarter, {50, 138, 60, 128}, {50, 128, 60, 138}},
        {"hue pi/2 turns V' 10 into U' -10", quarter, {50, 128, 60, 138}, {50, 118, 60, 128}},
        {"hue pi mirrors: 256 - v, U 0 saturates", half, {7, 0, 8, 200}, {7, 255, 8, 56}},
        {"hue pi on neutral", half, {7, 128, 8, 128}, {7, 128, 8, 128}},
        {"saturation -128 gives grey", grey, {9, 3, 9, 250}, {9, 128, 9, 128}},
        {"contrast 127: 129 -> 132, 128 stays", contrast, {129, 128, 128, 128}, {132, 128, 128, 128}},
        {"contrast 127 saturates", contrast, {200, 128, 20, 128}, {255, 128, 0, 128}},
        {"contrast -64 halves about 128", lowContrast, {200, 100, 57, 160}, {164, 100, 92, 160}},
        {"saturation 32 doubles chroma", doubled, {5, 138, 5, 118}, {5, 148, 5, 108}},
        {"saturation 32 saturates at both ends", doubled, {5, 250, 5, 2}, {5, 255, 5, 0}},
        {"bright +10 clamps at 255", brighter, {250, 128, 3, 128}, {255, 128, 13, 128}},
        {"bright -10 clamps at 0", darker, {5, 128, 100, 128}, {0, 128, 90, 128}},
        {"safe colour limits", safe, {0, 0, 255, 255}, {16, 16, 235, 240}},
        {"safe colour keeps the inside", safe, {16, 16, 235, 240}, {16, 16, 235, 240}},
    };
    for (const Case& c : cases) EXPECT_EQ(RenderPair(c.r, c.in), c.out) << c.what;
}

TEST(ColorWheelKernel, TelltaleTermsOfQuarterAndHalfTurns) {
    EXPECT_EQ(TermsFromHue(kPi / 2).sine, 16384);
    EXPECT_EQ(TermsFromHue(kPi / 2).cosine, 0);
    EXPECT_EQ(TermsFromHue(kPi).sine, 0);
    EXPECT_EQ(TermsFromHue(kPi).cosine, -16384);
    EXPECT_EQ(TermsFromHue(0.0).cosine, 16384);
    EXPECT_EQ(TermsFromHue(-kPi / 2).sine, -16384);
    EXPECT_EQ(TermsFromHue(std::nan("")).cosine, 16384);
    EXPECT_EQ(TermsFromHue(INFINITY).sine, 0);
}

TEST(ColorWheelKernel, DefaultRecordLeavesEveryByteUnchanged) {
    host::Frame& src = EveryChroma();
    const std::vector<uint8_t> out = RenderAll(src, PlanWheel(ColorWheelRecord()));
    EXPECT_TRUE(std::equal(out.begin(), out.end(), src.Pixels()));
}

TEST(ColorWheelKernel, GainKernelAgreesWithTheRotationKernelAtUnitGains) {
    host::Frame& src = EveryChroma();
    for (double hue : {0.0, 0.3, kPi / 2, 2.0, kPi, -1.0}) {
        for (uint32_t safe : {0u, 1u}) {
            ColorWheelRecord r = WithHue(hue);
            r.safeColour = safe;
            r.bright = -37;
            WheelPlan rotate = PlanWheel(r);
            ASSERT_FALSE(rotate.gain);
            WheelPlan gain = rotate;
            gain.gain = true;
            EXPECT_EQ(RenderAll(src, rotate), RenderAll(src, gain)) << hue << " safe " << safe;
        }
    }
}

// Floating-point rotation and scaling, rounded to nearest: the fixed-point
// result may differ from it by one level at most.
TEST(ColorWheelKernel, WithinOneLevelOfFloatingPointRotationAndScaling) {
    host::Frame& src = EveryChroma();
    for (double hue : {0.0, 0.1, 0.5, 1.0, kPi / 2, 2.5, kPi, -0.7, -2.9}) {
        for (int32_t sat : {-128, -100, -1, 0, 1, 17, 64, 127}) {
            ColorWheelRecord r = WithHue(hue);
            r.saturation = sat;
            const std::vector<uint8_t> out = RenderAll(src, PlanWheel(r));
            const double g = GainFromSetting(sat) / 256.0;
            int worst = 0;
            for (size_t i = 0; i < out.size(); i += 4) {
                const double u = src.Pixels()[i + 1] - 128.0, v = src.Pixels()[i + 3] - 128.0;
                const double fu = std::clamp(std::nearbyint(128 + (u * std::cos(hue) - v * std::sin(hue)) * g), 0.0, 255.0);
                const double fv = std::clamp(std::nearbyint(128 + (u * std::sin(hue) + v * std::cos(hue)) * g), 0.0, 255.0);
                worst = std::max(worst, static_cast<int>(std::fabs(out[i + 1] - fu)));
                worst = std::max(worst, static_cast<int>(std::fabs(out[i + 3] - fv)));
            }
            EXPECT_LE(worst, 1) << "hue " << hue << " saturation " << sat;
        }
    }
}

TEST(ColorWheelKernel, OnlyTheSelectedFieldsRowsAndPairsAreWritten) {
    host::Frame src(9, 6), dst(9, 6);
    std::mt19937 rng(7);
    for (size_t i = 0; i < src.Bytes(); ++i) src.Pixels()[i] = static_cast<uint8_t>(rng());
    std::fill_n(dst.Pixels(), dst.Bytes(), 0xEE);
    ColorWheelRecord r = WithHue(1.0);
    r.contrast = 20;
    const Rect rect{2, 1, 7, 6};  // odd width: pixel 6 stays
    FieldView v;
    ASSERT_EQ(OpenField(&dst, &src, &rect, 1, &v), status::ok);
    RenderWheel(v, PlanWheel(r));
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 18; x += 4) {
            const uint8_t* in = src.Pixels() + y * 18 + x;
            const uint8_t* out = dst.Pixels() + y * 18 + x;
            const bool inside = (y & 1) == 1 && x >= 4 && x < 12;
            const Pair want = inside ? RenderPair(r, {in[0], in[1], in[2], in[3]}) : Pair{0xEE, 0xEE, 0xEE, 0xEE};
            const int n = x + 4 <= 18 ? 4 : 2;
            for (int i = 0; i < n; ++i) EXPECT_EQ(out[i], want[i]) << y << "," << x + i;
        }
}

TEST(ExactMath, RoundHalfEven) {
    const std::pair<double, double> cases[] = {{0.5, 0},   {1.5, 2},    {2.5, 2},     {-0.5, 0},   {-1.5, -2},
                                               {-2.5, -2}, {2.4999, 2}, {-0.25, 0},   {0.75, 1},   {-0.75, -1},
                                               {1e300, 1e300}, {-1e-300, 0}, {16383.5, 16384}, {-16384.5, -16384}};
    for (auto [in, want] : cases) EXPECT_EQ(RoundHalfEven(in), want) << in;
}

TEST(ExactMath, SinCosAndAtan2MatchTheLibraryClosely) {
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> angle(-20.0, 20.0);
    for (int i = 0; i < 200000; ++i) {
        const double x = i < 100 ? i * kPi / 8 : angle(rng);
        const SinCos sc = ExactSinCos(x);
        ASSERT_NEAR(sc.sin, std::sin(x), 4e-16) << x;
        ASSERT_NEAR(sc.cos, std::cos(x), 4e-16) << x;
        const double a = angle(rng), b = angle(rng);
        ASSERT_NEAR(ExactAtan2(a, b), std::atan2(a, b), 1e-15) << a << "," << b;
    }
    EXPECT_NEAR(ExactSinCos(1e7).sin, std::sin(std::fmod(1e7, 6.283185307179586)), 1e-15);
}

TEST(ColorWheelHue, TermsAreTheRoundedSineAndCosine) {
    // Away from ties, the terms equal the library's values rounded.
    for (int i = -40000; i <= 40000; ++i) {
        const double hue = i * 1e-4;
        const double s = std::sin(hue) * 16384, c = std::cos(hue) * 16384;
        const HueTerms t = TermsFromHue(hue);
        if (std::fabs(std::fabs(s - std::floor(s)) - 0.5) > 1e-9) {
            ASSERT_EQ(t.sine, std::nearbyint(s)) << hue;
        }
        if (std::fabs(std::fabs(c - std::floor(c)) - 0.5) > 1e-9) {
            ASSERT_EQ(t.cosine, std::nearbyint(c)) << hue;
        }
    }
}

TEST(ColorWheelHue, Texts) {
    EXPECT_EQ(HueText(0.5), "H  +28.65 deg.");
    EXPECT_EQ(HueText(0.0), "H   +0.00 deg.");
    EXPECT_EQ(HueText(kPi / 2), "H  +90.00 deg.");
    EXPECT_EQ(HueText(-kPi), "H -180.00 deg.");
    EXPECT_EQ(HueText(-0.0001), "H   -0.01 deg.");  // -0.573 hundredths rounds half up to -1
    EXPECT_EQ(HueTextFromHundredths(-4550), "H  -45.50 deg.");
    EXPECT_EQ(SaturationText(5), "S   +5");
    EXPECT_EQ(SaturationText(0), "S   +0");
    EXPECT_EQ(SaturationText(-128), "S -128");
    EXPECT_EQ(SaturationText(127), "S +127");
}

TEST(ColorWheelHue, WheelAnglesSurviveTheRoundTripThroughRadians) {
    for (int h = -18000; h <= 18000; ++h)
        ASSERT_EQ(HueHundredths(HueFromHundredths(static_cast<int16_t>(h))), h) << h;
}

TEST(ColorWheelHue, PointsOnTheWheel) {
    struct Case {
        int32_t dx, dy, radius;
        int16_t hundredths;
        int32_t saturation;
    };
    const Case cases[] = {
        {10, 0, 100, 0, -102},        // 25.5 rounds to even 26
        {0, 10, 100, 9000, -102},     // V up is +90 degrees
        {-10, 0, 100, 18000, -102},
        {0, -10, 100, -9000, -102},
        {7, 7, 100, 4500, -103},      // 9.899 x 2.55 = 25.24
        {0, 0, 100, 0, -128},
        {100, 0, 100, 0, 127},
        {300, 0, 100, 0, 127},        // beyond the rim
        {50, 0, 0, 0, -128},          // no wheel
    };
    for (const Case& c : cases) {
        const WheelPoint p = PointOnWheel(c.dx, c.dy, c.radius);
        EXPECT_EQ(p.hundredths, c.hundredths) << c.dx << "," << c.dy;
        EXPECT_EQ(p.saturation, c.saturation) << c.dx << "," << c.dy;
    }
}

TEST(ColorWheelDialog, ChangesReachTheRecordAtOnceAndCancelRestoresTheShownCopy) {
    ColorWheelRecord record;
    record.bright = 5;
    std::mutex lock;
    ColorWheelSetupDialog dialog(&record, &lock);
    dialog.OnShown();
    dialog.SetHue(kPi / 2);
    EXPECT_EQ(record.sine, 16384);
    EXPECT_EQ(record.cosine, 0);
    EXPECT_EQ(record.hue, kPi / 2);
    EXPECT_EQ(dialog.HueStatus(), "H  +90.00 deg.");
    dialog.SetContrast(300);  // clamped to the slider's range
    EXPECT_EQ(record.contrast, 127);
    dialog.SetSaturation(-40);
    EXPECT_EQ(dialog.SaturationStatus(), "S  -40");
    EXPECT_EQ(record.bright, 5);  // other fields untouched
    dialog.Cancel();
    EXPECT_EQ(record.cosine, 16384);
    EXPECT_EQ(record.contrast, 0);
    EXPECT_EQ(record.bright, 5);
    dialog.PickOnWheel(0, -10, 100);
    EXPECT_EQ(record.sine, -16384);
    EXPECT_EQ(record.saturation, -102);
    dialog.Commit();
    EXPECT_EQ(dialog.Shown().saturation, -102);
    dialog.SetBright(-9);
    dialog.Cancel();  // back to what OK kept
    EXPECT_EQ(record.bright, 5);
    EXPECT_EQ(record.sine, -16384);
}

TEST(ColorWheelDialog, DefaultResetsEveryWordIncludingSafeColour) {
    ColorWheelRecord record = WithHue(2.0);
    record.safeColour = 1;
    record.bright = 3;
    record.saturation = 4;
    record.contrast = 5;
    record.reserved[1] = 9;
    std::mutex lock;
    ColorWheelSetupDialog dialog(&record, &lock);
    dialog.Default();
    const ColorWheelRecord def;
    EXPECT_EQ(std::memcmp(&record, &def, sizeof def), 0);
    EXPECT_EQ(dialog.HueStatus(), "H   +0.00 deg.");
    record.bright = 77;
    dialog.Reload();
    EXPECT_EQ(dialog.Working().bright, 77);
    EXPECT_EQ(ColorWheelSetupDialog::HoverHueStatus(0, 10, 100), "H  +90.00 deg.");
    EXPECT_EQ(ColorWheelSetupDialog::HoverSaturationStatus(100, 0, 100), "S +127");
}

}  // namespace
}  // namespace zvf::filters
