// SolidColorSetupDialog, platform-free: the working and shown colours, the
// commit into the record, and the colour ramps painted behind the sliders.
#pragma once

#include <cstdint>
#include <vector>

#include "block_color_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

// Colour of a Y/Cb/Cr triple as the ramps show it: integer BT.601 in 14-bit
// fixed point, packed as bytes B, G, R, 0 (a 32-bit DIB pixel).
uint32_t RampPixel(int32_t y, int32_t u, int32_t v);
// One slider's ramp: `component` (0 Y, 1 U, 2 V) runs 0..255 across n pixels
// while the other two keep their working values.
std::vector<uint32_t> ColourRamp(int component, const BlockColorRecord& working, int32_t n);

class SolidColorSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12091;
    static constexpr uint32_t kSliders[3] = {12095, 12098, 13000};
    static constexpr uint32_t kEdits[3] = {12093, 12096, 12099};

    explicit SolidColorSetupDialog(BlockColorRecord* record)
        : SetupDialog(kTemplate, 189, 103), record_(record), working_(*record), shown_(*record) {}

    void OnShown() override;
    void Reload() override;

    // A slider move or edit change of component 0 (Y), 1 (U) or 2 (V).
    void SetComponent(int component, int32_t value);
    // OK: the working colour becomes the record's.
    void Commit();
    BlockColorRecord Working() const;
    BlockColorRecord Shown() const;

private:
    BlockColorRecord* record_;
    BlockColorRecord working_;
    BlockColorRecord shown_;
};

}  // namespace zvf::filters
