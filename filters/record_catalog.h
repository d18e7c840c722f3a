// Every built filter's record description, by identifier: what the
// command-line host, the blob inspector and dialogs read.
#pragma once

#include <span>
#include <string_view>

#include "zvf/record.h"

namespace zvf::filters {

struct CatalogEntry {
    std::u16string_view identifier;
    const RecordDesc* record;
};

std::span<const CatalogEntry> RecordCatalog();
// Null when the filter is not built.
const RecordDesc* FindRecord(std::u16string_view identifier);

}  // namespace zvf::filters
