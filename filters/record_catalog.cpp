#include "record_catalog.h"

#include "colour/color_balance/color_balance_record.h"
#include "colour/monotone/monotone_record.h"
#include "colour/color_wheel/color_wheel_record.h"
#include "colour/yuv_curve/yuv_curve_record.h"
#include "spatial/block_color/block_color_record.h"
#include "spatial/blur/blur_record.h"
#include "temporal/anti_flicker/anti_flicker_record.h"
#include "temporal/strobe_freeze/strobe_record.h"
#include "temporal/matrix/matrix_record.h"
#include "temporal/video_noise/video_noise_record.h"
#include "spatial/emboss/emboss_record.h"
#include "spatial/mirror/mirror_record.h"

namespace zvf::filters {
namespace {

constexpr CatalogEntry kCatalog[] = {
    {u"Velmora Co., Ltd. SolidColor Video Filter", &kBlockColorRecord},
    {u"Velmora Co., Ltd. Strobe Video Filter", &kStrobeRecord},
    {u"Velmora Co., Ltd. AntiFlicker Video Filter", &kAntiFlickerRecord},
    {u"Velmora Co., Ltd. Noise Video Filter", &kVideoNoiseRecord},
    {u"Velmora Co., Ltd. Matrix Video Filter", &kMatrixRecord},
    {u"Velmora Co., Ltd. Monotone Video Filter", &kMonotoneRecord},
    {u"Velmora Co., Ltd. ColorCorrectionColor Video Filter", &kColorBalanceRecord},
    {u"Velmora Co., Ltd. ColorCorrectionUV Video Filter", &kColorWheelRecord},
    {u"Velmora Co., Ltd. ColorCorrectionYUV Video Filter", &kYuvCurveRecord},
    {u"Velmora Co., Ltd. Mirror Video Filter", &kMirrorRecord},
    {u"Velmora Co., Ltd. Emboss Video Filter", &kEmbossRecord},
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
