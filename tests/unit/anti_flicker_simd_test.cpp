// Anti Flicker's SSE2, AVX2 and AVX-512 rows against the scalar rows, at
// every level this processor has: random and extreme inputs, every width
// from 2 to 130 pixels, odd offsets and several distances to a cache-line
// boundary (where the wide loops start), guard bytes, every weight class (0,
// the 16-bit folded weights below 8192, 4096's byte means, and 8192 itself).
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "temporal/anti_flicker/anti_flicker_kernel.h"
#include "simd_levels.h"

namespace zvf::filters {
namespace {

constexpr size_t kGuard = 32;
constexpr uint8_t kGuardByte = 0xA5;

using test::LevelsAboveScalar;

enum class Fill { Random, Zero, Full, Alternating };

std::vector<uint8_t> Input(size_t bytes, Fill fill, std::mt19937& rng) {
    std::vector<uint8_t> v(bytes + 64);  // room for the largest offset
    for (size_t i = 0; i < v.size(); ++i) {
        switch (fill) {
            case Fill::Random:
                v[i] = static_cast<uint8_t>(rng());
                break;
            case Fill::Zero:
                v[i] = 0;
                break;
            case Fill::Full:
                v[i] = 255;
                break;
            case Fill::Alternating:
                v[i] = (i / 3) % 2 ? 255 : 0;
                break;
        }
    }
    return v;
}

// Runs one row kernel of `rows` into a guarded buffer at `offset`.
template <class Run>
std::vector<uint8_t> Guarded(size_t bytes, size_t offset, Run run) {
    std::vector<uint8_t> out(kGuard + offset + bytes + kGuard, kGuardByte);
    run(out.data() + kGuard + offset);
    return out;
}

void ExpectGuardsIntact(const std::vector<uint8_t>& out, size_t offset, size_t bytes, const char* what) {
    for (size_t i = 0; i < kGuard + offset; ++i) ASSERT_EQ(out[i], kGuardByte) << what << " before, byte " << i;
    for (size_t i = kGuard + offset + bytes; i < out.size(); ++i) ASSERT_EQ(out[i], kGuardByte) << what << " after";
}

TEST(AntiFlickerSimd, RowsAreByteIdenticalToScalar) {
    const std::vector<SimdLevel> levels = LevelsAboveScalar(SimdLevel::avx512);
    if (levels.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    const BlendRows scalar = ScalarBlendRows();
    for (SimdLevel level : levels) {
        const BlendRows simd = BlendRowsFor(level);
        const std::string name = SimdLevelName(level);
        std::mt19937 rng(20261123);
        const int32_t weights[] = {0, 1, 40, 2048, 4055, 4096, 4097, 6144, 8190, 8191, 8192};
        const Fill fills[] = {Fill::Random, Fill::Zero, Fill::Full, Fill::Alternating};
        for (int32_t width = 2; width <= 130; ++width) {
            const size_t bytes = size_t{4} * static_cast<size_t>(width / 2);
            for (size_t offset : {0u, 1u, 3u, 17u, 40u}) {
                for (Fill fill : fills) {
                    const std::vector<uint8_t> a = Input(bytes, fill, rng);
                    const std::vector<uint8_t> b = Input(bytes, Fill::Random, rng);
                    const std::vector<uint8_t> c = Input(bytes, fill == Fill::Random ? Fill::Random : Fill::Full, rng);
                    for (int32_t w : weights) {
                        const uint8_t* pa = a.data() + offset;
                        const uint8_t* pb = b.data() + (offset ^ 1);
                        const uint8_t* pc = c.data() + offset;
                        const auto edgeRef =
                            Guarded(bytes, offset, [&](uint8_t* o) { scalar.edge(pc, pa, o, bytes, w, 0); });
                        const auto edgeSimd =
                            Guarded(bytes, offset, [&](uint8_t* o) { simd.edge(pc, pa, o, bytes, w, 0); });
                        ExpectGuardsIntact(edgeSimd, offset, bytes, "edge");
                        ASSERT_EQ(edgeSimd, edgeRef)
                            << name << " edge, width " << width << ", offset " << offset << ", w " << w;
                        const auto midRef =
                            Guarded(bytes, offset, [&](uint8_t* o) { scalar.middle(pa, pc, pb, o, bytes, w, 0); });
                        const auto midSimd =
                            Guarded(bytes, offset, [&](uint8_t* o) { simd.middle(pa, pc, pb, o, bytes, w, 0); });
                        ExpectGuardsIntact(midSimd, offset, bytes, "middle");
                        ASSERT_EQ(midSimd, midRef)
                            << name << " middle, width " << width << ", offset " << offset << ", w " << w;
                    }
                }
            }
        }
    }
}

TEST(AntiFlickerSimd, WholeFieldsAgreeAtEveryPowerAndInPlace) {
    const std::vector<SimdLevel> levels = LevelsAboveScalar(SimdLevel::avx512);
    if (levels.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    for (SimdLevel level : levels) {
        const std::string name = SimdLevelName(level);
        std::mt19937 rng(7);
        const int32_t pitch = 2 * 37;  // 37 pixels: 18 pairs and an odd last pixel
        const int32_t height = 9;
        std::vector<uint8_t> cur(static_cast<size_t>(pitch) * height), nb(cur.size());
        for (auto& v : cur) v = static_cast<uint8_t>(rng());
        for (auto& v : nb) v = static_cast<uint8_t>(rng());
        for (uint32_t power = 0; power <= 200; ++power) {
            const int32_t w = AntiFlickerWeight(power);
            for (int32_t first : {0, 1}) {
                const int32_t rows = (height - first + 1) / 2;
                std::vector<uint8_t> ref(cur.size(), 0x5A), simd(cur.size(), 0x5A);
                const size_t at = static_cast<size_t>(first) * pitch + 2;
                BlendField(cur.data() + at, nb.data() + at, ref.data() + at, pitch, rows, 17, w, ScalarBlendRows());
                BlendField(cur.data() + at, nb.data() + at, simd.data() + at, pitch, rows, 17, w, BlendRowsFor(level));
                ASSERT_EQ(simd, ref) << name << " power " << power << ", first row " << first;
                // Destination and current rows the same buffer, as a host rendering in place has them.
                std::vector<uint8_t> inPlaceRef = cur, inPlace = cur;
                BlendField(inPlaceRef.data() + at, nb.data() + at, inPlaceRef.data() + at, pitch, rows, 17, w,
                           ScalarBlendRows());
                BlendField(inPlace.data() + at, nb.data() + at, inPlace.data() + at, pitch, rows, 17, w,
                           BlendRowsFor(level));
                ASSERT_EQ(inPlace, inPlaceRef) << name << " in place, power " << power << ", first row " << first;
            }
        }
    }
}

TEST(AntiFlickerSimd, LevelPicksTheRows) {
    EXPECT_EQ(BlendRowsFor(SimdLevel::scalar).edge, ScalarBlendRows().edge);
    EXPECT_EQ(BlendRowsFor(SimdLevel::sse2).middle, Sse2BlendRows().middle);
    EXPECT_EQ(BlendRowsFor(SimdLevel::avx2).edge, Avx2BlendRows().edge);
    EXPECT_EQ(BlendRowsFor(SimdLevel::avx2).middle, Avx2BlendRows().middle);
}

}  // namespace
}  // namespace zvf::filters
