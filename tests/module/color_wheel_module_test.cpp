// Color Wheel through the loaded module: its blob, its load rules and
// whole-frame renders.
#include <cstring>

#include "colour/color_wheel/color_wheel_record.h"
#include "module_fixture.h"

namespace zvf::test {
namespace {

constexpr std::u16string_view kId = u"Velmora Co., Ltd. ColorCorrectionUV Video Filter";

// Tag, n, identifier with two zero units, version, then the record.
std::vector<uint8_t> WheelBlob(const filters::ColorWheelRecord& r, uint32_t version = 0x00020000) {
    const uint32_t n = static_cast<uint32_t>(2 * kId.size() + 4);
    std::vector<uint8_t> b(12 + n + sizeof r, 0);
    const uint32_t tag = 0x00010000;
    std::memcpy(b.data(), &tag, 4);
    std::memcpy(b.data() + 4, &n, 4);
    for (size_t i = 0; i < kId.size(); ++i) b[8 + 2 * i] = static_cast<uint8_t>(kId[i]);
    std::memcpy(b.data() + 8 + n, &version, 4);
    std::memcpy(b.data() + 12 + n, &r, sizeof r);
    return b;
}

filters::ColorWheelRecord HalfTurn() {
    filters::ColorWheelRecord r;
    r.hue = 3.141592653589793;
    r.sine = 0;
    r.cosine = -16384;
    return r;
}

// Every byte value in every lane.
void Ramp(TestFrame& f) {
    for (size_t i = 0; i < f.frame.Bytes(); ++i) f.frame.Pixels()[i] = static_cast<uint8_t>(i * 7 + i / 512);
}

TEST(ColorWheelModule, SavedDefaultBlobHasTheDocumentedLayout) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Color Wheel"));
    std::vector<uint8_t> saved;
    ASSERT_EQ(inst->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 2 * kId.size() + 56);
    EXPECT_EQ(saved, WheelBlob(filters::ColorWheelRecord()));
    const uint8_t tail[4] = {0x00, 0x00, 0x00, 0x40};  // sine 0, cosine 16384
    EXPECT_EQ(std::memcmp(saved.data() + saved.size() - 4, tail, 4), 0);
}

TEST(ColorWheelModule, LoadedRecordRendersAndSurvivesTheRoundTrip) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t wheel = *m->Find("Color Wheel");
    const std::vector<uint8_t> good = WheelBlob(HalfTurn());
    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        bool loads;
    };
    const Case cases[] = {
        {"exact size", good, true},
        {"one byte short", std::vector<uint8_t>(good.begin(), good.end() - 1), false},
        {"version 0x00020001", WheelBlob(HalfTurn(), 0x00020001), false},
        {"version 0x00010000", WheelBlob(HalfTurn(), 0x00010000), true},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(wheel, &c.blob);
        ASSERT_TRUE(inst) << c.what;
        TestFrame src(4, 2), dst(4, 2);
        const uint8_t pair[4] = {9, 0, 10, 200};
        std::memcpy(src.Row(0), pair, 4);
        ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, 2, 2}, 0), status::ok) << c.what;
        const std::vector<uint8_t> want = c.loads ? std::vector<uint8_t>{9, 255, 10, 56} : std::vector<uint8_t>{9, 0, 10, 200};
        EXPECT_EQ(std::vector<uint8_t>(dst.Row(0), dst.Row(0) + 4), want) << c.what;
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok);
        if (c.loads && c.blob.size() == good.size()) {
            EXPECT_EQ(again, good) << c.what;
        }
    }
}

TEST(ColorWheelModule, DefaultsLeaveTheFrameAndHalfTurnMirrorsChroma) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t wheel = *m->Find("Color Wheel");
    auto plain = m->Create(wheel);
    TestFrame src(64, 16), dst(64, 16, 0x33);
    Ramp(src);
    ASSERT_EQ(plain->RenderFrame(dst.frame, src.frame, 0, true), status::ok);
    EXPECT_EQ(dst.Bytes(), src.Bytes());

    const std::vector<uint8_t> blob = WheelBlob(HalfTurn());
    auto half = m->Create(wheel, &blob);
    // In place: source and destination are one frame.
    TestFrame inPlace(64, 16);
    Ramp(inPlace);
    ASSERT_EQ(half->RenderFrame(inPlace.frame, inPlace.frame), status::ok);
    const std::vector<uint8_t> before = src.Bytes(), after = inPlace.Bytes();
    for (size_t i = 0; i < before.size(); ++i) {
        const int want = (i % 2 == 0) ? before[i] : std::min(256 - before[i], 255);
        ASSERT_EQ(after[i], want) << i;
    }
}

TEST(ColorWheelModule, RectangleRules) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = WheelBlob(HalfTurn());
    auto inst = m->Create(*m->Find("Color Wheel"), &blob);
    TestFrame src(8, 4, 0x10), dst(8, 4, 0xEE);
    struct Case {
        Rect r;
        int32_t field;
        Status status;
    };
    const Case refused[] = {
        {{-2, 0, 4, 4}, 0, status::invalid_arg}, {{0, 0, 10, 4}, 0, status::invalid_arg},
        {{0, 0, 8, 5}, 0, status::invalid_arg},  {{4, 0, 2, 4}, 0, status::invalid_arg},
        {{0, 0, 8, 1}, 1, status::fail},         {{2, 0, 3, 4}, 0, status::fail},
    };
    for (const Case& c : refused) {
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.r, c.field), c.status) << c.r.left << "," << c.r.right;
        EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(dst.frame.Bytes(), 0xEE));
    }
    // An odd left edge goes down to the even pixel: the pair 2..3 is processed whole.
    ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {3, 0, 4, 2}, 0), status::ok);
    const std::vector<uint8_t> row(dst.Row(0), dst.Row(0) + 16);
    const std::vector<uint8_t> want{0xEE, 0xEE, 0xEE, 0xEE, 0x10, 0xF0, 0x10, 0xF0,
                                    0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(row, want);
    EXPECT_EQ(std::vector<uint8_t>(dst.Row(1), dst.Row(1) + 16), std::vector<uint8_t>(16, 0xEE));
}

}  // namespace
}  // namespace zvf::test
