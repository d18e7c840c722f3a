// Block Color (SolidColorFilter): paints the field's rows of the rectangle
// in one colour. The source picture is never read.
#include "../../factories.h"
#include "block_color_dialog.h"
#include "block_color_kernel.h"
#include "block_color_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kBlockColorIdentity = FamilyB(u"Velmora Co., Ltd. SolidColor Video Filter", 10264);

class SolidColorFilter final : public Filter<SolidColorFilter> {
public:
    static constexpr const Identity& kIdentity = kBlockColorIdentity;

    explicit SolidColorFilter(IHost* host) : Filter(host) { BindRecord(&record_, kBlockColorRecord); }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s != status::ok) return s;
        const BlockColorRecord colour = record_;  // read once, without a lock
        FillField(v, colour.y, colour.u, colour.v);
        return status::ok;
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) SolidColorSetupDialog(&record_));
    }

private:
    BlockColorRecord record_;
};

}  // namespace

IVideoFilter* CreateBlockColor(IHost* host) { return MakeClassObject<SolidColorFilter>(host); }

}  // namespace zvf::filters
