#include "block_color_dialog.h"

namespace zvf::filters {
namespace {

uint8_t ToByte(int32_t sum) {
    if (sum < 0) return 0;
    if ((sum & ~0x3FFF) > 0x3FC000) return 255;
    return static_cast<uint8_t>(sum >> 14);
}

}  // namespace

uint32_t RampPixel(int32_t y, int32_t u, int32_t v) {
    const int32_t luma = 19071 * (y - 16);
    const uint8_t r = ToByte(luma + 26149 * (v - 128));
    const uint8_t g = ToByte(luma - 6422 * (u - 128) - 13320 * (v - 128));
    const uint8_t b = ToByte(luma + 33047 * (u - 128));
    return uint32_t{b} | (uint32_t{g} << 8) | (uint32_t{r} << 16);
}

std::vector<uint32_t> ColourRamp(int component, const BlockColorRecord& working, int32_t n) {
    std::vector<uint32_t> ramp(n > 0 ? static_cast<size_t>(n) : 0);
    for (int32_t i = 0; i < n; ++i) {
        int32_t c[3] = {working.y, working.u, working.v};
        c[component] = static_cast<int32_t>(255LL * i / n);
        ramp[static_cast<size_t>(i)] = RampPixel(c[0], c[1], c[2]);
    }
    return ramp;
}

void SolidColorSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = working_;
}

void SolidColorSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = *record_;
    shown_ = working_;
}

void SolidColorSetupDialog::SetComponent(int component, int32_t value) {
    const auto byte = static_cast<uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
    {
        std::lock_guard<std::mutex> lock(lock_);
        uint8_t* c[3] = {&working_.y, &working_.u, &working_.v};
        if (component < 0 || component > 2) return;
        *c[component] = byte;
    }
    NotifyChanged();
}

void SolidColorSetupDialog::Commit() {
    std::lock_guard<std::mutex> lock(lock_);
    *record_ = working_;
}

BlockColorRecord SolidColorSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

BlockColorRecord SolidColorSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
