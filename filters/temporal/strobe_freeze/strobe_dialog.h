// StrobeSetupDialog, platform-free: every control change goes into the
// filter's record at once (the preview follows while the dialog is open);
// Cancel puts back what the record held when the dialog was last shown.
#pragma once

#include <cstdint>

#include "strobe_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class StrobeSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 11004;

    explicit StrobeSetupDialog(StrobeRecord* record)
        : SetupDialog(kTemplate, 220, 150), record_(record), working_(Snapshot(*record)), shown_(working_) {}

    void OnShown() override;
    void Reload() override;

    // Slider or edit of "Interval" and "Duration": kept within the record's
    // dialog range (1..100); the two are not compared with each other.
    void SetInterval(int64_t frames);
    void SetDuration(int64_t frames);
    // Radio groups: 0 Move / 1 Freeze, and 0 Freeze / 1 Color Frame.
    // Other values are not choices of the dialog and are ignored.
    void SetFirstHalfMode(uint32_t mode);
    void SetSecondHalfMode(uint32_t mode);
    // What a colour chooser returns, 0x00BBGGRR.
    void SetFrameColor(uint32_t colorref);

    // The colour swatch is live only while "Color Frame" is chosen.
    bool SwatchEnabled() const;
    uint32_t SwatchColor() const;

    void Cancel();
    StrobeRecord Working() const;
    StrobeRecord Shown() const;

private:
    void Write(uint32_t StrobeRecord::*field, uint32_t value);

    StrobeRecord* record_;
    StrobeRecord working_;
    StrobeRecord shown_;
};

}  // namespace zvf::filters
