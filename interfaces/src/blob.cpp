#include "zvf/blob.h"

#include <cstring>
#include <string>

namespace zvf::blob {
namespace {

uint32_t LoadU32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

void StoreU32(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }

}  // namespace

uint8_t* WriteHeader(uint8_t* out, std::u16string_view id) {
    const uint32_t n = IdentifierFieldSize(id);
    StoreU32(out, kTag);
    StoreU32(out + 4, n);
    std::memset(out + 8, 0, n);
    for (size_t i = 0; i < id.size(); ++i) {
        const char16_t c = id[i];
        out[8 + 2 * i] = static_cast<uint8_t>(c & 0xFF);
        out[9 + 2 * i] = static_cast<uint8_t>(c >> 8);
    }
    StoreU32(out + 8 + n, kVersion);
    return out + 12 + n;
}

std::optional<std::u16string> StoredIdentifier(const uint8_t* data, size_t size) {
    if (data == nullptr || size < 8) return std::nullopt;
    const uint64_t n = LoadU32(data + 4);
    if (size < 8 + n) return std::nullopt;
    std::u16string s;
    for (uint64_t i = 0; i < n / 2; ++i) {
        const char16_t c = static_cast<char16_t>(data[8 + 2 * i] | (data[9 + 2 * i] << 8));
        if (c == 0) break;
        s.push_back(c);
    }
    return s;
}

Verdict Check(const uint8_t* data, size_t size, std::u16string_view id, uint32_t minPayload, Accepted* out) {
    if (data == nullptr) return Verdict::Empty;
    if (size < 8) return Verdict::Short;
    if (LoadU32(data) != kTag) return Verdict::WrongTag;
    const uint64_t n = LoadU32(data + 4);
    if (uint64_t{size} < n + 12 + minPayload) return Verdict::Short;
    const std::optional<std::u16string> stored = StoredIdentifier(data, size);
    if (!stored || *stored != id) return Verdict::ForeignIdentifier;
    const uint32_t version = LoadU32(data + 8 + n);
    if (version > kVersion) return Verdict::TooNew;
    if (out != nullptr) {
        out->payload = data + 12 + n;
        out->available = size - static_cast<size_t>(12 + n);
        out->version = version;
    }
    return Verdict::Ok;
}

const char* VerdictText(Verdict v) {
    switch (v) {
        case Verdict::Ok:
            return "accepted";
        case Verdict::Empty:
            return "no data";
        case Verdict::Short:
            return "shorter than its header and record";
        case Verdict::WrongTag:
            return "wrong format tag";
        case Verdict::ForeignIdentifier:
            return "written by another filter";
        case Verdict::TooNew:
            return "version newer than 0x00020000";
    }
    return "?";
}

}  // namespace zvf::blob
