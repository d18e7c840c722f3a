// The SSE2 and AVX2 line kernels and the AVX2 and AVX-512 table kernels
// against their scalar twins, at every level this processor has: every
// width, odd start addresses, random and extreme terms, tables and bytes,
// guard bytes untouched.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "colour/yuv_curve/yuv_curve_kernel.h"
#include "simd_levels.h"

namespace zvf::filters {
namespace {

constexpr int kRows = 3;
constexpr int kGuard = 32;

struct Buffers {
    std::vector<uint8_t> src, dst;
    FieldView view;
};

// A field of kRows rows, `width` pixels wide, starting `offset` bytes into
// its rows, inside guard bytes of 0xA5.
Buffers Make(int width, int offset, std::mt19937& rng, bool extremes) {
    const int stride = 2 * width + 2 * kGuard + offset;
    Buffers b;
    b.src.resize(static_cast<size_t>(stride) * 2 * kRows + kGuard);
    b.dst.assign(b.src.size(), 0xA5);
    for (uint8_t& x : b.src) x = extremes ? (rng() % 2 ? 255 : 0) : static_cast<uint8_t>(rng());
    b.view.src = b.src.data() + kGuard + offset;
    b.view.dst = b.dst.data() + kGuard + offset;
    b.view.step = 2 * static_cast<ptrdiff_t>(stride);
    b.view.rows = kRows;
    b.view.pairs = width / 2;
    b.view.width_px = width;
    return b;
}

using test::LevelsAboveScalar;

// Bytes outside the field's pairs that are no longer 0xA5.
size_t GuardsTouched(const Buffers& b) {
    size_t touched = 0;
    const ptrdiff_t start = b.view.dst - b.dst.data();
    for (size_t i = 0; i < b.dst.size(); ++i) {
        const ptrdiff_t at = static_cast<ptrdiff_t>(i) - start;
        const ptrdiff_t inRow = at % b.view.step;
        const bool written = at >= 0 && at / b.view.step < kRows && inRow >= 0 && inRow < 4 * b.view.pairs;
        touched += !written && b.dst[i] != 0xA5;
    }
    return touched;
}

// A copy of b whose view points into the copy's own buffers.
Buffers Twin(const Buffers& b) {
    Buffers t = b;
    t.view.src = t.src.data() + (b.view.src - b.src.data());
    t.view.dst = t.dst.data() + (b.view.dst - b.dst.data());
    return t;
}

void CheckLineKernel(SimdLevel level) {
    std::mt19937 rng(2024);
    std::uniform_int_distribution<int> any16(-32768, 32767);
    const int16_t extremeTerms[] = {-32768, -32767, -256, -1, 0, 1, 255, 256, 32767};
    for (int trial = 0; trial < 12; ++trial) {
        const bool extremes = trial % 3 == 2;
        LineTerms terms[3];
        for (LineTerms& t : terms) {
            if (trial == 0) {
                t = LineTermsOf({0, 0}, {255, 255});
            } else if (extremes) {
                t = {extremeTerms[rng() % 9], extremeTerms[rng() % 9]};
            } else if (trial % 3 == 1) {  // lines through points in range
                const uint32_t x0 = static_cast<uint32_t>(rng() % 255);
                const uint32_t x1 = x0 + 1 + static_cast<uint32_t>(rng() % (255 - x0));
                t = LineTermsOf({x0, static_cast<uint32_t>(rng() % 256)}, {x1, static_cast<uint32_t>(rng() % 256)});
            } else {
                t = {static_cast<int16_t>(any16(rng)), static_cast<int16_t>(any16(rng))};
            }
        }
        for (bool limited : {false, true})
            for (int width = 2; width <= 130; ++width)
                for (int offset : {0, 1, 3}) {
                    Buffers scalar = Make(width, offset, rng, extremes);
                    Buffers simd = Twin(scalar);
                    RenderCurveLines(scalar.view, terms, limited);
                    const auto twin = level == SimdLevel::avx2 ? RenderCurveLinesAvx2 : RenderCurveLinesSse2;
                    twin(simd.view, terms, limited);
                    ASSERT_EQ(simd.dst, scalar.dst) << SimdLevelName(level) << " trial " << trial << " width " << width
                                                    << " offset " << offset << " limited " << limited;
                    ASSERT_EQ(GuardsTouched(scalar), 0u) << "width " << width << " offset " << offset;
                }
    }
}

TEST(YuvCurveSimd, LineKernelMatchesScalarByteForByteAtEveryLevel) {
    for (SimdLevel level : LevelsAboveScalar()) CheckLineKernel(level);
}

// Tables that reach every half of every table and both ends of the range.
// Every fourth trial on, some of them are the identity: first U and V's
// (a curve for luma alone), then Y's, then U's alone, then all three, which
// kernels may pass through rather than look up; last, all three are the
// identity but for one entry each, at an end or in the middle.
void FillTables(int trial, std::mt19937& rng, uint8_t (&tables)[3][256]) {
    constexpr bool kIdentity[5][3] = {{false, false, false}, {false, true, true}, {true, false, false},
                                      {false, true, false}, {true, true, true}};
    constexpr int kOddEntry[4] = {0, 128, 255, 127};
    for (int c = 0; c < 3; ++c)
        for (int x = 0; x < 256; ++x) {
            if (trial / 4 == 5) {
                tables[c][x] = static_cast<uint8_t>(x == kOddEntry[(trial + c) % 4] ? x ^ 1 : x);
                continue;
            }
            switch (kIdentity[trial / 4][c] ? 4 : trial % 4) {
                case 0: tables[c][x] = static_cast<uint8_t>(rng()); break;
                case 1: tables[c][x] = static_cast<uint8_t>(255 - x); break;  // each entry its own
                case 2: tables[c][x] = rng() % 2 ? 255 : 0; break;
                case 3: tables[c][x] = static_cast<uint8_t>(x * 7 + 50 * c); break;
                default: tables[c][x] = static_cast<uint8_t>(x); break;
            }
        }
}

void CheckTableKernel(SimdLevel level) {
    const auto twin = level == SimdLevel::avx512 ? RenderCurveTablesAvx512 : RenderCurveTablesAvx2;
    std::mt19937 rng(77);
    uint8_t tables[3][256];
    for (int trial = 0; trial < 24; ++trial) {
        FillTables(trial, rng, tables);
        for (int width = 2; width <= 130; ++width)
            for (int offset : {0, 1, 3}) {
                Buffers scalar = Make(width, offset, rng, trial % 4 == 2);
                Buffers simd = Twin(scalar);
                RenderCurveTables(scalar.view, tables);
                twin(simd.view, tables);
                ASSERT_EQ(simd.dst, scalar.dst)
                    << SimdLevelName(level) << " trial " << trial << " width " << width << " offset " << offset;
                ASSERT_EQ(GuardsTouched(scalar), 0u) << "width " << width << " offset " << offset;
                // In place: the source rows become the result.
                Buffers inPlace = Twin(scalar);
                inPlace.view.dst = const_cast<uint8_t*>(inPlace.view.src);
                twin(inPlace.view, tables);
                Buffers expected = Twin(scalar);
                expected.view.dst = const_cast<uint8_t*>(expected.view.src);
                RenderCurveTables(expected.view, tables);
                ASSERT_EQ(inPlace.src, expected.src)
                    << SimdLevelName(level) << " in place, width " << width << " offset " << offset;
            }
    }
}

// The table kernel has twins at AVX2 and AVX-512 only.
TEST(YuvCurveSimd, TableKernelMatchesScalarByteForByteAtEveryLevel) {
    for (SimdLevel level : LevelsAboveScalar(SimdLevel::avx512))
        if (level >= SimdLevel::avx2) CheckTableKernel(level);
}

}  // namespace
}  // namespace zvf::filters
