#include "monotone_kernel.h"

#include <cstring>

namespace zvf::filters {

void MonotoneScalar(const FieldView& v, uint8_t u, uint8_t vv) {
    // Little-endian words: byte 0 is Y0, so the mask keeps bytes 0 and 2.
    const uint32_t mask = 0x00FF00FFu;
    const uint32_t pattern = (uint32_t{u} << 8) | (uint32_t{vv} << 24);
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        for (int32_t i = 0; i < v.pairs; ++i) {
            uint32_t w;
            std::memcpy(&w, s + 4 * i, 4);
            w = (w & mask) ^ pattern;
            std::memcpy(d + 4 * i, &w, 4);
        }
    }
}

MonotoneKernel SelectMonotoneKernel(SimdLevel level) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx2) return MonotoneAvx2;
    if (level >= SimdLevel::sse2) return MonotoneSse2;
#else
    (void)level;
#endif
    return MonotoneScalar;
}

}  // namespace zvf::filters
