// SSE2 twin of Matrix's line kernel: eight output bytes (two pairs) per step
// as 16-bit lanes, luma and chroma side by side. Each lane takes its left and
// right neighbours from 2 bytes away (luma lanes) or 4 (chroma lanes); the
// coefficient row is applied with packed multiply-adds into 32-bit sums.
#include "matrix_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

inline __m128i Words(const uint8_t* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
}

inline __m128i Select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}

}  // namespace

void MatrixLineSse2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c) {
    const __m128i lumaWords = _mm_set1_epi32(0x0000FFFF);   // even 16-bit lanes: Y
    const __m128i lumaDwords = _mm_set_epi32(0, -1, 0, -1);  // even 32-bit lanes: Y
    const __m128i bias = _mm_set1_epi32(128 << 16);          // chroma made signed
    const __m128i back = _mm_set1_epi32(128);
    __m128i leftCentre[3];
    __m128i right[3];
    for (int r = 0; r < 3; ++r) {
        leftCentre[r] = _mm_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(static_cast<uint16_t>(c.rows[r][1])) << 16) |
                                                            static_cast<uint16_t>(c.rows[r][0])));
        right[r] = _mm_set1_epi32(static_cast<uint16_t>(c.rows[r][2]));
    }
    const bool normalize = c.normalize != 0;
    ptrdiff_t o = from;
    for (; o + 8 <= to; o += 8) {
        __m128i lo = _mm_setzero_si128();
        __m128i hi = _mm_setzero_si128();
        for (int r = 0; r < 3; ++r) {
            const uint8_t* l = lines[r] + o;
            const __m128i centre = _mm_sub_epi16(Words(l), bias);
            const __m128i west = _mm_sub_epi16(Select(lumaWords, Words(l - 2), Words(l - 4)), bias);
            const __m128i east = _mm_sub_epi16(Select(lumaWords, Words(l + 2), Words(l + 4)), bias);
            lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(west, centre), leftCentre[r]));
            hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(west, centre), leftCentre[r]));
            lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(east, _mm_setzero_si128()), right[r]));
            hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(east, _mm_setzero_si128()), right[r]));
        }
        __m128i lumaLo = lo, lumaHi = hi, chromaLo = lo, chromaHi = hi;
        if (normalize) {
            lumaLo = _mm_srli_epi32(lo, 12);  // logical: negative sums saturate to white
            lumaHi = _mm_srli_epi32(hi, 12);
            chromaLo = _mm_srai_epi32(lo, 12);
            chromaHi = _mm_srai_epi32(hi, 12);
        }
        chromaLo = _mm_add_epi32(chromaLo, back);
        chromaHi = _mm_add_epi32(chromaHi, back);
        const __m128i a = Select(lumaDwords, lumaLo, chromaLo);
        const __m128i b = Select(lumaDwords, lumaHi, chromaHi);
        const __m128i words = _mm_packs_epi32(a, b);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + o), _mm_packus_epi16(words, words));
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
