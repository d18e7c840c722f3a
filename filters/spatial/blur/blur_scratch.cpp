#include "blur_scratch.h"

#include <algorithm>

namespace zvf::filters {
namespace {

// A host reporting an absurd frame size must not make Prepare reserve
// gigabytes; larger rectangles still get their buffer on demand.
constexpr int32_t kMaxPreparedLine = 1 << 16;

bool Resize(std::vector<int32_t>& buffer, size_t entries) {
    try {
        buffer.resize(entries * kLanes);
        return true;
    } catch (...) {  // bad_alloc, or length_error past the vector's limit
        buffer = std::vector<int32_t>();
        return false;
    }
}

}  // namespace

size_t MinScratchEntries(int32_t rows, int32_t pairs) {
    return static_cast<size_t>(std::max({rows, pairs, int32_t{0}}));
}

size_t FullScratchEntries(int32_t rows, int32_t pairs) {
    if (rows <= 0 || pairs <= 0) return 0;
    const int32_t widest = std::max({kStripPairs, kWideStripPairs, kWide512StripPairs});
    const size_t strip = static_cast<size_t>(std::min(pairs, widest));
    const size_t simd = (static_cast<size_t>(std::min(pairs, kSimdStripPairs)) * (static_cast<size_t>(rows) + 1) + 3) / 4;
    return std::max({static_cast<size_t>(pairs), static_cast<size_t>(rows) * strip, simd});
}

int32_t StripPairs(size_t entries, int32_t rows, int32_t pairs, int32_t widest) {
    if (rows <= 0 || pairs <= 0 || entries < MinScratchEntries(rows, pairs)) return 0;
    const size_t fit = entries / static_cast<size_t>(rows);
    const auto most = static_cast<size_t>(std::min(pairs, widest));
    if (fit >= most) return static_cast<int32_t>(most);
    // Narrower than the field: whole multiples of 8 pairs (32 bytes) where
    // possible, so no strip leaves a remainder for narrower instructions.
    return static_cast<int32_t>(fit >= 8 ? fit & ~size_t{7} : fit);
}

int32_t SimdStripPairs(size_t entries, int32_t rows, int32_t pairs) {
    if (rows <= 0 || pairs <= 0 || entries < MinScratchEntries(rows, pairs)) return 0;
    // 16 bytes per entry, 4 bytes per pair and row.
    const size_t fit = 4 * entries / (static_cast<size_t>(rows) + 1);
    if (fit >= static_cast<size_t>(std::min(pairs, kSimdStripPairs))) return std::min(pairs, kSimdStripPairs);
    // Narrower than the field: whole multiples of 8 pairs (32 bytes) where
    // possible, so no strip leaves a remainder for narrower instructions.
    return static_cast<int32_t>(fit >= 8 ? fit & ~size_t{7} : fit);
}

bool FieldScratch::Prepare(int32_t lineLength) {
    const int32_t m = std::clamp(lineLength, int32_t{0}, kMaxPreparedLine);
    bool ok = true;
    for (std::vector<int32_t>& b : buffers_) {
        b = std::vector<int32_t>();
        ok = Resize(b, static_cast<size_t>(m) * kStripPairs) && ok;
    }
    return ok;
}

std::span<int32_t> FieldScratch::For(int32_t field, int32_t rows, int32_t pairs) {
    std::vector<int32_t>& b = buffers_[Index(field)];
    if (b.size() / kLanes < MinScratchEntries(rows, pairs)) {
        b = std::vector<int32_t>();
        if (!Resize(b, FullScratchEntries(rows, pairs))) return {};
    }
    return b;
}

}  // namespace zvf::filters
