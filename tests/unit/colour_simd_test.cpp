// SSE2 and AVX2 twins of the Monotone and Color Balance kernels against
// their scalar versions, at every level this processor has: every width
// 2..130 pixels, several start offsets, random and extreme bytes and
// parameters, guard bytes around each destination, and the in-place case.
// Byte-for-byte identical or the test fails.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "colour/color_balance/color_balance_kernel.h"
#include "colour/monotone/monotone_kernel.h"
#include "simd_levels.h"

namespace zvf::filters {
namespace {

constexpr size_t kGuard = 37;  // odd, so frames start off any alignment
constexpr uint8_t kGuardByte = 0xA5;
constexpr int32_t kFrameRows = 6;

enum class Bytes { Random, Extreme };

using test::LevelsAboveScalar;

// One frame with guard bytes, a kernel view into it, and the call.
struct Arena {
    std::vector<uint8_t> src, dst;
    FieldView view;
};

Arena MakeArena(int32_t width, int32_t left, int32_t field, Bytes kind, uint32_t seed, bool inPlace) {
    const int32_t pitch = (left + width + 3) * 2;  // a few bytes past the rectangle on every row
    const size_t frame = static_cast<size_t>(pitch) * kFrameRows;
    Arena a;
    a.src.resize(frame + 2 * kGuard);
    a.dst.assign(frame + 2 * kGuard, kGuardByte);
    uint32_t x = seed | 1u;  // xorshift: cheap, and enough to vary the bytes
    auto rng = [&x] {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        return x;
    };
    static constexpr uint8_t kExtremes[] = {0, 1, 15, 16, 17, 127, 128, 129, 234, 235, 236, 239, 240, 241, 254, 255};
    for (uint8_t& b : a.src)
        b = kind == Bytes::Random ? static_cast<uint8_t>(rng()) : kExtremes[rng() % std::size(kExtremes)];
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
    return a;
}

// Runs both kernels over identical arenas for every geometry and compares
// the whole destination buffers, guards and untouched rows included.
void Compare(const std::string& what, const std::function<void(const FieldView&)>& scalar,
             const std::function<void(const FieldView&)>& simd, uint32_t seed) {
    struct Variant {
        int32_t left;
        Bytes kind;
        bool inPlace;
    };
    static constexpr Variant kVariants[] = {
        {0, Bytes::Random, false}, {1, Bytes::Extreme, false}, {3, Bytes::Random, true}, {1, Bytes::Random, false}};
    for (int32_t width = 2; width <= 130; ++width) {
        for (const Variant& var : kVariants) {
            const int32_t field = (width + var.left) & 1;
            const uint32_t s = seed * 7919u + static_cast<uint32_t>(width * 13 + var.left);
            Arena a = MakeArena(width, var.left, field, var.kind, s, var.inPlace);
            Arena b = MakeArena(width, var.left, field, var.kind, s, var.inPlace);
            scalar(a.view);
            simd(b.view);
            ASSERT_EQ(a.dst, b.dst) << what << ": width " << width << " left " << var.left
                                    << (var.inPlace ? " in place" : "")
                                    << (var.kind == Bytes::Extreme ? " extreme" : "");
            for (size_t i = 0; i < kGuard; ++i) {
                ASSERT_EQ(b.dst[i], var.inPlace ? b.src[i] : kGuardByte) << what << " guard before";
                ASSERT_EQ(b.dst[b.dst.size() - 1 - i], var.inPlace ? b.src[b.src.size() - 1 - i] : kGuardByte)
                    << what << " guard after";
            }
        }
    }
}

TEST(ColourSimd, MonotoneTwinsMatchScalarAtEveryLevel) {
    const std::pair<uint8_t, uint8_t> chroma[] = {{128, 128}, {0, 255}, {255, 0}, {0, 0}, {255, 255}, {17, 201}};
    for (SimdLevel level : LevelsAboveScalar()) {
        const MonotoneKernel simd = SelectMonotoneKernel(level);
        ASSERT_NE(simd, &MonotoneScalar) << SimdLevelName(level);
        uint32_t seed = 1;
        for (auto [u, v] : chroma)
            Compare(std::string("monotone ") + SimdLevelName(level) + " " + std::to_string(u) + "/" + std::to_string(v),
                    [u = u, v = v](const FieldView& f) { MonotoneScalar(f, u, v); },
                    [simd, u = u, v = v](const FieldView& f) { simd(f, u, v); }, seed++);
    }
    EXPECT_EQ(SelectMonotoneKernel(SimdLevel::avx2), &MonotoneAvx2);
    EXPECT_EQ(SelectMonotoneKernel(SimdLevel::sse2), &MonotoneSse2);
    EXPECT_EQ(SelectMonotoneKernel(SimdLevel::scalar), &MonotoneScalar);
}

TEST(ColourSimd, ColorBalanceTwinsMatchScalarForEveryVariantAtEveryLevel) {
    std::vector<ColorBalanceRecord> records;
    auto add = [&records](int32_t chroma, int32_t contrast, int32_t u, int32_t v, int32_t y) {
        for (int32_t safe : {0, 1}) {
            ColorBalanceRecord r;
            r.chroma = chroma;
            r.contrast = contrast;
            r.uOffset = u;
            r.vOffset = v;
            r.yOffset = y;
            r.safeColor = safe;
            records.push_back(r);
        }
    };
    add(0, 0, 0, 0, 0);
    add(0, 0, 258, -258, 127);
    add(0, 0, -258, 258, -128);
    add(0, 0, 5000, -5000, 0);  // held to +-1024
    add(0, 0, 255, -255, 254);  // offsets-only steps at and next to a whole byte
    add(0, 0, -256, 256, -254);
    add(0, 0, 1, -1, 0);
    for (int32_t g : {-128, -127, -1, 1, 64, 127}) {
        add(g, -g - 1, 258, -258, -128);
        add(0, g, 3, -7, 11);
    }
    add(127, 127, 258, 258, 127);
    add(-128, -128, -258, -258, -128);
    std::mt19937 rng(99);
    for (int i = 0; i < 6; ++i) {
        auto setting = [&rng] { return static_cast<int32_t>(rng() % 256) - 128; };
        const ColourOffsets o = DeriveOffsets(setting(), setting(), setting(), setting());
        add(setting(), setting(), o.u, o.v, o.y);
    }
    for (SimdLevel level : LevelsAboveScalar()) {
        uint32_t seed = 100;
        for (const ColorBalanceRecord& r : records) {
            const ColorBalanceParams p = MakeColorBalanceParams(r);
            const ColorBalanceKernel scalar = SelectColorBalanceKernel(p, SimdLevel::scalar);
            const ColorBalanceKernel simd = SelectColorBalanceKernel(p, level);
            ASSERT_NE(scalar, simd);
            const std::string what = std::string(SimdLevelName(level)) + " chroma " + std::to_string(r.chroma) +
                                     " contrast " + std::to_string(r.contrast) + " offsets " +
                                     std::to_string(r.uOffset) + "," + std::to_string(r.vOffset) + "," +
                                     std::to_string(r.yOffset) + " safe " + std::to_string(r.safeColor);
            Compare(
                what, [&](const FieldView& f) { scalar(f, p); }, [&](const FieldView& f) { simd(f, p); }, seed++);
        }
    }
    // Every variant has its own twin at each level.
    ColorBalanceParams p;
    for (bool gain : {false, true})
        for (bool safe : {false, true}) {
            p.gain = gain;
            p.safe = safe;
            EXPECT_NE(SelectColorBalanceKernel(p, SimdLevel::avx2), SelectColorBalanceKernel(p, SimdLevel::sse2));
        }
}

}  // namespace
}  // namespace zvf::filters
