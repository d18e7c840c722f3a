// AVX2 twin of the noise kernel. Each 32-bit lane carries the draw of one
// pair, made in place by the jumped generator (one multiply and one add move
// eight lanes on by eight pairs), so no draw goes through memory. A pair's
// 32 bits line up with the draw's: luma (or chroma) words [p0, p1] of the
// pair meet the noise words [n_low, n_high] of its draw. One byte
// multiply-add turns the draw's bytes 1 and 2, their top bits flipped to
// read them as n = byte - 128, into the words 4n (the draw's other bytes
// are multiplied by 0), and the high product of 4n with w is
// floor(n * w / 16384) for every 16-bit w, with no shift; since p * 16384 is
// a multiple of 16384, adding that to p and saturating gives the scalar
// byte exactly. The multiply-add costs no byte shuffle and no shift, the
// units the rest of the loop keeps busy.
// Helpers are forced inline: 256-bit values are never passed to a call
// (misaligned stack spills on some Windows toolchains).
#include <cstring>

#include "video_noise_kernel.h"
#include "video_noise_lanes.h"
#include "zvf/row_prefetch.h"

#if defined(__AVX2__)
#include <immintrin.h>

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

struct Consts {
    __m256i weight;      // w in every word
    __m256i noiseBytes;  // per draw: bytes 1 and 2 times 4, bytes 0 and 3 times 0
    __m256i signFlip;    // byte - 128 as a signed byte: flip the top bits of bytes 1 and 2
    __m256i lowBytes;
    __m256i interleave;  // [8 lumas, 8 chromas] per half back to Y0 Cb Y1 Cr
};

ZVF_INLINE __m256i Offsets(const __m256i& draws, const Consts& k) {
    const __m256i n4 = _mm256_maddubs_epi16(k.noiseBytes, _mm256_xor_si256(draws, k.signFlip));
    return _mm256_mulhi_epi16(n4, k.weight);
}

// Eight pairs from p to q.
template <bool kGray>
ZVF_INLINE void Mix8(const uint8_t* p, uint8_t* q, const __m256i& r1, const __m256i& r2, const Consts& k) {
    const __m256i px = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i luma = _mm256_add_epi16(_mm256_and_si256(px, k.lowBytes), Offsets(r1, k));
    __m256i chroma = _mm256_srli_epi16(px, 8);
    if constexpr (!kGray) chroma = _mm256_add_epi16(chroma, Offsets(r2, k));
    const __m256i out = _mm256_shuffle_epi8(_mm256_packus_epi16(luma, chroma), k.interleave);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(q), out);
}

// Up to eight pairs: the last few of a line go through a buffer so that
// nothing past the line is read or written.
template <bool kGray>
ZVF_INLINE void MixUpTo8(const uint8_t* p, uint8_t* q, int32_t pairs, const __m256i& r1, const __m256i& r2,
                         const Consts& k) {
    if (pairs >= 8) {
        Mix8<kGray>(p, q, r1, r2, k);
        return;
    }
    alignas(32) uint8_t buf[32] = {};
    std::memcpy(buf, p, 4 * static_cast<size_t>(pairs));
    Mix8<kGray>(buf, buf, r1, r2, k);
    std::memcpy(q, buf, 4 * static_cast<size_t>(pairs));
}

ZVF_INLINE __m256i Lanes(const NoiseChain& c, int32_t reg, const __m256i& x) {
    const __m256i mul = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c.mul + 8 * reg));
    const __m256i add = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c.add + 8 * reg));
    return _mm256_add_epi32(_mm256_mullo_epi32(x, mul), add);
}

template <bool kGray>
void Run(const FieldView& v, int32_t w, uint32_t seed) {
    constexpr int32_t kRegs = kGray ? 4 : 2;  // registers per chain
    constexpr int32_t kLanes = 8 * kRegs;
    NoiseStream stream(seed, v.pairs >= kWideNoisePairs);
    const NoiseChains chains(kGray, stream.Wide(), kLanes);
    const uint32_t n = static_cast<uint32_t>(v.pairs);
    const NoiseJump an = NoiseJumpBy(kMulA, kAddA, n), bn = NoiseJumpBy(kMulB, kAddB, n);
    Consts k;
    k.weight = _mm256_set1_epi16(static_cast<int16_t>(w));
    k.noiseBytes = _mm256_set1_epi32(0x00040400);
    k.signFlip = _mm256_set1_epi32(0x00808000);
    k.lowBytes = _mm256_set1_epi16(0x00FF);
    k.interleave = _mm256_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15,  //
                                    0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15);
    const __m256i next1Mul = _mm256_set1_epi32(static_cast<int32_t>(chains.r1.next.mul));
    const __m256i next1Add = _mm256_set1_epi32(static_cast<int32_t>(chains.r1.next.add));
    const __m256i next2Mul = _mm256_set1_epi32(static_cast<int32_t>(chains.r2.next.mul));
    const __m256i next2Add = _mm256_set1_epi32(static_cast<int32_t>(chains.r2.next.add));

    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + ptrdiff_t{row} * v.step;
        uint8_t* d = v.dst + ptrdiff_t{row} * v.step;
        // The next row's lines, asked for as this one goes (zvf/row_prefetch.h).
        const ptrdiff_t ahead = NextRowDistance(row, v.rows, v.step);
        stream.StartLine();
        const __m256i x1 = _mm256_set1_epi32(static_cast<int32_t>(chains.R1Start(stream)));
        const __m256i x2 = _mm256_set1_epi32(static_cast<int32_t>(chains.R2Start(stream)));
        __m256i r1[kRegs], r2[kRegs];
#pragma GCC unroll 8
        for (int32_t j = 0; j < kRegs; ++j) {
            r1[j] = Lanes(chains.r1, j, x1);
            r2[j] = kGray ? r1[j] : Lanes(chains.r2, j, x2);
        }
        int32_t i = 0;
        for (; i + kLanes <= v.pairs; i += kLanes) {
#pragma GCC unroll 2
            for (int32_t line = 0; line < 4 * kLanes; line += kPrefetchSpan)
                PrefetchBelow(s + 4 * i + line, d + 4 * i + line, ahead);
#pragma GCC unroll 8
            for (int32_t j = 0; j < kRegs; ++j) {
                Mix8<kGray>(s + 4 * (i + 8 * j), d + 4 * (i + 8 * j), r1[j], r2[j], k);
                r1[j] = _mm256_add_epi32(_mm256_mullo_epi32(r1[j], next1Mul), next1Add);
                if constexpr (!kGray) r2[j] = _mm256_add_epi32(_mm256_mullo_epi32(r2[j], next2Mul), next2Add);
            }
        }
#pragma GCC unroll 8
        for (int32_t j = 0; j < kRegs; ++j) {
            if (i >= v.pairs) break;
            MixUpTo8<kGray>(s + 4 * i, d + 4 * i, v.pairs - i, r1[j], r2[j], k);
            i += 8;
        }
        if constexpr (kGray)
            stream.SkipGray(an);
        else
            stream.SkipColour(an, bn);
    }
}

}  // namespace

void AddNoiseFieldAvx2(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    if (grayscale)
        Run<true>(v, weight, seed);
    else
        Run<false>(v, weight, seed);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void AddNoiseFieldAvx2(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    AddNoiseFieldSse2(v, weight, grayscale, seed);
}

}  // namespace zvf::filters

#endif
