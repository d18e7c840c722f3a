// Video Noise's parameter record: strength in percent and the luma-only flag,
// two 32-bit little-endian fields, saved as full values.
#pragma once

#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct VideoNoiseRecord {
    uint32_t ratio = 5;      // noise strength, percent (the dialog offers 0..100)
    uint32_t grayscale = 0;  // non-zero: noise on luma only
};
static_assert(sizeof(VideoNoiseRecord) == 8);

inline constexpr FieldDesc kVideoNoiseFields[] = {
    {"ratio", FieldType::U32, 0, 1, 0, 100, 5},
    {"grayscale", FieldType::U32, 4, 1, 0, 1, 0},
};
inline constexpr RecordDesc kVideoNoiseRecord{kVideoNoiseFields, 8};

// Loading keeps only the lowest byte of each stored field (a stored 300
// loads as 44) while saving writes the full values; saved projects depend on
// both halves of that asymmetry.
inline VideoNoiseRecord DecodeVideoNoise(const uint8_t* payload) {
    VideoNoiseRecord r;
    r.ratio = payload[0];
    r.grayscale = payload[4];
    return r;
}

}  // namespace zvf::filters
