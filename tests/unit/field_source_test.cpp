#include <gtest/gtest.h>

#include <vector>

#include "kit/frame.h"
#include "zvf/field_source.h"

namespace zvf {
namespace {

TEST(FieldSource, OverlapIsFoundOnlyWhenTheFramesShareBytes) {
    std::vector<uint8_t> a(8 * 4 * 2), b(8 * 4 * 2);
    host::Frame fa(a.data(), 8, 4), fb(b.data(), 8, 4), fa2(a.data(), 8, 4);
    host::Frame shifted(a.data() + 6, 8, 3);  // an alias that starts inside the first
    const Rect r{0, 0, 8, 3};
    struct Case {
        host::Frame* dst;
        host::Frame* src;
        bool overlaps;
    };
    const Case cases[] = {{&fa, &fb, false}, {&fa, &fa, true}, {&fa, &fa2, true}, {&shifted, &shifted, true}};
    for (const Case& c : cases) {
        FieldView v;
        ASSERT_EQ(OpenField(c.dst, c.src, &r, 0, &v), status::ok);
        EXPECT_EQ(SourceOverlapsDestination(v), c.overlaps);
    }
}

TEST(FieldSource, DetachedSourceHoldsTheFieldsRowsAtTheSameStep) {
    std::vector<uint8_t> pixels(6 * 5 * 2);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i);
    host::Frame f(pixels.data(), 6, 5);
    const Rect r{1, 1, 6, 5};  // odd field rows 1 and 3, pairs at columns 1..4
    FieldView v;
    ASSERT_EQ(OpenField(&f, &f, &r, 1, &v), status::ok);
    const uint8_t* before = v.src;
    std::unique_ptr<uint8_t[]> scratch;
    ASSERT_TRUE(DetachSource(&v, &scratch));
    EXPECT_NE(v.src, before);
    EXPECT_EQ(v.src, scratch.get());
    EXPECT_EQ(v.srcFrame, nullptr);
    for (int32_t row = 0; row < v.rows; ++row)
        for (int32_t i = 0; i < 4 * v.pairs; ++i) EXPECT_EQ(v.src[row * v.step + i], before[row * v.step + i]);
    pixels[static_cast<size_t>(1 * 12 + 2)] = 0xFF;  // the copy no longer follows the frame
    EXPECT_EQ(v.src[0], 14);
}

}  // namespace
}  // namespace zvf
