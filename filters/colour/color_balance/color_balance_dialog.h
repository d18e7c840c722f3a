// ColorBalanceSetupDialog, platform-free: six sliders, the safe-colour box
// and "&Default". Every change recomputes the U/V/Y offsets and reaches the
// instance's record at once, so the preview follows the slider; Cancel puts
// back what the dialog was shown with. The reserved fields are never written.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "color_balance_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

// The sliders in dialog order; each pairs with a value box, range -128..127.
enum class BalanceSlider { Chroma, Bright, Contrast, RedCyan, GreenMagenta, BlueYellow };

struct BalanceSliderInfo {
    BalanceSlider slider;
    const char16_t* label;     // left label ("Cyan" ... "Red" for the axes)
    const char16_t* endLabel;  // right label of an axis, else null
    int32_t ColorBalanceRecord::*field;
};
inline constexpr BalanceSliderInfo kBalanceSliders[] = {
    {BalanceSlider::Chroma, u"&Chroma", nullptr, &ColorBalanceRecord::chroma},
    {BalanceSlider::Bright, u"&Bright", nullptr, &ColorBalanceRecord::bright},
    {BalanceSlider::Contrast, u"C&ontrast", nullptr, &ColorBalanceRecord::contrast},
    {BalanceSlider::RedCyan, u"Cyan", u"Red", &ColorBalanceRecord::redCyan},
    {BalanceSlider::GreenMagenta, u"Magenta", u"Green", &ColorBalanceRecord::greenMagenta},
    {BalanceSlider::BlueYellow, u"Yellow", u"Blue", &ColorBalanceRecord::blueYellow},
};
constexpr double kBalanceSliderMin = -128;
constexpr double kBalanceSliderMax = 127;

// Recomputes the derived fields of `r` from its axes and bright.
void UpdateDerivedFields(ColorBalanceRecord* r);

// The gradient behind an axis slider (0 red-cyan, 1 green-magenta,
// 2 blue-yellow): n pixels for positions -128..127 left to right, each the
// colour that axis value would give with the other two axes as they are, on
// mid grey. Pixels are bytes B, G, R, 0.
std::vector<uint32_t> AxisGradient(int axis, const ColorBalanceRecord& working, int32_t n);

class ColorBalanceSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12111;

    explicit ColorBalanceSetupDialog(ColorBalanceRecord* record)
        : SetupDialog(kTemplate, 236, 196), record_(record), working_(*record), shown_(*record) {}

    // Placed inside the work area of the monitor under the cursor.
    bool PlacesInWorkArea() const override { return true; }
    void OnShown() override;
    void Reload() override;

    // A slider or value-box change, clamped to -128..127.
    void SetSlider(BalanceSlider slider, int32_t value);
    void SetSafeColor(bool on);
    // "&Default": axes, bright, chroma, contrast and the offsets to 0; the
    // safe-colour box keeps its state.
    void Default();
    // OK copies safe colour and fields 4 to 12 into the record; Cancel puts
    // back those fields as they were when the dialog was shown.
    void Ok();
    void Cancel();

    ColorBalanceRecord Working() const;
    ColorBalanceRecord Shown() const;
    // Bumped each time an axis gradient must be repainted: moving one axis
    // repaints the other two.
    uint32_t GradientStamp(int axis) const;

private:
    void ApplyLocked(const ColorBalanceRecord& from);

    ColorBalanceRecord* record_;
    ColorBalanceRecord working_;
    ColorBalanceRecord shown_;
    std::array<uint32_t, 3> gradientStamps_{};
};

}  // namespace zvf::filters
