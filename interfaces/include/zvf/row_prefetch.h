// Software prefetch of the next row of a field. A field's rows are two
// pitches apart, so the hardware prefetcher, which follows one address
// stream, meets every row cold and only catches up after a run of misses;
// touching one field's rows from memory then costs as much as the whole
// frame. Kernels therefore ask for the next row's lines while they work on
// this one: PrefetchLine (and PrefetchLineForWrite for the destination) at
// the same column of the next row, inside the loop. Spread out like this the
// requests never pile up; a burst of the whole next row at the start of each
// row gained little.
#pragma once

namespace zvf {

// A hint only: never faults, whatever the address.
inline void PrefetchLine(const void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(p, 0, 3);
#else
    (void)p;
#endif
}

// The same for a line about to be written: fetched ready to be owned, so
// the store does not wait for it.
inline void PrefetchLineForWrite(void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(p, 1, 3);
#else
    (void)p;
#endif
}

}  // namespace zvf
