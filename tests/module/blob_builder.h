// Parameter blobs assembled byte by byte for whole-module load tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zvf::test {

inline void PutWord(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

// Tag, n, the identifier in UTF-16 with two zero units, version, then the
// payload words (little-endian).
inline std::vector<uint8_t> WordBlob(const std::string& identifier, const std::vector<uint32_t>& words,
                                     uint32_t version = 0x00020000, uint32_t tag = 0x00010000) {
    std::vector<uint8_t> b;
    PutWord(b, tag);
    PutWord(b, static_cast<uint32_t>(2 * identifier.size() + 4));
    for (char c : identifier) {
        b.push_back(static_cast<uint8_t>(c));
        b.push_back(0);
    }
    PutWord(b, 0);
    PutWord(b, version);
    for (uint32_t w : words) PutWord(b, w);
    return b;
}

}  // namespace zvf::test
