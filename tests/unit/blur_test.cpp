#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kit/frame.h"
#include "recursive_blur_reference.h"
#include "spatial/blur/blur_dialog.h"
#include "spatial/blur/blur_kernel.h"
#include "spatial/blur/blur_record.h"
#include "spatial/blur/blur_scratch.h"

namespace zvf::filters {
namespace {

std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> b(n);
    for (uint8_t& v : b) v = static_cast<uint8_t>(rng());
    return b;
}

// Runs the kernel over one field of a frame made from `pixels` into a copy of
// `before`, with a scratch buffer of `entries` entries (0: enough for full
// strips), and returns the destination bytes.
std::vector<uint8_t> RunBlur(const std::vector<uint8_t>& pixels, std::vector<uint8_t> before, int32_t w, int32_t h,
                             const Rect& r, int32_t field, int32_t radius, size_t entries = 0, bool* done = nullptr) {
    std::vector<uint8_t> in = pixels;
    host::Frame src(in.data(), w, h), dst(before.data(), w, h);
    FieldView v;
    EXPECT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
    std::vector<int32_t> scratch(kLanes * (entries ? entries : FullScratchEntries(v.rows, v.pairs)));
    const bool ok = BlurField(v, KernelWeight(BlurCoefficient(radius)), scratch);
    if (done) *done = ok;
    return before;
}

TEST(BlurCoefficient, TellingValuesAndTheirRange) {
    struct Case {
        int32_t radius;
        uint32_t a;
    };
    const Case cases[] = {{1, 128},     {2, 2048}, {5, 10809}, {10, 18820},
                          {100, 31000}, {0, 128},  {-7, 128},  {101, 31000}};  // out of range: clamped
    for (const Case& c : cases) EXPECT_EQ(BlurCoefficient(c.radius), c.a) << "radius " << c.radius;
    EXPECT_EQ(DefaultBlurCoefficient(), 10809u);
    for (int32_t r = 2; r <= 100; ++r) EXPECT_GT(BlurCoefficient(r), BlurCoefficient(r - 1)) << r;
}

TEST(BlurCoefficient, KernelWeightKeepsLowBitsAndCaps) {
    EXPECT_EQ(KernelWeight(10809), 10809);
    EXPECT_EQ(KernelWeight(0x00012000u), 0x2000);  // only the low 16 bits count
    EXPECT_EQ(KernelWeight(40000), 32768);
    EXPECT_EQ(KernelWeight(0), 0);
}

TEST(BlurRecord, DescriptionMatchesTheLayoutAndDefaults) {
    EXPECT_EQ(kBlurRecord.payloadSize, 46088u);
    std::vector<uint8_t> payload(kBlurRecord.payloadSize, 0xEE);
    WriteDefaults(kBlurRecord, payload.data());
    BlurRecord fresh;
    EXPECT_EQ(std::memcmp(payload.data(), &fresh, sizeof fresh), 0);
    const FieldDesc* radius = FindField(kBlurRecord, "radius");
    ASSERT_NE(radius, nullptr);
    EXPECT_EQ(radius->min, 1);
    EXPECT_EQ(radius->max, 100);
    uint32_t reserved = 0;
    for (const FieldDesc& f : kBlurRecord.fields)
        if (f.type == FieldType::Reserved) reserved += f.count;
    EXPECT_EQ(reserved, 46080u);
}

TEST(BlurRecord, CoefficientFollowsARadiusWrittenByName) {
    struct Case {
        double radius;
        int32_t stored;
        uint32_t coefficient;
    };
    const Case cases[] = {{20, 20, 24833}, {1, 1, 128}, {0, 1, 128}, {250, 100, 31000}};  // clamped to the range
    for (const Case& c : cases) {
        BlurRecord r;
        auto* payload = reinterpret_cast<uint8_t*>(&r);
        WriteFieldValue(*FindField(kBlurRecord, "radius"), payload, c.radius);
        ASSERT_NE(kBlurRecord.derive, nullptr);
        kBlurRecord.derive(payload);
        EXPECT_EQ(r.radius, c.stored);
        EXPECT_EQ(r.coefficient, c.coefficient) << c.radius;
    }
}

TEST(BlurStep, RadiusOneKeepsNearlyAllOfAnImpulse) {
    EXPECT_EQ(BlurStep(255, 0, 128), 254);  // 99.6 % of the sample stays
    EXPECT_EQ(BlurStep(0, 255, 128), 1);
    EXPECT_EQ(BlurStep(200, 200, 31000), 200);
}

TEST(BlurKernel, BrightPairSpreadsByHandComputedAmounts) {
    // Radius 2 (a = 2048) on a 3x3-pair field with one bright pair in the
    // middle. Middle row 0, 255, 0: forward 0, 239, 15; backward 15, 239, 0;
    // averages 7, 239, 7. Middle column 0, 239, 0: forward 0, 224, 14, so
    // 7, 224, 7. Side columns 0, 7, 0: forward 0, 7, 0, so they stay.
    const int32_t w = 6, h = 6;  // even field: rows 0, 2, 4
    std::vector<uint8_t> pixels(w * h * 2, 0);
    for (int i = 0; i < 4; ++i) pixels[2 * w * 2 + 4 + i] = 255;
    const std::vector<uint8_t> out = RunBlur(pixels, std::vector<uint8_t>(w * h * 2, 0x33), w, h, {0, 0, 6, 6}, 0, 2);
    const uint8_t want[3][3] = {{0, 7, 0}, {7, 224, 7}, {0, 7, 0}};
    for (int fy = 0; fy < 3; ++fy)
        for (int px = 0; px < 3; ++px)
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(out[2 * fy * w * 2 + px * 4 + i], want[fy][px]) << fy << "," << px << "," << i;
    for (int y = 1; y < h; y += 2)
        for (int x = 0; x < w * 2; ++x) EXPECT_EQ(out[y * w * 2 + x], 0x33);  // the other field
}

TEST(BlurKernel, BrightPairSpreadsSymmetricallyForEveryTestedRadius) {
    const int32_t w = 18, h = 18;  // 9 pairs, 9 rows per field; the bright pair in the middle
    for (int32_t radius : {1, 2, 5, 10, 100}) {
        for (int32_t field : {0, 1}) {
            std::vector<uint8_t> pixels(w * h * 2);
            for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = (i % 2) ? 128 : 16;
            const int32_t row = 8 + field;
            for (int i = 0; i < 4; ++i) pixels[row * w * 2 + 16 + i] = 235;
            const std::vector<uint8_t> out = RunBlur(pixels, pixels, w, h, {0, 0, w, h}, field, radius);
            auto at = [&](int fy, int px, int lane) { return out[(2 * fy + field) * w * 2 + px * 4 + lane]; };
            for (int fy = 0; fy < 9; ++fy)
                for (int px = 0; px < 9; ++px)
                    for (int lane = 0; lane < 4; ++lane) {
                        ASSERT_EQ(at(fy, px, lane), at(fy, 8 - px, lane)) << radius << " left-right";
                        ASSERT_EQ(at(fy, px, lane), at(8 - fy, px, lane)) << radius << " up-down";
                    }
            EXPECT_GT(at(4, 4, 0), at(4, 3, 0)) << radius;
            EXPECT_GE(at(4, 3, 0), at(4, 2, 0)) << radius;
            if (radius == 1) {
                EXPECT_GE(at(4, 4, 0), 230) << "radius 1 changes little";
            }
        }
    }
}

TEST(BlurKernel, UniformFramesStayUniformForEveryRadius) {
    const int32_t w = 14, h = 9;
    for (int32_t radius = 1; radius <= 100; ++radius) {
        for (uint8_t value : {0, 1, 16, 128, 235, 254, 255}) {
            const std::vector<uint8_t> flat(w * h * 2, value);
            for (int32_t field : {0, 1}) {
                const std::vector<uint8_t> out = RunBlur(flat, flat, w, h, {0, 0, w, h}, field, radius);
                ASSERT_EQ(out, flat) << "radius " << radius << " value " << int(value) << " field " << field;
            }
        }
    }
}

TEST(BlurKernel, TouchesOnlyTheFieldsPairsInsideTheRectangle) {
    const int32_t w = 12, h = 10;
    const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 7);
    const std::vector<uint8_t> marker(w * h * 2, 0xA5);
    struct Case {
        Rect r;
        int32_t field;
    };
    const Case cases[] = {
        {{1, 1, 8, 9}, 1}, {{1, 1, 8, 9}, 0}, {{0, 0, 3, 10}, 2}, {{4, 3, 12, 4}, 1}, {{2, 0, 5, 7}, 0}};
    for (const Case& c : cases) {
        const std::vector<uint8_t> out = RunBlur(pixels, marker, w, h, c.r, c.field, 7);
        const int32_t odd = c.field == 1 ? 1 : 0;
        const int32_t end = c.r.left + 2 * ((c.r.right - c.r.left) / 2);  // an odd last pixel is left out
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) {
                const bool inside = y >= c.r.top && y < c.r.bottom && (y & 1) == odd && x >= c.r.left && x < end;
                if (inside) continue;
                for (int b = 0; b < 2; ++b) ASSERT_EQ(out[(y * w + x) * 2 + b], 0xA5) << y << "," << x;
            }
    }
}

TEST(BlurKernel, MatchesTheLineByLineReference) {
    const int32_t w = 40, h = 37;
    std::mt19937 rng(11);
    for (int iteration = 0; iteration < 60; ++iteration) {
        const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 100 + iteration);
        const int32_t left = rng() % w, top = rng() % h;
        const Rect r{left, top, left + 1 + static_cast<int32_t>(rng() % (w - left)),
                     top + 1 + static_cast<int32_t>(rng() % (h - top))};
        const int32_t field = static_cast<int32_t>(rng() % 3);
        const int32_t radius = 1 + static_cast<int32_t>(rng() % 100);
        std::vector<uint8_t> want = pixels;
        test::ReferenceField(want, pixels, w, r, field, KernelWeight(BlurCoefficient(radius)), test::BlurLineReference);
        FieldView probe;
        host::Frame pf(const_cast<uint8_t*>(pixels.data()), w, h);
        if (OpenField(&pf, &pf, &r, field, &probe) != status::ok) continue;
        EXPECT_EQ(RunBlur(pixels, pixels, w, h, r, field, radius), want) << "iteration " << iteration;
        // In place, as a host that hands the same frame twice does it.
        std::vector<uint8_t> same = pixels;
        host::Frame sf(same.data(), w, h);
        FieldView v;
        ASSERT_EQ(OpenField(&sf, &sf, &r, field, &v), status::ok);
        std::vector<int32_t> scratch(kLanes * FullScratchEntries(v.rows, v.pairs));
        ASSERT_TRUE(BlurField(v, KernelWeight(BlurCoefficient(radius)), scratch));
        EXPECT_EQ(same, want) << "in place, iteration " << iteration;
    }
}

TEST(BlurKernel, ResultDoesNotDependOnTheScratchSize) {
    const int32_t w = 64, h = 30;  // 32 pairs, 15 rows per field
    const std::vector<uint8_t> pixels = RandomBytes(w * h * 2, 3);
    const Rect all{0, 0, w, h};
    const std::vector<uint8_t> full = RunBlur(pixels, pixels, w, h, all, 0, 9);
    for (size_t entries : {32, 33, 45, 15 * 3 + 1, 15 * 16, 15 * 32, 4000}) {
        bool done = false;
        EXPECT_EQ(RunBlur(pixels, pixels, w, h, all, 0, 9, entries, &done), full) << entries;
        EXPECT_TRUE(done);
    }
    // Too small for one row of pairs: refused, nothing written.
    bool done = true;
    EXPECT_EQ(RunBlur(pixels, pixels, w, h, all, 0, 9, 31, &done), pixels);
    EXPECT_FALSE(done);
}

TEST(FieldScratch, PreparedFromTheLineLengthAndGrownOnDemand) {
    FieldScratch s;
    EXPECT_EQ(s.Entries(0), 0u);
    ASSERT_TRUE(s.Prepare(1920));
    EXPECT_EQ(s.Entries(1), 1920u * kStripPairs);
    EXPECT_EQ(s.Entries(0), 1920u * kStripPairs);
    // A field longer than the buffers: only that field's buffer grows.
    const std::span<int32_t> big = s.For(1, 2000, 4000);
    EXPECT_GE(big.size() / kLanes, MinScratchEntries(2000, 4000));
    EXPECT_EQ(s.Entries(2), 1920u * kStripPairs);
    // Selectors other than 1 share the second buffer.
    EXPECT_EQ(s.For(0, 10, 10).data(), s.For(7, 10, 10).data());
    EXPECT_NE(s.For(0, 10, 10).data(), s.For(1, 10, 10).data());
    ASSERT_TRUE(s.Prepare(0));
    EXPECT_EQ(s.Entries(1), 0u);
    EXPECT_GE(s.For(1, 3, 5).size(), kLanes * FullScratchEntries(3, 5));
}

TEST(FieldScratch, StripWidthFollowsTheEntries) {
    struct Case {
        size_t entries;
        int32_t rows, pairs, widest, strip;
    };
    // Strips narrower than the widest are whole multiples of 8 pairs from 8 on.
    const Case cases[] = {
        {100, 10, 50, kStripPairs, 8},      {70, 10, 50, kStripPairs, 7},
        {100, 10, 101, kStripPairs, 0},     {9, 10, 5, kStripPairs, 0},
        {10, 10, 5, kStripPairs, 1},        {1000, 10, 5, kStripPairs, 5},
        {1000, 10, 40, kStripPairs, 16},    {0, 0, 0, kStripPairs, 0},
        {30720, 1080, 1920, 32, 24},        {61440, 1080, 1920, 32, 32},
        {1000, 10, 13, 32, 13},
    };
    for (const Case& c : cases)
        EXPECT_EQ(StripPairs(c.entries, c.rows, c.pairs, c.widest), c.strip)
            << c.entries << " " << c.rows << " " << c.pairs << " " << c.widest;
}

// The host's redraw request needs a module; the dialog model is driven here
// without one.
TEST(BlurDialog, RadiusDrivesCoefficientPreviewOkAndCancel) {
    auto record = std::make_unique<BlurRecord>();
    record->reserved1[0] = 0xDEADBEEF;
    record->reserved2[kBlurReservedWords - 1] = 0x12345678;
    auto dialog = std::make_unique<BlurSetupDialog>(record.get(), BlurSetupDialog::kModeBlur);
    EXPECT_EQ(dialog->TitleId(), 10207u);
    EXPECT_EQ(BlurSetupDialog::MinRadius(), 1);
    EXPECT_EQ(BlurSetupDialog::MaxRadius(), 100);
    dialog->OnShown();

    struct Step {
        int32_t set, radius;
        uint32_t coefficient;
    };
    const Step steps[] = {{10, 10, 18820}, {1, 1, 128}, {0, 1, 128}, {250, 100, 31000}, {2, 2, 2048}};
    for (const Step& s : steps) {
        dialog->SetRadius(s.set);
        EXPECT_EQ(dialog->Working().radius, s.radius);
        EXPECT_EQ(dialog->Working().coefficient, s.coefficient);
        EXPECT_EQ(record->radius, s.radius) << "the preview follows the slider";
        EXPECT_EQ(record->coefficient, s.coefficient);
    }
    EXPECT_EQ(dialog->Shown().radius, 5);
    dialog->Cancel();  // back to the values shown
    EXPECT_EQ(record->radius, 5);
    EXPECT_EQ(record->coefficient, 10809u);
    EXPECT_EQ(dialog->Working().radius, 5);

    dialog->SetRadius(10);
    dialog->Commit();  // OK keeps the working copy
    EXPECT_EQ(record->radius, 10);
    dialog->OnShown();
    dialog->Cancel();  // nothing changed since shown: nothing to undo
    EXPECT_EQ(record->radius, 10);
    EXPECT_EQ(record->coefficient, 18820u);
    EXPECT_EQ(record->reserved1[0], 0xDEADBEEF);
    EXPECT_EQ(record->reserved2[kBlurReservedWords - 1], 0x12345678u);

    record->radius = 42;  // the host reloaded the instance
    dialog->Reload();
    EXPECT_EQ(dialog->Working().radius, 42);
    EXPECT_EQ(dialog->Shown().radius, 42);
    EXPECT_EQ(BlurSetupDialog(record.get(), BlurSetupDialog::kModeSmooth).TitleId(), 10214u);
}

}  // namespace
}  // namespace zvf::filters
