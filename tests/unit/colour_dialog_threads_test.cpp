// The preview renders on another thread while the setup dialog edits the
// record: every render sees one whole record, old or new.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

#include "colour/color_wheel/color_wheel_dialog.h"
#include "colour/exact_math.h"
#include "colour/yuv_curve/yuv_curve_dialog.h"
#include "factories.h"
#include "kit/frame.h"

namespace zvf::filters {
namespace {

struct Opened {
    IVideoFilter* cls = nullptr;
    IFilterInstance* inst = nullptr;
    SetupDialog* dialog = nullptr;
    ~Opened() {
        if (inst) inst->Release();
        if (cls) cls->Release();
    }
};

void Open(IVideoFilter* cls, Opened* o) {
    o->cls = cls;
    ASSERT_EQ(cls->CreateInstance(nullptr, 0, &o->inst), status::ok);
    ASSERT_EQ(o->inst->OpenSetup(nullptr), status::ok);
    o->dialog = static_cast<FilterBase*>(o->inst)->Dialog();
    ASSERT_NE(o->dialog, nullptr);
}

// Renders a one-pair frame over and over on a second thread while `edit`
// runs; returns every distinct output pair seen.
template <class Edit>
std::vector<std::array<uint8_t, 4>> RenderWhile(IFilterInstance* inst, std::array<uint8_t, 4> in, Edit edit) {
    std::atomic<bool> done{false};
    std::vector<std::array<uint8_t, 4>> seen;
    std::thread preview([&] {
        host::Frame src(2, 2), dst(2, 2);
        std::copy(in.begin(), in.end(), src.Pixels());
        const Rect r{0, 0, 2, 2};
        while (!done.load()) {
            ASSERT_EQ(inst->Render(&dst, &src, &r, 0, 0, 0, 0), status::ok);
            const std::array<uint8_t, 4> out{dst.Pixels()[0], dst.Pixels()[1], dst.Pixels()[2], dst.Pixels()[3]};
            if (std::find(seen.begin(), seen.end(), out) == seen.end()) seen.push_back(out);
        }
    });
    edit();
    done.store(true);
    preview.join();
    return seen;
}

TEST(ColourDialogThreads, ColorWheelPreviewSeesWholeRecords) {
    Opened o;
    Open(CreateColorWheel(nullptr), &o);
    auto* dialog = dynamic_cast<ColorWheelSetupDialog*>(o.dialog);
    ASSERT_NE(dialog, nullptr);
    const auto seen = RenderWhile(o.inst, {50, 138, 60, 128}, [&] {
        for (int i = 0; i < 2000; ++i) dialog->SetHue(i % 2 ? kPi : kPi / 2);
    });
    // Quarter turn: (128, 138); half turn: (118, 128). A torn pair of terms would give neither.
    for (const auto& out : seen) {
        const bool quarter = out == std::array<uint8_t, 4>{50, 128, 60, 138};
        const bool half = out == std::array<uint8_t, 4>{50, 118, 60, 128};
        const bool before = out == std::array<uint8_t, 4>{50, 138, 60, 128};
        EXPECT_TRUE(quarter || half || before) << int(out[1]) << "," << int(out[3]);
    }
}

TEST(ColourDialogThreads, YuvCurvePreviewSeesWholeRecords) {
    Opened o;
    Open(CreateYuvCurve(nullptr), &o);
    auto* dialog = dynamic_cast<YuvCurveSetupDialog*>(o.dialog);
    ASSERT_NE(dialog, nullptr);
    const auto seen = RenderWhile(o.inst, {100, 100, 100, 100}, [&] {
        for (int i = 0; i < 300; ++i) {
            dialog->SelectCurve(i % 3);
            dialog->AddPoint(100, 30);  // three points: tables
            dialog->DeletePoint(1);     // two again: lines
        }
    });
    for (const auto& out : seen)
        for (uint8_t b : out) EXPECT_TRUE(b == 100 || b == 30) << int(b);
}

}  // namespace
}  // namespace zvf::filters
