// ColorWheelSetupDialog, platform-free: the wheel (hue and saturation), the
// bright and contrast sliders, safe colour and "&Default". Each change goes
// into the working record and at once into the instance's record, so the
// preview follows; Cancel puts back the record as it was when the dialog was
// last shown.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "color_wheel_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class ColorWheelSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12310;

    // `live` is the instance's record, guarded by `liveLock` against the
    // render thread; both outlive the dialog.
    ColorWheelSetupDialog(ColorWheelRecord* live, std::mutex* liveLock);

    void OnShown() override;
    void Reload() override;

    // A new hue: the sine and cosine terms follow.
    void SetHue(double hue);
    // A click on the wheel at (dx, dy) from its centre (V up) with the given
    // radius: hue and saturation of that point.
    void PickOnWheel(int32_t dx, int32_t dy, int32_t radius);
    void SetSaturation(int32_t value);
    void SetBright(int32_t value);
    void SetContrast(int32_t value);
    void SetSafeColour(bool on);
    // "&Default": every word back to its default, safe colour included.
    void Default();
    // OK keeps the record; Cancel restores the copy taken when shown.
    void Commit();
    void Cancel();

    ColorWheelRecord Working() const;
    ColorWheelRecord Shown() const;
    // The status texts for the working hue and saturation.
    std::string HueStatus() const;
    std::string SaturationStatus() const;
    // The status texts while the mouse is over the wheel at (dx, dy).
    static std::string HoverHueStatus(int32_t dx, int32_t dy, int32_t radius);
    static std::string HoverSaturationStatus(int32_t dx, int32_t dy, int32_t radius);

private:
    template <class Change>
    void Edit(Change change);
    void Publish(const ColorWheelRecord& r);

    ColorWheelRecord* live_;
    std::mutex* liveLock_;
    ColorWheelRecord working_;
    ColorWheelRecord shown_;
};

}  // namespace zvf::filters
