// YUV Curve's parameter record: a fixed part laid out as persisted (fields 0
// to 9 and the three tables), then one owned array of control points per
// curve, persisted after it.
#pragma once

#include <cstdint>
#include <vector>

#include "zvf/record.h"

namespace zvf::filters {

enum Curve : int { kCurveY = 0, kCurveU = 1, kCurveV = 2 };

struct CurvePoint {
    uint32_t x;
    uint32_t y;
    bool operator==(const CurvePoint&) const = default;
};

struct YuvCurveFixed {
    uint32_t safeColour = 0;         // 1: tables limited to Y 16..235, U and V 16..240
    uint32_t reserved[3] = {};       // carried through load and save, never read
    uint32_t count[3] = {2, 2, 2};   // points per curve: Y, U, V
    uint32_t linear[3] = {0, 0, 0};  // 0 natural cubic spline, 1 straight segments
    uint8_t table[3][256];           // output per input value, rebuilt from the points
    YuvCurveFixed() {
        for (auto& t : table)
            for (int i = 0; i < 256; ++i) t[i] = static_cast<uint8_t>(i);
    }
};
static_assert(sizeof(YuvCurveFixed) == 808);

struct YuvCurveRecord {
    YuvCurveFixed fixed;
    // Kept in step with fixed.count; x ascending in 0..255 when edited here,
    // anything at all when loaded.
    std::vector<CurvePoint> points[3] = {{{0, 0}, {255, 255}}, {{0, 0}, {255, 255}}, {{0, 0}, {255, 255}}};
};

inline constexpr FieldDesc kYuvCurveFields[] = {
    {"safe_color", FieldType::U32, 0, 1, 0, 1, 0},
    {"reserved", FieldType::Reserved, 4, 12},
    {"y_points", FieldType::U32, 16, 1, 0, 0, 2},
    {"u_points", FieldType::U32, 20, 1, 0, 0, 2},
    {"v_points", FieldType::U32, 24, 1, 0, 0, 2},
    {"y_linear", FieldType::U32, 28, 1, 0, 1, 0},
    {"u_linear", FieldType::U32, 32, 1, 0, 1, 0},
    {"v_linear", FieldType::U32, 36, 1, 0, 1, 0},
    {"y_table", FieldType::U8, 40, 256, 0, 255, 0},
    {"u_table", FieldType::U8, 296, 256, 0, 255, 0},
    {"v_table", FieldType::U8, 552, 256, 0, 255, 0},
};
// The fixed part; the point arrays (8 bytes a point: x, y) follow it.
inline constexpr RecordDesc kYuvCurveRecord{kYuvCurveFields, sizeof(YuvCurveFixed)};

}  // namespace zvf::filters
