// Blur and Smooth Blur as whole filters, loaded through the host kit, give
// exactly what their kernels give on the same field: prepared or not, one
// field after the other or both at once.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "kit/host_kit.h"
#include "spatial/blur/blur_kernel.h"
#include "spatial/blur/blur_record.h"
#include "spatial/blur/blur_scratch.h"
#include "spatial/smooth_blur/smooth_blur_kernel.h"

namespace zvf::filters {
namespace {

using Kernel = std::function<bool(const FieldView&, int32_t, std::span<int32_t>)>;

struct Case {
    const char* name;
    Kernel kernel;
};

void Randomize(host::Frame& f, uint32_t seed) {
    std::mt19937 rng(seed);
    for (size_t i = 0; i < f.Bytes(); ++i) f.Pixels()[i] = static_cast<uint8_t>(rng());
}

// The kernel's result for one field of `src` rendered over `dst`.
void KernelField(const Kernel& kernel, host::Frame& dst, host::Frame& src, const Rect& r, int32_t field) {
    FieldView v;
    ASSERT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
    std::vector<int32_t> scratch(kLanes * FullScratchEntries(v.rows, v.pairs));
    ASSERT_TRUE(kernel(v, KernelWeight(DefaultBlurCoefficient()), scratch));
}

TEST(BlurFiltersThroughTheModule, RenderEqualsTheKernel) {
    std::string error;
    auto m = host::LoadedModule::Load(host::DefaultModulePath(), host::HostOptions(), &error);
    ASSERT_NE(m, nullptr) << error;
    const Case cases[] = {
        {"Blur", [](const FieldView& v, int32_t a, std::span<int32_t> s) { return BlurField(v, a, s); }},
        {"Smooth Blur", [](const FieldView& v, int32_t a, std::span<int32_t> s) { return SmoothBlurField(v, a, s); }},
    };
    const int32_t w = 202, h = 123;
    const Rect rects[] = {{0, 0, w, h}, {1, 3, 200, 120}, {40, 7, 43, 90}, {0, 60, w, 61}};
    for (const Case& c : cases) {
        for (bool prepare : {false, true}) {
            auto inst = m->Create(*m->Find(c.name));
            ASSERT_TRUE(inst);
            if (prepare) {
                ASSERT_EQ((*inst)->PrepareRender(), status::ok);
            }
            host::Frame src(w, h), got(w, h), want(w, h);
            Randomize(src, 5);
            for (const Rect& r : rects) {
                for (int32_t field : {0, 1}) {
                    Randomize(got, 6);
                    Randomize(want, 6);
                    const Status s = inst->RenderField(got, src, r, field);
                    FieldView probe;
                    if (OpenField(&want, &src, &r, field, &probe) != status::ok) {
                        EXPECT_EQ(s, std::string(c.name) == "Blur" ? status::ok : status::fail);
                        continue;
                    }
                    ASSERT_EQ(s, status::ok);
                    KernelField(c.kernel, want, src, r, field);
                    ASSERT_EQ(std::memcmp(got.Pixels(), want.Pixels(), got.Bytes()), 0)
                        << c.name << " field " << field << " rect " << r.left << "," << r.top;
                }
            }
            // Both fields of the whole frame at once, against the kernel.
            Randomize(got, 7);
            Randomize(want, 7);
            ASSERT_EQ(inst->RenderFrame(got, src, 0, true), status::ok);
            KernelField(c.kernel, want, src, {0, 0, w, h}, 0);
            KernelField(c.kernel, want, src, {0, 0, w, h}, 1);
            EXPECT_EQ(std::memcmp(got.Pixels(), want.Pixels(), got.Bytes()), 0) << c.name << " two threads";
        }
    }
}

// Both filters' output for one picture from a module loaded with `options`;
// one module at a time, since a module keeps one host.
std::vector<std::vector<uint8_t>> RenderBoth(const host::HostOptions& options) {
    std::string error;
    auto m = host::LoadedModule::Load(host::DefaultModulePath(), options, &error);
    EXPECT_NE(m, nullptr) << error;
    std::vector<std::vector<uint8_t>> out;
    if (!m) return out;
    for (const char* name : {"Blur", "Smooth Blur"}) {
        auto inst = m->Create(*m->Find(name));
        host::Frame src(300, 170), dst(300, 170);
        Randomize(src, 11);
        EXPECT_EQ(inst->RenderFrame(dst, src), status::ok) << name;
        out.emplace_back(dst.Pixels(), dst.Pixels() + dst.Bytes());
    }
    return out;
}

TEST(BlurFiltersThroughTheModule, ScalarOnlyProcessorsGetTheSameBytes) {
    host::HostOptions scalarOnly;
    scalarOnly.processorFeatures = 0;
    const auto plain = RenderBoth(scalarOnly);
    const auto full = RenderBoth(host::HostOptions());
    ASSERT_EQ(plain.size(), 2u);
    EXPECT_EQ(plain, full);
}

}  // namespace
}  // namespace zvf::filters
