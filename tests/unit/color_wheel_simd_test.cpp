// Color Wheel's SSE2 and AVX2 twins against the scalar kernel: every width
// 2..130 pixels, odd and even left edges, random and extreme bytes, guard
// bytes around the destination, in place and not; records covering both
// kernels, safe colour, the coefficient ranges that fit 16 bits and those
// that do not, and the ends of every setting. Byte for byte, at every level
// this processor has.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "colour/color_wheel/color_wheel_kernel.h"
#include "simd_levels.h"

namespace zvf::filters {
namespace {

constexpr size_t kGuard = 37;
constexpr uint8_t kGuardByte = 0xA5;
constexpr int32_t kFrameRows = 6;

using test::LevelsAboveScalar;

struct Arena {
    std::vector<uint8_t> src, dst;
    FieldView view;
};

Arena MakeArena(int32_t width, int32_t left, int32_t field, bool extreme, uint32_t seed, bool inPlace) {
    const int32_t pitch = (left + width + 3) * 2;
    const size_t frame = static_cast<size_t>(pitch) * kFrameRows;
    Arena a;
    a.src.resize(frame + 2 * kGuard);
    a.dst.assign(frame + 2 * kGuard, kGuardByte);
    uint32_t x = seed | 1u;
    static constexpr uint8_t kExtremes[] = {0, 1, 15, 16, 17, 127, 128, 129, 234, 235, 236, 239, 240, 241, 254, 255};
    for (uint8_t& b : a.src) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b = extreme ? kExtremes[x % std::size(kExtremes)] : static_cast<uint8_t>(x);
    }
    if (inPlace) a.dst = a.src;
    uint8_t* dstBase = a.dst.data() + kGuard;
    const uint8_t* srcBase = inPlace ? dstBase : a.src.data() + kGuard;
    const ptrdiff_t start = ptrdiff_t{field} * pitch + ptrdiff_t{left} * 2;
    a.view.src = srcBase + start;
    a.view.dst = dstBase + start;
    a.view.step = ptrdiff_t{2} * pitch;
    a.view.rows = kFrameRows / 2;
    a.view.pairs = width / 2;
    a.view.pitch = pitch;
    a.view.width_px = width;
    a.view.left = left;
    a.view.odd = field;
    return a;
}

std::vector<ColorWheelRecord> Records() {
    struct Turn {
        int16_t sine, cosine;
    };
    // Quarter turns, a third of a turn, small angles, and 16-bit ends that
    // no hue produces but a loaded block may hold.
    const Turn turns[] = {{0, 16384},   {16384, 0},      {0, -16384},      {-16384, 0},       {14189, -8192},
                          {1, 16383},   {-11585, 11585}, {32767, -32768},  {-32768, 32767},   {-32768, -32768}};
    struct Gains {
        int32_t saturation, contrast, bright;
    };
    const Gains gains[] = {{0, 0, 0},      {0, 0, 127},      {0, 0, -128},     {30, 0, 0},    {127, 0, 5},
                           {-128, 0, -3},  {-1, 1, 0},       {0, 127, 127},    {0, -128, -128}, {64, -64, 17},
                           {127, 127, -128}, {-128, -128, 127}, {300, -300, 999}};  // the last clamped where read
    // Each setting row with five of the turns, safe colour alternating: every
    // turn meets settings whose coefficients fit 16 bits and settings whose
    // coefficients do not.
    std::vector<ColorWheelRecord> records;
    for (size_t gi = 0; gi < std::size(gains); ++gi)
        for (size_t k = 0; k < 5; ++k) {
            const Turn& t = turns[(gi * 3 + k) % std::size(turns)];
            const Gains& g = gains[gi];
            const uint32_t safe = static_cast<uint32_t>((gi + k) & 1);
            ColorWheelRecord r;
            r.sine = t.sine;
            r.cosine = t.cosine;
            r.saturation = g.saturation;
            r.contrast = g.contrast;
            r.bright = g.bright;
            r.safeColour = safe;
            records.push_back(r);
        }
    return records;
}

TEST(ColorWheelSimd, EveryLevelMatchesScalarForEveryRecordWidthAndOffset) {
    const std::vector<SimdLevel> levels = LevelsAboveScalar();
    if (levels.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    struct Variant {
        int32_t left;
        bool extreme, inPlace;
    };
    static constexpr Variant kVariants[] = {{0, false, false}, {1, true, false}, {3, false, true}, {1, false, false}};
    uint32_t seed = 1;
    for (const ColorWheelRecord& r : Records()) {
        const WheelPlan plan = PlanWheel(r);
        const std::string what = "sine " + std::to_string(r.sine) + " cosine " + std::to_string(r.cosine) +
                                 " saturation " + std::to_string(r.saturation) + " contrast " +
                                 std::to_string(r.contrast) + " bright " + std::to_string(r.bright) + " safe " +
                                 std::to_string(r.safeColour);
        for (SimdLevel level : levels) {
            for (int32_t width = 2; width <= 130; ++width) {
                for (const Variant& var : kVariants) {
                    const int32_t field = (width + var.left) & 1;
                    const uint32_t s = ++seed * 7919u;
                    Arena a = MakeArena(width, var.left, field, var.extreme, s, var.inPlace);
                    Arena b = MakeArena(width, var.left, field, var.extreme, s, var.inPlace);
                    RenderWheelScalar(a.view, plan);
                    (level == SimdLevel::avx2 ? RenderWheelAvx2 : RenderWheelSse2)(b.view, plan);
                    ASSERT_EQ(a.dst, b.dst) << what << " " << SimdLevelName(level) << ": width " << width << " left "
                                            << var.left << (var.inPlace ? " in place" : "")
                                            << (var.extreme ? " extreme" : "");
                    for (size_t i = 0; i < kGuard; ++i) {
                        ASSERT_EQ(b.dst[i], var.inPlace ? b.src[i] : kGuardByte) << what << " guard before";
                        ASSERT_EQ(b.dst[b.dst.size() - 1 - i], var.inPlace ? b.src[b.src.size() - 1 - i] : kGuardByte)
                            << what << " guard after";
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace zvf::filters
