// SSE2 twin of Matrix's line kernel: four pairs (16 output bytes) per step.
// Each 32-bit lane holds one pair; masks and shifts of loads 2 and 4 bytes
// apart put every output's left and centre taps side by side as 16-bit
// halves of a lane, so one multiply-add applies two coefficients, and the
// right tap takes a second. Y0, Cb, Y1 and Cr have a sum vector each,
// interleaved again when packing. Chroma is not re-centred per sample: the
// sums subtract 128 times the coefficient total once, which is the same
// integer as the sum of centred products.
#include "matrix_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

inline __m128i Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

}  // namespace

void MatrixLineSse2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    const __m128i lowBytes = _mm_set1_epi32(0x00FF00FF);  // byte 0 and byte 2 as 16-bit halves
    const __m128i byte2 = _mm_set1_epi32(0x00FF0000);
    const __m128i byte0 = _mm_set1_epi32(0x000000FF);
    __m128i leftCentre[3];
    __m128i rightHigh[3];  // right coefficient in the upper half
    __m128i rightLow[3];   // right coefficient in the lower half
    int32_t total = 0;
    for (int r = 0; r < 3; ++r) {
        const auto c0 = static_cast<uint16_t>(c.rows[r][0]);
        const auto c1 = static_cast<uint16_t>(c.rows[r][1]);
        const auto c2 = static_cast<uint16_t>(c.rows[r][2]);
        leftCentre[r] = _mm_set1_epi32(static_cast<int32_t>((uint32_t{c1} << 16) | c0));
        rightHigh[r] = _mm_set1_epi32(static_cast<int32_t>(uint32_t{c2} << 16));
        rightLow[r] = _mm_set1_epi32(c2);
        total += c.rows[r][0] + c.rows[r][1] + c.rows[r][2];
    }
    const __m128i centring = _mm_set1_epi32(-128 * total);
    const __m128i back = _mm_set1_epi32(128);
    const bool normalize = c.normalize != 0;
    ptrdiff_t o = from;
    for (; o + 16 <= to; o += 16) {
        __m128i y0 = _mm_setzero_si128(), cb = y0, y1 = y0, cr = y0;
        for (int r = 0; r < 3; ++r) {
            const uint8_t* l = lines[r] + o;
            const __m128i w4 = Load(l - 4);  // lane m: Y0 Cb Y1 Cr of pair m - 1
            const __m128i w2 = Load(l - 2);  // Y1 Cr of pair m - 1, Y0 Cb of pair m
            const __m128i s = Load(l);       // pair m
            const __m128i e2 = Load(l + 2);  // Y1 Cr of pair m, Y0 Cb of pair m + 1
            const __m128i e4 = Load(l + 4);  // pair m + 1
            y0 = _mm_add_epi32(y0, _mm_madd_epi16(_mm_and_si128(w2, lowBytes), leftCentre[r]));
            y0 = _mm_add_epi32(y0, _mm_madd_epi16(_mm_and_si128(s, byte2), rightHigh[r]));
            y1 = _mm_add_epi32(y1, _mm_madd_epi16(_mm_and_si128(s, lowBytes), leftCentre[r]));
            y1 = _mm_add_epi32(y1, _mm_madd_epi16(_mm_and_si128(e2, byte2), rightHigh[r]));
            const __m128i cbPair = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(w4, 8), byte0),
                                                _mm_and_si128(_mm_slli_epi32(s, 8), byte2));
            cb = _mm_add_epi32(cb, _mm_madd_epi16(cbPair, leftCentre[r]));
            cb = _mm_add_epi32(cb, _mm_madd_epi16(_mm_and_si128(_mm_srli_epi32(e4, 8), byte0), rightLow[r]));
            const __m128i crPair = _mm_or_si128(_mm_srli_epi32(w4, 24), _mm_and_si128(_mm_srli_epi32(s, 8), byte2));
            cr = _mm_add_epi32(cr, _mm_madd_epi16(crPair, leftCentre[r]));
            cr = _mm_add_epi32(cr, _mm_madd_epi16(_mm_srli_epi32(e4, 24), rightLow[r]));
        }
        cb = _mm_add_epi32(cb, centring);
        cr = _mm_add_epi32(cr, centring);
        if (normalize) {
            y0 = _mm_srli_epi32(y0, 12);  // logical: negative sums saturate to white
            y1 = _mm_srli_epi32(y1, 12);
            cb = _mm_srai_epi32(cb, 12);
            cr = _mm_srai_epi32(cr, 12);
        }
        cb = _mm_add_epi32(cb, back);
        cr = _mm_add_epi32(cr, back);
        // Saturating packs clamp each sum to 0..255 on the way to bytes.
        const __m128i luma = _mm_packs_epi32(y0, y1);    // Y0 of pairs 0-3, Y1 of pairs 0-3
        const __m128i chroma = _mm_packs_epi32(cb, cr);  // Cb of pairs 0-3, Cr of pairs 0-3
        const __m128i first = _mm_unpacklo_epi16(luma, chroma);  // Y0 Cb per pair
        const __m128i second = _mm_unpackhi_epi16(luma, chroma); // Y1 Cr per pair
        const __m128i pairs01 = _mm_unpacklo_epi32(first, second);
        const __m128i pairs23 = _mm_unpackhi_epi32(first, second);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o), _mm_packus_epi16(pairs01, pairs23));
    }
    if (o < to) MatrixLine(lines, out, o, to, c);
}

#else

void MatrixLineSse2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    MatrixLine(lines, out, from, to, c);
}

#endif

}  // namespace zvf::filters
