// Smooth Blur (BlurHQFilter): Blur's record, buffers and dialog with the
// higher-precision kernel.
#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_family_filter.h"

namespace zvf::filters {
namespace {

constexpr Identity kSmoothBlurIdentity = FamilyB(u"Velmora Co., Ltd. BlurHQ Video Filter", 10208, caps::kPlain);

class BlurHQFilter final : public BlurFamilyFilter<BlurHQFilter> {
public:
    static constexpr const Identity& kIdentity = kSmoothBlurIdentity;
    // Unlike Blur, a field without a row or a pair of the rectangle fails.
    static constexpr Status kEmptyFieldStatus = status::fail;
    static constexpr int32_t kDialogMode = BlurSetupDialog::kModeSmooth;
    static bool Kernel(const FieldView& v, int32_t weight, std::span<int32_t> scratch, SimdLevel level) {
        return SmoothBlurField(v, weight, scratch, level);
    }

    explicit BlurHQFilter(IHost* host) : BlurFamilyFilter(host) {}
};

}  // namespace

IVideoFilter* CreateSmoothBlur(IHost* host) { return MakeClassObject<BlurHQFilter>(host); }

}  // namespace zvf::filters
