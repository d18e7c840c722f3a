// Blur (BlurFilter): the recursive blur in whole 8-bit steps.
#include "blur_family_filter.h"
#include "blur_kernel.h"

namespace zvf::filters {
namespace {

constexpr Identity kBlurIdentity = FamilyB(u"Velmora Co., Ltd. Blur Video Filter", 10201);

class BlurFilter final : public BlurFamilyFilter<BlurFilter> {
public:
    static constexpr const Identity& kIdentity = kBlurIdentity;
    // A field without a row or a pair of the rectangle is simply done.
    static constexpr Status kEmptyFieldStatus = status::ok;
    static constexpr int32_t kDialogMode = BlurSetupDialog::kModeBlur;
    static bool Kernel(const FieldView& v, int32_t weight, std::span<int32_t> scratch, SimdLevel level) {
        return BlurField(v, weight, scratch, level);
    }

    explicit BlurFilter(IHost* host) : BlurFamilyFilter(host) {}
};

}  // namespace

IVideoFilter* CreateBlur(IHost* host) { return MakeClassObject<BlurFilter>(host); }

}  // namespace zvf::filters
