#include "zvf/record.h"

#include <cmath>
#include <cstring>

namespace zvf {
namespace {

template <class T>
T Load(const uint8_t* p) {
    T v;
    std::memcpy(&v, p, sizeof v);  // every target is little-endian
    return v;
}

template <class T>
void Store(uint8_t* p, T v) {
    std::memcpy(p, &v, sizeof v);
}

}  // namespace

double ReadFieldValue(const FieldDesc& f, const uint8_t* payload, uint32_t index) {
    const uint8_t* p = payload + f.offset + index * FieldTypeSize(f.type);
    switch (f.type) {
        case FieldType::U8:
        case FieldType::Reserved:
            return p[0];
        case FieldType::I8:
            return static_cast<int8_t>(p[0]);
        case FieldType::U16:
            return Load<uint16_t>(p);
        case FieldType::I16:
            return Load<int16_t>(p);
        case FieldType::U32:
            return Load<uint32_t>(p);
        case FieldType::I32:
            return Load<int32_t>(p);
        case FieldType::F64:
            return Load<double>(p);
    }
    return 0;
}

void WriteFieldValue(const FieldDesc& f, uint8_t* payload, double value, uint32_t index) {
    uint8_t* p = payload + f.offset + index * FieldTypeSize(f.type);
    if (f.type == FieldType::Reserved) return;
    if (std::isnan(value)) value = f.def;
    if (f.min < f.max) value = value < f.min ? f.min : (value > f.max ? f.max : value);
    const double r = std::nearbyint(value);
    switch (f.type) {
        case FieldType::U8:
            p[0] = static_cast<uint8_t>(r);
            break;
        case FieldType::I8:
            p[0] = static_cast<uint8_t>(static_cast<int8_t>(r));
            break;
        case FieldType::U16:
            Store(p, static_cast<uint16_t>(r));
            break;
        case FieldType::I16:
            Store(p, static_cast<int16_t>(r));
            break;
        case FieldType::U32:
            Store(p, static_cast<uint32_t>(r));
            break;
        case FieldType::I32:
            Store(p, static_cast<int32_t>(r));
            break;
        case FieldType::F64:
            Store(p, value);
            break;
        case FieldType::Reserved:
            break;
    }
}

void WriteDefaults(const RecordDesc& d, uint8_t* payload) {
    for (const FieldDesc& f : d.fields) {
        if (f.type == FieldType::Reserved) {
            std::memset(payload + f.offset, 0, f.count);
            continue;
        }
        for (uint32_t i = 0; i < f.count; ++i) WriteFieldValue(f, payload, f.def, i);
    }
}

const FieldDesc* FindField(const RecordDesc& d, std::string_view name) {
    for (const FieldDesc& f : d.fields)
        if (f.name == name) return &f;
    return nullptr;
}

}  // namespace zvf
