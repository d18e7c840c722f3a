// Mirror's SSE2 and AVX2 row reversal against the scalar one, through the
// whole field walk: every width 2..130 pixels, odd and even left edges, both
// fields, every flag combination, random and extreme bytes, guard bytes
// around the destination. Each level this processor has must give the
// scalar bytes exactly, and so must the in-place walk.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "spatial/mirror/mirror_kernel.h"
#include "simd_levels.h"

namespace zvf::filters {
namespace {

constexpr size_t kGuard = 37;  // odd, so rows start off any alignment
constexpr uint8_t kGuardByte = 0xA5;
constexpr int32_t kFrameRows = 7;  // fields of four and three rows

using test::LevelsAboveScalar;

struct Arena {
    std::vector<uint8_t> src, dst;
    FieldView view;
};

Arena MakeArena(int32_t width, int32_t left, int32_t field, bool extreme, uint32_t seed) {
    const int32_t pitch = (left + width + 3) * 2;
    const size_t frame = static_cast<size_t>(pitch) * kFrameRows;
    Arena a;
    a.src.resize(frame);
    a.dst.assign(frame + 2 * kGuard, kGuardByte);
    uint32_t x = seed | 1u;
    for (uint8_t& b : a.src) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b = extreme ? ((x & 1) ? 0xFF : 0x00) : static_cast<uint8_t>(x);
    }
    const int32_t odd = field == 1 ? 1 : 0;
    const ptrdiff_t start = ptrdiff_t{odd} * pitch + ptrdiff_t{left} * 2;
    a.view.src = a.src.data() + start;
    a.view.dst = a.dst.data() + kGuard + start;
    a.view.step = ptrdiff_t{2} * pitch;
    a.view.rows = (kFrameRows - odd + 1) / 2;
    a.view.pairs = width / 2;
    a.view.pitch = pitch;
    a.view.width_px = width;
    a.view.left = left;
    a.view.odd = odd;
    a.view.firstRow = odd;
    return a;
}

TEST(MirrorSimd, EveryLevelMatchesScalarForEveryWidthOffsetFieldAndFlag) {
    const std::vector<SimdLevel> levels = LevelsAboveScalar();
    if (levels.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    for (SimdLevel level : levels) {
        for (int32_t width = 2; width <= 130; ++width) {
            for (int32_t left : {0, 1, 3}) {
                for (int32_t field : {0, 1}) {
                    for (int flags = 0; flags < 4; ++flags) {
                        const bool extreme = ((width + left + flags) & 3) == 0;
                        const uint32_t seed = static_cast<uint32_t>(width * 131 + left * 17 + field * 5 + flags);
                        Arena a = MakeArena(width, left, field, extreme, seed);
                        Arena b = MakeArena(width, left, field, extreme, seed);
                        MirrorField(a.view, flags & 1, flags & 2, SimdLevel::scalar);
                        MirrorField(b.view, flags & 1, flags & 2, level);
                        ASSERT_EQ(a.dst, b.dst) << SimdLevelName(level) << ": width " << width << " left " << left
                                                << " field " << field << " flags " << flags;
                        for (size_t i = 0; i < kGuard; ++i) {
                            ASSERT_EQ(b.dst[i], kGuardByte) << SimdLevelName(level) << " guard before";
                            ASSERT_EQ(b.dst[b.dst.size() - 1 - i], kGuardByte) << SimdLevelName(level) << " guard after";
                        }
                    }
                }
            }
        }
    }
}

// One frame as source and destination, every row count from 1 to 9 (odd
// and even fields, middle rows that map to themselves): the in-place walk
// leaves the frame as the copying walk leaves a separate destination.
TEST(MirrorSimd, InPlaceWalkGivesTheCopyingWalksBytesAtEveryLevel) {
    std::vector<SimdLevel> levels = LevelsAboveScalar();
    levels.insert(levels.begin(), SimdLevel::scalar);
    for (SimdLevel level : levels) {
        for (int32_t width : {2, 3, 9, 17, 34, 67, 130}) {
            for (int32_t frameRows = 1; frameRows <= 9; ++frameRows) {
                for (int32_t field : {0, 1}) {
                    const int32_t rows = (frameRows - field + 1) / 2;
                    if (rows == 0) continue;
                    for (int flags = 0; flags < 4; ++flags) {
                        const int32_t left = 1, pitch = (left + width + 3) * 2;
                        std::vector<uint8_t> src(static_cast<size_t>(pitch) * frameRows);
                        uint32_t x = static_cast<uint32_t>(width * 977 + frameRows * 31 + field * 7 + flags) | 1u;
                        for (uint8_t& b : src) {
                            x ^= x << 13;
                            x ^= x >> 17;
                            x ^= x << 5;
                            b = static_cast<uint8_t>(x);
                        }
                        std::vector<uint8_t> copied = src, inPlace = src;
                        FieldView v;
                        const ptrdiff_t start = ptrdiff_t{field} * pitch + ptrdiff_t{left} * 2;
                        v.step = ptrdiff_t{2} * pitch;
                        v.rows = rows;
                        v.pairs = width / 2;
                        v.odd = field;
                        v.src = src.data() + start;
                        v.dst = copied.data() + start;
                        MirrorField(v, flags & 1, flags & 2, SimdLevel::scalar);
                        v.src = v.dst = inPlace.data() + start;
                        std::vector<uint8_t> row(size_t{4} * static_cast<size_t>(v.pairs));
                        MirrorFieldInPlace(v, flags & 1, flags & 2, level, row.data());
                        ASSERT_EQ(inPlace, copied) << SimdLevelName(level) << ": width " << width << " rows "
                                                   << frameRows << " field " << field << " flags " << flags;
                    }
                }
            }
        }
    }
}

TEST(MirrorSimd, SelectionFollowsTheLevel) {
    EXPECT_EQ(SelectReverseRow(SimdLevel::scalar), &ReverseRowScalar);
    EXPECT_EQ(SelectReverseRow(SimdLevel::sse2), &ReverseRowSse2);
    EXPECT_EQ(SelectReverseRow(SimdLevel::avx2), &ReverseRowAvx2);
    EXPECT_EQ(SelectReverseRow(SimdLevel::scalar, true), &ReverseRowScalar);
    EXPECT_EQ(SelectReverseRow(SimdLevel::sse2, true), &ReverseRowSse2Stream);
    EXPECT_EQ(SelectReverseRow(SimdLevel::avx2, true), &ReverseRowAvx2Stream);
}

// The streaming rows at every start address of the destination (so every
// number of pairs peeled before the first boundary, and starts off 4
// bytes, which never stream) and every length, guards untouched.
TEST(MirrorSimd, StreamingRowsMatchScalarAtEveryAlignment) {
    for (SimdLevel level : LevelsAboveScalar()) {
        const MirrorRowFn row = SelectReverseRow(level, true);
        for (int32_t pairs = 1; pairs <= 90; ++pairs)
            for (size_t offset = 0; offset < 36; ++offset) {
                std::vector<uint8_t> src(size_t{4} * static_cast<size_t>(pairs));
                uint32_t x = static_cast<uint32_t>(pairs * 41 + offset) | 1u;
                for (uint8_t& b : src) b = static_cast<uint8_t>((x = x * 1103515245u + 12345u) >> 24);
                // 64-byte aligned storage, so `offset` is the alignment.
                alignas(64) uint8_t want[512], got[512];
                std::fill(std::begin(want), std::end(want), kGuardByte);
                std::fill(std::begin(got), std::end(got), kGuardByte);
                ReverseRowScalar(want + offset, src.data(), pairs, src.data(), want + offset);
                row(got + offset, src.data(), pairs, src.data(), got + offset);
                EndStreamedRows();
                ASSERT_TRUE(std::equal(std::begin(want), std::end(want), std::begin(got)))
                    << SimdLevelName(level) << ": pairs " << pairs << " offset " << offset;
            }
    }
}

// A field large enough to stream, both flips (the even field keeps its
// first row unreversed), against the scalar walk.
TEST(MirrorSimd, LargeFieldsStreamTheSameBytes) {
    constexpr int32_t kWidth = 2050, kRows = 2 * 1030 + 1;  // fields of 1031 and 1030 rows of 4100 bytes
    const ptrdiff_t pitch = 2 * kWidth;
    std::vector<uint8_t> src(static_cast<size_t>(pitch) * kRows);
    uint32_t x = 99;
    for (uint8_t& b : src) b = static_cast<uint8_t>((x = x * 1103515245u + 12345u) >> 24);
    for (SimdLevel level : LevelsAboveScalar())
        for (int32_t field : {0, 1}) {
            FieldView v;
            v.step = 2 * pitch;
            v.rows = (kRows - field + 1) / 2;
            v.pairs = kWidth / 2;
            v.odd = field;
            v.src = src.data() + field * pitch;
            ASSERT_GE(size_t{4} * static_cast<size_t>(v.pairs) * static_cast<size_t>(v.rows), kStreamFieldBytes);
            std::vector<uint8_t> want(src.size(), kGuardByte), got(src.size(), kGuardByte);
            v.dst = want.data() + field * pitch;
            MirrorField(v, true, true, SimdLevel::scalar);
            v.dst = got.data() + field * pitch;
            MirrorField(v, true, true, level);
            ASSERT_TRUE(want == got) << SimdLevelName(level) << " field " << field;
        }
}

}  // namespace
}  // namespace zvf::filters
