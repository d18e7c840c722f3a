// BlurSetupDialog, platform-free; Blur opens it in mode 0, Smooth Blur in
// mode 1 (the mode picks the window title, the controls are the same).
//
// The dialog keeps a working copy of the whole record and the copy taken
// when it was last shown. A radius change recomputes the coefficient, is
// written to the working copy and, so the preview follows the slider, to the
// instance's record, all under the dialog's lock; then the host is told to
// redraw. OK keeps the working copy; Cancel puts back the shown copy.
#pragma once

#include <cstdint>

#include "blur_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class BlurSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12001;
    static constexpr uint32_t kSlider = 12007;
    static constexpr uint32_t kEdit = 12005;
    static constexpr int32_t kTicks[] = {0, 10, 20, 30, 40, 50, 60, 70, 80, 90};
    static constexpr int32_t kModeBlur = 0;
    static constexpr int32_t kModeSmooth = 1;

    BlurSetupDialog(BlurRecord* record, int32_t mode)
        : SetupDialog(kTemplate, 191, 58), record_(record), mode_(mode), working_(*record), shown_(*record) {}

    void OnShown() override;
    void Reload() override;

    // The radius slider's range, from the record description.
    static int32_t MinRadius();
    static int32_t MaxRadius();
    // A slider move or edit change; the value is clamped into the range.
    void SetRadius(int32_t radius);
    // OK: the working copy becomes the record (it already drives the preview).
    void Commit();
    // Cancel: the record and the working copy return to the shown copy.
    void Cancel();

    int32_t Mode() const { return mode_; }
    // String id of the window title: "Blur Setup" or "Smooth Blur".
    uint32_t TitleId() const { return mode_ == kModeSmooth ? 10214 : 10207; }
    BlurRecord Working() const;
    BlurRecord Shown() const;

private:
    BlurRecord* record_;
    int32_t mode_;
    BlurRecord working_;
    BlurRecord shown_;
};

}  // namespace zvf::filters
