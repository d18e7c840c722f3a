// What Anti Flicker remembers between render calls: the source frame last
// rendered for each field parity, whose rows the other parity blends with,
// and the host's field synchronisation service.
#pragma once

#include <cstdint>
#include <mutex>

#include "zvf/abi.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

class AntiFlickerEngine {
public:
    AntiFlickerEngine() = default;
    ~AntiFlickerEngine();
    AntiFlickerEngine(const AntiFlickerEngine&) = delete;
    AntiFlickerEngine& operator=(const AntiFlickerEngine&) = delete;

    // Before a sequence: obtains the synchronisation service anew from `host`
    // (it may be missing; the host may be null) and forgets the remembered
    // sources, whose frames the host may have freed since.
    void Prepare(IHost* host);
    // After a sequence: forgets the remembered sources.
    void Forget();

    // One field. The neighbour rows come from the source last remembered for
    // the other parity; while there is none of this frame size they come from
    // this call's own source. Remembered frames are not owned: the host keeps
    // them alive until the other field's call of the same frame has run.
    // `level` picks the row kernels; every level gives the same bytes.
    Status Render(IHost* host, IVideoFrame* dst, IVideoFrame* src, const Rect* rect, int32_t field, uint32_t power,
                  SimdLevel level = SimdLevel::scalar);

private:
    struct Remembered {
        const uint8_t* base = nullptr;
        int32_t width = 0;
        int32_t height = 0;
    };

    std::mutex lock_;  // guards the members below
    bool prepared_ = false;
    IFieldSync* sync_ = nullptr;
    Remembered source_[2];
};

}  // namespace zvf::filters
