// Color Balance through the loaded module: blob layout and load checks, the
// empty-area success, rejected rectangles and the record's round trip.
#include "module_fixture.h"

namespace zvf::test {
namespace {

constexpr const char* kColorBalanceId = "Velmora Co., Ltd. ColorCorrectionColor Video Filter";

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

// Header, identifier, version, then the thirteen fields.
std::vector<uint8_t> ColorBalanceBlob(const std::array<int32_t, 13>& fields, uint32_t version = 0x00020000) {
    const std::string id = kColorBalanceId;
    std::vector<uint8_t> b;
    PutU32(b, 0x00010000);
    PutU32(b, static_cast<uint32_t>(2 * id.size() + 4));
    for (char c : id) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, version);
    for (int32_t f : fields) PutU32(b, static_cast<uint32_t>(f));
    return b;
}

// Fields: safe, reserved x3, R, G, B, bright, chroma, contrast, U, V, Y offsets.
constexpr std::array<int32_t, 13> kBrighter{0, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0, 0, 20};

TEST(ColorBalanceFilter, SavedBlobLayoutAndLoadChecks) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t cb = *m->Find("Color Balance");
    std::vector<uint8_t> saved;
    ASSERT_EQ(m->Create(cb)->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 2u * 51u + 68u);
    EXPECT_EQ(saved, ColorBalanceBlob({}));

    // Reserved fields and every other value come back exactly as stored.
    const std::array<int32_t, 13> odd{1, -5, 6, 0x7FFFFFFF, 127, -128, 3, 20, -1, 9, -44, 127, 20};
    const std::vector<uint8_t> blob = ColorBalanceBlob(odd);
    std::vector<uint8_t> again;
    ASSERT_EQ(m->Create(cb, &blob)->Save(&again), status::ok);
    EXPECT_EQ(again, blob);

    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        uint8_t y;  // luma 100 after rendering
    };
    const std::vector<uint8_t> good = ColorBalanceBlob(kBrighter);
    const Case cases[] = {
        {"exact size", good, 120},
        {"one byte short", std::vector<uint8_t>(good.begin(), good.end() - 1), 100},
        {"version above", ColorBalanceBlob(kBrighter, 0x00020001), 100},
        {"older version", ColorBalanceBlob(kBrighter, 0x00010000), 120},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(cb, &c.blob);
        TestFrame src(4, 2, 100), dst(4, 2);
        ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, 4, 2}, 0), status::ok);
        EXPECT_EQ(dst.Row(0)[0], c.y) << c.what;
        EXPECT_EQ(dst.Row(0)[1], 100) << c.what;
    }
}

TEST(ColorBalanceFilter, EmptyAreasSucceedAndOutsideRectanglesAreRejected) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = ColorBalanceBlob(kBrighter);
    auto inst = m->Create(*m->Find("Color Balance"), &blob);
    struct Case {
        const char* what;
        Rect rect;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {"one pixel wide", {4, 0, 5, 8}, 0, status::ok},
        {"no odd row", {0, 0, 16, 1}, 1, status::ok},
        {"no rows", {0, 4, 16, 4}, 0, status::ok},
        {"past the right edge", {0, 0, 18, 8}, 0, status::invalid_arg},
        {"past the bottom", {0, 0, 16, 9}, 1, status::invalid_arg},
        {"negative left", {-2, 0, 16, 8}, 0, status::invalid_arg},
        {"inverted", {8, 0, 6, 8}, 0, status::invalid_arg},
    };
    for (const Case& c : cases) {
        TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.rect, c.field), c.expected) << c.what;
        EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11)) << c.what;
    }
}

TEST(ColorBalanceFilter, DefaultRecordLeavesTheFrameUnchangedInPlace) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Color Balance"));
    TestFrame f(30, 10);
    for (size_t i = 0; i < f.frame.Bytes(); ++i) f.frame.Pixels()[i] = static_cast<uint8_t>(i * 37 + 11);
    const std::vector<uint8_t> before = f.Bytes();
    ASSERT_EQ(inst->RenderFrame(f.frame, f.frame, 0, true), status::ok);
    EXPECT_EQ(f.Bytes(), before);
}

}  // namespace
}  // namespace zvf::test
