// AVX2 twins of the line kernel and of the table kernel, bit-exact with
// RenderCurveLines and RenderCurveTables on every input.
//
// Line kernel: the SSE2 arithmetic on eight pairs per 32 bytes (unpacks,
// products and the saturating pack stay inside their 128-bit half). The last
// one to seven pairs of every row go through the SSE2 twin once all rows are
// done.
//
// Table kernel: a byte shuffle looks up 16 entries at once, so a 256-entry
// table takes sixteen shuffles of the low four bits (entries 128..255 with
// the top bit flipped, since a set top bit gives 0), ORed in pairs, and
// seven blends on bits 4, 5 and 6 pick each byte's sixteenth. The table is
// chosen by the 128-bit half, not by the byte, so every 64 bytes are first
// sorted into a register of 32 Y bytes and one of 16 U bytes (low half) and
// 16 V bytes (high half), and put back in order after. A register whose
// tables are all the identity (a curve edited for luma alone, or for colour
// alone) is put back as it is, which halves the work. The last one to
// fifteen pairs of every row go through the scalar tables.
//
// Every 64 bytes the same column of the field's next row is asked for.
// Nothing is called while a 256-bit value is live, so none has to be kept on
// the (16-byte aligned) Windows stack.
#include "yuv_curve_kernel.h"

#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "zvf/row_prefetch.h"
#include "yuv_curve_line_terms.h"

namespace zvf::filters {
namespace {

// Two tables, one per 128-bit half, by sixteenths: row h holds entries
// 16h..16h+15. They live on the stack, which the Windows toolchains may not
// align to 32 bytes, so they are read with unaligned loads.
struct ShuffleTables {
    uint8_t rows[16][32];

    ShuffleTables(const uint8_t* low, const uint8_t* high) {
        for (int h = 0; h < 16; ++h)
            for (int k = 0; k < 16; ++k) {
                rows[h][k] = low[16 * h + k];
                rows[h][16 + k] = high[16 * h + k];
            }
    }
};

__attribute__((always_inline)) inline __m256i Row(const ShuffleTables& t, int h) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(t.rows[h]));
}

// Each byte of x through the table of its 128-bit half.
__attribute__((always_inline)) inline __m256i LookUp(const ShuffleTables& t, const __m256i& x) {
    const __m256i flipped = _mm256_xor_si256(x, _mm256_set1_epi8(static_cast<char>(0x80)));
    __m256i part[8];
    for (int h = 0; h < 8; ++h)
        part[h] = _mm256_or_si256(_mm256_shuffle_epi8(Row(t, h), x), _mm256_shuffle_epi8(Row(t, h + 8), flipped));
    // Bit b of each byte moved to its top bit picks among the parts. Byte
    // adds double each byte on its own; shifts would compete harder with the
    // shuffles and blends for the same execution ports.
    const __m256i bit6 = _mm256_add_epi8(x, x);
    const __m256i bit5 = _mm256_add_epi8(bit6, bit6);
    const __m256i bit4 = _mm256_add_epi8(bit5, bit5);
    for (int h = 0; h < 4; ++h) part[h] = _mm256_blendv_epi8(part[2 * h], part[2 * h + 1], bit4);
    for (int h = 0; h < 2; ++h) part[h] = _mm256_blendv_epi8(part[2 * h], part[2 * h + 1], bit5);
    return _mm256_blendv_epi8(part[0], part[1], bit6);
}

// Within each 16-byte half: Y0 U0 Y1 V0 ... to eight Y, four U, four V, and
// back.
alignas(32) constexpr int8_t kSort[32] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 5, 9, 13, 3, 7, 11, 15,
                                          0, 2, 4, 6, 8, 10, 12, 14, 1, 5, 9, 13, 3, 7, 11, 15};
alignas(32) constexpr int8_t kUnsort[32] = {0, 8, 1, 12, 2, 9, 3, 13, 4, 10, 5, 14, 6, 11, 7, 15,
                                            0, 8, 1, 12, 2, 9, 3, 13, 4, 10, 5, 14, 6, 11, 7, 15};

bool IsIdentity(const uint8_t (&table)[256]) {
    for (int x = 0; x < 256; ++x)
        if (table[x] != x) return false;
    return true;
}

// kLuma, kChroma: whether the Y bytes, the U and V bytes, go through their
// tables; those that do not are put back unchanged.
template <bool kLuma, bool kChroma>
void LookUpRuns(const FieldView& v, const uint8_t (&tables)[3][256]) {
    const ShuffleTables luma(tables[kCurveY], tables[kCurveY]);
    const ShuffleTables chroma(tables[kCurveU], tables[kCurveV]);
    const __m256i sort = _mm256_load_si256(reinterpret_cast<const __m256i*>(kSort));
    const __m256i unsort = _mm256_load_si256(reinterpret_cast<const __m256i*>(kUnsort));
    // The U and V dwords of both loads gathered into the low and the high
    // half, and back.
    const __m256i apart = _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7);
    const __m256i together = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    WalkPairs<16>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m256i a = _mm256_shuffle_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)), sort);
            const __m256i b = _mm256_shuffle_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 32)), sort);
            __m256i y = _mm256_unpacklo_epi64(a, b);
            __m256i uv = _mm256_unpackhi_epi64(a, b);
            if constexpr (kLuma) y = LookUp(luma, y);
            if constexpr (kChroma)
                uv = _mm256_permutevar8x32_epi32(LookUp(chroma, _mm256_permutevar8x32_epi32(uv, apart)), together);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d),
                                _mm256_shuffle_epi8(_mm256_unpacklo_epi64(y, uv), unsort));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32),
                                _mm256_shuffle_epi8(_mm256_unpackhi_epi64(y, uv), unsort));
        },
        [&](const FieldView& rest) { RenderCurveTables(rest, tables); });
}

}  // namespace

void RenderCurveTablesAvx2(const FieldView& v, const uint8_t (&tables)[3][256]) {
    const bool luma = !IsIdentity(tables[kCurveY]);
    const bool chroma = !IsIdentity(tables[kCurveU]) || !IsIdentity(tables[kCurveV]);
    (luma ? (chroma ? LookUpRuns<true, true> : LookUpRuns<true, false>)
          : (chroma ? LookUpRuns<false, true> : LookUpRuns<false, false>))(v, tables);
}

void RenderCurveLinesAvx2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    const LineLanes lanes = LineLanesOf(terms, limited);
    const __m256i slope = _mm256_set1_epi64x(static_cast<long long>(lanes.slope));
    const __m256i negative = _mm256_set1_epi64x(static_cast<long long>(lanes.negative));
    const __m256i intercept = _mm256_set1_epi64x(static_cast<long long>(lanes.intercept));
    const __m256i lo = _mm256_set1_epi32(static_cast<int>(lanes.low));
    const __m256i hi = _mm256_set1_epi32(static_cast<int>(lanes.high));
    const __m256i zero = _mm256_setzero_si256();
    WalkPairs<8>(
        v,
        [&](const uint8_t* s, uint8_t* d) {
            const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
            const __m256i xa = _mm256_unpacklo_epi8(zero, in);
            const __m256i xb = _mm256_unpackhi_epi8(zero, in);
            const __m256i a = _mm256_sub_epi16(_mm256_mulhi_epu16(xa, slope), _mm256_and_si256(xa, negative));
            const __m256i b = _mm256_sub_epi16(_mm256_mulhi_epu16(xb, slope), _mm256_and_si256(xb, negative));
            __m256i out = _mm256_packus_epi16(_mm256_adds_epi16(a, intercept), _mm256_adds_epi16(b, intercept));
            out = _mm256_min_epu8(_mm256_max_epu8(out, lo), hi);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), out);
        },
        [&](const FieldView& rest) { RenderCurveLinesSse2(rest, terms, limited); });
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void RenderCurveTablesAvx2(const FieldView& v, const uint8_t (&tables)[3][256]) { RenderCurveTables(v, tables); }

void RenderCurveLinesAvx2(const FieldView& v, const LineTerms (&terms)[3], bool limited) {
    RenderCurveLines(v, terms, limited);
}

}  // namespace zvf::filters

#endif
