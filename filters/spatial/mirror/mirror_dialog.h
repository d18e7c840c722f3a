// MirrorSetupDialog, platform-free: two check boxes over a working copy of
// the flags and the copy taken when the dialog was last shown. A click
// reaches the record at once, so the host's preview shows it; Cancel puts
// back the copy taken when the dialog was shown.
#pragma once

#include <cstdint>

#include "mirror_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class MirrorSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 13011;
    static constexpr uint32_t kHorizontalBox = 13013;  // "&Horizontal flipping"
    static constexpr uint32_t kVerticalBox = 13014;    // "&Vertical flipping"

    explicit MirrorSetupDialog(MirrorRecord* record)
        : SetupDialog(kTemplate, 159, 46), record_(record), working_(*record), shown_(*record) {}

    // Refreshes the shown copy from the working copy; the boxes show it.
    void OnShown() override;
    // RefreshSetup: both copies from the record.
    void Reload() override;

    // A click on one of the boxes, with its new state: the working copy and
    // the record take it, and the host redraws. False for any other control.
    bool Click(uint32_t control, bool checked);
    // OK keeps what the clicks wrote; Cancel restores the shown copy into the
    // working copy and the record, and has the preview redrawn.
    void Ok();
    void Cancel();

    // Whether a box is checked (false for any other control).
    bool Checked(uint32_t control) const;
    MirrorRecord Working() const;
    MirrorRecord Shown() const;

private:
    MirrorRecord* record_;
    MirrorRecord working_;
    MirrorRecord shown_;
};

}  // namespace zvf::filters
