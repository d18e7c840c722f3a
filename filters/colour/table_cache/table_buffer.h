// A reference-counted working buffer ("table") kept by ZelTableManager for
// one owner: an owner key, a byte count and an owned block whose contents
// are left to the owner.
#pragma once

#include <cstdint>

#include "zvf/abi.h"

namespace zvf::filters {

// The buffer interface answers both identifiers.
constexpr Guid kTableBufferIid{0xEC619590, 0x46D8, 0x452F, {0x98, 0x4E, 0x6F, 0x23, 0xB5, 0x58, 0x93, 0x70}};
constexpr Guid kTableBufferIidAlt{0xDDEE66E9, 0x302B, 0x4801, {0x90, 0x92, 0x9B, 0x3F, 0xE1, 0x2C, 0x25, 0xD5}};

struct ITableBuffer : IUnknown {
    // Size 0 changes nothing; any other size frees the old block, stores the
    // key and allocates a new, uninitialised block.
    virtual void ZVF_CALL Init(uint32_t size, uint32_t key) = 0;
    virtual uint8_t* ZVF_CALL Data() = 0;
    virtual uint32_t ZVF_CALL Size() = 0;
    virtual uint32_t ZVF_CALL Key() = 0;

protected:
    ~ITableBuffer() = default;
};

// Creates a buffer with one reference. Without `out`: 0x80070057. An outer
// unknown demands the IUnknown identifier (else 0x80070057, *out null) and
// then fails the buffer-identifier test with 0x80004002, so aggregated
// creation never succeeds, as callers have always seen it. Other
// identifiers: 0x80004002; no memory: 0x8007000E.
Status CreateTableBuffer(IUnknown* outer, const Guid* iid, void** out);

// Buffer objects alive in this module, for leak checks.
int32_t LiveTableBuffers();

}  // namespace zvf::filters
