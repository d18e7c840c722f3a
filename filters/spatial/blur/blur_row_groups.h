// Rows of a field taken G x K at a time, for the horizontal passes that run
// several row recursions side by side. The last group repeats the field's
// last row where it runs short; repeated rows get no destination (null).
#pragma once

#include <cstdint>

#include "zvf/field.h"

namespace zvf::filters {

// fn(s, d) with s: const uint8_t* [G][K] and d: uint8_t* [G][K].
template <int G, int K, class Fn>
inline void ForEachRowGroup(const FieldView& v, Fn&& fn) {
    for (int32_t r = 0; r < v.rows; r += G * K) {
        const uint8_t* s[G][K];
        uint8_t* d[G][K];
        for (int k = 0; k < G * K; ++k) {
            const bool real = r + k < v.rows;
            const int32_t row = real ? r + k : v.rows - 1;
            s[k / K][k % K] = v.src + row * v.step;
            d[k / K][k % K] = real ? v.dst + row * v.step : nullptr;
        }
        fn(s, d);
    }
}

}  // namespace zvf::filters
