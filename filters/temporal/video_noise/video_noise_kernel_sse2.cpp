// SSE2 twin of the noise kernel, laid out as the AVX2 one: each 32-bit lane
// carries one pair's draw, made in place by the jumped generator, and the
// pair's luma (or chroma) words [p0, p1] meet the draw's noise words
// [n_low, n_high]. With the noise as n * 256 in a word, the high product with
// w shifted right by 6 is floor(n * w / 16384), and p plus that, saturated,
// is the scalar byte. SSE2 has no 32-bit low multiply: the even and odd
// lanes go through the 32x32->64 one and are put back together.
#include <cstring>

#include "video_noise_kernel.h"
#include "video_noise_lanes.h"
#include "zvf/row_prefetch.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

struct Consts {
    __m128i weight;  // w in every word
    __m128i byte1;   // 0x0000FF00 per lane: draw byte 1 stays in the high byte of word 0
    __m128i byte2;   // 0xFF000000 per lane: draw byte 2, moved up, in the high byte of word 1
    __m128i signFlip;
    __m128i lowBytes;
};

// Low 32 bits of each lane's product with the same factor in every lane.
inline __m128i MulLo(__m128i x, __m128i factor) {
    const __m128i even = _mm_mul_epu32(x, factor);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(x, 32), factor);
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(3, 1, 2, 0)),
                              _mm_shuffle_epi32(odd, _MM_SHUFFLE(3, 1, 2, 0)));
}

inline __m128i Offsets(__m128i draws, const Consts& k) {
    const __m128i n = _mm_or_si128(_mm_and_si128(draws, k.byte1), _mm_and_si128(_mm_slli_epi32(draws, 8), k.byte2));
    return _mm_srai_epi16(_mm_mulhi_epi16(_mm_xor_si128(n, k.signFlip), k.weight), 6);
}

// Four pairs from p to q.
template <bool kGray>
inline void Mix4(const uint8_t* p, uint8_t* q, __m128i r1, __m128i r2, const Consts& k) {
    const __m128i px = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i luma = _mm_add_epi16(_mm_and_si128(px, k.lowBytes), Offsets(r1, k));
    __m128i chroma = _mm_srli_epi16(px, 8);
    if constexpr (!kGray) chroma = _mm_add_epi16(chroma, Offsets(r2, k));
    const __m128i packed = _mm_packus_epi16(luma, chroma);  // 8 lumas, 8 chromas
    _mm_storeu_si128(reinterpret_cast<__m128i*>(q), _mm_unpacklo_epi8(packed, _mm_srli_si128(packed, 8)));
}

// Up to four pairs: the last few of a line go through a buffer so that
// nothing past the line is read or written.
template <bool kGray>
inline void MixUpTo4(const uint8_t* p, uint8_t* q, int32_t pairs, __m128i r1, __m128i r2, const Consts& k) {
    if (pairs >= 4) {
        Mix4<kGray>(p, q, r1, r2, k);
        return;
    }
    alignas(16) uint8_t buf[16] = {};
    std::memcpy(buf, p, 4 * static_cast<size_t>(pairs));
    Mix4<kGray>(buf, buf, r1, r2, k);
    std::memcpy(q, buf, 4 * static_cast<size_t>(pairs));
}

template <int32_t kRegs>
inline void StartLanes(const NoiseChain& c, uint32_t x, __m128i* r) {
    alignas(16) uint32_t lanes[4 * kRegs];
    for (int32_t i = 0; i < 4 * kRegs; ++i) lanes[i] = c.Lane(i, x);
    for (int32_t j = 0; j < kRegs; ++j) r[j] = _mm_load_si128(reinterpret_cast<const __m128i*>(lanes + 4 * j));
}

template <bool kGray>
void Run(const FieldView& v, int32_t w, uint32_t seed) {
    constexpr int32_t kRegs = kGray ? 4 : 2;  // registers per chain
    constexpr int32_t kLanes = 4 * kRegs;
    NoiseStream stream(seed, v.pairs >= kWideNoisePairs);
    const NoiseChains chains(kGray, stream.Wide(), kLanes);
    const uint32_t n = static_cast<uint32_t>(v.pairs);
    const NoiseJump an = NoiseJumpBy(kMulA, kAddA, n), bn = NoiseJumpBy(kMulB, kAddB, n);
    Consts k;
    k.weight = _mm_set1_epi16(static_cast<int16_t>(w));
    k.byte1 = _mm_set1_epi32(0x0000FF00);
    k.byte2 = _mm_set1_epi32(static_cast<int32_t>(0xFF000000u));
    k.signFlip = _mm_set1_epi16(static_cast<int16_t>(0x8000));
    k.lowBytes = _mm_set1_epi16(0x00FF);
    const __m128i next1Mul = _mm_set1_epi32(static_cast<int32_t>(chains.r1.next.mul));
    const __m128i next1Add = _mm_set1_epi32(static_cast<int32_t>(chains.r1.next.add));
    const __m128i next2Mul = _mm_set1_epi32(static_cast<int32_t>(chains.r2.next.mul));
    const __m128i next2Add = _mm_set1_epi32(static_cast<int32_t>(chains.r2.next.add));

    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + ptrdiff_t{row} * v.step;
        uint8_t* d = v.dst + ptrdiff_t{row} * v.step;
        // The next row's lines, asked for as this one goes (zvf/row_prefetch.h).
        const ptrdiff_t ahead = NextRowDistance(row, v.rows, v.step);
        stream.StartLine();
        __m128i r1[kRegs], r2[kRegs];
        StartLanes<kRegs>(chains.r1, chains.R1Start(stream), r1);
        if constexpr (kGray) {
            for (int32_t j = 0; j < kRegs; ++j) r2[j] = r1[j];
        } else {
            StartLanes<kRegs>(chains.r2, chains.R2Start(stream), r2);
        }
        int32_t i = 0;
        for (; i + kLanes <= v.pairs; i += kLanes) {
            PrefetchBelow(s + 4 * i, d + 4 * i, ahead);
#pragma GCC unroll 8
            for (int32_t j = 0; j < kRegs; ++j) {
                Mix4<kGray>(s + 4 * (i + 4 * j), d + 4 * (i + 4 * j), r1[j], r2[j], k);
                r1[j] = _mm_add_epi32(MulLo(r1[j], next1Mul), next1Add);
                if constexpr (!kGray) r2[j] = _mm_add_epi32(MulLo(r2[j], next2Mul), next2Add);
            }
        }
#pragma GCC unroll 8
        for (int32_t j = 0; j < kRegs; ++j) {
            if (i >= v.pairs) break;
            MixUpTo4<kGray>(s + 4 * i, d + 4 * i, v.pairs - i, r1[j], r2[j], k);
            i += 4;
        }
        if constexpr (kGray)
            stream.SkipGray(an);
        else
            stream.SkipColour(an, bn);
    }
}

}  // namespace

void AddNoiseFieldSse2(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    if (grayscale)
        Run<true>(v, weight, seed);
    else
        Run<false>(v, weight, seed);
}

#else

void AddNoiseFieldSse2(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    AddNoiseField(v, weight, grayscale, seed);
}

#endif

}  // namespace zvf::filters
