// Strobe/Freeze's capture rows at every SIMD level the processor has
// against the scalar row: every triple of byte values, and whole captures of
// every width at odd offsets with the bytes around the field rows untouched.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "simd_levels.h"
#include "temporal/strobe_freeze/strobe_kernel.h"

namespace zvf::filters {
namespace {

using test::LevelsAboveScalar;

// All 2^24 (a, c, b), one b at a time, each row with a tail past the last
// whole vector.
TEST(StrobeCaptureSimd, EveryTripleOfBytesAsTheScalarRow) {
    constexpr size_t kRow = 65536 + 21;
    std::vector<uint8_t> a(kRow), c(kRow), b(kRow), want(kRow), got(kRow);
    for (size_t i = 0; i < kRow; ++i) {
        a[i] = static_cast<uint8_t>(i);
        c[i] = static_cast<uint8_t>(i >> 8);
    }
    for (SimdLevel level : LevelsAboveScalar()) {
        const CaptureRowFn row = SelectCaptureRow(level);
        for (int32_t below = 0; below < 256; ++below) {
            std::fill(b.begin(), b.end(), static_cast<uint8_t>(below));
            CaptureRow(a.data(), c.data(), b.data(), want.data(), kRow);
            row(a.data(), c.data(), b.data(), got.data(), kRow, 0);
            ASSERT_EQ(got, want) << SimdLevelName(level) << " b " << below;
        }
    }
}

TEST(StrobeCaptureSimd, WholeCapturesOfEveryWidthAsTheScalarOne) {
    std::mt19937 rng(31);
    for (SimdLevel level : LevelsAboveScalar())
        for (int32_t pairs = 1; pairs <= 65; ++pairs)
            for (int32_t rows : {1, 2, 3, 7}) {
                const int32_t offset = 1 + pairs % 3;
                const ptrdiff_t pitch = 4 * pairs + 2 * offset + 5;
                std::vector<uint8_t> src(static_cast<size_t>(pitch) * (2 * rows + 1));
                for (uint8_t& x : src) x = pairs % 4 == 0 ? static_cast<uint8_t>((rng() & 1) * 255) : static_cast<uint8_t>(rng());
                std::vector<uint8_t> want(src.size(), 0xEE), got(src.size(), 0xEE);
                // The field from the second frame row, so the first row's
                // other-field line lies above it as well as below.
                CaptureSmoothed(src.data() + pitch + offset, want.data() + pitch + offset, pitch, rows, pairs);
                CaptureSmoothed(src.data() + pitch + offset, got.data() + pitch + offset, pitch, rows, pairs,
                                SelectCaptureRow(level));
                ASSERT_EQ(got, want) << SimdLevelName(level) << " pairs " << pairs << " rows " << rows;
            }
}

}  // namespace
}  // namespace zvf::filters
