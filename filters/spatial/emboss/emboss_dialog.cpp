#include "emboss_dialog.h"

#include <algorithm>

namespace zvf::filters {

void EmbossSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = working_;
}

void EmbossSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = ReadShared(*record_);
    shown_ = working_;
}

template <class Change>
void EmbossSetupDialog::Update(Change change) {
    {
        std::lock_guard<std::mutex> lock(lock_);
        change(working_);
        WriteShared(*record_, working_);
    }
    NotifyChanged();
}

bool EmbossSetupDialog::SelectRadio(uint32_t control) {
    if (control < kFirstRadio || control > kLastRadio) return false;
    Update([&](EmbossRecord& w) { w.direction = control - kFirstRadio; });
    return true;
}

void EmbossSetupDialog::SetDepth(int64_t value) {
    const auto depth = static_cast<uint32_t>(std::clamp<int64_t>(value, 0, kEmbossMaxDepth));
    Update([&](EmbossRecord& w) { w.depth = depth; });
}

void EmbossSetupDialog::Ok() {
    std::lock_guard<std::mutex> lock(lock_);
    WriteShared(*record_, working_);
}

void EmbossSetupDialog::Cancel() {
    Update([this](EmbossRecord& w) { w = shown_; });
}

uint32_t EmbossSetupDialog::CheckedRadio() const {
    std::lock_guard<std::mutex> lock(lock_);
    return kFirstRadio + std::min(working_.direction, kEmbossLastDirection);
}

uint32_t EmbossSetupDialog::DepthControl() const {
    std::lock_guard<std::mutex> lock(lock_);
    return std::min(working_.depth, kEmbossMaxDepth);
}

EmbossRecord EmbossSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

EmbossRecord EmbossSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
