// Emboss (EmbossFilter): the relief of the field's part of the rectangle in
// one of eight directions, lifted to mid-grey.
#include <memory>

#include "../../factories.h"
#include "emboss_dialog.h"
#include "emboss_kernel.h"
#include "emboss_record.h"
#include "zvf/field_source.h"

namespace zvf::filters {
namespace {

constexpr Identity kEmbossIdentity = FamilyB(u"Velmora Co., Ltd. Emboss Video Filter", 10215);

class EmbossFilter final : public Filter<EmbossFilter> {
public:
    static constexpr const Identity& kIdentity = kEmbossIdentity;

    explicit EmbossFilter(IHost* host) : Filter(host) { BindRecord(&record_, kEmbossRecord); }

    // A field without rows or pairs succeeds and writes nothing; a
    // rectangle outside the frame is refused before anything is written.
    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s == status::fail) return status::ok;
        if (s != status::ok) return s;
        const EmbossRecord p = ReadShared(record_);
        if (p.depth == 0) {
            GreyField(v);
            return status::ok;
        }
        // One frame as both source and destination: work from a copy of the
        // field's rows, or references would read bytes already written.
        std::unique_ptr<uint8_t[]> scratch;
        if (SourceOverlapsDestination(v) && !DetachSource(&v, &scratch)) return status::out_of_memory;
        EmbossField(v, p.direction, p.depth, SelectEmbossSpan(Simd()));
        return status::ok;
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) EmbossSetupDialog(&record_));
    }

private:
    EmbossRecord record_;
};

}  // namespace

IVideoFilter* CreateEmboss(IHost* host) { return MakeClassObject<EmbossFilter>(host); }

}  // namespace zvf::filters
