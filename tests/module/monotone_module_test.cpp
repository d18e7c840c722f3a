// Monotone through the loaded module: blob layout, load checks, rejected
// rectangles and the dialog's idle state.
#include "module_fixture.h"

namespace zvf::test {
namespace {

constexpr const char* kMonotoneId = "Velmora Co., Ltd. Monotone Video Filter";

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

std::vector<uint8_t> MonotoneBlob(uint8_t u, uint8_t v, uint32_t version = 0x00020000,
                                  const std::string& id = kMonotoneId) {
    std::vector<uint8_t> b;
    PutU32(b, 0x00010000);
    PutU32(b, static_cast<uint32_t>(2 * id.size() + 4));
    for (char c : id) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, version);
    b.push_back(u);
    b.push_back(v);
    return b;
}

// U and V of the first pair after rendering one even row.
std::pair<int, int> Chroma(host::Instance& inst) {
    TestFrame src(4, 2, 0x40), dst(4, 2);
    EXPECT_EQ(inst.RenderField(dst.frame, src.frame, {0, 0, 4, 2}, 0), status::ok);
    return {dst.Row(0)[1], dst.Row(0)[3]};
}

TEST(MonotoneFilter, SavedBlobLayoutAndLoadChecks) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t mono = *m->Find("Monotone");
    std::vector<uint8_t> saved;
    ASSERT_EQ(m->Create(mono)->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 82u + 14u);
    EXPECT_EQ(saved, MonotoneBlob(128, 128));

    const std::vector<uint8_t> good = MonotoneBlob(30, 220);
    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        std::pair<int, int> chroma;
    };
    const Case cases[] = {
        {"exact size", good, {30, 220}},
        {"one byte short", std::vector<uint8_t>(good.begin(), good.end() - 1), {128, 128}},
        {"version above", MonotoneBlob(30, 220, 0x00020001), {128, 128}},
        {"older version", MonotoneBlob(30, 220, 0x00010000), {30, 220}},
        {"other identifier", MonotoneBlob(30, 220, 0x00020000, "Velmora Co., Ltd. Noise Video Filter"), {128, 128}},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(mono, &c.blob);
        ASSERT_TRUE(inst) << c.what;
        EXPECT_EQ(Chroma(*inst), c.chroma) << c.what;
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok);
        if (c.chroma.first == 30) {
            EXPECT_EQ(again, MonotoneBlob(30, 220)) << c.what;
        }
    }
}

TEST(MonotoneFilter, EmptyOrOutsideRectanglesWriteNothing) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Monotone"));
    struct Case {
        Rect rect;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {{4, 0, 5, 8}, 0, status::fail},          // one pixel wide
        {{0, 0, 16, 1}, 1, status::fail},         // no odd row
        {{0, 0, 18, 8}, 0, status::invalid_arg},  // past the right edge
        {{0, -2, 16, 8}, 0, status::invalid_arg},
    };
    for (const Case& c : cases) {
        TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.rect, c.field), c.expected);
        EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11));
    }
}

TEST(MonotoneFilter, DialogCountsAsIdleWhenShownButNotBusy) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Monotone"));
    EXPECT_EQ((*inst)->IsSetupIdle(), 0);  // no dialog
    ASSERT_EQ((*inst)->OpenSetup(nullptr), status::ok);
    ASSERT_EQ((*inst)->ShowSetup(1), status::ok);
    EXPECT_EQ((*inst)->IsSetupIdle(), 1);  // shown, but not busy
    EXPECT_EQ((*inst)->CloseSetup(), status::ok);
}

}  // namespace
}  // namespace zvf::test
