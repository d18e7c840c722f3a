// AVX-512 (F, BW) twin of the noise kernel: the AVX2 arithmetic on sixteen
// pairs per register, two registers per chain (32 pairs a stretch), so four
// registers' multiplies are in flight in colour and two in grayscale. The
// noise words come from one byte multiply-add as in the AVX2 version, and
// the pack and the byte shuffle work inside 128-bit lanes as there. A
// line's last pairs are loaded and stored under a byte mask, which neither
// reads nor writes past the line. Helpers are forced inline: 512-bit values
// are never passed to a call (the Windows stack is only 16-byte aligned).
#include "video_noise_kernel.h"
#include "video_noise_lanes.h"
#include "zvf/row_prefetch.h"

#if defined(__x86_64__) || defined(_M_X64)
#include "zvf/avx512.h"

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

struct Consts {
    __m512i weight;      // w in every word
    __m512i noiseBytes;  // per draw: bytes 1 and 2 times 4, bytes 0 and 3 times 0
    __m512i signFlip;    // byte - 128 as a signed byte: flip the top bits of bytes 1 and 2
    __m512i lowBytes;
    __m512i interleave;  // [8 lumas, 8 chromas] per 128-bit lane back to Y0 Cb Y1 Cr
};

// The same 16 bytes in each 128-bit lane.
ZVF_INLINE __m512i EveryLane(const int8_t (&b)[16]) {
    return _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(b)));
}

ZVF_INLINE __m512i Offsets(const __m512i& draws, const Consts& k) {
    const __m512i n4 = _mm512_maddubs_epi16(k.noiseBytes, _mm512_xor_si512(draws, k.signFlip));
    return _mm512_mulhi_epi16(n4, k.weight);
}

// Sixteen pairs, or the first `bytes` of them as a mask says.
template <bool kGray>
ZVF_INLINE void Mix16(const uint8_t* p, uint8_t* q, __mmask64 bytes, const __m512i& r1, const __m512i& r2,
                      const Consts& k) {
    const __m512i px = _mm512_maskz_loadu_epi8(bytes, p);
    const __m512i luma = _mm512_add_epi16(_mm512_and_si512(px, k.lowBytes), Offsets(r1, k));
    __m512i chroma = _mm512_srli_epi16(px, 8);
    if constexpr (!kGray) chroma = _mm512_add_epi16(chroma, Offsets(r2, k));
    const __m512i out = _mm512_shuffle_epi8(_mm512_packus_epi16(luma, chroma), k.interleave);
    _mm512_mask_storeu_epi8(q, bytes, out);
}

ZVF_INLINE __m512i Lanes(const NoiseChain& c, int32_t reg, const __m512i& x) {
    const __m512i mul = _mm512_loadu_si512(c.mul + 16 * reg);
    const __m512i add = _mm512_loadu_si512(c.add + 16 * reg);
    return _mm512_add_epi32(_mm512_mullo_epi32(x, mul), add);
}

template <bool kGray>
void Run(const FieldView& v, int32_t w, uint32_t seed) {
    constexpr int32_t kRegs = 2;  // registers per chain
    constexpr int32_t kLanes = 16 * kRegs;
    constexpr __mmask64 kAll = ~__mmask64{0};
    NoiseStream stream(seed, v.pairs >= kWideNoisePairs);
    const NoiseChains chains(kGray, stream.Wide(), kLanes);
    const uint32_t n = static_cast<uint32_t>(v.pairs);
    const NoiseJump an = NoiseJumpBy(kMulA, kAddA, n), bn = NoiseJumpBy(kMulB, kAddB, n);
    static constexpr int8_t kInterleave[16] = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
    Consts k;
    k.weight = _mm512_set1_epi16(static_cast<int16_t>(w));
    k.noiseBytes = _mm512_set1_epi32(0x00040400);
    k.signFlip = _mm512_set1_epi32(0x00808000);
    k.lowBytes = _mm512_set1_epi16(0x00FF);
    k.interleave = EveryLane(kInterleave);
    const __m512i next1Mul = _mm512_set1_epi32(static_cast<int32_t>(chains.r1.next.mul));
    const __m512i next1Add = _mm512_set1_epi32(static_cast<int32_t>(chains.r1.next.add));
    const __m512i next2Mul = _mm512_set1_epi32(static_cast<int32_t>(chains.r2.next.mul));
    const __m512i next2Add = _mm512_set1_epi32(static_cast<int32_t>(chains.r2.next.add));

    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + ptrdiff_t{row} * v.step;
        uint8_t* d = v.dst + ptrdiff_t{row} * v.step;
        // The next row's lines, asked for as this one goes (zvf/row_prefetch.h).
        const ptrdiff_t ahead = NextRowDistance(row, v.rows, v.step);
        stream.StartLine();
        const __m512i x1 = _mm512_set1_epi32(static_cast<int32_t>(chains.R1Start(stream)));
        const __m512i x2 = _mm512_set1_epi32(static_cast<int32_t>(chains.R2Start(stream)));
        __m512i r1[kRegs], r2[kRegs];
        for (int32_t j = 0; j < kRegs; ++j) {
            r1[j] = Lanes(chains.r1, j, x1);
            r2[j] = kGray ? r1[j] : Lanes(chains.r2, j, x2);
        }
        int32_t i = 0;
        for (; i + kLanes <= v.pairs; i += kLanes) {
            for (int32_t j = 0; j < kRegs; ++j) {
                PrefetchBelow(s + 4 * (i + 16 * j), d + 4 * (i + 16 * j), ahead);
                Mix16<kGray>(s + 4 * (i + 16 * j), d + 4 * (i + 16 * j), kAll, r1[j], r2[j], k);
                r1[j] = _mm512_add_epi32(_mm512_mullo_epi32(r1[j], next1Mul), next1Add);
                if constexpr (!kGray) r2[j] = _mm512_add_epi32(_mm512_mullo_epi32(r2[j], next2Mul), next2Add);
            }
        }
        for (int32_t j = 0; j < kRegs && i < v.pairs; ++j, i += 16) {
            const int32_t left = v.pairs - i;
            const __mmask64 bytes = left >= 16 ? kAll : (uint64_t{1} << (4 * left)) - 1;
            Mix16<kGray>(s + 4 * i, d + 4 * i, bytes, r1[j], r2[j], k);
        }
        if constexpr (kGray)
            stream.SkipGray(an);
        else
            stream.SkipColour(an, bn);
    }
}

}  // namespace

void AddNoiseFieldAvx512(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    if (grayscale)
        Run<true>(v, weight, seed);
    else
        Run<false>(v, weight, seed);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void AddNoiseFieldAvx512(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    AddNoiseFieldAvx2(v, weight, grayscale, seed);
}

}  // namespace zvf::filters

#endif
