#include "record_catalog.h"

#include "spatial/block_color/block_color_record.h"
#include "spatial/blur/blur_record.h"
#include "temporal/anti_flicker/anti_flicker_record.h"
#include "temporal/strobe_freeze/strobe_record.h"

namespace zvf::filters {
namespace {

constexpr CatalogEntry kCatalog[] = {
    {u"Velmora Co., Ltd. SolidColor Video Filter", &kBlockColorRecord},
    {u"Velmora Co., Ltd. Strobe Video Filter", &kStrobeRecord},
    {u"Velmora Co., Ltd. AntiFlicker Video Filter", &kAntiFlickerRecord},
    {u"Velmora Co., Ltd. Blur Video Filter", &kBlurRecord},
    {u"Velmora Co., Ltd. BlurHQ Video Filter", &kBlurRecord},
};

}  // namespace

std::span<const CatalogEntry> RecordCatalog() { return kCatalog; }

const RecordDesc* FindRecord(std::u16string_view identifier) {
    for (const CatalogEntry& e : kCatalog)
        if (e.identifier == identifier) return e.record;
    return nullptr;
}

}  // namespace zvf::filters
