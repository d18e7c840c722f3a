// Color Balance's parameter record: thirteen signed 32-bit fields, all zero
// by default (the identity). The last three are derived by the setup dialog
// from the axis and bright settings and stored with the rest; rendering
// reads only safe colour, chroma, contrast and the three offsets.
#pragma once

#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct ColorBalanceRecord {
    int32_t safeColor = 0;       // 1 limits Y to 16..235 and U, V to 16..240
    int32_t reserved[3] = {};    // carried through blobs, never read
    int32_t redCyan = 0;         // -128..127, positive towards red
    int32_t greenMagenta = 0;    // -128..127, positive towards green
    int32_t blueYellow = 0;      // -128..127, positive towards blue
    int32_t bright = 0;          // -128..127
    int32_t chroma = 0;          // -128..127, gain of U and V
    int32_t contrast = 0;        // -128..127, gain of Y
    int32_t uOffset = 0;         // derived from the three axes
    int32_t vOffset = 0;         // derived from the three axes
    int32_t yOffset = 0;         // derived: equals bright
};
static_assert(sizeof(ColorBalanceRecord) == 52);

// The extreme derived offsets: (127 * 127 + 86 * 128 + 44 * 128) / 127 = 258.
constexpr int32_t kMaxColourOffset = 258;

inline constexpr FieldDesc kColorBalanceFields[] = {
    {"safe_color", FieldType::I32, 0, 1, 0, 1, 0},
    {"reserved", FieldType::Reserved, 4, 12, 0, 0, 0},
    {"red_cyan", FieldType::I32, 16, 1, -128, 127, 0},
    {"green_magenta", FieldType::I32, 20, 1, -128, 127, 0},
    {"blue_yellow", FieldType::I32, 24, 1, -128, 127, 0},
    {"bright", FieldType::I32, 28, 1, -128, 127, 0},
    {"chroma", FieldType::I32, 32, 1, -128, 127, 0},
    {"contrast", FieldType::I32, 36, 1, -128, 127, 0},
    {"u_offset", FieldType::I32, 40, 1, -kMaxColourOffset, kMaxColourOffset, 0},
    {"v_offset", FieldType::I32, 44, 1, -kMaxColourOffset, kMaxColourOffset, 0},
    {"y_offset", FieldType::I32, 48, 1, -128, 127, 0},
};
inline constexpr RecordDesc kColorBalanceRecord{kColorBalanceFields, 52};

// The derived fields from R, G, B and bright, each quotient truncated toward
// zero: U = (127B - 86G - 44R) / 127, V = (127R - 109G - 21B) / 127, Y = bright.
struct ColourOffsets {
    int32_t u, v, y;
};
constexpr ColourOffsets DeriveOffsets(int32_t r, int32_t g, int32_t b, int32_t bright) {
    return {(127 * b - 86 * g - 44 * r) / 127, (127 * r - 109 * g - 21 * b) / 127, bright};
}

// Gain in 256ths from a setting p (-128..127): 0 at -128, 254 at -1, 256 at
// 0, 1272 at 127.
constexpr int32_t GainFromSetting(int32_t p) { return p < 0 ? ((p + 128) * 256) / 128 : (p * 256) / 32 + 256; }

}  // namespace zvf::filters
