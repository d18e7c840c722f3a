// Monotone (MonotoneFilter): keeps every pixel's luma and gives every pair
// the same two colour-difference bytes.
#include "../../factories.h"
#include "monotone_dialog.h"
#include "monotone_kernel.h"
#include "monotone_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kMonotoneIdentity = FamilyA(u"Velmora Co., Ltd. Monotone Video Filter", 10001, kCategoryColor);

class MonotoneFilter final : public Filter<MonotoneFilter> {
public:
    static constexpr const Identity& kIdentity = kMonotoneIdentity;

    explicit MonotoneFilter(IHost* host) : Filter(host) { BindRecord(&record_, kMonotoneRecord); }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s != status::ok) return s;
        const MonotoneRecord r = record_;  // read once, without a lock
        SelectMonotoneKernel(Simd())(v, r.u, r.v);
        return status::ok;
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) MonotoneSetupDialog(&record_));
    }

private:
    MonotoneRecord record_;
};

}  // namespace

IVideoFilter* CreateMonotone() { return MakeClassObject<MonotoneFilter>(nullptr); }

}  // namespace zvf::filters
