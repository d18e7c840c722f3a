#include "color_wheel_hue.h"

#include <cmath>
#include <cstdio>

#include "../exact_math.h"

namespace zvf::filters {
namespace {

ZVF_EXACT_FLOAT int16_t Term(double unit) { return static_cast<int16_t>(RoundHalfEven(unit * 16384.0)); }

std::string Format(const char* format, double value) {
    char text[64];
    const int n = std::snprintf(text, sizeof text, format, value);
    return n < 0 ? std::string() : std::string(text, n < static_cast<int>(sizeof text) ? n : sizeof text - 1);
}

}  // namespace

ZVF_EXACT_FLOAT HueTerms TermsFromHue(double hue) {
    const SinCos sc = ExactSinCos(hue);
    return {Term(sc.sin), Term(sc.cos)};
}

ZVF_EXACT_FLOAT double HueHundredths(double hue) { return std::floor(hue * 5729.5779513082325 + 0.5); }

ZVF_EXACT_FLOAT std::string HueText(double hue) { return Format("H %+7.2f deg.", HueHundredths(hue) * 0.01); }

ZVF_EXACT_FLOAT std::string HueTextFromHundredths(int16_t hundredths) {
    return Format("H %+7.2f deg.", hundredths * 0.01);
}

std::string SaturationText(int32_t saturation) {
    char text[32];
    const int n = std::snprintf(text, sizeof text, "S %+4d", static_cast<int>(saturation));
    return n < 0 ? std::string() : std::string(text);
}

ZVF_EXACT_FLOAT WheelPoint PointOnWheel(int32_t dx, int32_t dy, int32_t radius) {
    const double x = dx, y = dy;
    const double angle = ExactAtan2(y, x);
    const double hundredths = RoundHalfEven(angle * 18000.0 / kPi);
    double sat = -128.0;
    if (radius > 0) sat = RoundHalfEven(std::sqrt(x * x + y * y) * 255.0 / radius) - 128.0;
    if (sat > 127.0) sat = 127.0;
    return {static_cast<int16_t>(hundredths), static_cast<int32_t>(sat)};
}

ZVF_EXACT_FLOAT double HueFromHundredths(int16_t hundredths) { return hundredths * kPi / 18000.0; }

}  // namespace zvf::filters
