// Strobe/Freeze's parameter record: five little-endian 32-bit words, laid out
// in memory exactly as they are saved behind the blob header.
#pragma once

#include <atomic>
#include <cstdint>

#include "zvf/record.h"

namespace zvf::filters {

namespace strobe_mode {
constexpr uint32_t kMove = 0;        // first half: the video plays
constexpr uint32_t kFirstFreeze = 1; // first half: the picture captured at the cycle start is held
constexpr uint32_t kSecondFreeze = 0;  // second half: the picture captured at its start is held
constexpr uint32_t kColorFrame = 1;  // second half: a flat colour
}  // namespace strobe_mode

struct StrobeRecord {
    uint32_t interval = 7;             // cycle length in frames
    uint32_t duration = 3;             // frames of the second half
    uint32_t frameColor = 0x00EBEBEB;  // 0x00BBGGRR
    uint32_t firstHalfMode = strobe_mode::kMove;
    uint32_t secondHalfMode = strobe_mode::kColorFrame;
};
static_assert(sizeof(StrobeRecord) == 20);

inline constexpr FieldDesc kStrobeFields[] = {
    {"interval", FieldType::U32, 0, 1, 1, 100, 7},
    {"duration", FieldType::U32, 4, 1, 1, 100, 3},
    {"frameColor", FieldType::U32, 8, 1, 0, 0x00FFFFFF, 0x00EBEBEB},
    {"firstHalfMode", FieldType::U32, 12, 1, 0, 1, 0},
    {"secondHalfMode", FieldType::U32, 16, 1, 0, 1, 1},
};
inline constexpr RecordDesc kStrobeRecord{kStrobeFields, 20};

// Render reads the record once per call, without a lock, while the dialog may
// be writing one field: every word is read and written whole.
inline uint32_t LoadStrobeWord(const uint32_t& word) {
    return std::atomic_ref<uint32_t>(const_cast<uint32_t&>(word)).load(std::memory_order_relaxed);
}
inline void StoreStrobeWord(uint32_t& word, uint32_t value) {
    std::atomic_ref<uint32_t>(word).store(value, std::memory_order_relaxed);
}
inline StrobeRecord Snapshot(const StrobeRecord& r) {
    return {LoadStrobeWord(r.interval), LoadStrobeWord(r.duration), LoadStrobeWord(r.frameColor), LoadStrobeWord(r.firstHalfMode),
            LoadStrobeWord(r.secondHalfMode)};
}

}  // namespace zvf::filters
