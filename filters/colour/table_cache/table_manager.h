// ZelTableManager: a bounded cache of working buffers keyed by owner, most
// recently used first. A client asks for its buffer at every render and
// rebuilds the contents only when told to (result 1); result 0 hands back
// the block exactly as the same owner left it.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "table_buffer.h"

namespace zvf::filters {

class ZelTableManager {
public:
    explicit ZelTableManager(uint32_t capacity) : capacity_(capacity) {}
    ~ZelTableManager();
    ZelTableManager(const ZelTableManager&) = delete;
    ZelTableManager& operator=(const ZelTableManager&) = delete;

    // Hands the owner's buffer of `size` bytes to *out with one reference for
    // the caller (a reference already in *out is released first). Result: 1
    // when the caller must build the contents, 0 when they are the ones the
    // owner left, or a negative status (0x80070057 without `out`, creation
    // failures) with the cache unchanged.
    int32_t Acquire(ITableBuffer** out, uint32_t key, uint32_t size);
    // Drops the owner's first buffer: 0 when one was dropped, 1 when none.
    int32_t Remove(uint32_t key);

    // For tests and diagnostics: list positions (empty ones
    // included), the key at a position (false for an empty one), and the
    // buffers listed.
    size_t Positions() const;
    bool KeyAt(size_t position, uint32_t* key) const;
    size_t LiveItems() const;

private:
    const uint32_t capacity_;
    mutable std::mutex lock_;
    std::vector<ITableBuffer*> items_;  // one reference each; null marks a trimmed position
};

// The module's two caches, capacity 5 each, alive from load to unload.
ZelTableManager& FirstTableCache();
ZelTableManager& SecondTableCache();

}  // namespace zvf::filters
