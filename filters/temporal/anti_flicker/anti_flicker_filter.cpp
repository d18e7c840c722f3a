// Anti Flicker (AntiFlickerFilter): blends each row of the field being
// rendered with the adjacent rows of the other field, taken from the source
// that field was last rendered from.
#include "../../factories.h"
#include "anti_flicker_dialog.h"
#include "anti_flicker_engine.h"
#include "anti_flicker_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kAntiFlickerIdentity = FamilyA(u"Velmora Co., Ltd. AntiFlicker Video Filter", 10022, kCategoryTop);

class AntiFlickerFilter final : public Filter<AntiFlickerFilter> {
public:
    static constexpr const Identity& kIdentity = kAntiFlickerIdentity;

    explicit AntiFlickerFilter(IHost* host) : Filter(host) { BindRecord(&record_, kAntiFlickerRecord); }

    Status ZVF_CALL PrepareRender() override {
        engine_.Prepare(HostPointer());
        return status::ok;
    }
    Status ZVF_CALL EndRender() override {
        engine_.Forget();
        return status::ok;
    }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        return engine_.Render(HostPointer(), dst, src, rect, field, Snapshot(record_).power, Simd());
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) AntiFlickerSetupDialog(&record_));
    }

private:
    AntiFlickerRecord record_;
    AntiFlickerEngine engine_;
};

}  // namespace

IVideoFilter* CreateAntiFlicker() { return MakeClassObject<AntiFlickerFilter>(nullptr); }

}  // namespace zvf::filters
