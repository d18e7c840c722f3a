#include "anti_flicker_kernel.h"

#include <cstring>

namespace zvf::filters {
namespace {

uint8_t Saturate(uint32_t v) { return static_cast<uint8_t>(v > 255 ? 255 : v); }

// (c * (8192 - w) + n * w) >> 13 over one row.
void EdgeRow(const uint8_t* c, const uint8_t* n, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t) {
    const auto wn = static_cast<uint32_t>(w);
    const uint32_t wc = 8192u - wn;
    for (size_t i = 0; i < bytes; ++i) o[i] = Saturate((c[i] * wc + n[i] * wn) >> 13);
}

// ((a + b) * w + c * (16384 - 2w)) >> 14 over one row.
void MiddleRow(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* o, size_t bytes, int32_t w, ptrdiff_t) {
    const auto wn = static_cast<uint32_t>(w);
    const uint32_t wc = 16384u - 2 * wn;
    for (size_t i = 0; i < bytes; ++i) o[i] = Saturate(((a[i] + b[i]) * wn + c[i] * wc) >> 14);
}

}  // namespace

BlendRows ScalarBlendRows() { return {EdgeRow, MiddleRow}; }

BlendRows BlendRowsFor(SimdLevel level) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx512) return Avx512BlendRows();
    if (level >= SimdLevel::avx2) return Avx2BlendRows();
#endif
    return level >= SimdLevel::sse2 ? Sse2BlendRows() : ScalarBlendRows();
}

int32_t AntiFlickerWeight(uint32_t power) {
    const uint32_t p = power > 200 ? 200 : power;
    return static_cast<int32_t>(p * 4096) / 100;
}

void BlendField(const uint8_t* cur, const uint8_t* nb, uint8_t* dst, ptrdiff_t pitch, int32_t rows, int32_t pairs,
                int32_t w, const BlendRows& kernels) {
    const size_t bytes = size_t{4} * static_cast<size_t>(pairs);
    const ptrdiff_t step = 2 * pitch;
    if (rows <= 0) return;
    if (w == 0 || rows == 1) {
        for (int32_t k = 0; k < rows; ++k) std::memmove(dst + k * step, cur + k * step, bytes);
        return;
    }
    // Each call fetches ahead the rows of the next one: the first row's
    // next is a middle row only from three rows on, and the last has none.
    kernels.edge(cur, nb + pitch, dst, bytes, w, rows >= 3 ? step : 0);
    for (int32_t k = 1; k < rows - 1; ++k) {
        const uint8_t* n = nb + k * step;
        kernels.middle(n - pitch, cur + k * step, n + pitch, dst + k * step, bytes, w, step);
    }
    if (rows >= 3) {
        const ptrdiff_t at = (rows - 1) * step;
        kernels.edge(cur + at, nb + at - pitch, dst + at, bytes, w, 0);
    }
}

}  // namespace zvf::filters
