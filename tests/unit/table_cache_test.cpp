#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "colour/table_cache/table_manager.h"
#include "zvf/guids.h"

namespace zvf::filters {
namespace {

// A client's reference, released at scope end as a client would.
struct Held {
    ITableBuffer* p = nullptr;
    ~Held() {
        if (p != nullptr) p->Release();
    }
};

std::vector<int64_t> Keys(const ZelTableManager& m) {
    std::vector<int64_t> keys;
    for (size_t i = 0; i < m.Positions(); ++i) {
        uint32_t k = 0;
        keys.push_back(m.KeyAt(i, &k) ? int64_t{k} : -1);
    }
    return keys;
}

TEST(TableBuffer, CreationResults) {
    const Guid other = iid::IVideoFilter;
    IUnknown* outer = nullptr;
    {
        ZelTableManager m(5);  // any IUnknown serves as an outer object
        Held h;
        ASSERT_EQ(m.Acquire(&h.p, 1, 4), 1);
        outer = h.p;
        struct Case {
            const char* what;
            IUnknown* outer;
            const Guid* iid;
            Status expected;
        };
        const Case cases[] = {
            {"buffer identifier", nullptr, &kTableBufferIid, status::ok},
            {"second identifier", nullptr, &kTableBufferIidAlt, status::ok},
            {"IUnknown without outer", nullptr, &iid::IUnknown, status::no_interface},
            {"foreign identifier", nullptr, &other, status::no_interface},
            {"outer with buffer identifier", outer, &kTableBufferIid, status::invalid_arg},
            {"outer with IUnknown", outer, &iid::IUnknown, status::no_interface},
        };
        for (const Case& c : cases) {
            void* out = reinterpret_cast<void*>(1);
            EXPECT_EQ(CreateTableBuffer(c.outer, c.iid, &out), c.expected) << c.what;
            if (c.expected == status::ok) {
                ASSERT_NE(out, nullptr);
                auto* b = static_cast<ITableBuffer*>(out);
                EXPECT_EQ(b->Size(), 0u);
                EXPECT_EQ(b->Data(), nullptr);
                EXPECT_EQ(b->Release(), 0u);
            } else {
                EXPECT_EQ(out, nullptr) << c.what;
            }
        }
        EXPECT_EQ(CreateTableBuffer(nullptr, &kTableBufferIid, nullptr), status::invalid_arg);
    }
}

TEST(TableBuffer, InterfacesAndInit) {
    void* raw = nullptr;
    ASSERT_EQ(CreateTableBuffer(nullptr, &kTableBufferIid, &raw), status::ok);
    auto* b = static_cast<ITableBuffer*>(raw);
    for (const Guid* g : {&kTableBufferIid, &kTableBufferIidAlt, &iid::IUnknown}) {
        void* q = nullptr;
        ASSERT_EQ(b->QueryInterface(g, &q), status::ok);
        EXPECT_EQ(q, raw);
        static_cast<ITableBuffer*>(q)->Release();
    }
    void* q = reinterpret_cast<void*>(1);
    EXPECT_EQ(b->QueryInterface(&iid::IVideoFrame, &q), status::no_interface);
    EXPECT_EQ(q, nullptr);

    b->Init(16, 7);
    EXPECT_EQ(b->Size(), 16u);
    EXPECT_EQ(b->Key(), 7u);
    ASSERT_NE(b->Data(), nullptr);
    b->Init(0, 9);  // size 0 changes nothing, the key included
    EXPECT_EQ(b->Size(), 16u);
    EXPECT_EQ(b->Key(), 7u);
    b->Init(3, 9);
    EXPECT_EQ(b->Size(), 3u);
    EXPECT_EQ(b->Key(), 9u);
    EXPECT_EQ(b->Release(), 0u);
}

TEST(TableManager, SameOwnerGetsItsBlockBackUntilTheSizeChanges) {
    const int32_t before = LiveTableBuffers();
    {
        ZelTableManager m(5);
        Held h;
        ASSERT_EQ(m.Acquire(&h.p, 42, 64), 1);
        std::memset(h.p->Data(), 0x5A, 64);
        uint8_t* block = h.p->Data();
        ITableBuffer* first = h.p;
        // The reference already in the out-pointer is released by Acquire.
        ASSERT_EQ(m.Acquire(&h.p, 42, 64), 0);
        EXPECT_EQ(h.p, first);
        EXPECT_EQ(h.p->Data(), block);
        EXPECT_EQ(h.p->Data()[63], 0x5A);
        ASSERT_EQ(m.Acquire(&h.p, 42, 128), 1);
        EXPECT_EQ(h.p, first);  // same buffer, rebuilt at the new size
        EXPECT_EQ(h.p->Size(), 128u);
        // Size 0 for a known owner: reported as a rebuild, the block stays.
        ASSERT_EQ(m.Acquire(&h.p, 42, 0), 1);
        EXPECT_EQ(h.p->Size(), 128u);
        EXPECT_EQ(m.Positions(), 1u);
        EXPECT_EQ(m.Acquire(nullptr, 42, 64), status::invalid_arg);
    }
    EXPECT_EQ(LiveTableBuffers(), before);
}

TEST(TableManager, SizeZeroForANewOwnerGivesAnItemWithoutABlock) {
    ZelTableManager m(5);
    Held h;
    ASSERT_EQ(m.Acquire(&h.p, 5, 0), 1);
    EXPECT_EQ(h.p->Data(), nullptr);
    EXPECT_EQ(h.p->Size(), 0u);
    EXPECT_EQ(h.p->Key(), 0u);  // Init never ran, so the owner is not recorded
    EXPECT_EQ(m.Acquire(&h.p, 5, 0), 1);  // and the owner is not found again
    EXPECT_EQ(m.Positions(), 2u);
}

TEST(TableManager, SevenOwnersInTurnLeaveFiveBuffersAndOneEmptyPosition) {
    const int32_t before = LiveTableBuffers();
    {
        ZelTableManager m(5);
        struct Step {
            uint32_t owner;
            int32_t result;
            std::vector<int64_t> keys;  // most recent first, -1 for the empty position
        };
        const Step steps[] = {
            {1, 1, {1}},
            {2, 1, {2, 1}},
            {3, 1, {3, 2, 1}},
            {4, 1, {4, 3, 2, 1}},
            {5, 1, {5, 4, 3, 2, 1}},
            {6, 1, {6, 5, 4, 3, 2, 1}},      // six positions before the first trim
            {7, 1, {7, 6, 5, 4, 3, -1}},     // 2 and 1 evicted, their last position left empty
            {4, 0, {4, 7, 6, 5, 3, -1}},     // a hit moves to the front, no trim
            {8, 1, {8, 4, 7, 6, 5, -1}},     // 3 evicted together with the empty position
            {1, 1, {1, 8, 4, 7, 6, -1}},     // the oldest owner rebuilds
            {3, 1, {3, 1, 8, 4, 7, -1}},
        };
        for (const Step& s : steps) {
            Held h;
            ASSERT_EQ(m.Acquire(&h.p, s.owner, 32), s.result) << "owner " << s.owner;
            EXPECT_EQ(Keys(m), s.keys) << "after owner " << s.owner;
        }
        EXPECT_EQ(m.LiveItems(), 5u);
        EXPECT_EQ(m.Positions(), 6u);
    }
    EXPECT_EQ(LiveTableBuffers(), before);
}

TEST(TableManager, EvictedBufferLivesWhileItsClientHoldsIt) {
    const int32_t before = LiveTableBuffers();
    ZelTableManager m(5);
    Held kept;
    ASSERT_EQ(m.Acquire(&kept.p, 100, 8), 1);
    for (uint32_t owner = 1; owner <= 6; ++owner) {
        Held h;
        m.Acquire(&h.p, owner, 8);
    }
    uint32_t k = 0;
    for (size_t i = 0; i < m.Positions(); ++i) EXPECT_FALSE(m.KeyAt(i, &k) && k == 100);
    EXPECT_EQ(LiveTableBuffers(), before + 6);  // five listed and the evicted one still held
    EXPECT_EQ(kept.p->Key(), 100u);
    EXPECT_EQ(kept.p->Size(), 8u);
    kept.p->Release();
    kept.p = nullptr;
    EXPECT_EQ(LiveTableBuffers(), before + 5);
}

TEST(TableManager, RemoveDropsTheFirstMatchAndSkipsEmptyPositions) {
    ZelTableManager m(5);
    for (uint32_t owner = 1; owner <= 7; ++owner) {
        Held h;
        m.Acquire(&h.p, owner, 4);
    }
    ASSERT_EQ(Keys(m), (std::vector<int64_t>{7, 6, 5, 4, 3, -1}));
    EXPECT_EQ(m.Remove(1), 1);  // evicted already: nothing changes
    EXPECT_EQ(m.Remove(99), 1);
    EXPECT_EQ(Keys(m), (std::vector<int64_t>{7, 6, 5, 4, 3, -1}));
    EXPECT_EQ(m.Remove(5), 0);
    EXPECT_EQ(Keys(m), (std::vector<int64_t>{7, 6, 4, 3, -1}));
    EXPECT_EQ(m.Remove(5), 1);
    EXPECT_EQ(m.Remove(3), 0);
    EXPECT_EQ(Keys(m), (std::vector<int64_t>{7, 6, 4, -1}));
    Held h;
    EXPECT_EQ(m.Acquire(&h.p, 3, 4), 1);
    EXPECT_EQ(Keys(m), (std::vector<int64_t>{3, 7, 6, 4, -1}));
}

TEST(TableManager, ModuleCachesAreTwoIndependentCapacityFiveCaches) {
    ZelTableManager& a = FirstTableCache();
    ZelTableManager& b = SecondTableCache();
    ASSERT_NE(&a, &b);
    const uint32_t base = 0x7E570000;
    for (uint32_t i = 0; i < 7; ++i) {
        Held h;
        ASSERT_EQ(a.Acquire(&h.p, base + i, 16), 1);
    }
    EXPECT_EQ(a.LiveItems(), 5u);
    Held h;
    EXPECT_EQ(b.Acquire(&h.p, base, 16), 1);  // the other cache never saw the owner
    EXPECT_EQ(a.Acquire(&h.p, base + 6, 16), 0);
    for (uint32_t i = 0; i < 8; ++i) {
        a.Remove(base + i);
        b.Remove(base + i);
    }
}

TEST(TableManager, ConcurrentOwnersKeepTheirOwnContents) {
    ZelTableManager m(5);
    constexpr int kThreads = 4;
    constexpr int kRounds = 2000;
    std::atomic<int> damaged{0};
    std::atomic<int> reused{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            Held h;
            for (int r = 0; r < kRounds; ++r) {
                // Two owners per thread, sizes that change now and then, and
                // sometimes a Remove, so hits, rebuilds and evictions mix.
                const uint32_t owner = static_cast<uint32_t>(t * 2 + (r & 1)) + 1;
                const uint32_t size = 256 + 64 * static_cast<uint32_t>((r / 97) % 3);
                const int32_t res = m.Acquire(&h.p, owner, size);
                if (res < 0 || h.p == nullptr || h.p->Size() != size || h.p->Key() != owner) {
                    damaged.fetch_add(1);
                    continue;
                }
                uint8_t* d = h.p->Data();
                if (res == 0) {
                    reused.fetch_add(1);
                    for (uint32_t i = 0; i < size; ++i)
                        if (d[i] != static_cast<uint8_t>(owner)) {
                            damaged.fetch_add(1);
                            break;
                        }
                } else {
                    std::memset(d, static_cast<int>(owner), size);
                }
                if (r % 251 == 0) m.Remove(owner);
            }
        });
    }
    for (std::thread& th : threads) th.join();
    EXPECT_EQ(damaged.load(), 0);
    EXPECT_GT(reused.load(), 0);
    EXPECT_LE(m.LiveItems(), 5u);
}

}  // namespace
}  // namespace zvf::filters
