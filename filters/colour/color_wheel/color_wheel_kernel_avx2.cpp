// Color Wheel's AVX2 twin: the SSE2 arithmetic on eight pairs per 32 bytes.
// Every step (pmaddwd, the unpacks and the saturating pack) stays inside its
// 128-bit half, so each half is exactly the SSE2 step on its four pairs. The
// last one to seven pairs of every row go through the SSE2 twin once the
// vector loop is done. The body is one function and calls nothing while a
// 256-bit value is live, so none is passed as an argument or has to be kept
// on the stack across a call (the Windows ABI aligns the stack to 16 bytes).
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "color_wheel_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

// Two 16-bit coefficients in a 32-bit lane: lo multiplies U', hi V'.
inline int32_t Coefficients(int32_t lo, int32_t hi) {
    return static_cast<int32_t>((static_cast<uint32_t>(lo) & 0xFFFFu) | (static_cast<uint32_t>(hi) << 16));
}

inline bool Fits16(int32_t x) { return x >= -32768 && x <= 32767; }

template <bool kGain, bool kSafe, bool kWide>
void Rows(const FieldView& v, const WheelPlan& p) {
    const __m256i bias = _mm256_set1_epi16(128);
    const __m256i flip = _mm256_set1_epi16(static_cast<int16_t>(0x8000));
    const __m256i lumaMask = _mm256_set1_epi32(0x00FF00FF);
    const __m256i gain = _mm256_set1_epi16(static_cast<int16_t>(p.lumaGain));
    const __m256i offset = _mm256_set1_epi16(static_cast<int16_t>(kGain ? p.bright + 128 : p.bright));
    const __m256i safeLow = _mm256_set1_epi8(16);
    const __m256i safeHigh = _mm256_set1_epi32(static_cast<int>(0xF0EBF0EBu));  // 235 240 235 240 per pair
    const int32_t shift = kWide ? 8 : 0;
    const __m256i uHigh = _mm256_set1_epi32(Coefficients(p.kc >> shift, -p.ks >> shift));
    const __m256i vHigh = _mm256_set1_epi32(Coefficients(p.ks >> shift, p.kc >> shift));
    const __m256i uLow = _mm256_set1_epi32(Coefficients(p.kc & 0xFF, -p.ks & 0xFF));
    const __m256i vLow = _mm256_set1_epi32(Coefficients(p.ks & 0xFF, p.kc & 0xFF));
    const int32_t wide = v.pairs & ~7;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + r * v.step;
        uint8_t* d = v.dst + r * v.step;
        // The same column of the next row, source and destination, is
        // fetched as this one is worked on.
        const ptrdiff_t ahead = r + 1 < v.rows ? v.step : 0;
        for (int32_t i = 0; i < wide; i += 8) {
            const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 4 * i));
            PrefetchLine(s + ahead + 4 * i);
            PrefetchLineForWrite(d + ahead + 4 * i);
            const __m256i uv = _mm256_sub_epi16(_mm256_srli_epi16(x, 8), bias);
            __m256i su = _mm256_madd_epi16(uv, uHigh);
            __m256i sv = _mm256_madd_epi16(uv, vHigh);
            if constexpr (kWide) {
                su = _mm256_add_epi32(_mm256_slli_epi32(su, 8), _mm256_madd_epi16(uv, uLow));
                sv = _mm256_add_epi32(_mm256_slli_epi32(sv, 8), _mm256_madd_epi16(uv, vLow));
            }
            // U's shifted sum in the low 16 bits; V's, as sv << 2, in the high
            // 16 bits (|sv| < 2^27, so the shift loses nothing).
            const __m256i chroma = _mm256_add_epi16(
                _mm256_blend_epi16(_mm256_srai_epi32(su, 14), _mm256_slli_epi32(sv, 2), 0xAA), bias);
            // Gain: (Y - 128) << 8 is Y << 8 with its top bit flipped.
            const __m256i y =
                kGain ? _mm256_add_epi16(_mm256_mulhi_epi16(_mm256_xor_si256(_mm256_slli_epi16(x, 8), flip), gain), offset)
                      : _mm256_add_epi16(_mm256_and_si256(x, lumaMask), offset);
            __m256i out = _mm256_packus_epi16(_mm256_unpacklo_epi16(y, chroma), _mm256_unpackhi_epi16(y, chroma));
            if constexpr (kSafe) out = _mm256_min_epu8(_mm256_max_epu8(out, safeLow), safeHigh);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 4 * i), out);
        }
    }
    // The last pairs of every row, one call for the whole column.
    if (wide < v.pairs) {
        FieldView rest = v;
        rest.src = v.src + 4 * wide;
        rest.dst = v.dst + 4 * wide;
        rest.pairs = v.pairs - wide;
        RenderWheelSse2(rest, p);
    }
}

template <bool kWide>
void Dispatch(const FieldView& v, const WheelPlan& p) {
    if (p.gain) {
        p.safe ? Rows<true, true, kWide>(v, p) : Rows<true, false, kWide>(v, p);
    } else {
        p.safe ? Rows<false, true, kWide>(v, p) : Rows<false, false, kWide>(v, p);
    }
}

}  // namespace

void RenderWheelAvx2(const FieldView& v, const WheelPlan& p) {
    if (Fits16(p.kc) && Fits16(p.ks) && Fits16(-p.ks))
        Dispatch<false>(v, p);
    else
        Dispatch<true>(v, p);
}

}  // namespace zvf::filters
#endif
