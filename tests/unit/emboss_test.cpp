#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kit/frame.h"
#include "notify_counter.h"
#include "spatial/emboss/emboss_dialog.h"
#include "spatial/emboss/emboss_kernel.h"

namespace zvf::filters {
namespace {

using Bytes = std::vector<uint8_t>;

// The ring of directions as the dialog shows it: reference offset per unit
// of depth in field rows and pairs.
constexpr int32_t kRing[8][2] = {{+1, 0}, {+1, -1}, {0, -1}, {-1, -1}, {-1, 0}, {-1, +1}, {0, +1}, {+1, +1}};

// The relief pair by pair, straight from its definition: clamp the
// reference coordinates, subtract byte from byte, lift and clamp.
Bytes Reference(const Bytes& src, Bytes dst, int32_t w, const Rect& r, int32_t field, uint32_t dir, uint32_t depth) {
    const int32_t odd = field == 1 ? 1 : 0;
    std::vector<int32_t> rows;
    for (int32_t y = r.top; y < r.bottom; ++y)
        if ((y & 1) == odd) rows.push_back(y);
    const int32_t R = static_cast<int32_t>(rows.size()), Q = (r.right - r.left) / 2;
    auto at = [&](int32_t ri, int32_t c) { return static_cast<size_t>(rows[static_cast<size_t>(ri)] * 2 * w + 2 * r.left + 4 * c); };
    for (int32_t ri = 0; ri < R; ++ri)
        for (int32_t c = 0; c < Q; ++c) {
            const int64_t rr = std::clamp<int64_t>(ri + int64_t{kRing[dir][0]} * depth, 0, R - 1);
            const int64_t cc = std::clamp<int64_t>(c + int64_t{kRing[dir][1]} * depth, 0, Q - 1);
            for (int k = 0; k < 4; ++k) {
                const int32_t s = src[at(ri, c) + k], t = src[at(static_cast<int32_t>(rr), static_cast<int32_t>(cc)) + k];
                dst[at(ri, c) + k] = depth == 0 ? 0x80 : static_cast<uint8_t>(std::clamp(s - t + 128, 0, 255));
            }
        }
    return dst;
}

// Runs the kernel (depth 0: the grey fill) on one field of `dst`.
void Emboss(Bytes& dst, Bytes src, int32_t w, int32_t h, const Rect& r, int32_t field, uint32_t dir, uint32_t depth) {
    host::Frame s(src.data(), w, h), d(dst.data(), w, h);
    FieldView v;
    ASSERT_EQ(OpenField(&d, &s, &r, field, &v), status::ok);
    if (depth == 0)
        GreyField(v);
    else
        EmbossField(v, dir, depth);
}

Bytes Random(size_t n, std::mt19937& rng) {
    Bytes b(n);
    for (uint8_t& x : b) x = static_cast<uint8_t>(rng());
    return b;
}

TEST(EmbossKernel, DirectionsFollowTheRingAndClampPastTheLast) {
    for (uint32_t d = 0; d < 8; ++d) {
        EXPECT_EQ(EmbossDirection(d).dr, kRing[d][0]) << d;
        EXPECT_EQ(EmbossDirection(d).dc, kRing[d][1]) << d;
    }
    EXPECT_EQ(EmbossDirection(8).dc, +1);
    EXPECT_EQ(EmbossDirection(0xFFFFFFFF).dr, +1);
}

TEST(EmbossKernel, KnownPairsWithinOneRow) {
    // One row of two pairs: P0 = 100 50 200 30, P1 = 10 60 250 20; and a
    // row that drives the sum past both ends.
    const Bytes row{100, 50, 200, 30, 10, 60, 250, 20};
    const Bytes extreme{255, 0, 255, 0, 0, 255, 0, 255};
    struct Case {
        Bytes src;
        uint32_t dir;
        Bytes want;
    };
    const Case cases[] = {
        // Right (reference one pair left): P0 against itself, P1 - P0 + 128.
        {row, 2, {0x80, 0x80, 0x80, 0x80, 38, 138, 178, 118}},
        // Left (reference one pair right): P0 - P1 + 128, P1 against itself.
        {row, 6, {218, 118, 78, 138, 0x80, 0x80, 0x80, 0x80}},
        // Top and bottom: one row, so every reference is the pair itself.
        {row, 0, Bytes(8, 0x80)},
        {row, 4, Bytes(8, 0x80)},
        // 255 - 0 + 128 clamps to 255, 0 - 255 + 128 to 0.
        {extreme, 6, {255, 0, 255, 0, 0x80, 0x80, 0x80, 0x80}},
        {extreme, 2, {0x80, 0x80, 0x80, 0x80, 0, 255, 0, 255}},
    };
    for (const Case& c : cases) {
        Bytes dst(8, 0x11);
        Emboss(dst, c.src, 4, 1, {0, 0, 4, 1}, 0, c.dir, 1);
        EXPECT_EQ(dst, c.want) << "direction " << c.dir;
    }
}

TEST(EmbossKernel, BottomRightDepthOneComparesTheFieldsTopLeftWithItself) {
    // Odd field of a 4x6 frame, rectangle from column 2: field rows 1, 3, 5.
    std::mt19937 rng(5);
    const Bytes src = Random(8 * 6 * 2, rng);
    Bytes dst(src.size(), 0x11);
    Emboss(dst, src, 8, 6, {2, 1, 8, 6}, 1, 3, 1);
    const size_t topLeft = 1 * 16 + 4, second = 3 * 16 + 8;  // (row 1, pair 0) and (row 3, pair 1)
    EXPECT_EQ(Bytes(dst.begin() + topLeft, dst.begin() + topLeft + 4), Bytes(4, 0x80));
    for (int k = 0; k < 4; ++k)
        EXPECT_EQ(dst[second + k], std::clamp(src[second + k] - src[topLeft + k] + 128, 0, 255)) << k;
}

TEST(EmbossKernel, MatchesThePairByPairDefinition) {
    std::mt19937 rng(99);
    const int32_t w = 17, h = 12;
    const Rect rects[] = {{0, 0, 17, 12}, {1, 1, 16, 11}, {3, 2, 14, 9}, {4, 5, 6, 6}, {0, 0, 2, 12}, {0, 3, 17, 4}};
    const uint32_t depths[] = {1, 2, 3, 5, 7, 40, 0xFFFFFFFF};
    for (const Rect& r : rects)
        for (int32_t field : {0, 1})
            for (uint32_t dir = 0; dir < 8; ++dir)
                for (uint32_t depth : depths) {
                    host::Frame probe(w, h);
                    FieldView v;
                    if (OpenField(&probe, &probe, &r, field, &v) != status::ok) continue;
                    const Bytes src = Random(static_cast<size_t>(w) * h * 2, rng);
                    const Bytes before = Random(src.size(), rng);
                    Bytes dst = before;
                    Emboss(dst, src, w, h, r, field, dir, depth);
                    ASSERT_EQ(dst, Reference(src, before, w, r, field, dir, depth))
                        << "rect " << r.left << "," << r.top << "," << r.right << "," << r.bottom << " field " << field
                        << " direction " << dir << " depth " << depth;
                }
}

TEST(EmbossKernel, FlatStaysFlatAlongTheDirectionOfTheReference) {
    // Uniform: grey for every direction. Rows constant along the row: grey for
    // left and right. Columns constant down the field: grey for top and
    // bottom. Other directions see the edges and must not be grey.
    const int32_t w = 8, h = 8;
    Bytes uniform(w * h * 2), rowsFlat(w * h * 2), columnsFlat(w * h * 2);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t i = 0; i < 2 * w; ++i) {
            const size_t at = static_cast<size_t>(y * 2 * w + i);
            uniform[at] = static_cast<uint8_t>(i % 4 == 0 ? 200 : 17 + i % 4);
            rowsFlat[at] = static_cast<uint8_t>(20 * y + i % 4);
            columnsFlat[at] = static_cast<uint8_t>(10 * (i / 4) + i % 4);
        }
    struct Case {
        const char* what;
        const Bytes& src;
        std::vector<uint32_t> flatDirections;
    };
    const Case cases[] = {
        {"uniform", uniform, {0, 1, 2, 3, 4, 5, 6, 7}},
        {"rows flat", rowsFlat, {2, 6}},
        {"columns flat", columnsFlat, {0, 4}},
    };
    for (const Case& c : cases)
        for (uint32_t dir = 0; dir < 8; ++dir)
            for (uint32_t depth : {1u, 2u, 9u}) {
                Bytes dst(c.src.size(), 0x11);
                for (int32_t field : {0, 1}) Emboss(dst, c.src, w, h, {0, 0, w, h}, field, dir, depth);
                const bool flat = std::find(c.flatDirections.begin(), c.flatDirections.end(), dir) !=
                                  c.flatDirections.end();
                EXPECT_EQ(dst == Bytes(dst.size(), 0x80), flat) << c.what << " direction " << dir << " depth " << depth;
            }
}

TEST(EmbossKernel, DepthBeyondTheFieldEqualsTheLargestThatFits) {
    std::mt19937 rng(3);
    const Bytes src = Random(12 * 10 * 2, rng);  // field: 5 rows of 6 pairs
    for (uint32_t dir = 0; dir < 8; ++dir) {
        Bytes fits(src.size(), 0), beyond(src.size(), 0), huge(src.size(), 0);
        Emboss(fits, src, 12, 10, {0, 0, 12, 10}, 0, dir, 5);
        Emboss(beyond, src, 12, 10, {0, 0, 12, 10}, 0, dir, 6);
        Emboss(huge, src, 12, 10, {0, 0, 12, 10}, 0, dir, 0xFFFFFFFF);
        EXPECT_EQ(beyond, fits) << dir;
        EXPECT_EQ(huge, fits) << dir;
    }
}

TEST(EmbossKernel, DepthZeroIsGreyInTheFieldsPairsOnly) {
    std::mt19937 rng(8);
    const Bytes src = Random(9 * 6 * 2, rng);
    for (int32_t field : {0, 1, 2}) {
        Bytes dst(src.size(), 0x11);
        const Rect r{1, 1, 8, 6};  // three pairs and a trailing pixel per row
        Emboss(dst, src, 9, 6, r, field, 3, 0);
        const int32_t odd = field == 1 ? 1 : 0;
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t i = 0; i < 18; ++i) {
                const bool inside = y >= 1 && (y & 1) == odd && i >= 2 && i < 14;
                EXPECT_EQ(dst[static_cast<size_t>(y * 18 + i)], inside ? 0x80 : 0x11)
                    << "field " << field << " at " << i << "," << y;
            }
    }
}

TEST(EmbossDialog, ChangesReachTheRecordAtOnceAndCancelRestoresTheShownCopy) {
    test::NotifyCounter notes;
    EmbossRecord record{};
    EmbossSetupDialog dialog(&record);
    ASSERT_TRUE(dialog.Initialize(nullptr, 9));
    dialog.OnShown();
    EXPECT_EQ(dialog.CheckedRadio(), 12016u);  // "&4", bottom right
    EXPECT_EQ(dialog.DepthControl(), 1u);

    EXPECT_TRUE(dialog.SelectRadio(12020));
    EXPECT_FALSE(dialog.SelectRadio(12021));  // the depth edit box, not a radio button
    EXPECT_FALSE(dialog.SelectRadio(12012));
    dialog.SetDepth(800);
    EXPECT_EQ(notes.calls, 2);
    EXPECT_EQ(notes.lastContext, 9u);
    EXPECT_EQ(record.direction, 7u);
    EXPECT_EQ(record.depth, 500u);  // clamped to the slider's range
    dialog.SetDepth(-4);
    EXPECT_EQ(record.depth, 0u);
    EXPECT_EQ(dialog.Shown().direction, 3u);

    dialog.Cancel();
    EXPECT_EQ(notes.calls, 4);
    EXPECT_EQ(record.direction, 3u);
    EXPECT_EQ(record.depth, 1u);

    dialog.SelectRadio(12013);
    dialog.Ok();
    dialog.OnShown();
    dialog.Cancel();
    EXPECT_EQ(record.direction, 0u);

    // A record loaded with values the controls cannot show: the nearest.
    record = {12, 4000};
    dialog.Reload();
    EXPECT_EQ(dialog.CheckedRadio(), 12020u);
    EXPECT_EQ(dialog.DepthControl(), 500u);
    EXPECT_EQ(dialog.Working().depth, 4000u);
}

}  // namespace
}  // namespace zvf::filters
