// Matrix through the loaded module: its record, its selector rule and its
// bytes against the kernel.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "temporal/matrix/matrix_coefficients.h"
#include "temporal/matrix/matrix_kernel.h"
#include "tests/module/module_fixture.h"

namespace zvf::test {
namespace {

const std::string kMatrixId = "Velmora Co., Ltd. Matrix Video Filter";
using Cells = std::array<int32_t, 9>;
constexpr Cells kIdentity{0, 0, 0, 0, 1, 0, 0, 0, 0};

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

std::vector<uint8_t> MatrixBlob(const Cells& k, uint32_t normalize, uint32_t version = 0x00020000) {
    std::vector<uint8_t> b;
    PutU32(b, 0x00010000);
    PutU32(b, static_cast<uint32_t>(2 * kMatrixId.size() + 4));
    for (char c : kMatrixId) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, version);
    for (int32_t v : k) PutU32(b, static_cast<uint32_t>(v));
    PutU32(b, normalize);
    return b;
}

std::vector<uint8_t> Random(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> v(n);
    for (uint8_t& b : v) b = static_cast<uint8_t>(rng());
    return v;
}

TEST(MatrixFilter, BlobRoundTripsAndLoadChecks) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t mx = *m->Find("Matrix");
    std::vector<uint8_t> saved;
    ASSERT_EQ(m->Create(mx)->Save(&saved), status::ok);
    EXPECT_EQ(saved, MatrixBlob(kIdentity, 1));
    EXPECT_EQ(saved.size(), 2 * kMatrixId.size() + 4 + 52);

    const Cells sharpen{-1, -1, -1, -1, 9, -1, -1, -1, -1};
    const Cells stored{70000, -300, 0, 0, 5, 0, 0, 0, -2};  // loaded values are not range-checked
    std::vector<uint8_t> shortByOne = MatrixBlob(sharpen, 0);
    shortByOne.pop_back();
    struct Case {
        std::vector<uint8_t> blob;
        std::vector<uint8_t> saves;
    };
    const Case cases[] = {
        {MatrixBlob(sharpen, 1), MatrixBlob(sharpen, 1)},
        {MatrixBlob(stored, 0xFFFFFFFF), MatrixBlob(stored, 0xFFFFFFFF)},
        {MatrixBlob(sharpen, 1, 0x00010000), MatrixBlob(sharpen, 1)},
        {MatrixBlob(sharpen, 1, 0x00020001), MatrixBlob(kIdentity, 1)},
        {shortByOne, MatrixBlob(kIdentity, 1)},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(mx, &c.blob);
        ASSERT_TRUE(inst);
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok);
        EXPECT_EQ(again, c.saves);
    }
}

TEST(MatrixFilter, RendersLikeTheKernelForEverySelector) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t mx = *m->Find("Matrix");
    struct Case {
        Cells k;
        uint32_t normalize;
    };
    const Case cases[] = {
        {{1, 2, 1, 2, 4, 2, 1, 2, 1}, 1},        {{-1, -1, -1, -1, 9, -1, -1, -1, -1}, 1},
        {{-1, 0, 1, -2, 0, 2, -1, 0, 1}, 0},     {{-1, -1, -1, -1, 8, -1, -1, -1, -1}, 1},  // copies
        {{17, -200, 3, 44, 255, -9, 0, 12, -1}, 1}, {kIdentity, 0},
    };
    const Rect rects[] = {{0, 0, 40, 16}, {3, 1, 30, 14}, {6, 5, 40, 16}};
    uint32_t seed = 1;
    for (const Case& c : cases) {
        const std::vector<uint8_t> blob = MatrixBlob(c.k, c.normalize);
        auto inst = m->Create(mx, &blob);
        filters::MatrixRecord record;
        std::copy(c.k.begin(), c.k.end(), record.kernel);
        record.normalize = c.normalize;
        const filters::MatrixCoefficients coefficients = filters::DeriveMatrixCoefficients(record);
        for (const Rect& r : rects) {
            for (int32_t selector : {0, 1, 2, -1}) {
                for (bool inPlace : {false, true}) {
                    const std::vector<uint8_t> in = Random(40 * 16 * 2, ++seed);
                    const std::vector<uint8_t> out = Random(40 * 16 * 2, ++seed);
                    host::Frame src(40, 16), dst(40, 16), ksrc(40, 16), kdst(40, 16);
                    std::copy(in.begin(), in.end(), src.Pixels());
                    std::copy(out.begin(), out.end(), dst.Pixels());
                    std::copy(in.begin(), in.end(), ksrc.Pixels());
                    std::copy(out.begin(), out.end(), kdst.Pixels());
                    host::Frame& target = inPlace ? src : dst;
                    host::Frame& ktarget = inPlace ? ksrc : kdst;
                    ASSERT_EQ(inst->RenderField(target, src, r, selector), status::ok);
                    FieldView v;
                    ASSERT_EQ(OpenField(&ktarget, &ksrc, &r, selector, &v, OddRule::SelectorNonZero), status::ok);
                    ASSERT_TRUE(filters::ConvolveMatrixField(v, coefficients));
                    ASSERT_EQ(std::vector<uint8_t>(target.Pixels(), target.Pixels() + target.Bytes()),
                              std::vector<uint8_t>(ktarget.Pixels(), ktarget.Pixels() + ktarget.Bytes()))
                        << "selector " << selector << (inPlace ? " in place" : " separate");
                }
            }
        }
    }
}

TEST(MatrixFilter, BadRectanglesAreRejectedAndNothingIsWritten) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = MatrixBlob({1, 1, 1, 1, 1, 1, 1, 1, 1}, 1);
    auto inst = m->Create(*m->Find("Matrix"), &blob);
    TestFrame src(16, 8, 200), dst(16, 8, 0x11);
    struct Case {
        Rect r;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {{0, 0, 17, 8}, 0, status::invalid_arg}, {{0, -1, 16, 8}, 0, status::invalid_arg},
        {{0, 0, 16, 9}, 2, status::invalid_arg}, {{10, 0, 8, 8}, 0, status::invalid_arg},
        {{3, 0, 4, 8}, 0, status::fail},         {{0, 0, 16, 1}, 2, status::fail},  // non-zero: odd rows only
        {{0, 5, 16, 6}, 0, status::fail},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.r, c.field), c.expected);
        EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11));
    }
    // And a good one: the box on flat 200 gives 199 in the odd rows only.
    ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, 16, 8}, 2), status::ok);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 32; ++x) ASSERT_EQ(dst.Row(y)[x], (y & 1) ? 199 : 0x11) << y << "," << x;
}

}  // namespace
}  // namespace zvf::test
