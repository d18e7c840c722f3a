// Color Wheel's derived values: the sine and cosine terms of a hue, the hue
// and saturation texts, and the picking geometry of the wheel.
#pragma once

#include <cstdint>
#include <string>

namespace zvf::filters {

struct HueTerms {
    int16_t sine;
    int16_t cosine;
};
// round(sin(hue) x 16384) and round(cos(hue) x 16384), ties to even; the
// same on every build. A non-finite hue gives the identity (0, 16384).
HueTerms TermsFromHue(double hue);

// Hundredths of a degree, rounded half up: floor(hue x 18000 / pi + 0.5).
double HueHundredths(double hue);
// "H %+7.2f deg." of the hue in degrees, two decimals rounded half up.
std::string HueText(double hue);
// The same text for the wheel's report under the cursor.
std::string HueTextFromHundredths(int16_t hundredths);
// "S %+4d".
std::string SaturationText(int32_t saturation);

// A point of the wheel: the angle of (dx, dy) from the centre, with U to the
// right and V up, in hundredths of a degree (-18000..18000); the distance
// from the centre maps linearly from -128 at the centre to 127 at the rim
// (radius) and beyond.
struct WheelPoint {
    int16_t hundredths;
    int32_t saturation;
};
WheelPoint PointOnWheel(int32_t dx, int32_t dy, int32_t radius);
// Hue in radians of a wheel angle in hundredths of a degree.
double HueFromHundredths(int16_t hundredths);

}  // namespace zvf::filters
