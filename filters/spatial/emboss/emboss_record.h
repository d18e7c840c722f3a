// Emboss's parameter record: direction index and depth, 32 bits each.
#pragma once

#include <atomic>
#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct EmbossRecord {
    uint32_t direction = 3;  // radio button index 0..7 ("&4", bottom right)
    uint32_t depth = 1;      // offset distance; 0 renders flat grey
};
static_assert(sizeof(EmbossRecord) == 8);

constexpr uint32_t kEmbossLastDirection = 7;
constexpr uint32_t kEmbossMaxDepth = 500;

inline constexpr FieldDesc kEmbossFields[] = {
    {"direction", FieldType::U32, 0, 1, 0, kEmbossLastDirection, 3},
    {"depth", FieldType::U32, 4, 1, 0, kEmbossMaxDepth, 1},
};
inline constexpr RecordDesc kEmbossRecord{kEmbossFields, 8};

// The render thread reads the record while the dialog writes it: each field
// is one relaxed atomic access.
inline EmbossRecord ReadShared(EmbossRecord& r) {
    return {std::atomic_ref<uint32_t>(r.direction).load(std::memory_order_relaxed),
            std::atomic_ref<uint32_t>(r.depth).load(std::memory_order_relaxed)};
}
inline void WriteShared(EmbossRecord& r, const EmbossRecord& value) {
    std::atomic_ref<uint32_t>(r.direction).store(value.direction, std::memory_order_relaxed);
    std::atomic_ref<uint32_t>(r.depth).store(value.depth, std::memory_order_relaxed);
}

}  // namespace zvf::filters
