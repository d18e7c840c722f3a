// Filters whose rendering is not built yet: they register, list, create
// instances, save and load an empty record and run the setup lifecycle, and
// answer Render with 0x80004001.
#include "factories.h"

namespace zvf::filters {
namespace {

template <const Identity& kId>
class UnbuiltFilter final : public Filter<UnbuiltFilter<kId>> {
public:
    static constexpr const Identity& kIdentity = kId;
    explicit UnbuiltFilter(IHost* host) : Filter<UnbuiltFilter<kId>>(host) {}
    Status ZVF_CALL Render(IVideoFrame*, IVideoFrame*, const Rect*, uint32_t, uint32_t, int32_t,
                           uint32_t) override {
        return status::not_implemented;
    }
};

}  // namespace

#define ZVF_UNBUILT_PLAIN(fn, identity)             \
    constexpr Identity k##fn = identity;            \
    IVideoFilter* fn() { return MakeClassObject<UnbuiltFilter<k##fn>>(nullptr); }
#define ZVF_UNBUILT_HOST(fn, identity)              \
    constexpr Identity k##fn = identity;            \
    IVideoFilter* fn(IHost* host) { return MakeClassObject<UnbuiltFilter<k##fn>>(host); }

// One line per filter; a filter's line goes when its own folder builds it.
ZVF_UNBUILT_PLAIN(CreateOldMovie, FamilyA(u"Velmora Co., Ltd. OldMovie Video Filter", 10007, kCategoryTop, caps::kOldMovie))
ZVF_UNBUILT_PLAIN(CreateRegion, FamilyA(u"Velmora Co., Ltd. Rect Video Filter", 10013, kCategoryTop))
ZVF_UNBUILT_PLAIN(CreateChrominance, FamilyA(u"Velmora Co., Ltd. Chrominance Video Filter", 10016, kCategoryTop))
ZVF_UNBUILT_PLAIN(CreateBlendFilters, FamilyA(u"Velmora Co., Ltd. Blend Video Filter", 10025, kCategoryTop))
ZVF_UNBUILT_PLAIN(CreateCombineFilters, FamilyA(u"Velmora Co., Ltd. Combine Video Filter", 10028, kCategoryTop))
ZVF_UNBUILT_PLAIN(CreateLoopSlide, FamilyA(u"Velmora Co., Ltd. LoopSlide Video Filter", 10031, kCategoryTop))
ZVF_UNBUILT_PLAIN(CreateTunnelVision, FamilyA(u"Velmora Co., Ltd. Tunnel Video Filter", 10034, kCategoryTop, caps::kPlain))
ZVF_UNBUILT_HOST(CreateRasterWipe, FamilyB(u"Velmora Co., Ltd. RasterScroll Video Filter", 10257))
ZVF_UNBUILT_HOST(CreateWhiteBalance, FamilyA(u"Velmora Co., Ltd. WhiteBalance Video Filter", 10037, kCategoryTop))
ZVF_UNBUILT_HOST(CreatePencilSketch, FamilyB(u"Velmora Co., Ltd. PencilSketch Video Filter", 10222))
ZVF_UNBUILT_HOST(CreateMosaic, FamilyB(u"Velmora Co., Ltd. Mosaic Video Filter", 10229))
ZVF_UNBUILT_HOST(CreateMotionBlur, FamilyB(u"Velmora Co., Ltd. MotionBlur Video Filter", 10236, caps::kTemporal))
ZVF_UNBUILT_HOST(CreateSharpness, FamilyB(u"Velmora Co., Ltd. Sharp Video Filter", 10243))
ZVF_UNBUILT_HOST(CreateSoftFocus, FamilyB(u"Velmora Co., Ltd. SoftFocus Video Filter", 10250))

}  // namespace zvf::filters
