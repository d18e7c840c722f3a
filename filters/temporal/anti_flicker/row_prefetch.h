// Software prefetch of a whole row. A field's rows are two pitches apart, so
// the hardware prefetcher, which follows one address stream, meets every row
// cold and only catches up after a run of misses; touching one field's rows
// from memory then costs as much as the whole frame. Asking for the next
// row's lines while this one is worked on hides that.
#pragma once

#include <cstddef>

namespace zvf::filters {

inline void PrefetchRow(const void* row, size_t bytes) {
#if defined(__GNUC__)
    if (bytes == 0) return;
    const char* p = static_cast<const char*>(row);
    for (size_t i = 0; i < bytes; i += 64) __builtin_prefetch(p + i, 0, 3);
    __builtin_prefetch(p + bytes - 1, 0, 3);  // the last line when the row starts mid-line
#else
    (void)row;
    (void)bytes;
#endif
}

}  // namespace zvf::filters
