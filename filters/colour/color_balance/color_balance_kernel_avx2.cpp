// Color Balance's AVX2 kernels: the SSE2 arithmetic on eight pairs per 32
// bytes. The unpacks, pmulhw and the saturating pack all stay inside their
// 128-bit half, so each half is exactly the SSE2 step on its four pairs. The
// last one to seven pairs of every row go through the SSE2 twin once all
// rows are done; every 64 bytes the same column of the field's next row is
// asked for. Nothing is called while a 256-bit value is live, so none
// has to be kept on the (16-byte aligned) Windows stack.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "zvf/row_prefetch.h"
#include "color_balance_kernel.h"

namespace zvf::filters {
namespace {

// Lanes Y0 U Y1 V repeated, as 16-bit values.
inline int32_t Pack16(int32_t lo, int32_t hi) {
    return static_cast<int32_t>((static_cast<uint32_t>(lo) & 0xFFFFu) | (static_cast<uint32_t>(hi) << 16));
}

// Lanes Y0 U Y1 V repeated, as bytes.
inline int32_t Pack8(int32_t y, int32_t u, int32_t v) {
    return static_cast<int32_t>(static_cast<uint32_t>(y) | static_cast<uint32_t>(u) << 8 |
                                static_cast<uint32_t>(y) << 16 | static_cast<uint32_t>(v) << 24);
}

inline int32_t Up(int32_t o) { return o > 0 ? (o < 255 ? o : 255) : 0; }
inline int32_t Down(int32_t o) { return Up(-o); }

template <bool kGain, bool kSafe>
void Process(const FieldView& v, const ColorBalanceParams& p, ColorBalanceKernel tail) {
    const __m256i zero = _mm256_setzero_si256();
    // 16-bit lanes Y U Y V: two 32-bit words (Y, U) and (Y, V), alternating.
    const __m256i offset =
        _mm256_set_epi32(Pack16(p.offY + 128, p.offV + 128), Pack16(p.offY + 128, p.offU + 128),
                         Pack16(p.offY + 128, p.offV + 128), Pack16(p.offY + 128, p.offU + 128),
                         Pack16(p.offY + 128, p.offV + 128), Pack16(p.offY + 128, p.offU + 128),
                         Pack16(p.offY + 128, p.offV + 128), Pack16(p.offY + 128, p.offU + 128));
    const __m256i gain = _mm256_set_epi32(Pack16(p.gainY, p.gainC), Pack16(p.gainY, p.gainC), Pack16(p.gainY, p.gainC),
                                          Pack16(p.gainY, p.gainC), Pack16(p.gainY, p.gainC), Pack16(p.gainY, p.gainC),
                                          Pack16(p.gainY, p.gainC), Pack16(p.gainY, p.gainC));
    const __m256i flip = _mm256_set1_epi8(static_cast<char>(0x80));
    const __m256i up = _mm256_set1_epi32(Pack8(Up(p.offY), Up(p.offU), Up(p.offV)));
    const __m256i down = _mm256_set1_epi32(Pack8(Down(p.offY), Down(p.offU), Down(p.offV)));
    const __m256i safeLow = _mm256_set1_epi8(16);
    const __m256i safeHigh = _mm256_set1_epi32(static_cast<int>(0xF0EBF0EBu));  // 235 240 235 240 per pair
    WalkPairs<8>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
            __m256i out;
            if constexpr (kGain) {
                const __m256i c = _mm256_xor_si256(x, flip);
                const __m256i lo = _mm256_mulhi_epi16(_mm256_unpacklo_epi8(zero, c), gain);
                const __m256i hi = _mm256_mulhi_epi16(_mm256_unpackhi_epi8(zero, c), gain);
                out = _mm256_packus_epi16(_mm256_add_epi16(lo, offset), _mm256_add_epi16(hi, offset));
            } else {
                out = _mm256_subs_epu8(_mm256_adds_epu8(x, up), down);
            }
            if constexpr (kSafe) out = _mm256_min_epu8(_mm256_max_epu8(out, safeLow), safeHigh);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), out);
        },
        [&](const FieldView& rest) { tail(rest, p); });
}

}  // namespace

void ColorBalanceOffsetsAvx2(const FieldView& v, const ColorBalanceParams& p) {
    Process<false, false>(v, p, ColorBalanceOffsetsSse2);
}
void ColorBalanceOffsetsSafeAvx2(const FieldView& v, const ColorBalanceParams& p) {
    Process<false, true>(v, p, ColorBalanceOffsetsSafeSse2);
}
void ColorBalanceGainAvx2(const FieldView& v, const ColorBalanceParams& p) {
    Process<true, false>(v, p, ColorBalanceGainSse2);
}
void ColorBalanceGainSafeAvx2(const FieldView& v, const ColorBalanceParams& p) {
    Process<true, true>(v, p, ColorBalanceGainSafeSse2);
}

}  // namespace zvf::filters
#endif
