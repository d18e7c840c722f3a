// The parameter blob envelope shared by every filter:
//   u32 tag 0x00010000, u32 n, identifier (UTF-16, two zero units; n bytes),
//   u32 version 0x00020000, then the filter's payload.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zvf::blob {

constexpr uint32_t kTag = 0x00010000;
constexpr uint32_t kVersion = 0x00020000;

// n: two bytes per identifier unit plus the terminator and one unit of padding.
constexpr uint32_t IdentifierFieldSize(std::u16string_view id) { return 2 * static_cast<uint32_t>(id.size()) + 4; }
constexpr uint32_t EnvelopeSize(std::u16string_view id, uint32_t payload) {
    return 12 + IdentifierFieldSize(id) + payload;
}

// Writes the header into `out` (EnvelopeSize bytes) and returns where the
// payload goes.
uint8_t* WriteHeader(uint8_t* out, std::u16string_view id);

struct Accepted {
    const uint8_t* payload;
    size_t available;  // bytes from the payload to the end of the blob (>= minPayload)
    uint32_t version;
};

// Why a blob is not loaded; Ok when it is.
enum class Verdict { Ok, Empty, Short, WrongTag, ForeignIdentifier, TooNew };

// Applies the load checks in their fixed order; a blob that passes carries at
// least `minPayload` bytes of payload.
Verdict Check(const uint8_t* data, size_t size, std::u16string_view id, uint32_t minPayload, Accepted* out);

// The identifier a blob names (up to its first zero unit), for inspection.
std::optional<std::u16string> StoredIdentifier(const uint8_t* data, size_t size);

const char* VerdictText(Verdict v);

}  // namespace zvf::blob
