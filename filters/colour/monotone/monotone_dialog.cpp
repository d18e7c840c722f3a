#include "monotone_dialog.h"

namespace zvf::filters {

void MonotoneSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = *record_;
    opened_ = working_;
}

void MonotoneSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = *record_;
}

void MonotoneSetupDialog::SetComponent(int component, int32_t value) {
    if (component < 0 || component > 1) return;
    busy_.store(true);
    const auto byte = static_cast<uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
    {
        std::lock_guard<std::mutex> lock(lock_);
        (component == 0 ? working_.u : working_.v) = byte;
        *record_ = working_;
    }
    NotifyChanged();
    busy_.store(false);
}

void MonotoneSetupDialog::Ok() {
    std::lock_guard<std::mutex> lock(lock_);
    *record_ = working_;
}

void MonotoneSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_ = opened_;
        *record_ = opened_;
    }
    NotifyChanged();
}

MonotoneRecord MonotoneSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

MonotoneRecord MonotoneSetupDialog::Opened() const {
    std::lock_guard<std::mutex> lock(lock_);
    return opened_;
}

}  // namespace zvf::filters
