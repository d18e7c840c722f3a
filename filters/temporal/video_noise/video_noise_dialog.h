// VideoNoiseSetupDialog, platform-free: the ratio slider and the grayscale
// box write straight into the instance's record so the preview follows every
// change; Cancel puts back the values the dialog was last shown with.
#pragma once

#include <cstdint>

#include "video_noise_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class VideoNoiseSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 11002;
    static constexpr int32_t kRatioMin = 0;
    static constexpr int32_t kRatioMax = 100;
    static constexpr int32_t kPageStep = 10;

    explicit VideoNoiseSetupDialog(VideoNoiseRecord* record)
        : SetupDialog(kTemplate, 186, 74), record_(record), shown_(*record) {}

    void OnShown() override;

    // Slider or edit box; clamped to 0..100, written only when it differs.
    void SetRatio(int32_t value);
    // "Grayscale noise" check box.
    void SetGrayscale(bool on);
    // OK keeps what the record holds; Cancel restores the shown copy.
    void Cancel();

    VideoNoiseRecord Current() const;
    VideoNoiseRecord Shown() const;

private:
    VideoNoiseRecord* record_;
    VideoNoiseRecord shown_;
};

}  // namespace zvf::filters
