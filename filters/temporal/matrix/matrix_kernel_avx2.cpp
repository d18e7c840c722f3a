// AVX2 twin of Matrix's line kernel: eight pairs (32 output bytes) per step,
// the SSE2 arrangement in 256-bit registers; the shorter rest goes to the SSE2
// twin. The packing steps work within each 128-bit half, which holds four
// whole pairs, so the bytes come out in order.
// Each 32-bit lane holds one pair; masks and shifts of loads 2 and 4 bytes
// apart put every output's left and centre taps side by side as 16-bit
// halves of a lane, so one multiply-add applies two coefficients, and the
// right tap takes a second. Y0, Cb, Y1 and Cr have a sum vector each,
// interleaved again when packing. Chroma is not re-centred per sample: the
// sums subtract 128 times the coefficient total once, which is the same
// integer as the sum of centred products.
#include "matrix_kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace zvf::filters {

#if defined(__AVX2__)
namespace {

// Forced inline: 256-bit values are never passed to a call (misaligned
// stack spills on some Windows toolchains).
__attribute__((always_inline)) inline __m256i Load(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

}  // namespace

void MatrixLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    const __m256i lowBytes = _mm256_set1_epi32(0x00FF00FF);  // byte 0 and byte 2 as 16-bit halves
    const __m256i byte2 = _mm256_set1_epi32(0x00FF0000);
    const __m256i byte0 = _mm256_set1_epi32(0x000000FF);
    __m256i leftCentre[3];
    __m256i rightHigh[3];  // right coefficient in the upper half
    __m256i rightLow[3];   // right coefficient in the lower half
    int32_t total = 0;
    for (int r = 0; r < 3; ++r) {
        const auto c0 = static_cast<uint16_t>(c.rows[r][0]);
        const auto c1 = static_cast<uint16_t>(c.rows[r][1]);
        const auto c2 = static_cast<uint16_t>(c.rows[r][2]);
        leftCentre[r] = _mm256_set1_epi32(static_cast<int32_t>((uint32_t{c1} << 16) | c0));
        rightHigh[r] = _mm256_set1_epi32(static_cast<int32_t>(uint32_t{c2} << 16));
        rightLow[r] = _mm256_set1_epi32(c2);
        total += c.rows[r][0] + c.rows[r][1] + c.rows[r][2];
    }
    const __m256i centring = _mm256_set1_epi32(-128 * total);
    const __m256i back = _mm256_set1_epi32(128);
    const bool normalize = c.normalize != 0;
    ptrdiff_t o = from;
    for (; o + 32 <= to; o += 32) {
        __m256i y0 = _mm256_setzero_si256(), cb = y0, y1 = y0, cr = y0;
        for (int r = 0; r < 3; ++r) {
            const uint8_t* l = lines[r] + o;
            const __m256i w4 = Load(l - 4);  // lane m: Y0 Cb Y1 Cr of pair m - 1
            const __m256i w2 = Load(l - 2);  // Y1 Cr of pair m - 1, Y0 Cb of pair m
            const __m256i s = Load(l);       // pair m
            const __m256i e2 = Load(l + 2);  // Y1 Cr of pair m, Y0 Cb of pair m + 1
            const __m256i e4 = Load(l + 4);  // pair m + 1
            y0 = _mm256_add_epi32(y0, _mm256_madd_epi16(_mm256_and_si256(w2, lowBytes), leftCentre[r]));
            y0 = _mm256_add_epi32(y0, _mm256_madd_epi16(_mm256_and_si256(s, byte2), rightHigh[r]));
            y1 = _mm256_add_epi32(y1, _mm256_madd_epi16(_mm256_and_si256(s, lowBytes), leftCentre[r]));
            y1 = _mm256_add_epi32(y1, _mm256_madd_epi16(_mm256_and_si256(e2, byte2), rightHigh[r]));
            const __m256i cbPair = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(w4, 8), byte0),
                                                _mm256_and_si256(_mm256_slli_epi32(s, 8), byte2));
            cb = _mm256_add_epi32(cb, _mm256_madd_epi16(cbPair, leftCentre[r]));
            cb = _mm256_add_epi32(cb, _mm256_madd_epi16(_mm256_and_si256(_mm256_srli_epi32(e4, 8), byte0), rightLow[r]));
            const __m256i crPair = _mm256_or_si256(_mm256_srli_epi32(w4, 24), _mm256_and_si256(_mm256_srli_epi32(s, 8), byte2));
            cr = _mm256_add_epi32(cr, _mm256_madd_epi16(crPair, leftCentre[r]));
            cr = _mm256_add_epi32(cr, _mm256_madd_epi16(_mm256_srli_epi32(e4, 24), rightLow[r]));
        }
        cb = _mm256_add_epi32(cb, centring);
        cr = _mm256_add_epi32(cr, centring);
        if (normalize) {
            y0 = _mm256_srli_epi32(y0, 12);  // logical: negative sums saturate to white
            y1 = _mm256_srli_epi32(y1, 12);
            cb = _mm256_srai_epi32(cb, 12);
            cr = _mm256_srai_epi32(cr, 12);
        }
        cb = _mm256_add_epi32(cb, back);
        cr = _mm256_add_epi32(cr, back);
        // Saturating packs clamp each sum to 0..255 on the way to bytes.
        const __m256i luma = _mm256_packs_epi32(y0, y1);    // Y0 of pairs 0-3, Y1 of pairs 0-3
        const __m256i chroma = _mm256_packs_epi32(cb, cr);  // Cb of pairs 0-3, Cr of pairs 0-3
        const __m256i first = _mm256_unpacklo_epi16(luma, chroma);  // Y0 Cb per pair
        const __m256i second = _mm256_unpackhi_epi16(luma, chroma); // Y1 Cr per pair
        const __m256i pairs01 = _mm256_unpacklo_epi32(first, second);
        const __m256i pairs23 = _mm256_unpackhi_epi32(first, second);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + o), _mm256_packus_epi16(pairs01, pairs23));
    }
    if (o < to) MatrixLineSse2(lines, out, o, to, c);
}

#else

void MatrixLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    MatrixLineSse2(lines, out, from, to, c);
}

#endif

}  // namespace zvf::filters
