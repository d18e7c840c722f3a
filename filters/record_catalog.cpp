#include "record_catalog.h"

#include "colour/color_balance/color_balance_record.h"
#include "colour/monotone/monotone_record.h"
#include "spatial/block_color/block_color_record.h"

namespace zvf::filters {
namespace {

constexpr CatalogEntry kCatalog[] = {
    {u"Velmora Co., Ltd. SolidColor Video Filter", &kBlockColorRecord},
    {u"Velmora Co., Ltd. Monotone Video Filter", &kMonotoneRecord},
    {u"Velmora Co., Ltd. ColorCorrectionColor Video Filter", &kColorBalanceRecord},
};

}  // namespace

std::span<const CatalogEntry> RecordCatalog() { return kCatalog; }

const RecordDesc* FindRecord(std::u16string_view identifier) {
    for (const CatalogEntry& e : kCatalog)
        if (e.identifier == identifier) return e.record;
    return nullptr;
}

}  // namespace zvf::filters
