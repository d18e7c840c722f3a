// Blur and Smooth Blur through the loaded module: their parameter sets, the
// render against the line-by-line reference, the field buffers under two
// threads, and the statuses of empty and bad rectangles.
#include <cmath>
#include <cstring>

#include "../unit/recursive_blur_reference.h"
#include "module_fixture.h"

namespace zvf::test {
namespace {

struct BlurKind {
    const char* name;
    std::string identifier;
    LineFilter line;
    Status emptyField;
};

const BlurKind kKinds[] = {
    {"Blur", "Velmora Co., Ltd. Blur Video Filter", BlurLineReference, status::ok},
    {"Smooth Blur", "Velmora Co., Ltd. BlurHQ Video Filter", SmoothBlurLineReference, status::fail},
};

constexpr uint32_t kPayload = 46088;  // radius, coefficient, two reserved blocks

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}
uint32_t GetU32(const std::vector<uint8_t>& b, size_t at) {
    uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

// A parameter set assembled by hand; the reserved blocks carry a pattern.
std::vector<uint8_t> BlurBlob(const std::string& id, int32_t radius, uint32_t coefficient, uint8_t pattern = 0) {
    std::vector<uint8_t> b;
    PutU32(b, 0x00010000);
    PutU32(b, static_cast<uint32_t>(2 * id.size() + 4));
    for (char c : id) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, 0x00020000);
    PutU32(b, static_cast<uint32_t>(radius));
    PutU32(b, coefficient);
    for (uint32_t i = 0; i < kPayload - 8; ++i) b.push_back(pattern ? static_cast<uint8_t>(i * pattern + 1) : 0);
    return b;
}

size_t PayloadAt(const std::string& id) { return 12 + 2 * id.size() + 4; }

TEST(BlurFilters, SavedSetHasTheDocumentedLayout) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (const BlurKind& k : kKinds) {
        auto inst = m->Create(*m->Find(k.name));
        std::vector<uint8_t> saved;
        ASSERT_EQ(inst->Save(&saved), status::ok) << k.name;
        EXPECT_EQ(saved.size(), 2 * k.identifier.size() + 46104) << k.name;
        EXPECT_EQ(saved, BlurBlob(k.identifier, 5, 10809)) << k.name;
    }
}

TEST(BlurFilters, ReservedBlocksAndValuesSurviveLoadAndSave) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (const BlurKind& k : kKinds) {
        const size_t index = *m->Find(k.name);
        const std::vector<uint8_t> blob = BlurBlob(k.identifier, 10, 18820, 37);
        std::vector<uint8_t> shortByOne(blob.begin(), blob.end() - 1);
        std::vector<uint8_t> again;
        ASSERT_EQ(m->Create(index, &blob)->Save(&again), status::ok);
        EXPECT_EQ(again, blob) << k.name;
        ASSERT_EQ(m->Create(index, &shortByOne)->Save(&again), status::ok);
        EXPECT_EQ(again, BlurBlob(k.identifier, 5, 10809)) << k.name << ": a short set keeps the defaults";
        // A set of the other blur is foreign.
        const std::string other =
            k.identifier == kKinds[0].identifier ? "Velmora Co., Ltd. BlurHQ Video Filter" : kKinds[0].identifier;
        const std::vector<uint8_t> foreign = BlurBlob(other, 10, 18820, 37);
        ASSERT_EQ(m->Create(index, &foreign)->Save(&again), status::ok);
        EXPECT_EQ(GetU32(again, PayloadAt(k.identifier)), 5u) << k.name;
    }
}

TEST(BlurFilters, RenderMatchesTheReferenceWithAndWithoutPreparation) {
    host::HostOptions tiny;
    tiny.projectFormat = {6, 4, 16, 1};  // buffers far shorter than the frames rendered
    for (const host::HostOptions& options : {host::HostOptions(), tiny}) {
        auto m = LoadModule(options);
        ASSERT_TRUE(m);
        for (const BlurKind& k : kKinds) {
            for (int32_t radius : {1, 5, 37, 100}) {
                const std::vector<uint8_t> blob = BlurBlob(k.identifier, radius, 0);
                std::vector<uint8_t> patched = blob;
                const uint32_t a = static_cast<uint32_t>(32768.0 * std::pow(1.0 / 256.0, 1.0 / radius));
                std::memcpy(patched.data() + PayloadAt(k.identifier) + 4, &a, 4);
                for (bool prepare : {false, true}) {
                    auto inst = m->Create(*m->Find(k.name), &patched);
                    if (prepare) {
                        ASSERT_EQ((*inst)->PrepareRender(), status::ok);
                    }
                    const Rect rects[] = {{0, 0, 50, 31}, {3, 2, 48, 29}, {7, 0, 9, 31}, {0, 5, 50, 7}};
                    for (const Rect& r : rects) {
                        for (int32_t field : {0, 1}) {
                            TestFrame src(50, 31), dst(50, 31, 0x5A);
                            src.Randomise(radius * 7 + field);
                            std::vector<uint8_t> want = dst.Bytes();
                            ReferenceField(want, src.Bytes(), 50, r, field, static_cast<int32_t>(a), k.line);
                            ASSERT_EQ(inst->RenderField(dst.frame, src.frame, r, field), status::ok);
                            ASSERT_EQ(dst.Bytes(), want)
                                << k.name << " radius " << radius << " field " << field << " rect " << r.left << ","
                                << r.top << "," << r.right << "," << r.bottom << (prepare ? " prepared" : "");
                        }
                    }
                }
            }
        }
    }
}

TEST(BlurFilters, FieldsOnTwoThreadsGiveTheSequentialResult) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (const BlurKind& k : kKinds) {
        for (bool prepare : {false, true}) {
            auto inst = m->Create(*m->Find(k.name));
            if (prepare) {
                ASSERT_EQ((*inst)->PrepareRender(), status::ok);
            }
            for (int round = 0; round < 4; ++round) {
                TestFrame src(360, 240), one(360, 240, 1), two(360, 240, 2);
                src.Randomise(90 + round);
                ASSERT_EQ(inst->RenderFrame(one.frame, src.frame, 0, false), status::ok);
                ASSERT_EQ(inst->RenderFrame(two.frame, src.frame, 0, true), status::ok);
                ASSERT_EQ(one.Bytes(), two.Bytes()) << k.name << " round " << round;
            }
        }
    }
}

TEST(BlurFilters, EmptyAndBadRectanglesWriteNothing) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (const BlurKind& k : kKinds) {
        auto inst = m->Create(*m->Find(k.name));
        struct Case {
            Rect r;
            int32_t field;
            Status want;
        };
        const Case cases[] = {
            {{0, 0, 8, 1}, 1, k.emptyField},          // no odd row inside
            {{3, 0, 4, 6}, 0, k.emptyField},          // one pixel wide: no pair
            {{0, 0, 9, 6}, 0, status::invalid_arg},   // past the right edge
            {{0, -2, 8, 6}, 1, status::invalid_arg},  // above the top
            {{0, 0, 8, 7}, 0, status::invalid_arg},   // past the bottom
            {{6, 0, 2, 6}, 0, status::invalid_arg},   // inverted
        };
        for (const Case& c : cases) {
            TestFrame src(8, 6), dst(8, 6, 0x77);
            src.Randomise(5);
            EXPECT_EQ(inst->RenderField(dst.frame, src.frame, c.r, c.field), c.want) << k.name;
            EXPECT_EQ(dst.Bytes(), TestFrame(8, 6, 0x77).Bytes()) << k.name;
        }
    }
}

TEST(BlurFilters, IdleWithoutADialogOrWhileItIsHidden) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (const BlurKind& k : kKinds) {
        auto inst = m->Create(*m->Find(k.name));
        EXPECT_EQ((*inst)->IsSetupIdle(), 1) << k.name;
        ASSERT_EQ((*inst)->OpenSetup(nullptr), status::ok);
        EXPECT_EQ((*inst)->IsSetupIdle(), 1) << k.name;
        ASSERT_EQ((*inst)->ShowSetup(1), status::ok);
        EXPECT_EQ((*inst)->IsSetupIdle(), 0) << k.name;
        ASSERT_EQ((*inst)->ShowSetup(0), status::ok);
        EXPECT_EQ((*inst)->IsSetupIdle(), 1) << k.name;
        ASSERT_EQ((*inst)->CloseSetup(), status::ok);
        EXPECT_EQ((*inst)->IsSetupIdle(), 1) << k.name;
    }
}

}  // namespace
}  // namespace zvf::test
