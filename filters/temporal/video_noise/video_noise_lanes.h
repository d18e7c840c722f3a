// Lane layout of the vector noise kernels. A chain is one generator's draws
// for one role (r1 or r2 of a pair, or the single grayscale draw) laid out
// over up to `kNoiseChainLanes` 32-bit lanes: lane i holds the draw of pair
// i of the stretch, that is the state `offset + stride * i` steps after the
// line's start state. One jump of `stride * lanes` steps moves every lane on
// to the next stretch. Kernels keep four registers' worth of multiplies in
// flight to hide their latency: four registers of one chain in grayscale,
// two of each chain in colour.
#pragma once

#include <cstdint>

#include "video_noise_kernel.h"

namespace zvf::filters {

constexpr int32_t kNoiseChainLanes = 32;

struct NoiseChain {
    uint32_t mul[kNoiseChainLanes];
    uint32_t add[kNoiseChainLanes];
    NoiseJump next;  // from one stretch to the next, the same in every lane

    // Lane values for a line whose start state is x.
    uint32_t Lane(int32_t i, uint32_t x) const { return mul[i] * x + add[i]; }
};

inline NoiseChain MakeNoiseChain(uint32_t a, uint32_t c, uint32_t offset, uint32_t stride, uint32_t lanes) {
    NoiseChain chain;
    const NoiseJump step = NoiseJumpBy(a, c, stride);
    NoiseJump at = NoiseJumpBy(a, c, offset);
    for (int32_t i = 0; i < kNoiseChainLanes; ++i) {
        chain.mul[i] = at.mul;
        chain.add[i] = at.add;
        at = {step.mul * at.mul, step.mul * at.add + step.add};
    }
    chain.next = NoiseJumpBy(a, c, stride * lanes);
    return chain;
}

// The two chains of a render call and the line-start slot each runs on.
// Grayscale: r1 only, A on the working slot. Narrow colour: A's odd and
// even draws of one stream. Wide colour: A on the saved slot, B on the
// working one (the slots exchange twice per pair).
struct NoiseChains {
    NoiseChain r1, r2;
    bool r1FromSaved;

    NoiseChains(bool grayscale, bool wide, uint32_t lanes)
        : r1(MakeNoiseChain(kMulA, kAddA, 1, grayscale || wide ? 1 : 2, lanes)),
          r2(grayscale || !wide ? MakeNoiseChain(kMulA, kAddA, 2, 2, lanes) : MakeNoiseChain(kMulB, kAddB, 1, 1, lanes)),
          r1FromSaved(!grayscale && wide) {}
    uint32_t R1Start(const NoiseStream& s) const { return r1FromSaved ? s.Saved() : s.Working(); }
    uint32_t R2Start(const NoiseStream& s) const { return s.Working(); }
};

}  // namespace zvf::filters
