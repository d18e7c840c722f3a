// Emboss through the loaded module: its blob, values outside the controls'
// ranges, empty and bad rectangles, and one frame as source and destination.
#include "module_fixture.h"
#include "blob_builder.h"

namespace zvf::test {
namespace {

const std::string kEmbossId = "Velmora Co., Ltd. Emboss Video Filter";

std::vector<uint8_t> EmbossBlob(uint32_t direction, uint32_t depth, uint32_t version = 0x00020000) {
    return WordBlob(kEmbossId, {direction, depth}, version);
}

TEST(EmbossModule, SavesTheDocumentedBlobAndReloadsIt) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t emboss = *m->Find("Emboss");
    auto fresh = m->Create(emboss);
    EXPECT_EQ((*fresh)->GetCapabilities(), 0x102u);
    std::vector<uint8_t> saved;
    ASSERT_EQ(fresh->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 2u * 37 + 24);
    EXPECT_EQ(saved, EmbossBlob(3, 1));

    std::vector<uint8_t> shortByOne = EmbossBlob(0, 9);
    shortByOne.pop_back();
    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        std::vector<uint8_t> savedAgain;
    };
    const Case cases[] = {
        {"top, depth 500", EmbossBlob(0, 500), EmbossBlob(0, 500)},
        {"depth 0", EmbossBlob(7, 0), EmbossBlob(7, 0)},
        {"outside the ranges, kept as stored", EmbossBlob(9, 100000), EmbossBlob(9, 100000)},
        {"older version", EmbossBlob(5, 2, 0x00010000), EmbossBlob(5, 2)},
        {"too new", EmbossBlob(5, 2, 0x00020001), EmbossBlob(3, 1)},
        {"one byte short", shortByOne, EmbossBlob(3, 1)},
        {"another filter's", WordBlob("Velmora Co., Ltd. Mirror Video Filter", {5, 2}), EmbossBlob(3, 1)},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(emboss, &c.blob);
        ASSERT_TRUE(inst) << c.what;
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok) << c.what;
        EXPECT_EQ(again, c.savedAgain) << c.what;
    }
}

TEST(EmbossModule, ValuesOutsideTheRangesRenderAsTheNearestSafeOnes) {
    // A direction past the ring renders as the last direction; any depth
    // past the field renders as the largest that fits.
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t emboss = *m->Find("Emboss");
    const std::vector<uint8_t> wild = EmbossBlob(0xFFFFFFFF, 0xFFFFFFFF), last = EmbossBlob(7, 500);
    auto a = m->Create(emboss, &wild);
    auto b = m->Create(emboss, &last);
    TestFrame src(12, 10), da(12, 10), db(12, 10);
    src.Randomise(17);
    ASSERT_EQ(a->RenderFrame(da.frame, src.frame), status::ok);
    ASSERT_EQ(b->RenderFrame(db.frame, src.frame), status::ok);
    EXPECT_EQ(da.Bytes(), db.Bytes());
}

TEST(EmbossModule, EmptyFieldsSucceedAndBadRectanglesAreRefused) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (uint32_t depth : {0u, 1u}) {
        const std::vector<uint8_t> blob = EmbossBlob(3, depth);
        auto inst = m->Create(*m->Find("Emboss"), &blob);
        struct Case {
            const char* what;
            Rect rect;
            int32_t field;
            Status expected;
        };
        const Case cases[] = {
            {"width 1", {3, 0, 4, 8}, 0, status::ok},
            {"width 0", {3, 0, 3, 8}, 0, status::ok},
            {"one even row, odd field", {0, 0, 16, 1}, 1, status::ok},
            {"no rows", {0, 4, 16, 4}, 0, status::ok},
            {"right past the frame", {0, 0, 17, 8}, 0, status::invalid_arg},
            {"bottom past the frame", {0, 0, 16, 9}, 1, status::invalid_arg},
            {"negative left", {-2, 0, 16, 8}, 0, status::invalid_arg},
            {"inverted", {8, 6, 6, 4}, 0, status::invalid_arg},
            {"huge", {0, 0, 0x7FFFFFFF, 0x7FFFFFFF}, 0, status::invalid_arg},
        };
        for (const Case& c : cases) {
            TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
            EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.rect, c.field), c.expected) << c.what;
            EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11)) << c.what << " depth " << depth;
        }
    }
}

TEST(EmbossModule, OneFrameAsBothSourceAndDestinationGivesTheSameResult) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (uint32_t dir = 0; dir < 8; ++dir) {
        const std::vector<uint8_t> blob = EmbossBlob(dir, 2);
        auto inst = m->Create(*m->Find("Emboss"), &blob);
        TestFrame src(14, 10), separate(14, 10), same(14, 10);
        src.Randomise(50 + dir);
        std::copy_n(src.frame.Pixels(), src.frame.Bytes(), same.frame.Pixels());
        // Both fields one after the other: each field reads only its own rows.
        ASSERT_EQ(inst->RenderFrame(separate.frame, src.frame), status::ok);
        ASSERT_EQ(inst->RenderFrame(same.frame, same.frame), status::ok);
        EXPECT_EQ(same.Bytes(), separate.Bytes()) << dir;
        // Both fields at once on two threads.
        std::copy_n(src.frame.Pixels(), src.frame.Bytes(), same.frame.Pixels());
        ASSERT_EQ(inst->RenderFrame(same.frame, same.frame, 0, true), status::ok);
        EXPECT_EQ(same.Bytes(), separate.Bytes()) << dir;
    }
}

}  // namespace
}  // namespace zvf::test
