#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "colour/monotone/monotone_dialog.h"
#include "colour/monotone/monotone_kernel.h"
#include "../module/module_fixture.h"
#include "kit/frame.h"

namespace zvf::filters {
namespace {

std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> b(n);
    for (uint8_t& x : b) x = static_cast<uint8_t>(rng());
    return b;
}

// Runs `kernel` over rectangle r of a w x h frame of random source bytes into
// a destination of 0xEE bytes; returns the source and the destination.
struct KernelRun {
    std::vector<uint8_t> src, dst;
};
KernelRun RunKernel(MonotoneKernel kernel, int32_t w, int32_t h, const Rect& r, int32_t field, uint8_t u, uint8_t v,
              bool inPlace = false) {
    host::Frame src(w, h), dst(w, h);
    const std::vector<uint8_t> bytes = RandomBytes(src.Bytes(), static_cast<uint32_t>(w * 31 + h));
    std::copy(bytes.begin(), bytes.end(), src.Pixels());
    if (inPlace) {
        std::copy(bytes.begin(), bytes.end(), dst.Pixels());
    } else {
        std::fill_n(dst.Pixels(), dst.Bytes(), 0xEE);
    }
    FieldView view;
    EXPECT_EQ(OpenField(&dst, inPlace ? &dst : &src, &r, field, &view), status::ok);
    kernel(view, u, v);
    return {bytes, {dst.Pixels(), dst.Pixels() + dst.Bytes()}};
}

TEST(MonotoneKernel, KeepsLumaAndReplacesChromaInTheFieldsPairsOnly) {
    struct Case {
        const char* what;
        Rect rect;
        int32_t field;
        uint8_t u, v;
        bool inPlace;
    };
    const Case cases[] = {
        {"greyscale, whole frame, even field", {0, 0, 12, 9}, 0, 128, 128, false},
        {"sepia, odd field", {0, 0, 12, 9}, 1, 100, 150, false},
        {"extremes, selector 2 means even", {2, 1, 11, 8}, 2, 0, 255, false},
        {"odd width leaves the last pixel", {1, 2, 8, 7}, 1, 255, 0, false},
        {"in place", {0, 0, 12, 9}, 0, 77, 199, true},
    };
    for (const Case& c : cases) {
        const KernelRun run = RunKernel(MonotoneScalar, 12, 9, c.rect, c.field, c.u, c.v, c.inPlace);
        const int odd = c.field == 1 ? 1 : 0;
        const int32_t pairs = (c.rect.right - c.rect.left) / 2;
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 24; ++x) {
                const size_t at = static_cast<size_t>(y) * 24 + x;
                const int col = x - 2 * c.rect.left;
                const bool inside = y >= c.rect.top && y < c.rect.bottom && (y & 1) == odd && col >= 0 &&
                                    col < 4 * pairs;
                uint8_t want = c.inPlace ? run.src[at] : 0xEE;
                if (inside) want = col % 4 == 1 ? c.u : (col % 4 == 3 ? c.v : run.src[at]);
                ASSERT_EQ(run.dst[at], want) << c.what << " row " << y << " byte " << x;
            }
        }
    }
}

TEST(MonotoneKernel, DefaultRecordIsGreyscale) {
    // Known answer: a saturated red pair becomes grey of the same luma.
    host::Frame f(2, 1);
    const uint8_t red[4] = {81, 90, 82, 240};
    std::copy(red, red + 4, f.Pixels());
    FieldView view;
    const Rect r{0, 0, 2, 1};
    ASSERT_EQ(OpenField(&f, &f, &r, 0, &view), status::ok);
    const MonotoneRecord def;
    MonotoneScalar(view, def.u, def.v);
    EXPECT_EQ(std::vector<uint8_t>(f.Pixels(), f.Pixels() + 4), (std::vector<uint8_t>{81, 128, 82, 128}));
}

TEST(MonotoneDialog, ChangesReachTheRecordAtOnceAndCancelRestoresTheShownBytes) {
    MonotoneRecord record;
    MonotoneSetupDialog dialog(&record);
    dialog.OnShown();
    dialog.SetComponent(0, 100);
    dialog.SetComponent(1, 400);  // clamped
    dialog.SetComponent(2, 5);    // no such control
    EXPECT_EQ(record.u, 100);
    EXPECT_EQ(record.v, 255);
    EXPECT_EQ(dialog.Opened().u, 128);
    dialog.Cancel();
    EXPECT_EQ(record.u, 128);
    EXPECT_EQ(record.v, 128);
    EXPECT_EQ(dialog.Working().u, 128);

    dialog.SetComponent(1, -3);
    dialog.Ok();
    EXPECT_EQ(record.v, 0);
    dialog.OnShown();  // shown again: the new bytes are what Cancel returns to
    dialog.SetComponent(1, 50);
    dialog.Cancel();
    EXPECT_EQ(record.v, 0);

    record.u = 9;
    dialog.Reload();
    EXPECT_EQ(dialog.Working().u, 9);
    EXPECT_EQ(dialog.IdleState(), 1);
}

TEST(MonotoneFilter, WholeFilterThroughTheModuleMatchesTheKernel) {
    auto m = test::LoadModule();
    ASSERT_TRUE(m);
    // Blob: header, identifier, version, then U and V.
    const std::u16string id = u"Velmora Co., Ltd. Monotone Video Filter";
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
    blob.push_back(90);
    blob.push_back(160);
    auto inst = m->Create(*m->Find("Monotone"), &blob);
    ASSERT_TRUE(inst);
    test::TestFrame src(37, 21), dst(37, 21, 0x11), want(37, 21, 0x11);
    const std::vector<uint8_t> bytes = RandomBytes(src.frame.Bytes(), 7);
    std::copy(bytes.begin(), bytes.end(), src.frame.Pixels());
    for (int32_t field : {0, 1}) {
        const Rect r{3, 2, 36, 20};
        ASSERT_EQ(inst->RenderField(dst.frame, src.frame, r, field), status::ok);
        FieldView v;
        ASSERT_EQ(OpenField(&want.frame, &src.frame, &r, field, &v), status::ok);
        MonotoneScalar(v, 90, 160);
    }
    EXPECT_EQ(dst.Bytes(), want.Bytes());
}

}  // namespace
}  // namespace zvf::filters
