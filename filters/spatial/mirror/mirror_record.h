// Mirror's parameter record: two 32-bit flags, any non-zero value set.
#pragma once

#include <atomic>
#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct MirrorRecord {
    uint32_t horizontalFlip = 1;  // left to right
    uint32_t verticalFlip = 0;    // top to bottom, each field in its own rows
};
static_assert(sizeof(MirrorRecord) == 8);

inline constexpr FieldDesc kMirrorFields[] = {
    {"horizontalFlip", FieldType::U32, 0, 1, 0, 1, 1},
    {"verticalFlip", FieldType::U32, 4, 1, 0, 1, 0},
};
inline constexpr RecordDesc kMirrorRecord{kMirrorFields, 8};

// The render thread reads the record while the dialog writes it: each flag
// is one relaxed atomic access, so a render sees either value of a flag.
inline MirrorRecord ReadShared(MirrorRecord& r) {
    return {std::atomic_ref<uint32_t>(r.horizontalFlip).load(std::memory_order_relaxed),
            std::atomic_ref<uint32_t>(r.verticalFlip).load(std::memory_order_relaxed)};
}
inline void WriteShared(MirrorRecord& r, const MirrorRecord& value) {
    std::atomic_ref<uint32_t>(r.horizontalFlip).store(value.horizontalFlip, std::memory_order_relaxed);
    std::atomic_ref<uint32_t>(r.verticalFlip).store(value.verticalFlip, std::memory_order_relaxed);
}

}  // namespace zvf::filters
