// Anti Flicker's parameter record: the blending strength as one
// little-endian 32-bit word, laid out as it is saved behind the blob header.
#pragma once

#include <atomic>
#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

struct AntiFlickerRecord {
    uint32_t power = 100;  // percent
};
static_assert(sizeof(AntiFlickerRecord) == 4);

inline constexpr FieldDesc kAntiFlickerFields[] = {
    {"power", FieldType::U32, 0, 1, 0, 100, 100},
};
inline constexpr RecordDesc kAntiFlickerRecord{kAntiFlickerFields, 4};

// Render reads the word once per call, without a lock, while the dialog may
// be writing it: it is read and written whole.
inline AntiFlickerRecord Snapshot(const AntiFlickerRecord& r) {
    return {std::atomic_ref<uint32_t>(const_cast<uint32_t&>(r.power)).load(std::memory_order_relaxed)};
}

}  // namespace zvf::filters
