#include "block_color_kernel.h"

#include <cstring>

#include "zvf/row_prefetch.h"

namespace zvf::filters {

void FillField(const FieldView& v, uint8_t y, uint8_t u, uint8_t vv) {
    // Sixteen copies of the pair's word: a row is stored 64 bytes at a time
    // (the compiler makes vector stores of the fixed-size copies), asking
    // each time for the line below in the field's next row; then the last
    // whole 16 bytes, then single words.
    uint8_t wide[64];
    for (int k = 0; k < 64; k += 4) {
        wide[k] = y;
        wide[k + 1] = u;
        wide[k + 2] = y;
        wide[k + 3] = vv;
    }
    const ptrdiff_t bytes = ptrdiff_t{4} * v.pairs;
    const ptrdiff_t advance = v.step - ptrdiff_t{v.width_px} * kBytesPerPixel;
    uint8_t* p = v.dst;
    for (int32_t r = 0; r < v.rows; ++r) {
        uint8_t* const end = p + bytes;
        const ptrdiff_t ahead = NextRowDistance(r, v.rows, bytes + advance);
        for (; end - p >= 64; p += 64) {
            PrefetchBelowForWrite(p, ahead);
            std::memcpy(p, wide, 64);
        }
        for (; end - p >= 16; p += 16) std::memcpy(p, wide, 16);
        for (; p < end; p += 4) std::memcpy(p, wide, 4);
        p += advance;  // from where the stores ended, not from the row start
    }
}

}  // namespace zvf::filters
