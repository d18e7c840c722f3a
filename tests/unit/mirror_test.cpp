#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "kit/frame.h"
#include "notify_counter.h"
#include "spatial/mirror/mirror_dialog.h"
#include "spatial/mirror/mirror_kernel.h"

namespace zvf::filters {
namespace {

using Bytes = std::vector<uint8_t>;

// A frame whose bytes differ between neighbouring rows and along each row
// (y * 37 + byte index, modulo 256), so a misplaced row or byte shows.
Bytes Numbered(int32_t w, int32_t h) {
    Bytes b(static_cast<size_t>(w) * h * 2);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t i = 0; i < 2 * w; ++i) b[static_cast<size_t>(y * 2 * w + i)] = static_cast<uint8_t>(y * 37 + i);
    return b;
}

// Runs the kernel on one field of `dstBytes` from `srcBytes`.
void Mirror(Bytes& dstBytes, Bytes srcBytes, int32_t w, int32_t h, const Rect& r, int32_t field, bool hor,
            bool ver) {
    host::Frame src(srcBytes.data(), w, h), dst(dstBytes.data(), w, h);
    FieldView v;
    ASSERT_EQ(OpenField(&dst, &src, &r, field, &v), status::ok);
    MirrorField(v, hor, ver);
}

Bytes Row(const Bytes& f, int32_t w, int32_t y) {
    return {f.begin() + y * 2 * w, f.begin() + (y + 1) * 2 * w};
}

TEST(MirrorKernel, RowMappingKeepsEachFieldInItsOwnRows) {
    struct Case {
        int32_t rows;
        bool odd, vertical;
        std::vector<int32_t> from;  // source field row of each destination field row
    };
    const Case cases[] = {
        {3, false, false, {0, 1, 2}}, {3, true, false, {0, 1, 2}}, {3, false, true, {0, 2, 1}},
        {3, true, true, {2, 1, 0}},   {1, false, true, {0}},       {1, true, true, {0}},
        {2, false, true, {0, 1}},     {4, false, true, {0, 3, 2, 1}}, {4, true, true, {3, 2, 1, 0}},
    };
    for (const Case& c : cases)
        for (int32_t k = 0; k < c.rows; ++k)
            EXPECT_EQ(MirrorSourceRow(k, c.rows, c.odd, c.vertical), c.from[static_cast<size_t>(k)])
                << c.rows << " rows, odd " << c.odd << ", vertical " << c.vertical << ", k " << k;
}

TEST(MirrorKernel, VerticalFlipOfASixRowFrameTakesRows0_5_4_3_2_1) {
    const Bytes src = Numbered(4, 6);
    Bytes dst(src.size(), 0);
    for (int32_t field : {0, 1}) Mirror(dst, src, 4, 6, {0, 0, 4, 6}, field, false, true);
    const int32_t from[6] = {0, 5, 4, 3, 2, 1};
    for (int32_t y = 0; y < 6; ++y) EXPECT_EQ(Row(dst, 4, y), Row(src, 4, from[y])) << "row " << y;
}

TEST(MirrorKernel, HorizontalFlipOfOnePairSwapsTheLumasOnly) {
    Bytes src{0x11, 0x22, 0x33, 0x44}, dst(4, 0);
    Mirror(dst, src, 2, 1, {0, 0, 2, 1}, 0, true, false);
    EXPECT_EQ(dst, (Bytes{0x33, 0x22, 0x11, 0x44}));
}

TEST(MirrorKernel, KnownRowsForEveryFlagCombination) {
    // 4x4 frame (two pairs a row), even field: rows 0 and 2.
    const Bytes src = Numbered(4, 4);
    auto reversed = [&](int32_t y) {
        const Bytes r = Row(src, 4, y);
        return Bytes{r[6], r[5], r[4], r[7], r[2], r[1], r[0], r[3]};
    };
    struct Case {
        bool hor, ver;
        Bytes row0, row2;
    };
    const Case cases[] = {
        {false, false, Row(src, 4, 0), Row(src, 4, 2)},
        {true, false, reversed(0), reversed(2)},
        {false, true, Row(src, 4, 0), Row(src, 4, 2)},  // two rows: y -> 4 - y keeps row 2
        {true, true, Row(src, 4, 0), reversed(2)},      // the kept top row is not reversed
    };
    for (const Case& c : cases) {
        Bytes dst(src.size(), 0xEE);
        Mirror(dst, src, 4, 4, {0, 0, 4, 4}, 0, c.hor, c.ver);
        EXPECT_EQ(Row(dst, 4, 0), c.row0) << c.hor << c.ver;
        EXPECT_EQ(Row(dst, 4, 2), c.row2) << c.hor << c.ver;
        EXPECT_EQ(Row(dst, 4, 1), Bytes(8, 0xEE));
        EXPECT_EQ(Row(dst, 4, 3), Bytes(8, 0xEE));
    }
}

TEST(MirrorKernel, BothFlipsMirrorEveryRowButTheEvenFieldsTop) {
    const Bytes src = Numbered(2, 6);  // one pair a row
    Bytes dst(src.size(), 0);
    for (int32_t field : {0, 1}) Mirror(dst, src, 2, 6, {0, 0, 2, 6}, field, true, true);
    const int32_t from[6] = {0, 5, 4, 3, 2, 1};
    for (int32_t y = 0; y < 6; ++y) {
        const Bytes s = Row(src, 2, from[y]);
        const Bytes want = y == 0 ? s : Bytes{s[2], s[1], s[0], s[3]};
        EXPECT_EQ(Row(dst, 2, y), want) << "row " << y;
    }
}

TEST(MirrorKernel, HorizontalFlipIsThePixelMirrorOfAnEvenRectangle) {
    const int32_t w = 12, h = 3;
    const Bytes src = Numbered(w, h);
    Bytes dst(src.size(), 0);
    const Rect r{2, 0, 10, 3};  // 8 pixels
    Mirror(dst, src, w, h, r, 0, true, false);
    for (int32_t y : {0, 2}) {
        for (int32_t x = r.left; x < r.right; ++x) {
            const int32_t m = r.left + r.right - 1 - x;
            EXPECT_EQ(dst[static_cast<size_t>(y * 2 * w + 2 * x)], src[static_cast<size_t>(y * 2 * w + 2 * m)])
                << "luma at " << x << "," << y;
            // Chroma follows its pair: pair of x takes the chroma of the pair of m.
            const int32_t pairX = 2 * (x & ~1), pairM = 2 * (m & ~1);
            EXPECT_EQ(dst[static_cast<size_t>(y * 2 * w + pairX + 1)], src[static_cast<size_t>(y * 2 * w + pairM + 1)]);
            EXPECT_EQ(dst[static_cast<size_t>(y * 2 * w + pairX + 3)], src[static_cast<size_t>(y * 2 * w + pairM + 3)]);
        }
    }
}

TEST(MirrorKernel, WritesOnlyTheFieldsRowsAndNeverTheTrailingOddPixel) {
    std::mt19937 rng(7);
    for (int32_t field : {0, 1, 2}) {
        for (int flags = 0; flags < 4; ++flags) {
            const int32_t w = 11, h = 9;
            Bytes src(static_cast<size_t>(w) * h * 2);
            for (uint8_t& b : src) b = static_cast<uint8_t>(rng());
            Bytes dst(src.size(), 0xA5);
            const Rect r{1, 2, 8, 9};  // 7 pixels: 3 pairs and a trailing pixel
            Mirror(dst, src, w, h, r, field, flags & 1, flags & 2);
            const int32_t odd = field == 1 ? 1 : 0;
            for (int32_t y = 0; y < h; ++y) {
                for (int32_t i = 0; i < 2 * w; ++i) {
                    const bool inside = y >= r.top && y < r.bottom && (y & 1) == odd && i >= 2 * r.left &&
                                        i < 2 * r.left + 12;
                    if (inside) continue;
                    ASSERT_EQ(dst[static_cast<size_t>(y * 2 * w + i)], 0xA5)
                        << "field " << field << " flags " << flags << " at " << i << "," << y;
                }
            }
        }
    }
}

TEST(MirrorKernel, MirroringTwiceRestoresTheField) {
    std::mt19937 rng(11);
    const Rect rects[] = {{0, 0, 10, 7}, {2, 1, 9, 6}, {4, 3, 6, 4}, {0, 0, 2, 2}};
    for (const Rect& r : rects)
        for (int32_t field : {0, 1})
            for (int flags = 1; flags < 4; ++flags) {
                Bytes src(10 * 7 * 2);
                for (uint8_t& b : src) b = static_cast<uint8_t>(rng());
                Bytes once = src, twice = src;
                host::Frame probe(src.data(), 10, 7);
                FieldView v;
                if (OpenField(&probe, &probe, &r, field, &v) != status::ok) continue;
                Mirror(once, src, 10, 7, r, field, flags & 1, flags & 2);
                Mirror(twice, once, 10, 7, r, field, flags & 1, flags & 2);
                EXPECT_EQ(twice, src) << r.left << "," << r.top << " field " << field << " flags " << flags;
            }
}

TEST(MirrorDialog, ClicksReachTheRecordAtOnceAndCancelRestoresTheShownCopy) {
    test::NotifyCounter notes;
    MirrorRecord record{};
    MirrorSetupDialog dialog(&record);
    ASSERT_TRUE(dialog.Initialize(nullptr, 42));
    dialog.OnShown();
    EXPECT_TRUE(dialog.Checked(MirrorSetupDialog::kHorizontalBox));
    EXPECT_FALSE(dialog.Checked(MirrorSetupDialog::kVerticalBox));

    EXPECT_TRUE(dialog.Click(MirrorSetupDialog::kVerticalBox, true));
    EXPECT_TRUE(dialog.Click(MirrorSetupDialog::kHorizontalBox, false));
    EXPECT_FALSE(dialog.Click(1, true));  // OK is not a check box
    EXPECT_EQ(notes.calls, 2);
    EXPECT_EQ(notes.lastContext, 42u);
    EXPECT_EQ(record.horizontalFlip, 0u);
    EXPECT_EQ(record.verticalFlip, 1u);
    EXPECT_EQ(dialog.Shown().horizontalFlip, 1u);  // the shown copy waits for the next show

    dialog.Cancel();
    EXPECT_EQ(notes.calls, 3);
    EXPECT_EQ(record.horizontalFlip, 1u);
    EXPECT_EQ(record.verticalFlip, 0u);
    EXPECT_FALSE(dialog.Checked(MirrorSetupDialog::kVerticalBox));

    dialog.Click(MirrorSetupDialog::kVerticalBox, true);
    dialog.Ok();
    dialog.OnShown();
    dialog.Cancel();  // nothing changed since it was shown
    EXPECT_EQ(record.verticalFlip, 1u);

    record.horizontalFlip = 5;  // any non-zero value is set
    dialog.Reload();
    EXPECT_TRUE(dialog.Checked(MirrorSetupDialog::kHorizontalBox));
    EXPECT_EQ(dialog.Shown().horizontalFlip, 5u);
}

}  // namespace
}  // namespace zvf::filters
