// MonotoneSetupDialog, platform-free: two sliders, U and V (0..255). A change
// reaches the instance's record at once so the preview follows it; Cancel
// puts back the bytes the dialog was shown with.
#pragma once

#include <atomic>
#include <cstdint>

#include "monotone_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class MonotoneSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12101;

    explicit MonotoneSetupDialog(MonotoneRecord* record)
        : SetupDialog(kTemplate, 186, 74), record_(record), working_(*record), opened_(*record) {}

    void OnShown() override;
    void Reload() override;
    // Idle while no control change is being handled.
    int32_t IdleState() const override { return busy_.load() ? 0 : 1; }

    // A slider or value-box change: component 0 is U, 1 is V; clamped to 0..255.
    void SetComponent(int component, int32_t value);
    // OK keeps the working bytes; Cancel restores the ones shown.
    void Ok();
    void Cancel();

    MonotoneRecord Working() const;
    MonotoneRecord Opened() const;

private:
    MonotoneRecord* record_;
    MonotoneRecord working_;
    MonotoneRecord opened_;
    std::atomic<bool> busy_{false};
};

}  // namespace zvf::filters
