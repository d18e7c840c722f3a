#include <gtest/gtest.h>

#include "kit/frame.h"
#include "zvf/field.h"

namespace zvf {
namespace {

TEST(FieldGeometry, RowsOfTheSelectedParityInsideTheRectangle) {
    struct Case {
        Rect rect;
        int32_t field;
        int32_t first, rows, pairs;
    };
    const Case cases[] = {
        {{0, 0, 8, 10}, 0, 0, 5, 4},   // rows 0,2,4,6,8
        {{0, 0, 8, 10}, 1, 1, 5, 4},   // rows 1,3,5,7,9
        {{0, 0, 8, 10}, 2, 0, 5, 4},   // any selector but 1 takes the even rows
        {{0, 0, 8, 10}, -1, 0, 5, 4},
        {{0, 1, 8, 6}, 0, 2, 2, 4},    // rows 2,4
        {{0, 1, 8, 6}, 1, 1, 3, 4},    // rows 1,3,5
        {{0, 0, 8, 1}, 1, 1, 0, 4},    // no odd row inside
        {{0, 0, 8, 1}, 0, 0, 1, 4},
        {{0, 3, 8, 4}, 0, 4, 0, 4},    // one odd row, even field: none
        {{0, 5, 8, 5}, 0, 6, 0, 4},    // empty rectangle
        {{1, 0, 2, 4}, 0, 0, 2, 0},    // width 1: no pair
        {{1, 0, 8, 4}, 0, 0, 2, 3},    // odd width: the last pixel is left out
    };
    for (const Case& c : cases) {
        const FieldGeometry g = ComputeFieldGeometry(c.rect, c.field);
        SCOPED_TRACE(testing::Message() << "rect " << c.rect.left << "," << c.rect.top << "," << c.rect.right << ","
                                        << c.rect.bottom << " field " << c.field);
        EXPECT_EQ(g.rows, c.rows);
        if (c.rows > 0) {
            EXPECT_EQ(g.firstRow, c.first);
        }
        EXPECT_EQ(g.pairs, c.pairs);
    }
}

TEST(FieldGeometry, NonZeroRuleTakesOddRowsForAnyNonZeroSelector) {
    const Rect r{0, 0, 4, 6};
    EXPECT_EQ(ComputeFieldGeometry(r, 2, OddRule::SelectorNonZero).firstRow, 1);
    EXPECT_EQ(ComputeFieldGeometry(r, -1, OddRule::SelectorNonZero).firstRow, 1);
    EXPECT_EQ(ComputeFieldGeometry(r, 0, OddRule::SelectorNonZero).firstRow, 0);
    EXPECT_EQ(ComputeFieldGeometry(r, 2, OddRule::SelectorIsOne).firstRow, 0);
}

TEST(OpenField, ViewStartsAtTheFirstRowAndStepsTwoPitches) {
    host::Frame src(10, 7), dst(10, 7);
    const Rect r{3, 1, 9, 6};
    FieldView v;
    ASSERT_EQ(OpenField(&dst, &src, &r, 0, &v), status::ok);
    EXPECT_EQ(v.firstRow, 2);
    EXPECT_EQ(v.rows, 2);
    EXPECT_EQ(v.pairs, 3);
    EXPECT_EQ(v.pitch, 20);
    EXPECT_EQ(v.step, 40);
    EXPECT_EQ(v.dst, dst.Pixels() + 2 * 20 + 3 * 2);
    EXPECT_EQ(v.src, src.Pixels() + 2 * 20 + 3 * 2);
    ASSERT_EQ(OpenField(&dst, &src, &r, 1, &v), status::ok);
    EXPECT_EQ(v.firstRow, 1);
    EXPECT_EQ(v.rows, 3);
    EXPECT_EQ(v.odd, 1);
}

TEST(OpenField, RejectsFramesAndRectanglesItCannotServeSafely) {
    host::Frame a(10, 8), b(10, 8), small(8, 8);
    FieldView v;
    const Rect all{0, 0, 10, 8};
    const Rect outside{0, 0, 12, 8};
    EXPECT_EQ(OpenField(nullptr, &b, &all, 0, &v), status::pointer);
    EXPECT_EQ(OpenField(&a, &b, nullptr, 0, &v), status::pointer);
    EXPECT_EQ(OpenField(&a, &small, &all, 0, &v), status::invalid_arg);
    EXPECT_EQ(OpenField(&a, &b, &outside, 0, &v), status::invalid_arg);
    const Rect extreme{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
    EXPECT_EQ(OpenField(&a, &b, &extreme, 0, &v), status::invalid_arg);
}

}  // namespace
}  // namespace zvf
