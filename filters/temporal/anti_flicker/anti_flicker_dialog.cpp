#include "anti_flicker_dialog.h"

namespace zvf::filters {

void AntiFlickerSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = Snapshot(*record_);
    shown_ = working_;
}

void AntiFlickerSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = Snapshot(*record_);
}

void AntiFlickerSetupDialog::Write(uint32_t power) {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_.power = power;
        std::atomic_ref<uint32_t>(record_->power).store(power, std::memory_order_relaxed);
    }
    NotifyChanged();
}

void AntiFlickerSetupDialog::SetPower(int64_t percent) {
    const FieldDesc& f = kAntiFlickerFields[0];
    const auto lo = static_cast<int64_t>(f.min);
    const auto hi = static_cast<int64_t>(f.max);
    Write(static_cast<uint32_t>(percent < lo ? lo : (percent > hi ? hi : percent)));
}

void AntiFlickerSetupDialog::Cancel() {
    uint32_t power;
    {
        std::lock_guard<std::mutex> lock(lock_);
        power = shown_.power;
    }
    Write(power);
}

AntiFlickerRecord AntiFlickerSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

AntiFlickerRecord AntiFlickerSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
