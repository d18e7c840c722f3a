// Software prefetch of a field's next row. A field's rows lie two pitches
// apart, so the hardware prefetcher meets every row as a new stream and
// loses its start; a kernel that, every 64 bytes of a row, asks for the line
// in the same column of the next row (source to read, destination to write)
// finds both rows in cache when it gets there. Shared by the pointwise
// colour kernels (Monotone, Color Balance, YUV Curve, Block Color). A hint
// only: it never faults and changes no byte.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zvf::filters {

// Bytes a kernel covers between two requests: one cache line.
constexpr ptrdiff_t kPrefetchSpan = 64;

// From a row to the field's next row; 0 on the last row, whose own lines
// are then asked for again (already there, so at no cost) rather than lines
// past the field.
inline ptrdiff_t NextRowDistance(int32_t row, int32_t rows, ptrdiff_t step) { return row + 1 < rows ? step : 0; }

// Asks for the lines `ahead` bytes past s (to be read) and d (to be written).
inline void PrefetchBelow(const uint8_t* s, const uint8_t* d, ptrdiff_t ahead) {
#if defined(__GNUC__)
    __builtin_prefetch(s + ahead, 0, 3);
    __builtin_prefetch(d + ahead, 1, 3);
#else
    (void)s;
    (void)d;
    (void)ahead;
#endif
}

// The same for a row that is only written.
inline void PrefetchBelowForWrite(const uint8_t* d, ptrdiff_t ahead) {
#if defined(__GNUC__)
    __builtin_prefetch(d + ahead, 1, 3);
#else
    (void)d;
    (void)ahead;
#endif
}

}  // namespace zvf::filters
