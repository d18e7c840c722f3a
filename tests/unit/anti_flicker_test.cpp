#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "kit/frame.h"
#include "temporal/anti_flicker/anti_flicker_dialog.h"
#include "temporal/anti_flicker/anti_flicker_engine.h"
#include "temporal/anti_flicker/anti_flicker_kernel.h"
#include "zvf/guids.h"

namespace zvf::filters {
namespace {

TEST(AntiFlickerWeight, PercentToTwelveBitWeight) {
    const std::pair<uint32_t, int32_t> cases[] = {
        {0, 0}, {1, 40}, {50, 2048}, {99, 4055}, {100, 4096}, {150, 6144}, {200, 8192}, {201, 8192}, {0xFFFFFFFF, 8192},
    };
    for (const auto& [power, w] : cases) EXPECT_EQ(AntiFlickerWeight(power), w) << power;
}

// A frame of single-pair rows (pitch 4) with the given row values; the field
// rows of `first` and every second row after it are blended in place of a
// copy filled with 0xEE.
std::vector<uint8_t> Blend(const std::vector<uint8_t>& rowValue, int32_t first, int32_t rows, uint32_t power,
                           const std::vector<uint8_t>* neighbourRows = nullptr) {
    std::vector<uint8_t> src, nb, dst(rowValue.size() * 4, 0xEE);
    for (uint8_t v : rowValue) src.insert(src.end(), 4, v);
    if (neighbourRows != nullptr)
        for (uint8_t v : *neighbourRows) nb.insert(nb.end(), 4, v);
    const uint8_t* n = neighbourRows != nullptr ? nb.data() : src.data();
    BlendField(src.data() + first * 4, n + first * 4, dst.data() + first * 4, 4, rows, 1,
               AntiFlickerWeight(power));
    std::vector<uint8_t> out;
    for (size_t i = 0; i < dst.size(); i += 4) {
        for (int b = 1; b < 4; ++b) EXPECT_EQ(dst[i + b], dst[i]) << "all four bytes alike, row " << i / 4;
        out.push_back(dst[i]);
    }
    return out;
}

TEST(AntiFlickerBlend, KnownAnswers) {
    constexpr uint8_t E = 0xEE;  // not written
    struct Case {
        const char* what;
        std::vector<uint8_t> rows;
        int32_t first, count;
        uint32_t power;
        std::vector<uint8_t> want;
    };
    const Case cases[] = {
        // ((255+255)*4096)>>14 = 127 between white lines; (255*8192)>>14 = 127
        // for white between black; the edges (255*4096)>>13 = 127.
        {"alternating, even field", {0, 255, 0, 255, 0, 255, 0, 255}, 0, 4, 100, {127, E, 127, E, 127, E, 127, E}},
        {"alternating, odd field", {0, 255, 0, 255, 0, 255, 0, 255}, 1, 4, 100, {E, 127, E, 127, E, 127, E, 127}},
        {"power 0 copies", {0, 255, 0, 255, 9, 255}, 0, 3, 0, {0, E, 0, E, 9, E}},
        // w 2048: (255*2048)>>13 = 63; (510*2048)>>14 = 63; (0*6144+255*2048)>>13 = 63
        {"power 50", {0, 255, 0, 255, 0, 255}, 0, 3, 50, {63, E, 63, E, 63, E}},
        // w 40: (200*8152 + 10*40)>>13 = 199; ((10+30)*40 + 100*16304)>>14 = 99
        {"power 1 truncates", {200, 10, 100, 30, 50}, 0, 3, 1, {199, E, 99, E, 49}},
        {"one row is copied", {7, 200, 9}, 1, 1, 100, {E, 200, E}},
        {"two rows: only the first is written", {10, 50, 90, 130}, 0, 2, 100, {30, E, E, E}},
        // w 8192: the row becomes the mean of its neighbours
        {"power 200", {0, 100, 40, 200, 80}, 0, 3, 200, {100, E, 150, E, 200}},
    };
    for (const Case& c : cases) EXPECT_EQ(Blend(c.rows, c.first, c.count, c.power), c.want) << c.what;
}

TEST(AntiFlickerBlend, FlatStaysFlatAtEveryPower) {
    for (uint32_t power = 0; power <= 200; power += 7) {
        for (uint8_t v : {0, 1, 128, 254, 255}) {
            const std::vector<uint8_t> want = {v, 0xEE, v, 0xEE, v, 0xEE, v};
            EXPECT_EQ(Blend(std::vector<uint8_t>(7, v), 0, 4, power), want) << "power " << power << " value " << int{v};
        }
    }
}

TEST(AntiFlickerBlend, NeighboursComeFromTheOtherSource) {
    // Current rows 100 at even rows; the other source's odd rows 0 and 200.
    const std::vector<uint8_t> cur = {100, 1, 100, 1, 100};
    const std::vector<uint8_t> other = {9, 0, 9, 200, 9};
    // (100*4096 + 0*4096)>>13 = 50; ((0+200)*4096 + 100*8192)>>14 = 100; (100*4096+200*4096)>>13 = 150
    EXPECT_EQ(Blend(cur, 0, 3, 100, &other), (std::vector<uint8_t>{50, 0xEE, 100, 0xEE, 150}));
}

// A host whose synchronisation service records its calls.
struct RecordingHost final : IHost, IFieldSync {
    std::vector<int32_t> calls;
    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override {
        *out = *iid == iid::IFieldSync ? static_cast<IFieldSync*>(this) : nullptr;
        return *out != nullptr ? status::ok : status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return 2; }
    uint32_t ZVF_CALL Release() override { return 1; }
    Status ZVF_CALL CreateObject(uint32_t, uint32_t, const Guid*, void**) override { return status::not_implemented; }
    Status ZVF_CALL Synchronize(int32_t field) override {
        calls.push_back(field);
        return status::ok;
    }
};

// A 2x6 frame whose rows hold the given values.
struct RowFrame {
    explicit RowFrame(const std::vector<uint8_t>& rows, int32_t width = 2) : frame(width, static_cast<int32_t>(rows.size())) {
        for (size_t y = 0; y < rows.size(); ++y) std::fill_n(frame.Pixels() + y * width * 2, width * 2, rows[y]);
    }
    std::vector<uint8_t> RowValues() const {
        std::vector<uint8_t> out;
        for (int32_t y = 0; y < frame.Height(); ++y) out.push_back(frame.Pixels()[static_cast<size_t>(y) * frame.Width() * 2]);
        return out;
    }
    host::Frame frame;
};

TEST(AntiFlickerEngine, RemembersTheSourceOfEachParity) {
    RecordingHost host;
    AntiFlickerEngine engine;
    const Rect all{0, 0, 2, 6};
    RowFrame a({0, 200, 0, 200, 0, 200});
    RowFrame b({100, 40, 100, 40, 100, 40});
    RowFrame dst({1, 1, 1, 1, 1, 1});
    // First even field: no odd source seen yet, its own odd rows are used.
    ASSERT_EQ(engine.Render(&host, &dst.frame, &a.frame, &all, 0, 100), status::ok);
    EXPECT_EQ(dst.RowValues(), (std::vector<uint8_t>{100, 1, 100, 1, 100, 1}));
    EXPECT_EQ(host.calls, (std::vector<int32_t>{0, 0}));
    // Odd field from another source: its neighbours are a's even rows.
    // (40*4096 + 0*4096)>>13 = 20; ((0+0)*4096 + 40*8192)>>14 = 20
    ASSERT_EQ(engine.Render(&host, &dst.frame, &b.frame, &all, 1, 100), status::ok);
    EXPECT_EQ(dst.RowValues(), (std::vector<uint8_t>{100, 20, 100, 20, 100, 20}));
    // Even field again, from b: the odd parity was last seen in b.
    ASSERT_EQ(engine.Render(&host, &dst.frame, &b.frame, &all, 2, 100), status::ok);
    EXPECT_EQ(dst.RowValues(), (std::vector<uint8_t>{70, 20, 70, 20, 70, 20}));
    EXPECT_EQ(host.calls, (std::vector<int32_t>{0, 0, 1, 1, 0, 0}));

    // After a new sequence begins nothing is remembered: a's own rows again.
    engine.Prepare(&host);
    ASSERT_EQ(engine.Render(&host, &dst.frame, &a.frame, &all, 1, 100), status::ok);
    EXPECT_EQ(dst.RowValues(), (std::vector<uint8_t>{70, 100, 70, 100, 70, 100}));
    engine.Forget();
    ASSERT_EQ(engine.Render(nullptr, &dst.frame, &b.frame, &all, 0, 100), status::ok);
    EXPECT_EQ(dst.RowValues(), (std::vector<uint8_t>{70, 100, 70, 100, 70, 100}));
}

TEST(AntiFlickerEngine, AnotherFrameSizeIsNeverReadAsNeighbours) {
    AntiFlickerEngine engine;
    RowFrame small({0, 255});
    RowFrame smallDst({1, 1});
    const Rect smallAll{0, 0, 2, 2};
    ASSERT_EQ(engine.Render(nullptr, &smallDst.frame, &small.frame, &smallAll, 1, 100), status::ok);
    RowFrame big({10, 30, 10, 30, 10, 30}, 4);
    RowFrame bigDst({1, 1, 1, 1, 1, 1}, 4);
    const Rect bigAll{0, 0, 4, 6};
    ASSERT_EQ(engine.Render(nullptr, &bigDst.frame, &big.frame, &bigAll, 0, 100), status::ok);
    EXPECT_EQ(bigDst.RowValues(), (std::vector<uint8_t>{20, 1, 20, 1, 20, 1}));
}

TEST(AntiFlickerEngine, RejectsBadRectanglesBeforeAnything) {
    RecordingHost host;
    AntiFlickerEngine engine;
    const Rect cases[] = {{0, 0, 3, 6}, {0, 0, 2, 7}, {-2, 0, 2, 6}, {0, 4, 2, 2}};
    for (const Rect& r : cases) {
        RowFrame src({5, 6, 7, 8, 9, 10}), dst({1, 1, 1, 1, 1, 1});
        EXPECT_EQ(engine.Render(&host, &dst.frame, &src.frame, &r, 0, 100), status::invalid_arg);
        EXPECT_EQ(dst.RowValues(), std::vector<uint8_t>(6, 1));
    }
    RowFrame src({5, 6}), dst({1, 1});
    const Rect oneRow{0, 0, 2, 1};
    EXPECT_EQ(engine.Render(&host, &dst.frame, &src.frame, &oneRow, 1, 100), status::fail);
    EXPECT_TRUE(host.calls.empty());
}

TEST(AntiFlickerDialog, PowerReachesTheRecordAtOnceAndCancelRestoresIt) {
    AntiFlickerRecord record;
    AntiFlickerSetupDialog dialog(&record);
    dialog.OnShown();
    dialog.SetPower(40);
    EXPECT_EQ(record.power, 40u);
    dialog.SetPower(-5);
    EXPECT_EQ(record.power, 0u);
    dialog.SetPower(101);
    EXPECT_EQ(record.power, 100u);
    dialog.SetPower(30);
    EXPECT_EQ(dialog.Shown().power, 100u);
    dialog.Cancel();
    EXPECT_EQ(record.power, 100u);
    EXPECT_EQ(dialog.Working().power, 100u);
    record.power = 55;
    dialog.Reload();
    EXPECT_EQ(dialog.Working().power, 55u);
    std::array<uint8_t, 4> bytes{};
    WriteDefaults(kAntiFlickerRecord, bytes.data());
    const AntiFlickerRecord defaults;
    EXPECT_EQ(std::memcmp(bytes.data(), &defaults, 4), 0);
}

}  // namespace
}  // namespace zvf::filters
