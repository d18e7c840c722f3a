// Parameter blobs through the loaded module: the envelope, the load checks
// and the save failures, with Block Color as the filter under test.
#include "module_fixture.h"

namespace zvf::test {
namespace {

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

// A Block Color blob assembled by hand: tag, n, identifier + two zero units,
// version, y u v.
std::vector<uint8_t> BlockColorBlob(uint8_t y, uint8_t u, uint8_t v, uint32_t version = 0x00020000,
                                    uint32_t tag = 0x00010000,
                                    const std::string& id = "Velmora Co., Ltd. SolidColor Video Filter") {
    std::vector<uint8_t> b;
    PutU32(b, tag);
    PutU32(b, static_cast<uint32_t>(2 * id.size() + 4));
    for (char c : id) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutU32(b, 0);
    PutU32(b, version);
    b.push_back(y);
    b.push_back(u);
    b.push_back(v);
    return b;
}

// Renders one even row of 2 pairs and returns its first pair's bytes.
std::vector<uint8_t> FirstPair(host::Instance& inst) {
    TestFrame src(4, 2), dst(4, 2);
    EXPECT_EQ(inst.RenderField(dst.frame, src.frame, {0, 0, 4, 2}, 0), status::ok);
    return {dst.Row(0), dst.Row(0) + 4};
}

const std::vector<uint8_t> kDefaultPair{0xFF, 0x80, 0xFF, 0x80};
const std::vector<uint8_t> kLoadedPair{0x10, 0x20, 0x10, 0x30};

TEST(Blob, SavedBlockColorBlobHasTheDocumentedLayout) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    auto inst = m->Create(*m->Find("Block Color"));
    std::vector<uint8_t> saved;
    ASSERT_EQ(inst->Save(&saved), status::ok);
    EXPECT_EQ(saved.size(), 101u);
    EXPECT_EQ(saved, BlockColorBlob(255, 128, 128));
}

TEST(Blob, LoadChecksAcceptOrKeepTheDefaults) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const size_t bc = *m->Find("Block Color");
    const std::vector<uint8_t> good = BlockColorBlob(0x10, 0x20, 0x30);
    std::vector<uint8_t> shortByOne(good.begin(), good.end() - 1);
    std::vector<uint8_t> longer = good;
    longer.push_back(0xEE);
    std::vector<uint8_t> hugeN = good;
    hugeN[4] = hugeN[5] = hugeN[6] = hugeN[7] = 0xFF;
    std::vector<uint8_t> oddN = good;
    oddN[4] = 87;  // the identifier is read from n / 2 units
    struct Case {
        const char* what;
        std::vector<uint8_t> blob;
        const std::vector<uint8_t>& pair;
    };
    const Case cases[] = {
        {"exact size", good, kLoadedPair},
        {"longer than needed", longer, kLoadedPair},
        {"one byte short", shortByOne, kDefaultPair},
        {"version 0x00020001", BlockColorBlob(0x10, 0x20, 0x30, 0x00020001), kDefaultPair},
        {"version 0x00010000", BlockColorBlob(0x10, 0x20, 0x30, 0x00010000), kLoadedPair},
        {"version 0", BlockColorBlob(0x10, 0x20, 0x30, 0), kLoadedPair},
        {"version 0xFFFFFFFF (unsigned)", BlockColorBlob(0x10, 0x20, 0x30, 0xFFFFFFFF), kDefaultPair},
        {"tag 0x00010001", BlockColorBlob(0x10, 0x20, 0x30, 0x00020000, 0x00010001), kDefaultPair},
        {"another filter's blob",
         BlockColorBlob(0x10, 0x20, 0x30, 0x00020000, 0x00010000, "Velmora Co., Ltd. Mirror Video Filter"),
         kDefaultPair},
        {"identifier one character off",
         BlockColorBlob(0x10, 0x20, 0x30, 0x00020000, 0x00010000, "Velmora Co., Ltd. SolidColor Video Filtex"),
         kDefaultPair},
        {"empty", {}, kDefaultPair},
        {"4 bytes", {0x00, 0x00, 0x01, 0x00}, kDefaultPair},
        {"8 bytes, header only", {0x00, 0x00, 0x01, 0x00, 0x56, 0, 0, 0}, kDefaultPair},
        {"n beyond the blob", hugeN, kDefaultPair},
        {"odd n", oddN, kDefaultPair},
    };
    for (const Case& c : cases) {
        Status s = 1;
        auto inst = m->Create(bc, &c.blob, 0, &s);
        ASSERT_EQ(s, status::ok) << c.what;
        EXPECT_EQ(FirstPair(*inst), c.pair) << c.what;
    }
}

TEST(Blob, EveryFilterReloadsItsSavedBlobByteIdentically) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    for (size_t i = 0; i < m->FilterCount(); ++i) {
        const std::string name = m->Identity(i).name;
        auto first = m->Create(i);
        std::vector<uint8_t> saved;
        ASSERT_EQ(first->Save(&saved), status::ok) << name;
        ASSERT_GE(saved.size(), 12u) << name;
        auto second = m->Create(i, &saved);
        ASSERT_TRUE(second) << name;
        std::vector<uint8_t> again;
        ASSERT_EQ(second->Save(&again), status::ok) << name;
        EXPECT_EQ(again, saved) << name;
    }
    const size_t bc = *m->Find("Block Color");
    const std::vector<uint8_t> blob = BlockColorBlob(1, 2, 3);
    auto loaded = m->Create(bc, &blob);
    std::vector<uint8_t> again;
    ASSERT_EQ(loaded->Save(&again), status::ok);
    EXPECT_EQ(again, blob);
}

TEST(Blob, AllocationFailureDiffersBetweenTheFamilies) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    // Class-wide string list family: E_FAIL and a null out-pointer.
    auto listed = m->Create(*m->Find("Block Color"));
    m->FailBlobAllocations(1);
    IParameterBlob* blob = reinterpret_cast<IParameterBlob*>(1);
    EXPECT_EQ((*listed)->SaveParameters(&blob), status::fail);
    EXPECT_EQ(blob, nullptr);
    // One-by-one family: the creation status (success) comes back; the host
    // kit knows not to touch the released blob.
    auto lazy = m->Create(*m->Find("Monotone"));
    m->FailBlobAllocations(1);
    std::vector<uint8_t> bytes{1};
    EXPECT_EQ(lazy->Save(&bytes), status::ok);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(m->PendingBlobFailures(), 0);
    // And saving works again afterwards.
    ASSERT_EQ(listed->Save(&bytes), status::ok);
    EXPECT_EQ(bytes.size(), 101u);
    EXPECT_EQ((*listed)->SaveParameters(nullptr), status::pointer);
}

TEST(BlockColorFilter, RendersTheLoadedColourIntoTheSelectedFieldOnly) {
    auto m = LoadModule();
    ASSERT_TRUE(m);
    const std::vector<uint8_t> blob = BlockColorBlob(0x10, 0x20, 0x30);
    auto inst = m->Create(*m->Find("Block Color"), &blob);
    TestFrame src(6, 10, 0x55), dst(6, 10, 0x11);
    ASSERT_EQ(inst->RenderField(dst.frame, src.frame, {0, 0, 6, 10}, 1), status::ok);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 12; ++x)
            ASSERT_EQ(dst.Row(y)[x], (y & 1) ? kLoadedPair[x % 4] : 0x11) << y << "," << x;
    ASSERT_EQ(inst->RenderFrame(dst.frame, src.frame, 0, true), status::ok);
    for (int y = 0; y < 10; ++y) EXPECT_EQ(dst.Row(y)[0], 0x10);
}

}  // namespace
}  // namespace zvf::test
