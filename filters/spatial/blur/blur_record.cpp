#include "blur_record.h"

#include <cmath>

namespace zvf::filters {

uint32_t BlurCoefficient(int32_t radius) {
    const int32_t r = radius < 1 ? 1 : (radius > 100 ? 100 : radius);
    return static_cast<uint32_t>(32768.0 * std::pow(1.0 / 256.0, 1.0 / r)) & 0xFFFFu;
}

uint32_t DefaultBlurCoefficient() { return static_cast<uint32_t>(32768.0 * std::pow(1.0 / 256.0, 0.2)) & 0xFFFFu; }

}  // namespace zvf::filters
