// Mirror through the loaded module: its blob, its answers to bad rectangles,
// and one frame used as both source and destination.
#include "module_fixture.h"
#include "blob_builder.h"

namespace zvf::test {
namespace {

const std::string kMirrorId = "Velmora Co., Ltd. Mirror Video Filter";

std::vector<uint8_t> MirrorBlob(uint32_t hor, uint32_t ver, uint32_t version = 0x00020000) {
    return WordBlob(kMirrorId, {hor, ver}, version);
}

TEST(MirrorModule, SavesTheDocumentedBlobAndReloadsIt) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t mirror = *m->Find("Mirror");
    auto fresh = m->Create(mirror);
    EXPECT_EQ((*fresh)->GetCapabilities(), 0x102u);
    std::vector<uint8_t> saved;
    ASSERT_EQ(fresh->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 2u * 37 + 24);
    EXPECT_EQ(saved, MirrorBlob(1, 0));

    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        std::vector<uint8_t> savedAgain;
    };
    const std::vector<uint8_t> shortByOne = [] {
        std::vector<uint8_t> b = MirrorBlob(0, 1);
        b.pop_back();
        return b;
    }();
    const Case cases[] = {
        {"both flags", MirrorBlob(1, 1), MirrorBlob(1, 1)},
        {"vertical only", MirrorBlob(0, 1), MirrorBlob(0, 1)},
        {"non-zero words are kept as stored", MirrorBlob(7, 0xFFFFFFFF), MirrorBlob(7, 0xFFFFFFFF)},
        {"older version", MirrorBlob(0, 1, 0x00010000), MirrorBlob(0, 1)},
        {"too new", MirrorBlob(0, 1, 0x00020001), MirrorBlob(1, 0)},
        {"one byte short", shortByOne, MirrorBlob(1, 0)},
        {"another filter's", WordBlob("Velmora Co., Ltd. Emboss Video Filter", {0, 1}), MirrorBlob(1, 0)},
    };
    for (const Case& c : cases) {
        auto inst = m->Create(mirror, &c.blob);
        ASSERT_TRUE(inst) << c.what;
        std::vector<uint8_t> again;
        ASSERT_EQ(inst->Save(&again), status::ok) << c.what;
        EXPECT_EQ(again, c.savedAgain) << c.what;
    }
}

TEST(MirrorModule, NonZeroWordsCountAsSet) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> ones = MirrorBlob(1, 1), others = MirrorBlob(7, 0x80000000);
    auto a = m->Create(*m->Find("Mirror"), &ones);
    auto b = m->Create(*m->Find("Mirror"), &others);
    TestFrame src(10, 8), da(10, 8), db(10, 8);
    src.Randomise(3);
    ASSERT_EQ(a->RenderFrame(da.frame, src.frame), status::ok);
    ASSERT_EQ(b->RenderFrame(db.frame, src.frame), status::ok);
    EXPECT_EQ(da.Bytes(), db.Bytes());
    EXPECT_NE(da.Bytes(), src.Bytes());
}

TEST(MirrorModule, BadRectanglesWriteNothing) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> both = MirrorBlob(1, 1);
    auto inst = m->Create(*m->Find("Mirror"), &both);
    struct Case {
        const char* what;
        Rect rect;
        int32_t field;
        Status expected;
    };
    const Case cases[] = {
        {"right past the frame", {0, 0, 17, 8}, 0, status::invalid_arg},
        {"bottom past the frame", {0, 0, 16, 9}, 1, status::invalid_arg},
        {"negative left", {-2, 0, 16, 8}, 0, status::invalid_arg},
        {"negative top", {0, -2, 16, 8}, 0, status::invalid_arg},
        {"inverted", {8, 6, 6, 4}, 0, status::invalid_arg},
        {"huge", {0, 0, 0x7FFFFFFF, 0x7FFFFFFF}, 0, status::invalid_arg},
        {"width 1", {3, 0, 4, 8}, 0, status::fail},
        {"one even row, odd field", {0, 0, 16, 1}, 1, status::fail},
    };
    for (const Case& c : cases) {
        TestFrame src(16, 8, 0x40), dst(16, 8, 0x11);
        EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.rect, c.field), c.expected) << c.what;
        EXPECT_EQ(dst.Bytes(), std::vector<uint8_t>(16 * 8 * 2, 0x11)) << c.what;
    }
}

TEST(MirrorModule, OneFrameAsBothSourceAndDestinationGivesTheSameResult) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (uint32_t flags = 0; flags < 4; ++flags) {
        const std::vector<uint8_t> blob = MirrorBlob(flags & 1, flags >> 1);
        auto inst = m->Create(*m->Find("Mirror"), &blob);
        const Rect rects[] = {{0, 0, 14, 9}, {3, 1, 12, 8}};
        for (const Rect& r : rects) {
            for (int32_t field : {0, 1}) {
                TestFrame src(14, 9), separate(14, 9), same(14, 9);
                src.Randomise(100 + flags);
                separate.Randomise(200 + flags);
                std::copy_n(src.frame.Pixels(), src.frame.Bytes(), same.frame.Pixels());
                ASSERT_EQ(inst->RenderField(separate.frame, src.frame, r, field), status::ok);
                ASSERT_EQ(inst->RenderField(same.frame, same.frame, r, field), status::ok);
                // Outside the field's part of the rectangle the in-place frame
                // keeps the source; inside, both renders agree.
                for (int32_t y = 0; y < 9; ++y)
                    for (int32_t i = 0; i < 28; ++i) {
                        const bool written = y >= r.top && y < r.bottom && (y & 1) == field &&
                                             i >= 2 * r.left && i < 2 * r.left + 4 * ((r.right - r.left) / 2);
                        const uint8_t want = written ? separate.Row(y)[i] : src.Row(y)[i];
                        ASSERT_EQ(same.Row(y)[i], want) << "flags " << flags << " field " << field << " at " << i
                                                        << "," << y;
                    }
            }
        }
    }
}

}  // namespace
}  // namespace zvf::test
