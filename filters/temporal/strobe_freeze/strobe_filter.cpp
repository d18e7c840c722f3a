// Strobe/Freeze (StrobeFilter): cuts the timeline into cycles of `interval`
// frames; the first half plays or holds a picture, the last `duration`
// frames hold a picture or show a flat colour.
#include "../../factories.h"
#include "strobe_dialog.h"
#include "strobe_engine.h"
#include "strobe_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kStrobeIdentity =
    FamilyA(u"Velmora Co., Ltd. Strobe Video Filter", 10010, kCategoryTop, caps::kTemporal);

class StrobeFilter final : public Filter<StrobeFilter> {
public:
    static constexpr const Identity& kIdentity = kStrobeIdentity;

    explicit StrobeFilter(IHost* host) : Filter(host) { BindRecord(&record_, kStrobeRecord); }

    Status ZVF_CALL PrepareRender() override {
        engine_.Prepare(HostPointer());
        return status::ok;
    }

    // The first pass-through value is the frame number; the last argument
    // asks for the held picture to be captured again.
    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t frame, uint32_t,
                           int32_t field, uint32_t refresh) override {
        return engine_.Render(HostPointer(), dst, src, rect, frame, field, refresh != 0, Snapshot(record_), Simd());
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) StrobeSetupDialog(&record_));
    }

private:
    StrobeRecord record_;
    StrobeEngine engine_;
};

}  // namespace

IVideoFilter* CreateStrobeFreeze() { return MakeClassObject<StrobeFilter>(nullptr); }

}  // namespace zvf::filters
