// Color Wheel and YUV Curve through the loaded module against their kernels
// called directly, with random records, frames and rectangles, at the
// scalar level and at the processor's own.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "colour/color_wheel/color_wheel_hue.h"
#include "colour/color_wheel/color_wheel_kernel.h"
#include "colour/yuv_curve/yuv_curve_codec.h"
#include "colour/yuv_curve/yuv_curve_kernel.h"
#include "colour/yuv_curve/yuv_curve_tables.h"
#include "kit/host_kit.h"
#include "zvf/blob.h"

namespace zvf::filters {
namespace {

std::vector<uint8_t> Blob(std::u16string_view id, const std::vector<uint8_t>& payload) {
    std::vector<uint8_t> b(blob::EnvelopeSize(id, static_cast<uint32_t>(payload.size())));
    std::memcpy(blob::WriteHeader(b.data(), id), payload.data(), payload.size());
    return b;
}

struct Shot {
    Rect rect;
    int32_t field;
};

Shot RandomShot(std::mt19937& rng, int32_t w, int32_t h) {
    const int32_t l = static_cast<int32_t>(rng() % w), r = l + static_cast<int32_t>(rng() % (w - l + 1));
    const int32_t t = static_cast<int32_t>(rng() % h), b = t + static_cast<int32_t>(rng() % (h - t + 1));
    return {{l, t, r, b}, static_cast<int32_t>(rng() % 3)};
}

// Renders `shot` through the module instance and through `kernel` on a copy
// of the same destination; both must agree byte for byte, status included.
template <class Kernel>
void Compare(host::Instance& inst, std::mt19937& rng, Kernel kernel, bool evenLeft, const char* what) {
    constexpr int32_t kW = 37, kH = 11;
    host::Frame src(kW, kH), viaModule(kW, kH), direct(kW, kH);
    for (size_t i = 0; i < src.Bytes(); ++i) src.Pixels()[i] = static_cast<uint8_t>(rng());
    for (size_t i = 0; i < src.Bytes(); ++i) viaModule.Pixels()[i] = direct.Pixels()[i] = static_cast<uint8_t>(rng());
    const Shot shot = RandomShot(rng, kW, kH);
    const Status s = inst.RenderField(viaModule, src, shot.rect, shot.field);
    Rect r = shot.rect;
    if (evenLeft) r.left &= ~1;
    FieldView v;
    const Status d = OpenField(&direct, &src, &r, shot.field, &v);
    if (d == status::ok) kernel(v);
    ASSERT_EQ(s, d) << what;
    ASSERT_EQ(std::memcmp(viaModule.Pixels(), direct.Pixels(), src.Bytes()), 0)
        << what << " rect " << shot.rect.left << "," << shot.rect.top << "," << shot.rect.right << ","
        << shot.rect.bottom << " field " << shot.field;
}

class ColourThroughModule : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        host::HostOptions options;
        if (!GetParam()) options.processorFeatures = 0;  // scalar kernels
        std::string error;
        module_ = host::LoadedModule::Load(host::DefaultModulePath(), options, &error);
        ASSERT_NE(module_, nullptr) << error;
    }
    std::unique_ptr<host::LoadedModule> module_;
};

TEST_P(ColourThroughModule, ColorWheelMatchesItsKernel) {
    std::mt19937 rng(GetParam() ? 5 : 6);
    for (int trial = 0; trial < 60; ++trial) {
        ColorWheelRecord r;
        r.hue = (static_cast<int>(rng() % 2000) - 1000) * 0.00731;
        const HueTerms t = TermsFromHue(r.hue);
        r.sine = t.sine;
        r.cosine = t.cosine;
        r.safeColour = rng() % 2;
        r.bright = static_cast<int32_t>(rng() % 256) - 128;
        r.saturation = trial % 3 == 0 ? 0 : static_cast<int32_t>(rng() % 256) - 128;
        r.contrast = trial % 4 == 0 ? 0 : static_cast<int32_t>(rng() % 256) - 128;
        std::vector<uint8_t> payload(sizeof r);
        std::memcpy(payload.data(), &r, sizeof r);
        const std::vector<uint8_t> blob = Blob(u"Velmora Co., Ltd. ColorCorrectionUV Video Filter", payload);
        auto inst = module_->Create(*module_->Find("Color Wheel"), &blob);
        ASSERT_TRUE(inst);
        for (int k = 0; k < 4; ++k)
            Compare(*inst, rng, [&](const FieldView& v) { RenderWheel(v, PlanWheel(r)); }, true, "wheel");
    }
}

TEST_P(ColourThroughModule, YuvCurveMatchesItsKernels) {
    std::mt19937 rng(GetParam() ? 8 : 9);
    for (int trial = 0; trial < 60; ++trial) {
        YuvCurveRecord r;
        for (int c = 0; c < 3; ++c) {
            // Mostly two points (line kernel), sometimes more (tables).
            const size_t n = trial % 3 == 0 ? 2 + rng() % 5 : 2;
            std::vector<CurvePoint> p;
            uint32_t x = static_cast<uint32_t>(rng() % 40);
            for (size_t i = 0; i < n && x < 256; ++i, x += 1 + static_cast<uint32_t>(rng() % 120))
                p.push_back({x, static_cast<uint32_t>(rng() % 256)});
            if (p.size() < 2) p = {{0, 0}, {255, 255}};
            r.points[c] = p;
            r.fixed.count[c] = static_cast<uint32_t>(p.size());
            r.fixed.linear[c] = rng() % 2;
        }
        r.fixed.safeColour = rng() % 2;
        RebuildTables(r);
        std::vector<uint8_t> payload(CurvePayloadSize(r));
        EncodeCurvePayload(r, payload.data());
        const std::vector<uint8_t> blob = Blob(u"Velmora Co., Ltd. ColorCorrectionYUV Video Filter", payload);
        auto inst = module_->Create(*module_->Find("YUV Curve"), &blob);
        ASSERT_TRUE(inst);
        const CurveSnapshot snapshot = TakeSnapshot(r);
        for (int k = 0; k < 4; ++k)
            Compare(*inst, rng, [&](const FieldView& v) { RenderCurve(v, snapshot); }, false, "curve");
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, ColourThroughModule, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "ProcessorLevel" : "Scalar"; });

}  // namespace
}  // namespace zvf::filters
