#include <gtest/gtest.h>

#include <vector>

#include "kit/frame.h"
#include "spatial/block_color/block_color_dialog.h"
#include "spatial/block_color/block_color_kernel.h"

namespace zvf::filters {
namespace {

// Renders the fill on a 10x10 frame of 0x11 bytes and returns the frame.
std::vector<uint8_t> Fill(const Rect& r, int32_t field, uint8_t y = 1, uint8_t u = 2, uint8_t v = 3) {
    host::Frame src(10, 10), dst(10, 10);
    std::fill_n(dst.Pixels(), dst.Bytes(), 0x11);
    FieldView view;
    EXPECT_EQ(OpenField(&dst, &src, &r, field, &view), status::ok);
    FillField(view, y, u, v);
    return {dst.Pixels(), dst.Pixels() + dst.Bytes()};
}

TEST(BlockColorKernel, FillsOnlyTheSelectedFieldsRows) {
    for (int32_t field : {0, 1, 2}) {
        const std::vector<uint8_t> f = Fill({0, 0, 10, 10}, field);
        const int odd = field == 1 ? 1 : 0;
        for (int y = 0; y < 10; ++y) {
            for (int x = 0; x < 20; ++x) {
                const uint8_t want = (y & 1) == odd ? std::array<uint8_t, 4>{1, 2, 1, 3}[x % 4] : 0x11;
                ASSERT_EQ(f[y * 20 + x], want) << "field " << field << " row " << y << " byte " << x;
            }
        }
    }
}

TEST(BlockColorKernel, OddWidthDriftsOneBytePairPerRow) {
    // Rectangle columns 2..7 (width 5): two pairs per row; the advance after
    // each row is measured from where the stores ended, so row k of the field
    // starts 2k bytes before column 2.
    const std::vector<uint8_t> f = Fill({2, 0, 7, 6}, 0, 0xA0, 0xB0, 0xC0);
    for (int k = 0; k < 3; ++k) {
        const int row = 2 * k;
        const int start = row * 20 + 2 * 2 - 2 * k;
        for (int i = 0; i < 20; ++i) {
            const int at = row * 20 + i;
            const bool written = at >= start && at < start + 8;
            const uint8_t want = written ? std::array<uint8_t, 4>{0xA0, 0xB0, 0xA0, 0xC0}[(at - start) % 4] : 0x11;
            EXPECT_EQ(f[at], want) << "row " << row << " byte " << i;
        }
    }
}

// Every width from 2 to 130 pixels (so every length of the row's wide,
// half and single-word stores), odd and even left edges, both fields, a
// frame with guard bytes before and after: exactly the pairs of each field
// row hold the word (row k starting 2k bytes early when the width is odd),
// every other byte keeps its value.
TEST(BlockColorKernel, EveryWidthWritesExactlyItsPairsAndNothingElse) {
    constexpr int32_t kRows = 7;
    constexpr size_t kGuard = 41;
    constexpr uint8_t kWord[4] = {0xE1, 0x07, 0xE1, 0x9C};
    for (int32_t width = 2; width <= 130; ++width)
        for (int32_t left : {0, 1, 3})
            for (int32_t odd : {0, 1}) {
                const int32_t pitch = (left + width + 5) * 2;
                std::vector<uint8_t> buf(2 * kGuard + static_cast<size_t>(pitch) * kRows);
                for (size_t i = 0; i < buf.size(); ++i) buf[i] = static_cast<uint8_t>(i * 37 + 11);
                const std::vector<uint8_t> before = buf;
                FieldView v;
                v.dst = buf.data() + kGuard + ptrdiff_t{odd} * pitch + ptrdiff_t{left} * 2;
                v.step = ptrdiff_t{2} * pitch;
                v.rows = (kRows - odd + 1) / 2;
                v.pairs = width / 2;
                v.width_px = width;
                v.pitch = pitch;
                v.left = left;
                FillField(v, kWord[0], kWord[1], kWord[3]);
                std::vector<uint8_t> want = before;
                for (int32_t k = 0; k < v.rows; ++k) {
                    const size_t start =
                        kGuard + static_cast<size_t>(odd + 2 * k) * pitch + 2 * left - 2 * k * (width & 1);
                    for (int32_t b = 0; b < 4 * v.pairs; ++b) want[start + b] = kWord[b % 4];
                }
                ASSERT_EQ(buf, want) << "width " << width << " left " << left << " odd " << odd;
            }
}

TEST(BlockColorKernel, EvenWidthLeavesTheRestOfTheRowAlone) {
    const std::vector<uint8_t> f = Fill({2, 1, 6, 2}, 1);
    constexpr uint8_t kWord[4] = {1, 2, 1, 3};
    for (int i = 0; i < 20; ++i) EXPECT_EQ(f[20 + i], i >= 4 && i < 12 ? kWord[i % 4] : 0x11) << i;
}

TEST(ColourRamp, BytesClampAtBothEndsAndGreyIsNeutral) {
    struct Case {
        int32_t y, u, v;
        uint32_t bgr0;
    };
    const Case cases[] = {
        {16, 128, 128, 0x000000},    // black
        {235, 128, 128, 0xFEFEFE},   // 19071*219 >> 14 = 254
        {255, 128, 128, 0xFFFFFF},   // clamps at 255
        {0, 128, 128, 0x000000},     // negative sums give 0
        {128, 128, 128, 0x828282},   // 19071*112 >> 14 = 130
        // Red: R = 1239615 + 26149*112 = 4168303 >> 14 = 254; G and B sums negative.
        {81, 90, 240, 0xFE0000},
        // Blue: B = 4176549 + 33047*127 = 8373518, past 0x3FC000: 255; G = 3360955 >> 14 = 205.
        {235, 255, 128, 0xFECDFF},
    };
    for (const Case& c : cases)
        EXPECT_EQ(RampPixel(c.y, c.u, c.v), c.bgr0) << c.y << "," << c.u << "," << c.v;
}

TEST(ColourRamp, ComponentRunsFromZeroAcrossThePattern) {
    const BlockColorRecord working{200, 128, 128};
    const std::vector<uint32_t> ramp = ColourRamp(0, working, 256);
    ASSERT_EQ(ramp.size(), 256u);
    EXPECT_EQ(ramp[0], RampPixel(0, 128, 128));
    EXPECT_EQ(ramp[255], RampPixel(254, 128, 128));  // floor(255 * 255 / 256)
    for (size_t i = 1; i < ramp.size(); ++i) EXPECT_GE(ramp[i] & 0xFF, ramp[i - 1] & 0xFF);
    EXPECT_EQ(ColourRamp(2, working, 3)[1], RampPixel(200, 128, 85));
    EXPECT_TRUE(ColourRamp(1, working, 0).empty());
}

TEST(SolidColorDialog, WorkingColourReachesTheRecordOnlyOnCommit) {
    BlockColorRecord record{};
    SolidColorSetupDialog dialog(&record);
    dialog.SetComponent(0, 16);
    dialog.SetComponent(2, 300);  // clamped to the byte range
    EXPECT_EQ(record.y, 255);
    EXPECT_EQ(dialog.Working().y, 16);
    EXPECT_EQ(dialog.Working().v, 255);
    EXPECT_EQ(dialog.Shown().y, 255);  // the shown copy follows only when shown
    dialog.OnShown();
    EXPECT_EQ(dialog.Shown().y, 16);
    dialog.Commit();
    EXPECT_EQ(record.y, 16);
    EXPECT_EQ(record.u, 128);
    EXPECT_EQ(record.v, 255);
    record.u = 7;
    dialog.Reload();
    EXPECT_EQ(dialog.Working().u, 7);
}

}  // namespace
}  // namespace zvf::filters
