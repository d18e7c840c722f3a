#include "color_balance_dialog.h"

#include <algorithm>

#include "spatial/block_color/block_color_dialog.h"  // RampPixel: the ramps' Y/Cb/Cr to RGB

namespace zvf::filters {
namespace {

int32_t* AxisField(ColorBalanceRecord& r, int axis) {
    int32_t* fields[3] = {&r.redCyan, &r.greenMagenta, &r.blueYellow};
    return fields[axis];
}

}  // namespace

void UpdateDerivedFields(ColorBalanceRecord* r) {
    const ColourOffsets o = DeriveOffsets(r->redCyan, r->greenMagenta, r->blueYellow, r->bright);
    r->uOffset = o.u;
    r->vOffset = o.v;
    r->yOffset = o.y;
}

std::vector<uint32_t> AxisGradient(int axis, const ColorBalanceRecord& working, int32_t n) {
    std::vector<uint32_t> ramp(n > 0 && axis >= 0 && axis < 3 ? static_cast<size_t>(n) : 0);
    for (size_t i = 0; i < ramp.size(); ++i) {
        ColorBalanceRecord r = working;
        *AxisField(r, axis) = static_cast<int32_t>(-128 + int64_t{256} * static_cast<int64_t>(i) / n);
        UpdateDerivedFields(&r);
        ramp[i] = RampPixel(128, std::clamp(128 + r.uOffset, 0, 255), std::clamp(128 + r.vOffset, 0, 255));
    }
    return ramp;
}

void ColorBalanceSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = *record_;
    shown_ = working_;
}

void ColorBalanceSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = *record_;
}

void ColorBalanceSetupDialog::ApplyLocked(const ColorBalanceRecord& from) {
    record_->safeColor = from.safeColor;
    record_->redCyan = from.redCyan;
    record_->greenMagenta = from.greenMagenta;
    record_->blueYellow = from.blueYellow;
    record_->bright = from.bright;
    record_->chroma = from.chroma;
    record_->contrast = from.contrast;
    record_->uOffset = from.uOffset;
    record_->vOffset = from.vOffset;
    record_->yOffset = from.yOffset;
}

void ColorBalanceSetupDialog::SetSlider(BalanceSlider slider, int32_t value) {
    const auto it = std::find_if(std::begin(kBalanceSliders), std::end(kBalanceSliders),
                                 [slider](const BalanceSliderInfo& s) { return s.slider == slider; });
    if (it == std::end(kBalanceSliders)) return;
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_.*(it->field) = std::clamp(value, -128, 127);
        UpdateDerivedFields(&working_);
        ApplyLocked(working_);
        const int axis = static_cast<int>(slider) - static_cast<int>(BalanceSlider::RedCyan);
        if (axis >= 0)
            for (int other = 0; other < 3; ++other)
                if (other != axis) ++gradientStamps_[static_cast<size_t>(other)];
    }
    NotifyChanged();
}

void ColorBalanceSetupDialog::SetSafeColor(bool on) {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_.safeColor = on ? 1 : 0;
        ApplyLocked(working_);
    }
    NotifyChanged();
}

void ColorBalanceSetupDialog::Default() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        ColorBalanceRecord zero;
        zero.safeColor = working_.safeColor;
        std::copy(std::begin(working_.reserved), std::end(working_.reserved), zero.reserved);
        working_ = zero;
        ApplyLocked(working_);
        for (uint32_t& stamp : gradientStamps_) ++stamp;
    }
    NotifyChanged();
}

void ColorBalanceSetupDialog::Ok() {
    std::lock_guard<std::mutex> lock(lock_);
    ApplyLocked(working_);
}

void ColorBalanceSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_ = shown_;
        ApplyLocked(shown_);
        for (uint32_t& stamp : gradientStamps_) ++stamp;
    }
    NotifyChanged();
}

ColorBalanceRecord ColorBalanceSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

ColorBalanceRecord ColorBalanceSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

uint32_t ColorBalanceSetupDialog::GradientStamp(int axis) const {
    std::lock_guard<std::mutex> lock(lock_);
    return axis >= 0 && axis < 3 ? gradientStamps_[static_cast<size_t>(axis)] : 0;
}

}  // namespace zvf::filters
