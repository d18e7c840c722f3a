#include "video_noise_dialog.h"

namespace zvf::filters {

void VideoNoiseSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = *record_;
}

void VideoNoiseSetupDialog::SetRatio(int32_t value) {
    const auto ratio = static_cast<uint32_t>(value < kRatioMin ? kRatioMin : (value > kRatioMax ? kRatioMax : value));
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (record_->ratio == ratio) return;
        record_->ratio = ratio;
    }
    NotifyChanged();
}

void VideoNoiseSetupDialog::SetGrayscale(bool on) {
    const uint32_t flag = on ? 1 : 0;
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (record_->grayscale == flag) return;
        record_->grayscale = flag;
    }
    NotifyChanged();
}

void VideoNoiseSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (record_->ratio == shown_.ratio && record_->grayscale == shown_.grayscale) return;
        *record_ = shown_;
    }
    NotifyChanged();
}

VideoNoiseRecord VideoNoiseSetupDialog::Current() const {
    std::lock_guard<std::mutex> lock(lock_);
    return *record_;
}

VideoNoiseRecord VideoNoiseSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
