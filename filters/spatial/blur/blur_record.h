// The parameter record Blur and Smooth Blur share: the radius, the recursion
// weight derived from it, and two reserved blocks that are carried, copied
// and persisted unchanged so stored sets stay compatible.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>

#include "zvf/record.h"

namespace zvf::filters {

constexpr uint32_t kBlurReservedWords = 5760;  // per block

// The recursion weight a, in 1/32768 units, for a radius: the truncation of
// 32768 * (1/256)^(1/radius), so an impulse decays to 1/256 of its height
// after `radius` samples; kept to its low 16 bits. Radii outside 1..100 are
// clamped into it.
uint32_t BlurCoefficient(int32_t radius);
// The default weight, computed with the exponent 0.2 directly.
uint32_t DefaultBlurCoefficient();

// The weight the kernels use: the low 16 bits of the stored coefficient,
// capped at 32768 so a hand-edited set cannot push the arithmetic out of its
// 32-bit range (every weight a radius yields is far below the cap).
constexpr int32_t KernelWeight(uint32_t coefficient) {
    const uint32_t a = coefficient & 0xFFFFu;
    return static_cast<int32_t>(a > 32768u ? 32768u : a);
}

struct BlurRecord {
    int32_t radius = 5;
    uint32_t coefficient = 10809;
    uint32_t reserved1[kBlurReservedWords] = {};
    uint32_t reserved2[kBlurReservedWords] = {};
};
static_assert(sizeof(BlurRecord) == 8 + 2 * 4 * kBlurReservedWords);
static_assert(alignof(BlurRecord) >= std::atomic_ref<uint32_t>::required_alignment);

inline constexpr FieldDesc kBlurFields[] = {
    {"radius", FieldType::I32, 0, 1, 1, 100, 5},
    {"coefficient", FieldType::U32, 4, 1, 128, 31000, 10809},
    {"reserved1", FieldType::Reserved, 8, 4 * kBlurReservedWords},
    {"reserved2", FieldType::Reserved, 8 + 4 * kBlurReservedWords, 4 * kBlurReservedWords},
};
// The coefficient follows the radius in payloads written field by field.
void DeriveBlurCoefficient(uint8_t* payload);
inline constexpr RecordDesc kBlurRecord{kBlurFields, sizeof(BlurRecord), DeriveBlurCoefficient};

// Render threads read the coefficient while the dialog changes it on the
// interface thread: both fields go through atomic accesses.
inline uint32_t LoadCoefficient(BlurRecord& r) {
    return std::atomic_ref<uint32_t>(r.coefficient).load(std::memory_order_relaxed);
}
inline void StoreRadius(BlurRecord& to, int32_t radius, uint32_t coefficient) {
    std::atomic_ref<int32_t>(to.radius).store(radius, std::memory_order_relaxed);
    std::atomic_ref<uint32_t>(to.coefficient).store(coefficient, std::memory_order_relaxed);
}
// Copies a whole record into one that renders may be reading.
inline void StoreRecord(BlurRecord& to, const BlurRecord& from) {
    StoreRadius(to, from.radius, from.coefficient);
    std::memcpy(to.reserved1, from.reserved1, sizeof to.reserved1);
    std::memcpy(to.reserved2, from.reserved2, sizeof to.reserved2);
}

}  // namespace zvf::filters
