// Software prefetch of a field's next row. A field's rows are two pitches
// apart, so the hardware prefetcher, which follows one address stream, meets
// every row cold and only catches up after a run of misses; touching one
// field's rows from memory then costs as much as the whole frame. Kernels
// therefore ask for the next row's lines while they work on this one, once
// per 64-byte line, in the same column: the source to be read and the
// destination to be written (fetched ready to be owned, so the store does not
// wait). Spread out like this the requests never pile up; a burst of the
// whole next row at the start of each row gained little. Hints only: they
// never fault, whatever the address, and change no byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zvf/field.h"

namespace zvf {

inline void PrefetchLine(const void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(p, 0, 3);
#else
    (void)p;
#endif
}

inline void PrefetchLineForWrite(void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(p, 1, 3);
#else
    (void)p;
#endif
}

// Bytes a kernel covers between two requests: one cache line.
constexpr ptrdiff_t kPrefetchSpan = 64;

// From a row to the field's next row; 0 on the last row, whose own lines
// are then asked for again (already there, so at no cost) rather than lines
// past the field.
inline ptrdiff_t NextRowDistance(int32_t row, int32_t rows, ptrdiff_t step) { return row + 1 < rows ? step : 0; }

// The lines `ahead` bytes past s (to be read) and d (to be written).
inline void PrefetchBelow(const uint8_t* s, uint8_t* d, ptrdiff_t ahead) {
    PrefetchLine(s + ahead);
    PrefetchLineForWrite(d + ahead);
}

// The same for a row that is only written.
inline void PrefetchBelowForWrite(uint8_t* d, ptrdiff_t ahead) { PrefetchLineForWrite(d + ahead); }

// The walk of a pointwise SIMD kernel: `step(s, d)` on every run of kPairs
// pairs that fits a row, row after row, the next row's lines asked for once
// per 64 bytes on the way; then `tail(rest)` once, with the pairs left at the
// end of every row (fewer than kPairs) as a field of their own, for a
// narrower twin to finish. Forced inline so the step, a lambda of the
// caller's instruction set, is compiled into the caller's loop.
template <int32_t kPairs, class Step, class Tail>
#if defined(__GNUC__)
__attribute__((always_inline))
#endif
inline void WalkPairs(const FieldView& v, Step&& step, Tail&& tail) {
    static_assert(kPairs > 0 && 16 % kPairs == 0, "a step covers a whole part of a 64-byte line");
    const int32_t wide = v.pairs - v.pairs % kPairs;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        const ptrdiff_t ahead = NextRowDistance(r, v.rows, v.step);
        for (int32_t i = 0; i < wide;) {
            PrefetchBelow(s + 4 * i, d + 4 * i, ahead);
            const int32_t block = wide - i < 16 ? wide : i + 16;
            for (; i < block; i += kPairs) step(s + 4 * i, d + 4 * i);
        }
    }
    if (wide == v.pairs) return;
    FieldView rest = v;
    rest.src = v.src + 4 * wide;
    rest.dst = v.dst + 4 * wide;
    rest.pairs = v.pairs - wide;
    tail(rest);
}

}  // namespace zvf
