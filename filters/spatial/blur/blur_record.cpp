#include "blur_record.h"

#include <cmath>
#include <cstddef>
#include <cstring>

namespace zvf::filters {

uint32_t BlurCoefficient(int32_t radius) {
    const int32_t r = radius < 1 ? 1 : (radius > 100 ? 100 : radius);
    return static_cast<uint32_t>(32768.0 * std::pow(1.0 / 256.0, 1.0 / r)) & 0xFFFFu;
}

void DeriveBlurCoefficient(uint8_t* payload) {
    int32_t radius;
    std::memcpy(&radius, payload + offsetof(BlurRecord, radius), sizeof radius);
    const uint32_t coefficient = BlurCoefficient(radius);
    std::memcpy(payload + offsetof(BlurRecord, coefficient), &coefficient, sizeof coefficient);
}

uint32_t DefaultBlurCoefficient() { return static_cast<uint32_t>(32768.0 * std::pow(1.0 / 256.0, 0.2)) & 0xFFFFu; }

}  // namespace zvf::filters
