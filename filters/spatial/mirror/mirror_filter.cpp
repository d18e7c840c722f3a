// Mirror (MirrorFilter): flips the field's part of the rectangle left to
// right, top to bottom or both, moving whole pixel pairs.
#include <memory>

#include "../../factories.h"
#include "mirror_dialog.h"
#include "mirror_kernel.h"
#include "mirror_record.h"
#include "zvf/field_source.h"

namespace zvf::filters {
namespace {

constexpr Identity kMirrorIdentity = FamilyB(u"Velmora Co., Ltd. Mirror Video Filter", 10278);

class MirrorFilter final : public Filter<MirrorFilter> {
public:
    static constexpr const Identity& kIdentity = kMirrorIdentity;

    explicit MirrorFilter(IHost* host) : Filter(host) { BindRecord(&record_, kMirrorRecord); }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s != status::ok) return s;
        const MirrorRecord flags = ReadShared(record_);
        const bool horizontal = flags.horizontalFlip != 0, vertical = flags.verticalFlip != 0;
        // One frame as both source and destination: rows are exchanged
        // through one row of scratch. Any other overlap mirrors from a copy
        // of the field's rows, or the second half of a row would read pairs
        // already overwritten.
        if (v.src == v.dst) {
            std::unique_ptr<uint8_t[]> row(new (std::nothrow) uint8_t[size_t{4} * static_cast<size_t>(v.pairs)]);
            if (!row) return status::out_of_memory;
            MirrorFieldInPlace(v, horizontal, vertical, Simd(), row.get());
            return status::ok;
        }
        std::unique_ptr<uint8_t[]> scratch;
        if (SourceOverlapsDestination(v) && !DetachSource(&v, &scratch)) return status::out_of_memory;
        MirrorField(v, horizontal, vertical, Simd());
        return status::ok;
    }

protected:
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) MirrorSetupDialog(&record_));
    }

private:
    MirrorRecord record_;
};

}  // namespace

IVideoFilter* CreateMirror(IHost* host) { return MakeClassObject<MirrorFilter>(host); }

}  // namespace zvf::filters
