#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "../module/module_fixture.h"
#include "colour/color_balance/color_balance_dialog.h"
#include "colour/color_balance/color_balance_kernel.h"
#include "kit/frame.h"
#include "platform.h"
#include "zvf/filter_base.h"
#include "spatial/block_color/block_color_dialog.h"
#include "zvf/placement.h"

namespace zvf::filters {

IVideoFilter* CreateColorBalance(IHost* host);

namespace {

std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> b(n);
    for (uint8_t& x : b) x = static_cast<uint8_t>(rng());
    return b;
}

// Runs the kernel the record selects over one pair and returns the pair.
std::array<uint8_t, 4> OnePair(const ColorBalanceRecord& r, std::array<uint8_t, 4> in) {
    host::Frame f(2, 1);
    std::copy(in.begin(), in.end(), f.Pixels());
    FieldView v;
    const Rect rect{0, 0, 2, 1};
    EXPECT_EQ(OpenField(&f, &f, &rect, 0, &v), status::ok);
    const ColorBalanceParams p = MakeColorBalanceParams(r);
    SelectColorBalanceKernel(p, SimdLevel::scalar)(v, p);
    return {f.Pixels()[0], f.Pixels()[1], f.Pixels()[2], f.Pixels()[3]};
}

ColorBalanceRecord Rec(int32_t chroma, int32_t contrast, int32_t uo, int32_t vo, int32_t yo, int32_t safe = 0) {
    ColorBalanceRecord r;
    r.chroma = chroma;
    r.contrast = contrast;
    r.uOffset = uo;
    r.vOffset = vo;
    r.yOffset = yo;
    r.safeColor = safe;
    return r;
}

TEST(ColorBalanceArithmetic, GainsAndDerivedOffsets) {
    const std::pair<int32_t, int32_t> gains[] = {{-128, 0}, {-64, 128}, {-1, 254}, {0, 256},
                                                 {1, 264},  {64, 768},  {127, 1272}};
    for (auto [p, g] : gains) EXPECT_EQ(GainFromSetting(p), g) << p;

    struct Case {
        int32_t r, g, b, u, v;
    };
    const Case cases[] = {
        {127, 0, 0, -44, 127},      // 44*127/127 and 127*127/127
        {-1, 0, 0, 0, -1},          // 44/127 truncates to 0; -127/127
        {0, 0, 127, 127, -21},
        {0, 127, 0, -86, -109},
        {10, -20, 30, 40, 22},      // 5090/127 = 40.08, 2820/127 = 22.2
        {-128, -128, 127, 258, -39},  // the largest U offset
        {127, 127, -128, -258, 39},
        {-128, 127, -128, -169, -215},  // -21546/127 and -27411/127 toward zero
    };
    for (const Case& c : cases) {
        const ColourOffsets o = DeriveOffsets(c.r, c.g, c.b, 17);
        EXPECT_EQ(o.u, c.u) << c.r << "," << c.g << "," << c.b;
        EXPECT_EQ(o.v, c.v) << c.r << "," << c.g << "," << c.b;
        EXPECT_EQ(o.y, 17);
    }
}

TEST(ColorBalanceKernel, KnownPairs) {
    using P = std::array<uint8_t, 4>;
    struct Case {
        const char* what;
        ColorBalanceRecord r;
        P in, out;
    };
    const Case cases[] = {
        {"contrast 127: 129 -> 128 + (256*1272 >> 16) = 132; 127 -> 128 + floor(-4.97)",
         Rec(0, 127, 0, 0, 0), {129, 128, 127, 128}, {132, 128, 123, 128}},
        {"contrast 127 saturates: -636 + 128 and 631 + 128", Rec(0, 127, 0, 0, 0), {0, 60, 255, 200}, {0, 60, 255, 200}},
        {"contrast -1: shift rounds toward minus infinity", Rec(0, -1, 0, 0, 0), {129, 128, 127, 128}, {128, 128, 127, 128}},
        {"contrast -128 flattens luma to 128 + Y offset", Rec(0, -128, 0, 0, 5), {0, 30, 255, 220}, {133, 30, 133, 220}},
        {"chroma -128 gives 128 + offsets", Rec(-128, 0, 10, -20, 0), {16, 250, 200, 3}, {16, 138, 200, 108}},
        {"chroma 64 triples chroma about 128", Rec(64, 0, 0, 0, 0), {50, 138, 60, 118}, {50, 158, 60, 98}},
        {"offsets only clamp at both ends", Rec(0, 0, -258, 258, 50), {220, 255, 10, 0}, {255, 0, 60, 255}},
        {"offsets only, in range", Rec(0, 0, 7, -9, -3), {100, 128, 3, 128}, {97, 135, 0, 119}},
        {"offset far beyond the range behaves as saturated", Rec(0, 0, 100000, -100000, 0), {1, 0, 2, 255},
         {1, 255, 2, 0}},
        {"safe colour alone clamps to 16..235 and 16..240", Rec(0, 0, 0, 0, 0, 1), {0, 255, 255, 0}, {16, 240, 235, 16}},
        {"safe colour leaves legal values", Rec(0, 0, 0, 0, 0, 1), {16, 16, 235, 240}, {16, 16, 235, 240}},
        {"safe colour with gain", Rec(-128, 127, 0, 200, 0, 1), {129, 9, 255, 9}, {132, 128, 235, 240}},
        {"settings beyond the range act as their ends", Rec(0, 900, 0, 0, 0), {129, 128, 127, 128}, {132, 128, 123, 128}},
    };
    for (const Case& c : cases) EXPECT_EQ(OnePair(c.r, c.in), c.out) << c.what;
}

TEST(ColorBalanceKernel, DefaultRecordAndUnityGainLeaveEveryByte) {
    const std::vector<uint8_t> bytes = RandomBytes(64 * 8 * 2, 3);
    struct Case {
        const char* what;
        ColorBalanceKernel kernel;
        ColorBalanceParams p;
    };
    const ColorBalanceParams def = MakeColorBalanceParams(ColorBalanceRecord{});
    ColorBalanceParams unity = def;
    unity.gain = true;
    const Case cases[] = {
        {"selected for the default record", SelectColorBalanceKernel(def, SimdLevel::scalar), def},
        {"offsets only", ColorBalanceOffsetsScalar, def},
        {"gain kernel at 256/256", ColorBalanceGainScalar, unity},
    };
    for (const Case& c : cases) {
        host::Frame src(64, 8), dst(64, 8);
        std::copy(bytes.begin(), bytes.end(), src.Pixels());
        std::fill_n(dst.Pixels(), dst.Bytes(), 0);
        for (int32_t field : {0, 1}) {
            FieldView v;
            const Rect r{0, 0, 64, 8};
            ASSERT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
            c.kernel(v, c.p);
        }
        EXPECT_EQ(std::vector<uint8_t>(dst.Pixels(), dst.Pixels() + dst.Bytes()), bytes) << c.what;
    }
}

TEST(ColorBalanceKernel, SafeColourBoundsAndFieldRowsOnly) {
    const int32_t w = 21, h = 9;
    const std::vector<uint8_t> bytes = RandomBytes(static_cast<size_t>(w) * h * 2, 11);
    const ColorBalanceRecord records[] = {Rec(0, 0, 0, 0, 0, 1), Rec(90, -40, 30, -70, 12, 1), Rec(-128, 127, 258, -258, -128, 1)};
    for (const ColorBalanceRecord& rec : records) {
        for (int32_t field : {0, 1}) {
            host::Frame src(w, h), dst(w, h);
            std::copy(bytes.begin(), bytes.end(), src.Pixels());
            std::fill_n(dst.Pixels(), dst.Bytes(), 0xEE);
            const Rect r{2, 1, 19, 8};  // odd width: the last pixel stays
            FieldView v;
            ASSERT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
            const ColorBalanceParams p = MakeColorBalanceParams(rec);
            SelectColorBalanceKernel(p, SimdLevel::scalar)(v, p);
            for (int y = 0; y < h; ++y) {
                for (int x = 0; x < 2 * w; ++x) {
                    const uint8_t b = dst.Pixels()[y * 2 * w + x];
                    const bool inside = y >= 1 && y < 8 && (y & 1) == (field == 1 ? 1 : 0) && x >= 4 && x < 4 + 32;  // 8 pairs
                    if (!inside) {
                        ASSERT_EQ(b, 0xEE) << y << "," << x;
                    } else if (x % 2 == 0) {
                        ASSERT_TRUE(b >= 16 && b <= 235) << y << "," << x << " = " << int{b};
                    } else {
                        ASSERT_TRUE(b >= 16 && b <= 240) << y << "," << x << " = " << int{b};
                    }
                }
            }
        }
    }
}

TEST(ColorBalanceDialog, SlidersRecomputeOffsetsAndReachTheRecordAtOnce) {
    ColorBalanceRecord record;
    record.reserved[0] = 7;
    record.reserved[1] = 8;
    record.reserved[2] = 9;
    record.safeColor = 1;
    ColorBalanceSetupDialog dialog(&record);
    dialog.OnShown();

    dialog.SetSlider(BalanceSlider::RedCyan, 127);
    EXPECT_EQ(record.uOffset, -44);
    EXPECT_EQ(record.vOffset, 127);
    dialog.SetSlider(BalanceSlider::RedCyan, -1);
    EXPECT_EQ(record.uOffset, 0);
    EXPECT_EQ(record.vOffset, -1);
    dialog.SetSlider(BalanceSlider::Bright, 300);  // clamped
    EXPECT_EQ(record.bright, 127);
    EXPECT_EQ(record.yOffset, 127);
    dialog.SetSlider(BalanceSlider::Chroma, -50);
    dialog.SetSlider(BalanceSlider::Contrast, 20);
    dialog.SetSlider(BalanceSlider::GreenMagenta, 127);
    dialog.SetSlider(BalanceSlider::BlueYellow, -128);
    EXPECT_EQ(record.chroma, -50);
    EXPECT_EQ(record.contrast, 20);
    const ColourOffsets o = DeriveOffsets(-1, 127, -128, 127);
    EXPECT_EQ(record.uOffset, o.u);
    EXPECT_EQ(record.vOffset, o.v);
    EXPECT_EQ(dialog.Working().uOffset, o.u);

    dialog.Default();  // everything but safe colour back to 0
    const ColorBalanceRecord w = dialog.Working();
    for (const int32_t* f : {&record.redCyan, &record.greenMagenta, &record.blueYellow, &record.bright, &record.chroma,
                             &record.contrast, &record.uOffset, &record.vOffset, &record.yOffset})
        EXPECT_EQ(*f, 0);
    EXPECT_EQ(w.contrast, 0);
    EXPECT_EQ(record.safeColor, 1);

    dialog.SetSafeColor(false);
    dialog.SetSlider(BalanceSlider::Contrast, 5);
    dialog.Cancel();  // back to what was shown
    EXPECT_EQ(record.safeColor, 1);
    EXPECT_EQ(record.contrast, 0);
    EXPECT_EQ(record.reserved[0], 7);  // never written by the dialog
    EXPECT_EQ(record.reserved[2], 9);

    dialog.SetSlider(BalanceSlider::Contrast, 5);
    dialog.Ok();
    dialog.OnShown();
    dialog.SetSlider(BalanceSlider::Contrast, 6);
    dialog.Cancel();
    EXPECT_EQ(record.contrast, 5);
}

TEST(ColorBalanceDialog, MovingAnAxisRepaintsTheOtherTwoGradients) {
    ColorBalanceRecord record;
    ColorBalanceSetupDialog dialog(&record);
    const uint32_t before[3] = {dialog.GradientStamp(0), dialog.GradientStamp(1), dialog.GradientStamp(2)};
    dialog.SetSlider(BalanceSlider::GreenMagenta, 40);
    EXPECT_EQ(dialog.GradientStamp(0), before[0] + 1);
    EXPECT_EQ(dialog.GradientStamp(1), before[1]);
    EXPECT_EQ(dialog.GradientStamp(2), before[2] + 1);
    dialog.SetSlider(BalanceSlider::Chroma, 40);  // not an axis
    EXPECT_EQ(dialog.GradientStamp(1), before[1]);

    // A gradient's pixel at the slider's own value shows the current offsets.
    ColorBalanceRecord r = dialog.Working();
    const std::vector<uint32_t> ramp = AxisGradient(0, r, 256);
    ASSERT_EQ(ramp.size(), 256u);
    const ColourOffsets at0 = DeriveOffsets(0, 40, 0, 0);
    EXPECT_EQ(ramp[128], RampPixel(128, 128 + at0.u, 128 + at0.v));
    const ColourOffsets red = DeriveOffsets(127, 40, 0, 0);
    EXPECT_EQ(ramp[255], RampPixel(128, 128 + red.u, std::min(255, 128 + red.v)));
    EXPECT_TRUE(AxisGradient(3, r, 10).empty());
}

TEST(ColorBalanceFilter, WholeFilterThroughTheModuleMatchesTheKernel) {
    auto m = test::LoadModule();
    ASSERT_TRUE(m);
    const std::u16string id = u"Velmora Co., Ltd. ColorCorrectionColor Video Filter";
    const ColorBalanceRecord records[] = {Rec(0, 0, 12, -30, 4), Rec(0, 0, 12, -30, 4, 1), Rec(37, -90, 100, 5, -20),
                                          Rec(-10, 127, -258, 258, 127, 1)};
    const std::vector<uint8_t> bytes = RandomBytes(45 * 13 * 2, 5);
    for (const ColorBalanceRecord& rec : records) {
        std::vector<uint8_t> blob;
        auto put32 = [&blob](uint32_t x) {
            for (int i = 0; i < 4; ++i) blob.push_back(static_cast<uint8_t>(x >> (8 * i)));
        };
        put32(0x00010000);
        put32(static_cast<uint32_t>(2 * id.size() + 4));
        for (char16_t c : id) {
            blob.push_back(static_cast<uint8_t>(c));
            blob.push_back(0);
        }
        put32(0);
        put32(0x00020000);
        const auto* raw = reinterpret_cast<const uint8_t*>(&rec);
        blob.insert(blob.end(), raw, raw + sizeof rec);
        auto inst = m->Create(*m->Find("Color Balance"), &blob);
        ASSERT_TRUE(inst);
        test::TestFrame src(45, 13), dst(45, 13, 0x11), want(45, 13, 0x11);
        std::copy(bytes.begin(), bytes.end(), src.frame.Pixels());
        const ColorBalanceParams p = MakeColorBalanceParams(rec);
        for (int32_t field : {0, 1}) {
            const Rect r{1, 0, 44, 13};
            ASSERT_EQ(inst->RenderField(dst.frame, src.frame, r, field), status::ok);
            FieldView v;
            ASSERT_EQ(OpenField(&want.frame, &src.frame, &r, field, &v), status::ok);
            SelectColorBalanceKernel(p, SimdLevel::scalar)(v, p);
        }
        EXPECT_EQ(dst.Bytes(), want.Bytes()) << rec.contrast;
    }
}

TEST(ColorBalanceFilter, FirstShowIsPlacedInsideTheWorkArea) {
    IVideoFilter* cls = CreateColorBalance(nullptr);
    ASSERT_NE(cls, nullptr);
    IFilterInstance* inst = nullptr;
    ASSERT_EQ(cls->CreateInstance(nullptr, 0, &inst), status::ok);
    auto* f = static_cast<FilterBase*>(inst);
    EXPECT_EQ(inst->IsSetupIdle(), 1);  // no dialog counts as closed
    ASSERT_EQ(inst->OpenSetup(nullptr), status::ok);
    EXPECT_EQ(inst->IsSetupIdle(), 1);
    ASSERT_EQ(inst->ShowSetup(1), status::ok);
    EXPECT_EQ(inst->IsSetupIdle(), 0);
    const Rect got = f->Dialog()->View()->WindowRect();
    Point cursor{};
    Rect work{};
    ASSERT_TRUE(platform::CursorPos(&cursor));
    ASSERT_TRUE(platform::MonitorWorkAreaAt(cursor, &work));
    const Point want = PlaceAtCursor({0, 0, got.right - got.left, got.bottom - got.top}, cursor, work);
    EXPECT_EQ(got.left, want.x);
    EXPECT_EQ(got.top, want.y);
    ASSERT_EQ(inst->ShowSetup(0), status::ok);
    EXPECT_EQ(inst->IsSetupIdle(), 1);
    inst->Release();
    cls->Release();
}

TEST(DialogPlacement, WorkAreaKeepsTheDialogOnePixelInsideTheTaskbarEdge) {
    // Cursor near the bottom of a 1920x1080 monitor whose work area ends at 1040.
    const Rect dialog{0, 0, 300, 200};
    const Point p = PlaceAtCursor(dialog, {1900, 1070}, {0, 0, 1920, 1040});
    EXPECT_EQ(p.x, 1920 - 1 - 300);
    EXPECT_EQ(p.y, 1040 - 1 - 200);
}

}  // namespace
}  // namespace zvf::filters
