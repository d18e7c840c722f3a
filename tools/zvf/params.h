// Filter specifications on the command line (NAME[@file.blob][:name=value...])
// and setting record fields from name=value pairs through the filter's
// declarative record description.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zvf/record.h"

namespace zvf::cli {

struct FilterSpec {
    std::string text;      // as given
    std::string filter;    // name, identifier key or identifier
    std::string blobPath;  // empty: start from the defaults
    std::vector<std::pair<std::string, std::string>> pairs;
};

// Throws CliError (usage) on an empty name or a pair without '='.
FilterSpec ParseFilterSpec(std::string_view text);

// Sets the named fields of `payload`. A value list "a,b,c" fills the
// elements of an array field in order. Throws CliError (usage) naming the
// filter and field for an unknown name, a value that is not a number, a
// fraction for an integer field or a value outside the field's range.
void ApplyPairs(const RecordDesc& record, std::span<uint8_t> payload,
                const std::vector<std::pair<std::string, std::string>>& pairs, std::string_view filterName);

const char* TypeName(FieldType type);
// Integers without a fraction, doubles with up to 17 significant digits.
std::string FormatValue(double value, FieldType type);
// "name type min..max = default" for listings.
std::string DescribeField(const FieldDesc& field);
// The names of a record's settable fields, comma separated.
std::string FieldNames(const RecordDesc& record);

}  // namespace zvf::cli
