#include "blur_dialog.h"

namespace zvf::filters {
namespace {

const FieldDesc& RadiusField() { return *FindField(kBlurRecord, "radius"); }

}  // namespace

int32_t BlurSetupDialog::MinRadius() { return static_cast<int32_t>(RadiusField().min); }
int32_t BlurSetupDialog::MaxRadius() { return static_cast<int32_t>(RadiusField().max); }

void BlurSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = working_;
}

void BlurSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = *record_;
    shown_ = working_;
}

void BlurSetupDialog::SetRadius(int32_t radius) {
    const int32_t lo = MinRadius();
    const int32_t hi = MaxRadius();
    const int32_t r = radius < lo ? lo : (radius > hi ? hi : radius);
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_.radius = r;
        working_.coefficient = BlurCoefficient(r);
        StoreRadius(*record_, working_.radius, working_.coefficient);
    }
    NotifyChanged();
}

void BlurSetupDialog::Commit() {
    std::lock_guard<std::mutex> lock(lock_);
    StoreRecord(*record_, working_);
}

void BlurSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_ = shown_;
        StoreRecord(*record_, shown_);
    }
    NotifyChanged();
}

BlurRecord BlurSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

BlurRecord BlurSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
