#include "params.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "errors.h"

namespace zvf::cli {
namespace {

bool IsInteger(FieldType t) { return t != FieldType::F64 && t != FieldType::Reserved; }

double ParseNumber(const std::string& text, const FieldDesc& f, std::string_view filter) {
    const std::string where = std::string(filter) + ": " + std::string(f.name) + "=" + text;
    char* end = nullptr;
    const double v = text.empty() ? NAN : std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size() || !std::isfinite(v))
        throw CliError(kExitUsage, where + ": not a number");
    if (IsInteger(f.type) && v != std::floor(v)) throw CliError(kExitUsage, where + ": the field takes whole numbers");
    if (f.min < f.max && (v < f.min || v > f.max))
        throw CliError(kExitUsage, where + ": outside " + FormatValue(f.min, f.type) + ".." + FormatValue(f.max, f.type));
    return v;
}

}  // namespace

FilterSpec ParseFilterSpec(std::string_view text) {
    FilterSpec s;
    s.text = std::string(text);
    const size_t colon = text.find(':');
    std::string_view head = text.substr(0, colon);
    const size_t at = head.find('@');
    if (at != std::string_view::npos) {
        s.blobPath = std::string(head.substr(at + 1));
        head = head.substr(0, at);
        if (s.blobPath.empty()) throw CliError(kExitUsage, "filter '" + s.text + "': no blob file after '@'");
    }
    s.filter = std::string(head);
    if (s.filter.empty()) throw CliError(kExitUsage, "filter '" + s.text + "': no filter name");
    std::string_view rest = colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
    while (!rest.empty()) {
        const size_t next = rest.find(':');
        const std::string_view pair = rest.substr(0, next);
        const size_t eq = pair.find('=');
        if (eq == std::string_view::npos || eq == 0)
            throw CliError(kExitUsage, "filter '" + s.text + "': '" + std::string(pair) + "' is not name=value");
        s.pairs.emplace_back(std::string(pair.substr(0, eq)), std::string(pair.substr(eq + 1)));
        rest = next == std::string_view::npos ? std::string_view() : rest.substr(next + 1);
    }
    return s;
}

namespace {

void WritePairs(const RecordDesc& record, std::span<uint8_t> payload,
                const std::vector<std::pair<std::string, std::string>>& pairs, std::string_view filterName) {
    for (const auto& [name, value] : pairs) {
        const FieldDesc* f = FindField(record, name);
        if (f == nullptr || f->type == FieldType::Reserved)
            throw CliError(kExitUsage, std::string(filterName) + " has no parameter '" + name +
                                           "' (parameters: " + FieldNames(record) + ")");
        std::vector<std::string> items;
        for (size_t i = 0;;) {
            const size_t comma = value.find(',', i);
            items.push_back(value.substr(i, comma == std::string::npos ? std::string::npos : comma - i));
            if (comma == std::string::npos) break;
            i = comma + 1;
        }
        if (items.size() > f->count)
            throw CliError(kExitUsage, std::string(filterName) + ": " + name + " takes " + std::to_string(f->count) +
                                           " value(s), not " + std::to_string(items.size()));
        if (f->offset + f->count * FieldTypeSize(f->type) > payload.size())
            throw CliError(kExitModule, std::string(filterName) + ": field " + name + " lies outside the saved record");
        for (uint32_t i = 0; i < items.size(); ++i)
            WriteFieldValue(*f, payload.data(), ParseNumber(items[i], *f, filterName), i);
    }
}

}  // namespace

void ApplyPairs(const RecordDesc& record, std::span<uint8_t> payload,
                const std::vector<std::pair<std::string, std::string>>& pairs, std::string_view filterName) {
    WritePairs(record, payload, pairs, filterName);
    // Derived fields follow the ones written (Blur's coefficient its radius),
    // as in the dialog; a derived field named in the pairs keeps its value.
    if (pairs.empty() || record.derive == nullptr || payload.size() < record.payloadSize) return;
    record.derive(payload.data());
    WritePairs(record, payload, pairs, filterName);
}

const char* TypeName(FieldType type) {
    switch (type) {
        case FieldType::U8:
            return "u8";
        case FieldType::I8:
            return "i8";
        case FieldType::U16:
            return "u16";
        case FieldType::I16:
            return "i16";
        case FieldType::U32:
            return "u32";
        case FieldType::I32:
            return "i32";
        case FieldType::F64:
            return "f64";
        case FieldType::Reserved:
            return "reserved";
    }
    return "?";
}

std::string FormatValue(double value, FieldType type) {
    char buf[40];
    if (IsInteger(type) || type == FieldType::Reserved)
        std::snprintf(buf, sizeof buf, "%.0f", value);
    else
        for (int digits = 6; digits <= 17; ++digits) {  // the shortest text that reads back exactly
            std::snprintf(buf, sizeof buf, "%.*g", digits, value);
            if (std::strtod(buf, nullptr) == value) break;
        }
    return buf;
}

std::string DescribeField(const FieldDesc& f) {
    std::string s = std::string(f.name) + " " + TypeName(f.type);
    if (f.count > 1) s += "[" + std::to_string(f.count) + "]";
    if (f.type == FieldType::Reserved) return s;
    if (f.min < f.max) s += " " + FormatValue(f.min, f.type) + ".." + FormatValue(f.max, f.type);
    return s + " = " + FormatValue(f.def, f.type);
}

std::string FieldNames(const RecordDesc& record) {
    std::string s;
    for (const FieldDesc& f : record.fields) {
        if (f.type == FieldType::Reserved) continue;
        if (!s.empty()) s += ", ";
        s += f.name;
    }
    return s.empty() ? "none" : s;
}

}  // namespace zvf::cli
