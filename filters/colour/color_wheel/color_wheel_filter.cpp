// Color Wheel (ColorCorrectionUV): turns the hue and scales the saturation of
// the colour-difference vector, with the luma gain and offset of Color
// Balance.
#include <mutex>

#include "../../factories.h"
#include "color_wheel_dialog.h"
#include "color_wheel_kernel.h"
#include "color_wheel_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kColorWheelIdentity = FamilyB(u"Velmora Co., Ltd. ColorCorrectionUV Video Filter", 10292);

class ColorWheelFilter final : public Filter<ColorWheelFilter> {
public:
    static constexpr const Identity& kIdentity = kColorWheelIdentity;

    explicit ColorWheelFilter(IHost* host) : Filter(host) { BindRecord(&record_, kColorWheelRecord); }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        if (rect == nullptr) return status::pointer;
        // Pairs stay whole: the left edge goes down to an even pixel.
        Rect even = *rect;
        even.left &= ~1;
        FieldView v;
        const Status s = OpenField(dst, src, &even, field, &v);
        if (s != status::ok) return s;
        ColorWheelRecord snapshot;
        {
            std::lock_guard<std::mutex> hold(lock_);  // the dialog may be writing
            snapshot = record_;
        }
        RenderWheel(v, PlanWheel(snapshot), Simd());
        return status::ok;
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) ColorWheelSetupDialog(&record_, &lock_));
    }

private:
    ColorWheelRecord record_;
    std::mutex lock_;
};

}  // namespace

IVideoFilter* CreateColorWheel(IHost* host) { return MakeClassObject<ColorWheelFilter>(host); }

}  // namespace zvf::filters
