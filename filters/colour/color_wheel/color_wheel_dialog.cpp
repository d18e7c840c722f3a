#include "color_wheel_dialog.h"

#include "color_wheel_hue.h"

namespace zvf::filters {
namespace {

int32_t Setting(int32_t v) { return v < -128 ? -128 : (v > 127 ? 127 : v); }

ColorWheelRecord Read(const ColorWheelRecord* live, std::mutex* lock) {
    std::lock_guard<std::mutex> hold(*lock);
    return *live;
}

}  // namespace

ColorWheelSetupDialog::ColorWheelSetupDialog(ColorWheelRecord* live, std::mutex* liveLock)
    : SetupDialog(kTemplate, 260, 190), live_(live), liveLock_(liveLock), working_(Read(live, liveLock)),
      shown_(working_) {}

void ColorWheelSetupDialog::Publish(const ColorWheelRecord& r) {
    std::lock_guard<std::mutex> hold(*liveLock_);
    *live_ = r;
}

template <class Change>
void ColorWheelSetupDialog::Edit(Change change) {
    {
        std::lock_guard<std::mutex> lock(lock_);
        change(working_);
        Publish(working_);
    }
    NotifyChanged();
}

void ColorWheelSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = working_;
}

void ColorWheelSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = Read(live_, liveLock_);
    shown_ = working_;
}

void ColorWheelSetupDialog::SetHue(double hue) {
    const HueTerms t = TermsFromHue(hue);
    Edit([&](ColorWheelRecord& r) {
        r.hue = hue;
        r.sine = t.sine;
        r.cosine = t.cosine;
    });
}

void ColorWheelSetupDialog::PickOnWheel(int32_t dx, int32_t dy, int32_t radius) {
    const WheelPoint p = PointOnWheel(dx, dy, radius);
    const double hue = HueFromHundredths(p.hundredths);
    const HueTerms t = TermsFromHue(hue);
    Edit([&](ColorWheelRecord& r) {
        r.hue = hue;
        r.sine = t.sine;
        r.cosine = t.cosine;
        r.saturation = p.saturation;
    });
}

void ColorWheelSetupDialog::SetSaturation(int32_t value) {
    Edit([&](ColorWheelRecord& r) { r.saturation = Setting(value); });
}

void ColorWheelSetupDialog::SetBright(int32_t value) {
    Edit([&](ColorWheelRecord& r) { r.bright = Setting(value); });
}

void ColorWheelSetupDialog::SetContrast(int32_t value) {
    Edit([&](ColorWheelRecord& r) { r.contrast = Setting(value); });
}

void ColorWheelSetupDialog::SetSafeColour(bool on) {
    Edit([&](ColorWheelRecord& r) { r.safeColour = on ? 1 : 0; });
}

void ColorWheelSetupDialog::Default() {
    Edit([](ColorWheelRecord& r) { r = ColorWheelRecord(); });
}

void ColorWheelSetupDialog::Commit() {
    std::lock_guard<std::mutex> lock(lock_);
    Publish(working_);
    shown_ = working_;
}

void ColorWheelSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_ = shown_;
        Publish(working_);
    }
    NotifyChanged();
}

ColorWheelRecord ColorWheelSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

ColorWheelRecord ColorWheelSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

std::string ColorWheelSetupDialog::HueStatus() const { return HueText(Working().hue); }

std::string ColorWheelSetupDialog::SaturationStatus() const { return SaturationText(Working().saturation); }

std::string ColorWheelSetupDialog::HoverHueStatus(int32_t dx, int32_t dy, int32_t radius) {
    return HueTextFromHundredths(PointOnWheel(dx, dy, radius).hundredths);
}

std::string ColorWheelSetupDialog::HoverSaturationStatus(int32_t dx, int32_t dy, int32_t radius) {
    return SaturationText(PointOnWheel(dx, dy, radius).saturation);
}

}  // namespace zvf::filters
