// Color Wheel's parameter record: ten 32-bit words, laid out as persisted.
#pragma once

#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct ColorWheelRecord {
    uint32_t safeColour = 0;       // 1: output limited to Y 16..235, U and V 16..240
    uint32_t reserved[3] = {};     // carried through load and save, never read
    double hue = 0.0;              // radians; only the dialog reads it
    int32_t bright = 0;            // luma offset, -128..127
    int32_t saturation = 0;        // chroma gain setting, -128..127
    int32_t contrast = 0;          // luma gain setting, -128..127
    int16_t sine = 0;              // round(sin(hue) x 16384), ties to even
    int16_t cosine = 16384;        // round(cos(hue) x 16384); rendering reads only these two
};
static_assert(sizeof(ColorWheelRecord) == 40);

inline constexpr FieldDesc kColorWheelFields[] = {
    {"safe_color", FieldType::U32, 0, 1, 0, 1, 0},
    {"reserved", FieldType::Reserved, 4, 12},
    {"hue", FieldType::F64, 16, 1, 0, 0, 0},
    {"bright", FieldType::I32, 24, 1, -128, 127, 0},
    {"saturation", FieldType::I32, 28, 1, -128, 127, 0},
    {"contrast", FieldType::I32, 32, 1, -128, 127, 0},
    {"sine", FieldType::I16, 36, 1, -16384, 16384, 0},
    {"cosine", FieldType::I16, 38, 1, -16384, 16384, 16384},
};
inline constexpr RecordDesc kColorWheelRecord{kColorWheelFields, sizeof(ColorWheelRecord)};

}  // namespace zvf::filters
