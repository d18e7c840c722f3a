// Per-field scratch storage of the recursive blurs. Each field selector has
// its own buffer, so the two fields of a frame can render at the same time.
// Storage is counted in entries of four 32-bit lanes (one pixel pair).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zvf::filters {

// The vertical pass sweeps the rows of a strip of this many pair columns at a
// time, keeping one recursion state per column: 64 bytes of each row, one
// cache line, instead of walking a column down the frame.
constexpr int32_t kStripPairs = 16;
// The SIMD versions keep bytes rather than 32-bit lanes and sweep wider
// strips: 512 bytes of each row, which the hardware prefetchers follow, while
// a strip's state for a 2160-line frame (about half a megabyte) stays in the
// second-level cache.
constexpr int32_t kSimdStripPairs = 128;
// Smooth Blur's SIMD versions sweep strips of this many pairs: 384 bytes of
// scratch per row for 32-bit accumulators, 192 where the AVX2 one keeps
// 16-bit states instead (tall fields). Three AVX2 steps of 32 bytes keep
// their states in registers from row to row; a fourth measured slower (the
// registers run out).
constexpr int32_t kWideStripPairs = 24;
// The same for the AVX-512 versions: three steps of 64 bytes.
constexpr int32_t kWide512StripPairs = 48;
constexpr size_t kLanes = 4;

// Fewest entries a field of rows x pairs can be filtered with (the strip is
// then one pair wide).
size_t MinScratchEntries(int32_t rows, int32_t pairs);
// Pair columns per vertical strip of the SIMD passes, which keep one byte per
// sample of the strip plus one row of state, (rows + 1) * 4 * strip bytes;
// 0 when fewer than MinScratchEntries.
int32_t SimdStripPairs(size_t entries, int32_t rows, int32_t pairs);
// Entries for full-width strips at every level.
size_t FullScratchEntries(int32_t rows, int32_t pairs);
// Pair columns per vertical strip, at most `widest`, that `entries` allow
// with one entry per pair and row (a whole multiple of 8 when narrower than
// that and at least 8); 0 when fewer than MinScratchEntries.
int32_t StripPairs(size_t entries, int32_t rows, int32_t pairs, int32_t widest = kStripPairs);

class FieldScratch {
public:
    // Frees both buffers and reallocates them for lines of up to
    // `lineLength` samples (the longer side of the project's frame). False
    // when memory runs out; the buffers are then empty and grow on demand.
    bool Prepare(int32_t lineLength);
    // The buffer of `field` (the first for selector 1, the second for any
    // other), grown first when it cannot hold a field of rows x pairs. Empty
    // when memory runs out.
    std::span<int32_t> For(int32_t field, int32_t rows, int32_t pairs);
    size_t Entries(int32_t field) const { return buffers_[Index(field)].size() / kLanes; }

private:
    static int Index(int32_t field) { return field == 1 ? 0 : 1; }
    std::vector<int32_t> buffers_[2];
};

}  // namespace zvf::filters
