// YUV Curve through the loaded module: its variable-length blob, its load
// rules and whole-frame renders.
#include <cstring>

#include "colour/yuv_curve/yuv_curve_record.h"
#include "module_fixture.h"

namespace zvf::test {
namespace {

using filters::CurvePoint;
using Points = std::vector<CurvePoint>;

constexpr std::u16string_view kId = u"Velmora Co., Ltd. ColorCorrectionYUV Video Filter";
const Points kDiagonal{{0, 0}, {255, 255}};

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

// Header, fields 0 to 9, the tables, then the points; `counts` may lie.
std::vector<uint8_t> CurveBlob(const Points (&points)[3], const uint8_t (*tables)[256] = nullptr,
                               const uint32_t* counts = nullptr) {
    std::vector<uint8_t> b;
    PutU32(b, 0x00010000);
    PutU32(b, static_cast<uint32_t>(2 * kId.size() + 4));
    for (char16_t c : kId) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, 0x00020000);
    for (int i = 0; i < 4; ++i) PutU32(b, 0);
    for (int c = 0; c < 3; ++c) PutU32(b, counts ? counts[c] : static_cast<uint32_t>(points[c].size()));
    for (int c = 0; c < 3; ++c) PutU32(b, 0);
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i) b.push_back(tables ? tables[c][i] : static_cast<uint8_t>(i));
    for (const Points& curve : points)
        for (const CurvePoint& p : curve) {
            PutU32(b, p.x);
            PutU32(b, p.y);
        }
    return b;
}

// One even row of 256 pairs whose every lane runs through 0..255.
std::vector<uint8_t> RenderRamp(host::Instance& inst, Status* s = nullptr) {
    TestFrame src(512, 2), dst(512, 2, 0xEE);
    for (int i = 0; i < 256; ++i)
        for (int k = 0; k < 4; ++k) src.Row(0)[4 * i + k] = static_cast<uint8_t>(i);
    const Status r = inst.RenderField(dst.frame, src.frame, {0, 0, 512, 2}, 0);
    if (s) *s = r;
    EXPECT_EQ(std::vector<uint8_t>(dst.Row(1), dst.Row(1) + 1024), std::vector<uint8_t>(1024, 0xEE));
    return {dst.Row(0), dst.Row(0) + 1024};
}

TEST(YuvCurveModule, SavedDefaultBlobHasTheDocumentedLayout) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("YUV Curve"));
    std::vector<uint8_t> saved;
    ASSERT_EQ(inst->Save(&saved), status::ok);
    const size_t n = 2 * kId.size() + 4;
    EXPECT_EQ(saved.size(), n + 820 + 8 * 6);
    EXPECT_EQ(saved, CurveBlob({kDiagonal, kDiagonal, kDiagonal}));
}

TEST(YuvCurveModule, LoadedCurvesRenderAndSurviveTheRoundTrip) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t curve = *m->Find("YUV Curve");
    // A steep Y step (tables) with the tables as the filter would build them.
    uint8_t tables[3][256];
    for (int i = 0; i < 256; ++i) {
        tables[0][i] = i <= 100 ? 0 : 255;
        tables[1][i] = tables[2][i] = static_cast<uint8_t>(i);
    }
    const std::vector<uint8_t> step = CurveBlob({{{100, 0}, {101, 255}}, kDiagonal, kDiagonal}, tables);
    auto inst = m->Create(curve, &step);
    const std::vector<uint8_t> out = RenderRamp(*inst);
    for (int i = 0; i < 1024; ++i) ASSERT_EQ(out[i], i % 2 == 0 ? ((i / 4) <= 100 ? 0 : 255) : i / 4) << i;
    std::vector<uint8_t> again;
    ASSERT_EQ(inst->Save(&again), status::ok);
    EXPECT_EQ(again, step);

    // Three Y points and a falling V line: variable length both ways.
    const std::vector<uint8_t> mixed = CurveBlob({{{0, 0}, {9, 9}, {255, 255}}, kDiagonal, {{0, 255}, {255, 0}}});
    auto second = m->Create(curve, &mixed);
    ASSERT_EQ(second->Save(&again), status::ok);
    EXPECT_EQ(again, mixed);
}

TEST(YuvCurveModule, CountsThatDoNotFitKeepTheDefaults) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t curve = *m->Find("YUV Curve");
    const std::vector<uint8_t> def = CurveBlob({kDiagonal, kDiagonal, kDiagonal});
    uint8_t black[3][256] = {};
    const uint32_t tooMany[3] = {2, 2, 3};
    const uint32_t wrapping[3] = {0x20000000, 0x20000000, 0x20000000};  // 8 x sum wraps 32 bits
    const Points line[3] = {{{0, 0}, {255, 0}}, kDiagonal, kDiagonal};
    const std::vector<uint8_t> cases[] = {
        CurveBlob(line, black, tooMany),
        CurveBlob(line, black, wrapping),
        std::vector<uint8_t>(def.begin(), def.begin() + static_cast<ptrdiff_t>(2 * kId.size() + 4 + 12 + 807)),
    };
    for (const std::vector<uint8_t>& blob : cases) {
        auto inst = m->Create(curve, &blob);
        ASSERT_TRUE(inst);
        std::vector<uint8_t> saved;
        ASSERT_EQ(inst->Save(&saved), status::ok);
        EXPECT_EQ(saved, def);
        const std::vector<uint8_t> out = RenderRamp(*inst);
        for (int i = 0; i < 1024; ++i) ASSERT_EQ(out[i], i / 4) << i;
    }
}

TEST(YuvCurveModule, StrangePointsRenderThroughTheStoredTables) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    uint8_t tables[3][256];
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i) tables[c][i] = static_cast<uint8_t>(255 - i);
    const Points odd[3] = {{{200, 0}, {100, 9}}, {{5, 1}, {5, 2}}, {{0, 4000000000u}, {70000, 3}}};
    const std::vector<uint8_t> blob = CurveBlob(odd, tables);
    auto inst = m->Create(*m->Find("YUV Curve"), &blob);
    const std::vector<uint8_t> out = RenderRamp(*inst);
    for (int i = 0; i < 1024; ++i) ASSERT_EQ(out[i], 255 - i / 4) << i;
    // The dialog can open and edit such a curve without trouble.
    ASSERT_EQ((*inst)->OpenSetup(nullptr), status::ok);
    EXPECT_EQ((*inst)->CloseSetup(), status::ok);
}

TEST(YuvCurveModule, RectangleRulesAndInPlace) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = CurveBlob({{{0, 255}, {255, 0}}, kDiagonal, kDiagonal});
    auto inst = m->Create(*m->Find("YUV Curve"), &blob);
    TestFrame frame(6, 4, 0x20);
    EXPECT_EQ(inst->RenderField(frame.frame, frame.frame, {0, 0, 7, 4}, 0), status::invalid_arg);
    EXPECT_EQ(inst->RenderField(frame.frame, frame.frame, {0, -1, 6, 4}, 0), status::invalid_arg);
    EXPECT_EQ(inst->RenderField(frame.frame, frame.frame, {3, 0, 4, 4}, 0), status::fail);
    EXPECT_EQ(frame.Bytes(), std::vector<uint8_t>(48, 0x20));
    ASSERT_EQ(inst->RenderFrame(frame.frame, frame.frame, 0, true), status::ok);
    for (size_t i = 0; i < 48; ++i) EXPECT_EQ(frame.Bytes()[i], i % 2 == 0 ? 0xDF : 0x20) << i;
}

}  // namespace
}  // namespace zvf::test
