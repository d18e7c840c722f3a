// Color Balance (ColorBalanceFilter): gains and offsets on Y, U and V of the
// packed pairs, without going through RGB; optionally limited to the nominal
// video range.
#include "../../factories.h"
#include "color_balance_dialog.h"
#include "color_balance_kernel.h"
#include "color_balance_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kColorBalanceIdentity = FamilyB(u"Velmora Co., Ltd. ColorCorrectionColor Video Filter", 10271);

class ColorBalanceFilter final : public Filter<ColorBalanceFilter> {
public:
    static constexpr const Identity& kIdentity = kColorBalanceIdentity;

    explicit ColorBalanceFilter(IHost* host) : Filter(host) { BindRecord(&record_, kColorBalanceRecord); }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        // A rectangle without a row of the field or a whole pair is simply
        // nothing to do here: success, nothing written.
        if (s == status::fail) return status::ok;
        if (s != status::ok) return s;
        const ColorBalanceParams p = MakeColorBalanceParams(record_);  // read once, without a lock
        SelectColorBalanceKernel(p, Simd())(v, p);
        return status::ok;
    }

    // Idle ("closed") when there is no dialog or it is hidden.
    int32_t ZVF_CALL IsSetupIdle() override { return Dialog() != nullptr ? Dialog()->IdleState() : 1; }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) ColorBalanceSetupDialog(&record_));
    }

private:
    ColorBalanceRecord record_;
};

}  // namespace

IVideoFilter* CreateColorBalance(IHost* host) { return MakeClassObject<ColorBalanceFilter>(host); }

}  // namespace zvf::filters
