#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <mutex>
#include <random>
#include <vector>

#include "colour/yuv_curve/yuv_curve_codec.h"
#include "colour/yuv_curve/yuv_curve_dialog.h"
#include "colour/yuv_curve/yuv_curve_kernel.h"
#include "colour/yuv_curve/yuv_curve_tables.h"
#include "kit/frame.h"

namespace zvf::filters {
namespace {

using Points = std::vector<CurvePoint>;

std::array<uint8_t, 256> Table(const Points& p, bool linear, int lo = 0, int hi = 255) {
    std::array<uint8_t, 256> t{};
    BuildTable(p, linear, lo, hi, t.data());
    return t;
}

YuvCurveRecord WithCurves(const Points& y, const Points& u, const Points& v, uint32_t safe = 0) {
    YuvCurveRecord r;
    r.points[kCurveY] = y;
    r.points[kCurveU] = u;
    r.points[kCurveV] = v;
    r.fixed.safeColour = safe;
    for (int c = 0; c < 3; ++c) r.fixed.count[c] = static_cast<uint32_t>(r.points[c].size());
    RebuildTables(r);
    return r;
}

const Points kDiagonal{{0, 0}, {255, 255}};

// Every byte value in every lane: 256 pairs a row, lane k of pair i holds i + 64k.
host::Frame& EveryByte() {
    static host::Frame f(512, 4);
    for (int y = 0; y < 4; ++y)
        for (int i = 0; i < 256; ++i)
            for (int k = 0; k < 4; ++k) f.Pixels()[y * 1024 + i * 4 + k] = static_cast<uint8_t>(i + 64 * k + y);
    return f;
}

enum class Force { Chosen, Table, Line };

// Both fields of the whole frame through the chosen kernel, or a forced one.
std::vector<uint8_t> RenderAll(host::Frame& src, const YuvCurveRecord& r, Force force = Force::Chosen) {
    host::Frame dst(src.Width(), src.Height());
    const Rect all{0, 0, src.Width(), src.Height()};
    const CurveSnapshot s = TakeSnapshot(r);
    const LineTerms terms[3] = {LineTermsOf(s.ends[0][0], s.ends[0][1]), LineTermsOf(s.ends[1][0], s.ends[1][1]),
                                LineTermsOf(s.ends[2][0], s.ends[2][1])};
    for (int field : {0, 1}) {
        FieldView v;
        EXPECT_EQ(OpenField(&dst, &src, &all, field, &v), status::ok);
        if (force == Force::Chosen) RenderCurve(v, s);
        if (force == Force::Table) RenderCurveTables(v, s.fixed.table);
        if (force == Force::Line) RenderCurveLines(v, terms, s.fixed.safeColour != 0);
    }
    return {dst.Pixels(), dst.Pixels() + dst.Bytes()};
}

TEST(YuvCurveTables, DefaultCurvesAreTheIdentityAndSafeColourLimitsThem) {
    const YuvCurveRecord def;
    const YuvCurveRecord rebuilt = WithCurves(kDiagonal, kDiagonal, kDiagonal);
    EXPECT_EQ(std::memcmp(def.fixed.table, rebuilt.fixed.table, sizeof def.fixed.table), 0);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(def.fixed.table[kCurveV][i], i);
    const YuvCurveRecord safe = WithCurves(kDiagonal, kDiagonal, kDiagonal, 1);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(safe.fixed.table[kCurveY][i], i < 16 ? 16 : (i > 235 ? 235 : i)) << i;
        EXPECT_EQ(safe.fixed.table[kCurveU][i], i < 16 ? 16 : (i > 240 ? 240 : i)) << i;
        EXPECT_EQ(safe.fixed.table[kCurveV][i], i < 16 ? 16 : (i > 240 ? 240 : i)) << i;
    }
}

TEST(YuvCurveTables, KnownValues) {
    const Points three{{0, 0}, {128, 200}, {255, 255}};
    const Points video{{16, 0}, {235, 255}};
    struct Case {
        const char* what;
        Points points;
        bool linear;
        int x, want;
    };
    const Case cases[] = {
        {"segments between", three, true, 64, 100},
        {"segments right piece", three, true, 192, 228},           // 200 + 55/127 x 64 = 227.7
        {"spline bows above the chord", three, false, 64, 114},    // 113.61
        {"spline right piece", three, false, 192, 241},           // 241.08
        {"extended below and clamped", video, true, 0, 0},
        {"extended line inside", video, true, 100, 98},           // 97.81
        {"extended above and clamped", video, true, 250, 255},
        {"two-point spline is the line", video, false, 100, 98},
        {"tie rounds to even 0", {{0, 0}, {2, 1}}, true, 1, 0},
        {"tie rounds to even 2", {{0, 0}, {2, 3}}, false, 1, 2},
        {"one point is flat", {{40, 77}}, false, 200, 77},
        {"no points give 0", {}, true, 9, 0},
        {"zero-width segment takes its right end", {{10, 0}, {10, 200}, {20, 250}}, true, 5, 200},
    };
    for (const Case& c : cases) EXPECT_EQ(Table(c.points, c.linear)[c.x], c.want) << c.what;
}

TEST(YuvCurveTables, SplineAndSegmentsAgreeAtTheControlPointsOnly) {
    const Points three{{0, 0}, {128, 200}, {255, 255}};
    const auto spline = Table(three, false), segments = Table(three, true);
    for (const CurvePoint& p : three) {
        EXPECT_EQ(spline[p.x], p.y);
        EXPECT_EQ(segments[p.x], p.y);
    }
    int differing = 0;
    for (int i = 0; i < 256; ++i) differing += spline[i] != segments[i];
    EXPECT_GT(differing, 150);
    // Five points: every knot is hit exactly, whatever the bends.
    const Points five{{0, 30}, {40, 200}, {90, 10}, {200, 180}, {255, 60}};
    const auto t = Table(five, false);
    for (const CurvePoint& p : five) EXPECT_EQ(t[p.x], p.y) << p.x;
}

TEST(YuvCurveTables, AnyPointsStayInsideTheTableAndTheRange) {
    std::mt19937 rng(11);
    const Points odd[] = {
        {{300, 900}, {0, 4000000000u}},                  // out of range and out of order
        {{5, 5}, {5, 9}, {5, 200}},                      // all at one x
        {{200, 0}, {100, 255}, {150, 30}, {0, 0}},       // descending
        {{0, 0}, {4294967295u, 4294967295u}},             // the far end of u32
        {{10, 10}, {10, 10}},
    };
    for (const Points& p : odd)
        for (bool linear : {false, true})
            for (uint32_t safe : {0u, 1u}) {
                const auto t = Table(p, linear, safe ? 16 : 0, safe ? 235 : 255);
                for (uint8_t b : t) EXPECT_TRUE(b >= (safe ? 16 : 0) && b <= (safe ? 235 : 255));
            }
    for (int trial = 0; trial < 200; ++trial) {
        Points p(rng() % 12);
        for (CurvePoint& q : p) q = {static_cast<uint32_t>(rng() % 300), static_cast<uint32_t>(rng() % 300)};
        Table(p, trial % 2 == 0);
    }
}

TEST(YuvCurveKernel, ChoiceOfKernel) {
    struct Case {
        const char* what;
        Points y, u, v;
        uint32_t safe;
        CurveKernel want;
    };
    const Case cases[] = {
        {"default lines", kDiagonal, kDiagonal, kDiagonal, 0, CurveKernel::Line},
        {"limited lines", kDiagonal, kDiagonal, kDiagonal, 1, CurveKernel::LineLimited},
        {"step of 255 on Y", {{100, 0}, {101, 255}}, kDiagonal, kDiagonal, 0, CurveKernel::Table},
        {"falling step of 128 on V", kDiagonal, kDiagonal, {{7, 200}, {8, 72}}, 0, CurveKernel::Table},
        {"step of 127 still fits", {{100, 0}, {101, 127}}, kDiagonal, kDiagonal, 0, CurveKernel::Line},
        {"two x apart fits", {{100, 0}, {102, 255}}, kDiagonal, kDiagonal, 0, CurveKernel::Line},
        {"three points", kDiagonal, {{0, 0}, {9, 9}, {255, 255}}, kDiagonal, 0, CurveKernel::Table},
        {"descending x", {{101, 0}, {100, 255}}, kDiagonal, kDiagonal, 0, CurveKernel::Table},
        {"one x twice", kDiagonal, {{5, 0}, {5, 9}}, kDiagonal, 0, CurveKernel::Table},
        {"beyond 255", kDiagonal, kDiagonal, {{0, 0}, {256, 255}}, 0, CurveKernel::Table},
    };
    for (const Case& c : cases)
        EXPECT_EQ(ChooseCurveKernel(TakeSnapshot(WithCurves(c.y, c.u, c.v, c.safe))), c.want) << c.what;
}

TEST(YuvCurveKernel, LineTermsAndLineBytes) {
    struct Case {
        CurvePoint a, b;
        int16_t slope, intercept;
        int x, out;
    };
    const Case cases[] = {
        {{0, 0}, {255, 255}, 256, 0, 77, 77},
        {{0, 0}, {255, 128}, 128, 0, 255, 127},    // the table says 128: kept one level apart
        {{16, 0}, {235, 255}, 298, -18, 16, 0},    // 65280/219 and -4080/219, truncated
        {{16, 0}, {235, 255}, 298, -18, 235, 255},
        {{16, 0}, {235, 255}, 298, -18, 0, 0},
        {{0, 255}, {255, 0}, -256, 255, 1, 254},
        {{0, 100}, {255, 0}, -100, 100, 1, 99},   // (-100) >> 8 is -1: the shift floors
        {{100, 0}, {101, 127}, 32512, -12700, 101, 127},
    };
    for (const Case& c : cases) {
        const LineTerms t = LineTermsOf(c.a, c.b);
        EXPECT_EQ(t.slope, c.slope) << c.a.x << "," << c.a.y;
        EXPECT_EQ(t.intercept, c.intercept) << c.a.x << "," << c.a.y;
        const YuvCurveRecord r = WithCurves({c.a, c.b}, kDiagonal, kDiagonal);
        host::Frame src(2, 1), dst(2, 1);
        src.Pixels()[0] = static_cast<uint8_t>(c.x);
        src.Pixels()[1] = 9;
        const Rect rect{0, 0, 2, 1};
        FieldView v;
        ASSERT_EQ(OpenField(&dst, &src, &rect, 0, &v), status::ok);
        RenderCurve(v, TakeSnapshot(r));
        EXPECT_EQ(dst.Pixels()[0], c.out) << c.a.x << "," << c.a.y << " x " << c.x;
        EXPECT_EQ(dst.Pixels()[1], 9);
    }
}

TEST(YuvCurveKernel, DefaultRecordLeavesEveryByteUnchangedInEveryKernel) {
    host::Frame& src = EveryByte();
    const YuvCurveRecord def;
    for (Force f : {Force::Chosen, Force::Table, Force::Line}) {
        const std::vector<uint8_t> out = RenderAll(src, def, f);
        EXPECT_TRUE(std::equal(out.begin(), out.end(), src.Pixels()));
    }
}

TEST(YuvCurveKernel, LinesAndTablesAgreeForTheSafeDiagonal) {
    host::Frame& src = EveryByte();
    const YuvCurveRecord safe = WithCurves(kDiagonal, kDiagonal, kDiagonal, 1);
    EXPECT_EQ(RenderAll(src, safe, Force::Line), RenderAll(src, safe, Force::Table));
    const std::vector<uint8_t> out = RenderAll(src, safe);
    for (size_t i = 0; i < out.size(); ++i) {
        const int hi = i % 2 == 0 ? 235 : 240;
        ASSERT_EQ(out[i], std::clamp<int>(src.Pixels()[i], 16, hi)) << i;
    }
}

TEST(YuvCurveKernel, SteepStepThroughTheTable) {
    host::Frame& src = EveryByte();
    const YuvCurveRecord step = WithCurves({{100, 0}, {101, 255}}, kDiagonal, kDiagonal);
    const std::vector<uint8_t> out = RenderAll(src, step);
    for (size_t i = 0; i < out.size(); ++i) {
        const uint8_t in = src.Pixels()[i];
        ASSERT_EQ(out[i], i % 2 == 0 ? (in <= 100 ? 0 : 255) : in) << i;
    }
}

TEST(YuvCurveKernel, OnlyTheSelectedFieldIsWritten) {
    host::Frame src(7, 5), dst(7, 5);
    std::fill_n(src.Pixels(), src.Bytes(), 0x40);
    std::fill_n(dst.Pixels(), dst.Bytes(), 0xEE);
    const YuvCurveRecord r = WithCurves({{0, 255}, {255, 0}}, {{0, 0}, {128, 9}, {255, 255}}, kDiagonal);
    const Rect rect{1, 0, 6, 5};
    FieldView v;
    ASSERT_EQ(OpenField(&dst, &src, &rect, 1, &v), status::ok);
    RenderCurve(v, TakeSnapshot(r));
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 14; ++x) {
            const bool inside = (y & 1) == 1 && x >= 2 && x < 10;
            const uint8_t want = !inside ? 0xEE : (x % 2 == 0 ? r.fixed.table[kCurveY][0x40] : r.fixed.table[x % 4 == 3 ? kCurveU : kCurveV][0x40]);
            EXPECT_EQ(dst.Pixels()[y * 14 + x], want) << y << "," << x;
        }
}

TEST(YuvCurveCodec, RoundTripAndCountsThatDoNotFit) {
    YuvCurveRecord r = WithCurves({{0, 10}, {50, 60}, {255, 250}}, {{3, 4}, {200, 100}}, {{0, 0}, {1, 1}, {2, 2}, {255, 0}});
    r.fixed.linear[kCurveU] = 1;
    r.fixed.reserved[2] = 0xABCD;
    std::vector<uint8_t> bytes(CurvePayloadSize(r));
    EXPECT_EQ(bytes.size(), 808u + 8 * 9);
    EncodeCurvePayload(r, bytes.data());
    YuvCurveRecord back;
    ASSERT_TRUE(DecodeCurvePayload(bytes.data(), bytes.size(), &back));
    EXPECT_EQ(std::memcmp(&back.fixed, &r.fixed, sizeof r.fixed), 0);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(back.points[c], r.points[c]);
    uint32_t x;
    std::memcpy(&x, bytes.data() + 808 + 8, 4);
    EXPECT_EQ(x, 50u);  // second Y point's x

    const YuvCurveRecord def;
    YuvCurveRecord kept;
    EXPECT_FALSE(DecodeCurvePayload(bytes.data(), bytes.size() - 1, &kept));
    EXPECT_FALSE(DecodeCurvePayload(bytes.data(), 807, &kept));
    std::vector<uint8_t> huge = bytes;
    const uint32_t big = 0xFFFFFFFF;
    std::memcpy(huge.data() + 16, &big, 4);
    EXPECT_FALSE(DecodeCurvePayload(huge.data(), huge.size(), &kept));
    EXPECT_EQ(std::memcmp(&kept.fixed, &def.fixed, sizeof def.fixed), 0);
    EXPECT_EQ(kept.points[kCurveY], def.points[kCurveY]);
    // More bytes than the counts need: the rest is ignored.
    bytes.push_back(0x77);
    EXPECT_TRUE(DecodeCurvePayload(bytes.data(), bytes.size(), &kept));
}

TEST(YuvCurveDialog, PointEditingKeepsTheCurveOrderedAndReachesTheRecordAtOnce) {
    YuvCurveRecord record;
    std::mutex lock;
    YuvCurveSetupDialog dialog(&record, &lock);
    dialog.SelectCurve(kCurveU);
    EXPECT_EQ(dialog.CurrentCurve(), kCurveU);
    EXPECT_TRUE(dialog.AddPoint(128, 200));
    EXPECT_TRUE(dialog.AddPoint(64, 300));  // y clamped
    EXPECT_EQ(record.points[kCurveU], (Points{{0, 0}, {64, 255}, {128, 200}, {255, 255}}));
    EXPECT_EQ(record.fixed.count[kCurveU], 4u);
    EXPECT_EQ(record.points[kCurveY], kDiagonal);  // other curves untouched
    EXPECT_EQ(record.fixed.table[kCurveU][64], 255);
    EXPECT_TRUE(dialog.AddPoint(64, 100));  // same x: new y
    EXPECT_FALSE(dialog.AddPoint(64, 100));
    EXPECT_TRUE(dialog.MovePoint(1, 500, 10));  // x stops before the next point
    EXPECT_EQ(record.points[kCurveU][1], (CurvePoint{127, 10}));
    EXPECT_FALSE(dialog.MovePoint(9, 1, 1));
    EXPECT_TRUE(dialog.DeletePoint(1));
    EXPECT_TRUE(dialog.DeletePoint(1));
    EXPECT_FALSE(dialog.DeletePoint(0));  // two points stay
    EXPECT_EQ(record.points[kCurveU], kDiagonal);
    for (int x = 1; x < 60; ++x) dialog.AddPoint(x, x);
    EXPECT_EQ(record.points[kCurveU].size(), YuvCurveSetupDialog::kMaxPoints);
}

TEST(YuvCurveDialog, ModesSafeColourDefaultAndCancel) {
    YuvCurveRecord record = WithCurves({{0, 0}, {128, 200}, {255, 255}}, kDiagonal, kDiagonal);
    std::mutex lock;
    YuvCurveSetupDialog dialog(&record, &lock);
    const auto spline = Table(record.points[kCurveY], false);
    dialog.SetLinear(true);
    EXPECT_EQ(record.fixed.linear[kCurveY], 1u);
    EXPECT_EQ(record.fixed.table[kCurveY][64], 100);
    dialog.SetSafeColour(true);
    EXPECT_EQ(record.fixed.table[kCurveV][0], 16);
    EXPECT_EQ(record.fixed.table[kCurveY][255], 235);
    dialog.Default();
    EXPECT_EQ(record.points[kCurveY], kDiagonal);
    EXPECT_EQ(record.fixed.linear[kCurveY], 0u);
    EXPECT_EQ(record.fixed.safeColour, 1u);  // not a curve: kept
    EXPECT_EQ(record.fixed.table[kCurveY][0], 16);
    dialog.Cancel();
    EXPECT_EQ(record.fixed.safeColour, 0u);
    EXPECT_EQ(record.points[kCurveY].size(), 3u);
    EXPECT_EQ(std::memcmp(record.fixed.table[kCurveY], spline.data(), 256), 0);
    dialog.SetLinear(true);
    dialog.Commit();
    dialog.SetLinear(false);
    dialog.Cancel();  // back to what OK kept
    EXPECT_EQ(record.fixed.linear[kCurveY], 1u);
    EXPECT_EQ(dialog.Working().fixed.linear[kCurveY], 1u);
}

TEST(YuvCurveDialog, StatusTextAndEditorPoints) {
    EXPECT_EQ(YuvCurveSetupDialog::StatusText(5, 200), "(  5, 200)");
    EXPECT_EQ(YuvCurveSetupDialog::StatusText(255, 0), "(255,   0)");
    EXPECT_EQ(YuvCurveSetupDialog::PointAt(0, 0), (CurvePoint{0, 255}));
    EXPECT_EQ(YuvCurveSetupDialog::PointAt(255, 255), (CurvePoint{255, 0}));
    EXPECT_EQ(YuvCurveSetupDialog::PointAt(-40, 1 << 30), (CurvePoint{0, 0}));
    EXPECT_STREQ(YuvCurveSetupDialog::TabLabel(kCurveV), "V");
}

}  // namespace
}  // namespace zvf::filters
