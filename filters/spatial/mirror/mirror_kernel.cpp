#include "mirror_kernel.h"

#include <cstring>

namespace zvf::filters {
namespace {

// Pair j of dst from pair pairs-1-j of src, lumas exchanged, chroma kept:
// one 32-bit word per pair (every target is little-endian, so Y0 is the low
// byte and Y1 the third).
void ReverseRow(uint8_t* dst, const uint8_t* src, int32_t pairs) {
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(pairs - 1);
    for (int32_t j = 0; j < pairs; ++j, dst += 4, s -= 4) {
        uint32_t w;
        std::memcpy(&w, s, 4);
        w = (w & 0xFF00FF00u) | ((w >> 16) & 0xFFu) | ((w & 0xFFu) << 16);
        std::memcpy(dst, &w, 4);
    }
}

}  // namespace

int32_t MirrorSourceRow(int32_t k, int32_t rows, bool oddField, bool vertical) {
    if (!vertical) return k;
    if (oddField) return rows - 1 - k;
    return k == 0 ? 0 : rows - k;
}

bool MirrorReversesRow(int32_t k, bool oddField, bool horizontal, bool vertical) {
    if (!horizontal) return false;
    return !(vertical && !oddField && k == 0);
}

void MirrorField(const FieldView& v, bool horizontal, bool vertical) {
    const bool odd = v.odd != 0;
    const size_t rowBytes = size_t{4} * static_cast<size_t>(v.pairs);
    for (int32_t k = 0; k < v.rows; ++k) {
        uint8_t* dst = v.dst + k * v.step;
        const uint8_t* src = v.src + MirrorSourceRow(k, v.rows, odd, vertical) * v.step;
        if (MirrorReversesRow(k, odd, horizontal, vertical))
            ReverseRow(dst, src, v.pairs);
        else
            std::memcpy(dst, src, rowBytes);
    }
}

}  // namespace zvf::filters
