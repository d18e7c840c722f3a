#include "color_wheel_kernel.h"

#include <cstring>

namespace zvf::filters {
namespace {

int32_t Clamp(int32_t v, int32_t lo, int32_t hi) { return v < lo ? lo : (v > hi ? hi : v); }

template <bool kGain, bool kSafe>
void RenderRows(const FieldView& v, const WheelPlan& p) {
    constexpr int32_t yLo = kSafe ? 16 : 0, yHi = kSafe ? 235 : 255;
    constexpr int32_t cLo = kSafe ? 16 : 0, cHi = kSafe ? 240 : 255;
    // Locals, not the plan: byte stores may alias anything, and the plan
    // would be read again after every one of them.
    const int32_t kc = p.kc, ks = p.ks, lumaGain = p.lumaGain, bright = p.bright;
    const int32_t pairs = v.pairs;
    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + row * v.step;
        uint8_t* d = v.dst + row * v.step;
        for (int32_t i = 0; i < pairs; ++i, s += 4, d += 4) {
            const int32_t u = s[1] - 128;
            const int32_t w = s[3] - 128;
            const int32_t nu = ((u * kc - w * ks) >> 14) + 128;
            const int32_t nv = ((u * ks + w * kc) >> 14) + 128;
            int32_t y0, y1;
            if constexpr (kGain) {
                y0 = ((((s[0] - 128) * 256) * lumaGain) >> 16) + bright + 128;
                y1 = ((((s[2] - 128) * 256) * lumaGain) >> 16) + bright + 128;
            } else {
                y0 = s[0] + bright;
                y1 = s[2] + bright;
            }
            // Limits after the byte clamp equal one clamp to the narrower range.
            const uint8_t out[4] = {static_cast<uint8_t>(Clamp(y0, yLo, yHi)), static_cast<uint8_t>(Clamp(nu, cLo, cHi)),
                                    static_cast<uint8_t>(Clamp(y1, yLo, yHi)), static_cast<uint8_t>(Clamp(nv, cLo, cHi))};
            std::memcpy(d, out, 4);
        }
    }
}

}  // namespace

WheelPlan PlanWheel(const ColorWheelRecord& record) {
    WheelPlan p;
    p.safe = record.safeColour != 0;
    p.bright = Clamp(record.bright, -128, 127);
    p.gain = record.saturation != 0 || record.contrast != 0;
    p.lumaGain = record.contrast != 0 ? GainFromSetting(Clamp(record.contrast, -128, 127)) : 256;
    const int32_t chromaGain = record.saturation != 0 ? GainFromSetting(Clamp(record.saturation, -128, 127)) : 256;
    // |term| <= 32768 and gain <= 1272: the products stay far inside 32 bits.
    p.kc = (int32_t{record.cosine} * chromaGain) >> 8;
    p.ks = (int32_t{record.sine} * chromaGain) >> 8;
    return p;
}

void RenderWheelScalar(const FieldView& v, const WheelPlan& plan) {
    if (plan.gain) {
        plan.safe ? RenderRows<true, true>(v, plan) : RenderRows<true, false>(v, plan);
    } else {
        plan.safe ? RenderRows<false, true>(v, plan) : RenderRows<false, false>(v, plan);
    }
}

void RenderWheel(const FieldView& v, const WheelPlan& plan, SimdLevel level) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx2) return RenderWheelAvx2(v, plan);
    if (level >= SimdLevel::sse2) return RenderWheelSse2(v, plan);
#else
    (void)level;
#endif
    RenderWheelScalar(v, plan);
}

}  // namespace zvf::filters
