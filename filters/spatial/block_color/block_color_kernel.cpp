#include "block_color_kernel.h"

#include <cstring>

namespace zvf::filters {

void FillField(const FieldView& v, uint8_t y, uint8_t u, uint8_t vv) {
    const uint8_t word[4] = {y, u, y, vv};
    uint32_t fill;
    std::memcpy(&fill, word, 4);
    const ptrdiff_t advance = v.step - ptrdiff_t{v.width_px} * kBytesPerPixel;
    uint8_t* p = v.dst;
    for (int32_t r = 0; r < v.rows; ++r) {
        for (int32_t i = 0; i < v.pairs; ++i) std::memcpy(p + 4 * i, &fill, 4);
        p += ptrdiff_t{4} * v.pairs + advance;
    }
}

}  // namespace zvf::filters
