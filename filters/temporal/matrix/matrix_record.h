// Matrix's parameter record: a 3 x 3 kernel, row-major, and the normalise
// flag, laid out as the saved payload (ten 32-bit little-endian values).
#pragma once

#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct MatrixRecord {
    int32_t kernel[9] = {0, 0, 0, 0, 1, 0, 0, 0, 0};  // identity
    uint32_t normalize = 1;                           // non-zero: divide by the kernel's sum
};
static_assert(sizeof(MatrixRecord) == 40);

// One field per cell, named by row and column, so that the centre can carry
// its own default.
inline constexpr FieldDesc kMatrixFields[] = {
    {"k00", FieldType::I32, 0, 1, -255, 255, 0},  {"k01", FieldType::I32, 4, 1, -255, 255, 0},
    {"k02", FieldType::I32, 8, 1, -255, 255, 0},  {"k10", FieldType::I32, 12, 1, -255, 255, 0},
    {"k11", FieldType::I32, 16, 1, -255, 255, 1}, {"k12", FieldType::I32, 20, 1, -255, 255, 0},
    {"k20", FieldType::I32, 24, 1, -255, 255, 0}, {"k21", FieldType::I32, 28, 1, -255, 255, 0},
    {"k22", FieldType::I32, 32, 1, -255, 255, 0}, {"normalize", FieldType::U32, 36, 1, 0, 1, 1},
};
inline constexpr RecordDesc kMatrixRecord{kMatrixFields, 40};

}  // namespace zvf::filters
