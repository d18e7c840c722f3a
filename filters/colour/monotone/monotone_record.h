// Monotone's parameter record: the two colour-difference bytes every pixel
// pair receives. 128/128 gives plain greyscale.
#pragma once

#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct MonotoneRecord {
    uint8_t u = 128;  // Cb of every pair
    uint8_t v = 128;  // Cr of every pair
};
static_assert(sizeof(MonotoneRecord) == 2);

inline constexpr FieldDesc kMonotoneFields[] = {
    {"u", FieldType::U8, 0, 1, 0, 255, 128},
    {"v", FieldType::U8, 1, 1, 0, 255, 128},
};
inline constexpr RecordDesc kMonotoneRecord{kMonotoneFields, 2};

}  // namespace zvf::filters
