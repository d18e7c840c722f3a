// AntiFlickerSetupDialog, platform-free: the "Power" slider writes into the
// filter's record at once, so the preview follows it; Cancel puts back the
// power the record held when the dialog was last shown.
#pragma once

#include <cstdint>

#include "anti_flicker_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class AntiFlickerSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 15129;
    static constexpr double kPageStep = 10;

    explicit AntiFlickerSetupDialog(AntiFlickerRecord* record)
        : SetupDialog(kTemplate, 200, 70), record_(record), working_(Snapshot(*record)), shown_(working_) {}

    void OnShown() override;
    void Reload() override;

    // Slider or edit: kept within the record's range, 0..100.
    void SetPower(int64_t percent);
    void Cancel();
    AntiFlickerRecord Working() const;
    AntiFlickerRecord Shown() const;

private:
    void Write(uint32_t power);

    AntiFlickerRecord* record_;
    AntiFlickerRecord working_;
    AntiFlickerRecord shown_;
};

}  // namespace zvf::filters
