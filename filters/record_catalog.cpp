#include "record_catalog.h"

#include "colour/color_wheel/color_wheel_record.h"
#include "colour/yuv_curve/yuv_curve_record.h"
#include "spatial/block_color/block_color_record.h"

namespace zvf::filters {
namespace {

constexpr CatalogEntry kCatalog[] = {
    {u"Velmora Co., Ltd. SolidColor Video Filter", &kBlockColorRecord},
    {u"Velmora Co., Ltd. ColorCorrectionUV Video Filter", &kColorWheelRecord},
    {u"Velmora Co., Ltd. ColorCorrectionYUV Video Filter", &kYuvCurveRecord},
};

}  // namespace

std::span<const CatalogEntry> RecordCatalog() { return kCatalog; }

const RecordDesc* FindRecord(std::u16string_view identifier) {
    for (const CatalogEntry& e : kCatalog)
        if (e.identifier == identifier) return e.record;
    return nullptr;
}

}  // namespace zvf::filters
