#include "color_balance_kernel.h"

#include <algorithm>

namespace zvf::filters {
namespace {

template <bool kGain, bool kSafe>
inline uint8_t Lane(int32_t x, int32_t o, int32_t g, int32_t safeMax) {
    int32_t out;
    if constexpr (kGain) {
        out = (((x - 128) * 256 * g) >> 16) + o + 128;
    } else {
        out = x + o;
    }
    out = std::clamp(out, 0, 255);
    if constexpr (kSafe) out = std::clamp(out, 16, safeMax);
    return static_cast<uint8_t>(out);
}

template <bool kGain, bool kSafe>
void Process(const FieldView& v, const ColorBalanceParams& p) {
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        for (int32_t i = 0; i < 4 * v.pairs; i += 4) {
            const uint8_t y0 = s[i], u = s[i + 1], y1 = s[i + 2], cr = s[i + 3];
            d[i] = Lane<kGain, kSafe>(y0, p.offY, p.gainY, 235);
            d[i + 1] = Lane<kGain, kSafe>(u, p.offU, p.gainC, 240);
            d[i + 2] = Lane<kGain, kSafe>(y1, p.offY, p.gainY, 235);
            d[i + 3] = Lane<kGain, kSafe>(cr, p.offV, p.gainC, 240);
        }
    }
}

}  // namespace

ColorBalanceParams MakeColorBalanceParams(const ColorBalanceRecord& r) {
    const int32_t chroma = std::clamp(r.chroma, -128, 127);
    const int32_t contrast = std::clamp(r.contrast, -128, 127);
    ColorBalanceParams p;
    p.gainY = GainFromSetting(contrast);
    p.gainC = GainFromSetting(chroma);
    p.offY = std::clamp(r.yOffset, -1024, 1024);
    p.offU = std::clamp(r.uOffset, -1024, 1024);
    p.offV = std::clamp(r.vOffset, -1024, 1024);
    p.gain = chroma != 0 || contrast != 0;
    p.safe = r.safeColor != 0;
    return p;
}

void ColorBalanceOffsetsScalar(const FieldView& v, const ColorBalanceParams& p) { Process<false, false>(v, p); }
void ColorBalanceOffsetsSafeScalar(const FieldView& v, const ColorBalanceParams& p) { Process<false, true>(v, p); }
void ColorBalanceGainScalar(const FieldView& v, const ColorBalanceParams& p) { Process<true, false>(v, p); }
void ColorBalanceGainSafeScalar(const FieldView& v, const ColorBalanceParams& p) { Process<true, true>(v, p); }

ColorBalanceKernel SelectColorBalanceKernel(const ColorBalanceParams& p, SimdLevel level) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx2) {
        if (p.gain) return p.safe ? ColorBalanceGainSafeAvx2 : ColorBalanceGainAvx2;
        return p.safe ? ColorBalanceOffsetsSafeAvx2 : ColorBalanceOffsetsAvx2;
    }
    if (level >= SimdLevel::sse2) {
        if (p.gain) return p.safe ? ColorBalanceGainSafeSse2 : ColorBalanceGainSse2;
        return p.safe ? ColorBalanceOffsetsSafeSse2 : ColorBalanceOffsetsSse2;
    }
#else
    (void)level;
#endif
    if (p.gain) return p.safe ? ColorBalanceGainSafeScalar : ColorBalanceGainScalar;
    return p.safe ? ColorBalanceOffsetsSafeScalar : ColorBalanceOffsetsScalar;
}

}  // namespace zvf::filters
