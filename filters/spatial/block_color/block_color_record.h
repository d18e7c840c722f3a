// Block Color's parameter record: the fill colour as three adjacent bytes.
#pragma once

#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct BlockColorRecord {
    uint8_t y = 255;  // luma; 255 is legal and the default (white above nominal peak)
    uint8_t u = 128;  // Cb, 128 = no colour
    uint8_t v = 128;  // Cr
};
static_assert(sizeof(BlockColorRecord) == 3);

inline constexpr FieldDesc kBlockColorFields[] = {
    {"y", FieldType::U8, 0, 1, 0, 255, 255},
    {"u", FieldType::U8, 1, 1, 0, 255, 128},
    {"v", FieldType::U8, 2, 1, 0, 255, 128},
};
inline constexpr RecordDesc kBlockColorRecord{kBlockColorFields, 3};

}  // namespace zvf::filters
