#include "mirror_dialog.h"

namespace zvf::filters {

void MirrorSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = working_;
}

void MirrorSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = ReadShared(*record_);
    shown_ = working_;
}

bool MirrorSetupDialog::Click(uint32_t control, bool checked) {
    if (control != kHorizontalBox && control != kVerticalBox) return false;
    {
        std::lock_guard<std::mutex> lock(lock_);
        (control == kHorizontalBox ? working_.horizontalFlip : working_.verticalFlip) = checked ? 1 : 0;
        WriteShared(*record_, working_);
    }
    NotifyChanged();
    return true;
}

void MirrorSetupDialog::Ok() {
    std::lock_guard<std::mutex> lock(lock_);
    WriteShared(*record_, working_);
}

void MirrorSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_ = shown_;
        WriteShared(*record_, working_);
    }
    NotifyChanged();
}

bool MirrorSetupDialog::Checked(uint32_t control) const {
    std::lock_guard<std::mutex> lock(lock_);
    if (control == kHorizontalBox) return working_.horizontalFlip != 0;
    if (control == kVerticalBox) return working_.verticalFlip != 0;
    return false;
}

MirrorRecord MirrorSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

MirrorRecord MirrorSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
