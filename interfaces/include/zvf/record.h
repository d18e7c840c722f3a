// Declarative description of a filter's parameter record. Each filter
// describes its record once; the blob codec, the command-line host, the blob
// inspector and the dialog ranges all read this one description.
//
// The in-memory record of a filter is laid out exactly as its persisted
// payload (packed, little-endian), so the description's offsets are both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zvf {

enum class FieldType : uint8_t { U8, I8, U16, I16, U32, I32, F64, Reserved };

constexpr uint32_t FieldTypeSize(FieldType t) {
    switch (t) {
        case FieldType::U8:
        case FieldType::I8:
        case FieldType::Reserved:
            return 1;
        case FieldType::U16:
        case FieldType::I16:
            return 2;
        case FieldType::U32:
        case FieldType::I32:
            return 4;
        case FieldType::F64:
            return 8;
    }
    return 1;
}

struct FieldDesc {
    std::string_view name;
    FieldType type;
    uint32_t offset;     // byte offset in the payload (and in the record)
    uint32_t count = 1;  // elements; Reserved: bytes carried unchanged
    double min = 0;
    double max = 0;
    double def = 0;
};

struct RecordDesc {
    std::span<const FieldDesc> fields;
    uint32_t payloadSize;  // fixed part; variable-length records add to it
    // Recomputes the fields derived from others (Blur's coefficient from its
    // radius), as the filter's dialog does; call it after writing fields by
    // name. Null when no field is derived.
    void (*derive)(uint8_t* payload) = nullptr;
};

// Reads element `index` of a field from payload bytes (little-endian).
double ReadFieldValue(const FieldDesc& f, const uint8_t* payload, uint32_t index = 0);
// Writes element `index`, clamped to the field's range and rounded to its type.
void WriteFieldValue(const FieldDesc& f, uint8_t* payload, double value, uint32_t index = 0);
// Fills a payload with every field's default (reserved bytes become zero).
void WriteDefaults(const RecordDesc& d, uint8_t* payload);
const FieldDesc* FindField(const RecordDesc& d, std::string_view name);

}  // namespace zvf
