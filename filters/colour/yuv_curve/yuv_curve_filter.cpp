// YUV Curve (ColorCorrectionYUV): each component through its own transfer
// curve, by table or, for three straight lines, by fixed-point line.
#include <mutex>

#include "../../factories.h"
#include "yuv_curve_codec.h"
#include "yuv_curve_dialog.h"
#include "yuv_curve_kernel.h"
#include "yuv_curve_pair_tables.h"
#include "yuv_curve_record.h"
#include "yuv_curve_tables.h"

namespace zvf::filters {
namespace {

constexpr Identity kYuvCurveIdentity = FamilyB(u"Velmora Co., Ltd. ColorCorrectionYUV Video Filter", 10285);

class YuvCurveFilter final : public Filter<YuvCurveFilter> {
public:
    static constexpr const Identity& kIdentity = kYuvCurveIdentity;

    explicit YuvCurveFilter(IHost* host) : Filter(host) {
        RebuildTables(record_);
        BindRecord(&record_.fixed, kYuvCurveRecord);
    }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s != status::ok) return s;
        CurveSnapshot snapshot;
        {
            std::lock_guard<std::mutex> hold(lock_);  // the dialog may be writing
            snapshot = TakeSnapshot(record_);
        }
        // Curves that need the tables go two bytes at a time where the
        // field's pair tables are free, unless the processor looks bytes up
        // in registers (byte shuffles from AVX2 on), which is faster still.
        if (Simd() < SimdLevel::avx2 && ChooseCurveKernel(snapshot) == CurveKernel::Table &&
            pairs_.Render(field, v, snapshot.fixed.table))
            return status::ok;
        RenderCurve(v, snapshot, Simd());
        return status::ok;
    }

protected:
    uint32_t PayloadSize() const override { return CurvePayloadSize(record_); }
    void EncodePayload(uint8_t* out) const override { EncodeCurvePayload(record_, out); }
    uint32_t MinPayload() const override { return sizeof(YuvCurveFixed); }
    void DecodePayload(const blob::Accepted& accepted) override {
        DecodeCurvePayload(accepted.payload, accepted.available, &record_);  // false keeps the defaults
    }
    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) YuvCurveSetupDialog(&record_, &lock_));
    }

private:
    YuvCurveRecord record_;
    std::mutex lock_;
    CurvePairCache pairs_;
};

}  // namespace

IVideoFilter* CreateYuvCurve(IHost* host) { return MakeClassObject<YuvCurveFilter>(host); }

}  // namespace zvf::filters
