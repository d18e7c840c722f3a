// EmbossSetupDialog, platform-free: eight direction radio buttons and the
// depth slider with its edit box, over a working copy of the record and the
// copy taken when the dialog was last shown. Every change reaches the record
// at once, so the host's preview shows it; Cancel puts back the copy taken
// when the dialog was shown.
#pragma once

#include <cstdint>

#include "emboss_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class EmbossSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12011;
    static constexpr uint32_t kFirstRadio = 12013;  // "&1" at the top, clockwise to "&8" (12020)
    static constexpr uint32_t kLastRadio = kFirstRadio + kEmbossLastDirection;
    static constexpr uint32_t kDepthEdit = 12021;
    static constexpr uint32_t kDepthSlider = 12023;
    // The depth pair's range, page step and tick spacing.
    static constexpr double kDepthMin = 0;
    static constexpr double kDepthMax = kEmbossMaxDepth;
    static constexpr int32_t kDepthPage = 10;
    static constexpr int32_t kDepthTicks = 50;

    explicit EmbossSetupDialog(EmbossRecord* record)
        : SetupDialog(kTemplate, 196, 122), record_(record), working_(*record), shown_(*record) {}

    // Refreshes the shown copy from the working copy; the controls show it.
    void OnShown() override;
    // RefreshSetup: both copies from the record.
    void Reload() override;

    // A radio button selected: false for any control outside the ring.
    bool SelectRadio(uint32_t control);
    // The slider moved or the edit box changed; clamped to 0..500.
    void SetDepth(int64_t value);
    // OK keeps what the controls wrote; Cancel restores the shown copy into
    // the working copy and the record, and has the preview redrawn.
    void Ok();
    void Cancel();

    // The checked radio button and the depth controls' value. A record
    // loaded with values outside the controls' ranges shows the nearest.
    uint32_t CheckedRadio() const;
    uint32_t DepthControl() const;
    EmbossRecord Working() const;
    EmbossRecord Shown() const;

private:
    // Applies one control change to the working copy and the record under
    // the dialog's lock, then asks the host to redraw.
    template <class Change>
    void Update(Change change);

    EmbossRecord* record_;
    EmbossRecord working_;
    EmbossRecord shown_;
};

}  // namespace zvf::filters
