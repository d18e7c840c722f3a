// Mirror and Emboss rendered through the loaded module, compared byte for
// byte with their kernels run on the same frames: what the filter object
// adds (geometry, record reads, the in-place copy) must not change a byte.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "spatial/emboss/emboss_kernel.h"
#include "spatial/mirror/mirror_kernel.h"
#include "tests/module/module_fixture.h"
#include "tests/module/blob_builder.h"

namespace zvf::filters {
namespace {

using test::TestFrame;

void Randomise(host::Frame& f, std::mt19937& rng) {
    for (size_t i = 0; i < f.Bytes(); ++i) f.Pixels()[i] = static_cast<uint8_t>(rng());
}

// The rectangles every comparison runs: whole frame, odd offsets, odd
// widths and heights, a single pair, a single row.
constexpr Rect kRects[] = {{0, 0, 18, 11}, {1, 1, 16, 10}, {3, 2, 18, 11}, {5, 3, 7, 4}, {0, 4, 18, 5}, {2, 0, 13, 7}};

TEST(MirrorThroughModule, MatchesTheKernelOnEveryFlagFieldAndRectangle) {
    auto m = test::LoadModule();
    ASSERT_TRUE(m);
    std::mt19937 rng(2024);
    for (uint32_t flags = 0; flags < 4; ++flags) {
        const std::vector<uint8_t> blob =
            test::WordBlob("Velmora Co., Ltd. Mirror Video Filter", {flags & 1, flags >> 1});
        auto inst = m->Create(*m->Find("Mirror"), &blob);
        for (const Rect& r : kRects)
            for (int32_t field : {0, 1, 2}) {
                TestFrame src(18, 11), viaModule(18, 11), viaKernel(18, 11);
                Randomise(src.frame, rng);
                Randomise(viaModule.frame, rng);
                std::copy_n(viaModule.frame.Pixels(), viaModule.frame.Bytes(), viaKernel.frame.Pixels());
                const Status s = inst->RenderField(viaModule.frame, src.frame, r, field);
                FieldView v;
                const Status opened = OpenField(&viaKernel.frame, &src.frame, &r, field, &v);
                ASSERT_EQ(s, opened);
                if (opened == status::ok) MirrorField(v, flags & 1, flags >> 1);
                ASSERT_EQ(viaModule.Bytes(), viaKernel.Bytes())
                    << "flags " << flags << " field " << field << " rect " << r.left << "," << r.top;
            }
    }
}

TEST(EmbossThroughModule, MatchesTheKernelOnEveryDirectionFieldAndRectangle) {
    auto m = test::LoadModule();
    ASSERT_TRUE(m);
    std::mt19937 rng(77);
    for (uint32_t dir = 0; dir < 8; ++dir)
        for (uint32_t depth : {0u, 1u, 3u, 12u}) {
            const std::vector<uint8_t> blob = test::WordBlob("Velmora Co., Ltd. Emboss Video Filter", {dir, depth});
            auto inst = m->Create(*m->Find("Emboss"), &blob);
            for (const Rect& r : kRects)
                for (int32_t field : {0, 1, 2}) {
                    TestFrame src(18, 11), viaModule(18, 11), viaKernel(18, 11);
                    Randomise(src.frame, rng);
                    Randomise(viaModule.frame, rng);
                    std::copy_n(viaModule.frame.Pixels(), viaModule.frame.Bytes(), viaKernel.frame.Pixels());
                    ASSERT_EQ(inst->RenderField(viaModule.frame, src.frame, r, field), status::ok);
                    FieldView v;
                    if (OpenField(&viaKernel.frame, &src.frame, &r, field, &v) == status::ok) {
                        if (depth == 0)
                            GreyField(v);
                        else
                            EmbossField(v, dir, depth);
                    }
                    ASSERT_EQ(viaModule.Bytes(), viaKernel.Bytes()) << "direction " << dir << " depth " << depth
                                                                    << " field " << field << " rect " << r.left;
                }
        }
}

}  // namespace
}  // namespace zvf::filters
