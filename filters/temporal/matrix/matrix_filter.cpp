// Matrix (MatrixFilter): a user-defined 3 x 3 convolution of luma and both
// chroma channels, optionally normalised by the kernel's sum.
#include "../../factories.h"
#include "matrix_coefficients.h"
#include "matrix_dialog.h"
#include "matrix_kernel.h"
#include "matrix_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kMatrixIdentity = FamilyA(u"Velmora Co., Ltd. Matrix Video Filter", 10019, kCategoryTop);

class MatrixFilter final : public Filter<MatrixFilter> {
public:
    static constexpr const Identity& kIdentity = kMatrixIdentity;

    explicit MatrixFilter(IHost* host) : Filter(host), coefficients_(DeriveMatrixCoefficients(record_)) {
        BindRecord(&record_, kMatrixRecord);
    }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        // Any non-zero selector takes the odd rows here.
        const Status s = OpenField(dst, src, rect, field, &v, OddRule::SelectorNonZero);
        if (s != status::ok) return s;
        const MatrixCoefficients c = coefficients_;  // read once, without a lock
        return ConvolveMatrixField(v, c, Simd()) ? status::ok : status::out_of_memory;
    }

protected:
    void DecodePayload(const blob::Accepted& accepted) override {
        FilterBase::DecodePayload(accepted);
        coefficients_ = DeriveMatrixCoefficients(record_);
    }

    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) MatrixSetupDialog(&record_, &coefficients_));
    }

private:
    MatrixRecord record_;
    MatrixCoefficients coefficients_;
};

}  // namespace

IVideoFilter* CreateMatrix() { return MakeClassObject<MatrixFilter>(nullptr); }

}  // namespace zvf::filters
