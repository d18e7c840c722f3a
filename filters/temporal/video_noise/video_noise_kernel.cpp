#include "video_noise_kernel.h"

namespace zvf::filters {

int32_t NoiseWeight(uint32_t ratio) {
    const int32_t w = static_cast<int32_t>(ratio * 16384u) / 100;
    return static_cast<int16_t>(w);
}

namespace {

template <bool kGray>
void Run(const FieldView& v, int32_t w, uint32_t seed) {
    NoiseStream stream(seed, v.pairs >= kWideNoisePairs);
    const uint8_t* s = v.src;
    uint8_t* d = v.dst;
    for (int32_t row = 0; row < v.rows; ++row) {
        stream.StartLine();
        for (int32_t i = 0; i < v.pairs; ++i) {
            const uint8_t* p = s + 4 * i;
            uint8_t* q = d + 4 * i;
            if constexpr (kGray) {
                const uint32_t r = stream.Gray();
                const uint8_t y0 = MixNoise(p[0], NoiseLow(r), w);
                const uint8_t y1 = MixNoise(p[2], NoiseHigh(r), w);
                q[0] = y0;
                q[1] = p[1];
                q[2] = y1;
                q[3] = p[3];
            } else {
                uint32_t r1;
                uint32_t r2;
                stream.Colour(&r1, &r2);
                const uint8_t b0 = MixNoise(p[0], NoiseLow(r1), w);
                const uint8_t b1 = MixNoise(p[1], NoiseLow(r2), w);
                const uint8_t b2 = MixNoise(p[2], NoiseHigh(r1), w);
                const uint8_t b3 = MixNoise(p[3], NoiseHigh(r2), w);
                q[0] = b0;
                q[1] = b1;
                q[2] = b2;
                q[3] = b3;
            }
        }
        // Rows of the other field in between stay untouched.
        s += v.step;
        d += v.step;
    }
}

}  // namespace

void AddNoiseField(const FieldView& v, int32_t weight, bool grayscale, uint32_t seed) {
    if (grayscale)
        Run<true>(v, weight, seed);
    else
        Run<false>(v, weight, seed);
}

NoiseKernel SelectNoiseKernel(SimdLevel level) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx512) return AddNoiseFieldAvx512;
    if (level >= SimdLevel::avx2) return AddNoiseFieldAvx2;
    if (level >= SimdLevel::sse2) return AddNoiseFieldSse2;
#else
    (void)level;
#endif
    return AddNoiseField;
}

}  // namespace zvf::filters
