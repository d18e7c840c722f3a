// The state Strobe/Freeze keeps between render calls: the held frame shared
// by both fields, which field rows of it hold a capture, and the host's
// field synchronisation and frame copy services.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "strobe_record.h"
#include "zvf/simd_level.h"
#include "zvf/abi.h"

namespace zvf::filters {

class StrobeEngine {
public:
    StrobeEngine() = default;
    ~StrobeEngine();
    StrobeEngine(const StrobeEngine&) = delete;
    StrobeEngine& operator=(const StrobeEngine&) = delete;

    // Initialisation before a sequence: obtains the services anew from `host`
    // (either may be missing; the host may be null) and drops the held frame,
    // so the next render captures afresh.
    void Prepare(IHost* host);

    // One field of one frame. Rendering works without Prepare: the services
    // are then obtained on the first call. `level` picks the capture's row
    // function; every level holds the same bytes.
    Status Render(IHost* host, IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t frame, int32_t field,
                  bool refresh, const StrobeRecord& record, SimdLevel level = SimdLevel::scalar);

    bool HoldsFrame() const;

private:
    void ReleaseAll();  // caller holds lock_

    mutable std::mutex lock_;  // guards the pointers below, not the pixels
    bool prepared_ = false;
    IFieldSync* sync_ = nullptr;
    IFrameCopy* copy_ = nullptr;
    IVideoFrame* held_ = nullptr;
    // Which field's rows of the held frame hold a capture. One flag per
    // field: each field's call fills only its own rows, so each decides on
    // its own whether its rows still need a first capture. Both fields thus
    // decide alike whether they run one after the other or at once.
    std::atomic<bool> frozenValid_[2] = {false, false};
};

}  // namespace zvf::filters
