// Video Noise's generators, stream layout and mixing kernel. Randomness stays
// outside: the caller chooses the seed, so a fixed seed gives fixed bytes.
#pragma once

#include <cstdint>

#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// Linear congruential generators, modulo 2^32.
constexpr uint32_t kMulA = 1664525u, kAddA = 1013904223u;
constexpr uint32_t kMulB = 1566083941u, kAddB = 69069u;
constexpr uint32_t NoiseStepA(uint32_t x) { return x * kMulA + kAddA; }
constexpr uint32_t NoiseStepB(uint32_t x) { return x * kMulB + kAddB; }

// Signed noise values of one draw: bits 8..15 and bits 16..23, less 128.
constexpr int32_t NoiseLow(uint32_t draw) { return static_cast<int32_t>((draw >> 8) & 0xFF) - 128; }
constexpr int32_t NoiseHigh(uint32_t draw) { return static_cast<int32_t>((draw >> 16) & 0xFF) - 128; }

// k steps of the generator x' = a x + c at once: x_{n+k} = mul x_n + add
// (mod 2^32), so vector kernels can start lanes and lines anywhere.
struct NoiseJump {
    uint32_t mul = 1;
    uint32_t add = 0;
    constexpr uint32_t operator()(uint32_t x) const { return mul * x + add; }
};
constexpr NoiseJump NoiseJumpBy(uint32_t a, uint32_t c, uint32_t k) {
    NoiseJump r, p{a, c};
    for (; k != 0; k >>= 1) {
        if (k & 1) r = {p.mul * r.mul, p.mul * r.add + p.add};
        p = {p.mul * p.mul, p.mul * p.add + p.add};
    }
    return r;
}

// Pairs per line from which lines stop sharing one continuous stream.
constexpr int32_t kWideNoisePairs = 512;

// The draws of one render call, pair by pair and line by line.
// Narrow regions run generator A as one stream over all pairs and lines.
// Wide regions juggle a working slot S and a saved slot M so that successive
// lines are not one continuous stream: S starts as the seed rotated by 16
// bits and M as the seed; each line exchanges them and rotates S; in colour
// mode each pair runs A on one slot and B on the other, so the line-start
// exchange swaps which state feeds which generator.
class NoiseStream {
public:
    NoiseStream(uint32_t seed, bool wide) : s_(wide ? Rotate16(seed) : seed), m_(seed), wide_(wide) {}

    void StartLine() {
        if (!wide_) return;
        Swap();
        s_ = Rotate16(s_);
    }
    // Luma-only mode: one draw per pair.
    uint32_t Gray() {
        s_ = NoiseStepA(s_);
        return s_;
    }
    // Colour mode: two draws per pair.
    void Colour(uint32_t* r1, uint32_t* r2) {
        if (!wide_) {
            *r1 = s_ = NoiseStepA(s_);
            *r2 = s_ = NoiseStepA(s_);
            return;
        }
        Swap();
        *r1 = s_ = NoiseStepA(s_);
        Swap();
        *r2 = s_ = NoiseStepB(s_);
    }

    // The slots the next draws start from: Gray and narrow Colour run A on
    // Working(); wide Colour runs A on Saved() and B on Working().
    bool Wide() const { return wide_; }
    uint32_t Working() const { return s_; }
    uint32_t Saved() const { return m_; }

    // Passes over the next n pairs as n calls of Gray or Colour would, given
    // the n-step jumps of A and B.
    void SkipGray(NoiseJump an) { s_ = an(s_); }
    void SkipColour(NoiseJump an, NoiseJump bn) {
        if (!wide_) {
            s_ = an(an(s_));
            return;
        }
        m_ = an(m_);
        s_ = bn(s_);
    }

private:
    static constexpr uint32_t Rotate16(uint32_t x) { return (x >> 16) | (x << 16); }
    void Swap() {
        const uint32_t t = s_;
        s_ = m_;
        m_ = t;
    }
    uint32_t s_;
    uint32_t m_;
    bool wide_;
};

// Weight of the noise, a 1.14 fraction: ratio * 16384 / 100 truncated toward
// zero, held in a 16-bit lane as the vector multiplies take it (every
// ratio up to 199 is exact; 5 gives 819, 100 gives 16384).
int32_t NoiseWeight(uint32_t ratio);

// One output byte: p plus the noise n scaled by w, rounded toward minus
// infinity and clamped to 0..255.
constexpr uint8_t MixNoise(uint8_t p, int32_t n, int32_t w) {
    const int32_t v = (n * w + int32_t{p} * 16384) >> 14;
    return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

// Adds noise to every pair of the field's rows, reading the source and
// writing the destination (which may be the same frame). Luma-only mode
// leaves Cb and Cr as they are.
void AddNoiseField(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed);

// SSE2 twin of AddNoiseField: bit-exact with the scalar version for every
// input, weight and seed (the scalar version defines the results). Runs the
// scalar version on builds without SSE2.
void AddNoiseFieldSse2(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed);
// AVX2 twin, bit-exact likewise. Runs the SSE2 version on builds without AVX2.
void AddNoiseFieldAvx2(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed);
// AVX-512 (F, BW) twin, bit-exact likewise. Runs the AVX2 version on builds
// other than x86-64.
void AddNoiseFieldAvx512(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed);

using NoiseKernel = void (*)(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed);
// The fastest twin the level allows; the scalar one at SimdLevel::scalar.
NoiseKernel SelectNoiseKernel(SimdLevel level);

}  // namespace zvf::filters
