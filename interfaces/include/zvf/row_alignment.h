// Where a row's wide loads start. A 32- or 64-byte load that straddles two
// cache lines costs two, and a frame row may start anywhere (16 bytes past a
// line, say), so a SIMD row kernel sends the bytes before the first boundary
// through a narrower one and runs its wide loop from there.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zvf {

// The bytes before `row` reaches a multiple of `align` (a power of two), at
// most `bytes`.
inline size_t BytesToAlignment(const uint8_t* row, size_t bytes, size_t align) {
    const size_t before = (align - reinterpret_cast<uintptr_t>(row) % align) % align;
    return before < bytes ? before : bytes;
}

}  // namespace zvf
