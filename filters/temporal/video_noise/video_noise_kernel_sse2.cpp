// SSE2 twin of the noise kernel. The draws of a stretch of a row are made
// first, several generator chains at once, in the scalar kernel's order; then each pixel byte and its noise
// value are interleaved as 16-bit words and multiplied with the pair
// (w, 16384) in one packed multiply-add, shifted, saturated and packed back.
#include "video_noise_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

constexpr int32_t kChunkPairs = 64;

template <bool kGray>
void Draw(NoiseStream& stream, int16_t* n, int32_t pairs) {
    uint32_t draws[2 * kChunkPairs];
    if constexpr (kGray) {
        stream.GrayRun(draws, pairs);
        for (int32_t i = 0; i < pairs; ++i, n += 4) {
            n[0] = static_cast<int16_t>(NoiseLow(draws[i]));
            n[1] = 0;  // chroma: no noise, so the byte comes back unchanged
            n[2] = static_cast<int16_t>(NoiseHigh(draws[i]));
            n[3] = 0;
        }
    } else {
        stream.ColourRun(draws, pairs);
        for (int32_t i = 0; i < pairs; ++i, n += 4) {
            n[0] = static_cast<int16_t>(NoiseLow(draws[2 * i]));
            n[1] = static_cast<int16_t>(NoiseLow(draws[2 * i + 1]));
            n[2] = static_cast<int16_t>(NoiseHigh(draws[2 * i]));
            n[3] = static_cast<int16_t>(NoiseHigh(draws[2 * i + 1]));
        }
    }
}

// 8 output bytes from 8 noise words and 8 pixel words.
inline __m128i Mix8(__m128i noise, __m128i pixels, __m128i weights) {
    const __m128i lo = _mm_srai_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(noise, pixels), weights), 14);
    const __m128i hi = _mm_srai_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(noise, pixels), weights), 14);
    return _mm_packs_epi32(lo, hi);
}

void Mix(const uint8_t* p, uint8_t* q, const int16_t* n, int32_t bytes, int32_t w) {
    // Low word of each 32-bit lane multiplies the noise, high word the pixel.
    const __m128i weights = _mm_set1_epi32(static_cast<int32_t>((16384u << 16) | (static_cast<uint32_t>(w) & 0xFFFFu)));
    const __m128i zero = _mm_setzero_si128();
    int32_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        const __m128i px = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        const __m128i n0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(n + i));
        const __m128i n1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(n + i + 8));
        const __m128i a = Mix8(n0, _mm_unpacklo_epi8(px, zero), weights);
        const __m128i b = Mix8(n1, _mm_unpackhi_epi8(px, zero), weights);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(q + i), _mm_packus_epi16(a, b));
    }
    for (; i + 8 <= bytes; i += 8) {
        const __m128i px = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + i));
        const __m128i n0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(n + i));
        const __m128i a = Mix8(n0, _mm_unpacklo_epi8(px, zero), weights);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(q + i), _mm_packus_epi16(a, a));
    }
    for (; i < bytes; ++i) q[i] = MixNoise(p[i], n[i], w);
}

template <bool kGray>
void Run(const FieldView& v, int32_t w, uint32_t seed) {
    NoiseStream stream(seed, v.pairs >= kWideNoisePairs);
    alignas(16) int16_t noise[4 * kChunkPairs];
    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + ptrdiff_t{row} * v.step;
        uint8_t* d = v.dst + ptrdiff_t{row} * v.step;
        stream.StartLine();
        for (int32_t start = 0; start < v.pairs; start += kChunkPairs) {
            const int32_t count = v.pairs - start < kChunkPairs ? v.pairs - start : kChunkPairs;
            Draw<kGray>(stream, noise, count);
            Mix(s + 4 * start, d + 4 * start, noise, 4 * count, w);
        }
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
