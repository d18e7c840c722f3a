// Smooth Blur's passes with AVX-512 (F, BW), smooth_blur_passes.h on 512-bit
// registers: the horizontal one a pixel pair of sixteen rows per register,
// four pairs of them loaded and transposed at a time, one group of sixteen
// rows in flight (two measured a tenth slower: the recursions of one group
// already overlap); the vertical one 64 byte columns of a strip at a time,
// columns left over past the last 64 going to the AVX2 pass. The byte and word
// unpacks and packs work inside 128-bit lanes as in the narrower passes, so
// the lane order they make and undo is the same. Helpers are forced inline:
// 512-bit values are never passed to a call (the Windows stack is only 16-byte
// aligned).
#include <cstring>

#include "smooth_blur_kernel.h"
#include "spatial/blur/blur_row_groups.h"
#include "spatial/blur/blur_scratch.h"

#if defined(__x86_64__) || defined(_M_X64)
#include "zvf/avx512.h"
#include "smooth_blur_passes.h"

#define ZVF_INLINE __attribute__((always_inline)) inline

namespace zvf::filters {
namespace {

ZVF_INLINE int32_t Word(const uint8_t* p) {
    int32_t w;
    std::memcpy(&w, p, 4);
    return w;
}

// A 4 x 4 transpose of 32-bit pairs within each 128-bit lane.
ZVF_INLINE void Transpose(__m512i (&v)[4]) {
    const __m512i t0 = _mm512_unpacklo_epi32(v[0], v[1]), t1 = _mm512_unpackhi_epi32(v[0], v[1]);
    const __m512i t2 = _mm512_unpacklo_epi32(v[2], v[3]), t3 = _mm512_unpackhi_epi32(v[2], v[3]);
    v[0] = _mm512_unpacklo_epi64(t0, t2);
    v[1] = _mm512_unpackhi_epi64(t0, t2);
    v[2] = _mm512_unpacklo_epi64(t1, t3);
    v[3] = _mm512_unpackhi_epi64(t1, t3);
}

ZVF_INLINE __m128i Load128(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

ZVF_INLINE void Store128(uint8_t* p, const __m128i& v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// The register set of the shared passes: 64 byte columns, or one pixel pair
// of sixteen rows, row k in 32-bit lane k.
struct Avx512 {
    using Reg = __m512i;
    static constexpr int32_t kBytes = 64;
    static constexpr int kRows = 16;

    static ZVF_INLINE Reg Load(const void* p) { return _mm512_loadu_si512(p); }
    static ZVF_INLINE void Store(void* p, const Reg& v) { _mm512_storeu_si512(p, v); }

    // As the AVX2 set's, on four 128-bit lanes.
    static ZVF_INLINE void Centred(const Reg& bytes, Reg& lo, Reg& hi) {
        const __m512i flipped = _mm512_xor_si512(bytes, _mm512_set1_epi8(static_cast<char>(0x80)));
        lo = _mm512_unpacklo_epi8(_mm512_setzero_si512(), flipped);
        hi = _mm512_unpackhi_epi8(_mm512_setzero_si512(), flipped);
    }

    static ZVF_INLINE void Accumulate(const Reg& weights, const Reg& x, const Reg& p, Reg& lo, Reg& hi) {
        lo = _mm512_madd_epi16(_mm512_unpacklo_epi16(x, p), weights);
        hi = _mm512_madd_epi16(_mm512_unpackhi_epi16(x, p), weights);
    }

    static ZVF_INLINE Reg NextStates(const Reg& lo, const Reg& hi) {
        return _mm512_packs_epi32(_mm512_srai_epi32(lo, 15), _mm512_srai_epi32(hi, 15));
    }

    static ZVF_INLINE Reg Output(const Reg (&g)[4], const Reg (&f)[4]) {
        __m512i v[4];
        for (int k = 0; k < 4; ++k) v[k] = _mm512_srai_epi32(_mm512_add_epi32(g[k], f[k]), 24);
        const __m512i bytes = _mm512_packs_epi16(_mm512_packs_epi32(v[0], v[1]), _mm512_packs_epi32(v[2], v[3]));
        return _mm512_xor_si512(bytes, _mm512_set1_epi8(static_cast<char>(0x80)));
    }

    static ZVF_INLINE Reg OnePair(const uint8_t* const (&s)[16], int32_t at) {
        return _mm512_setr_epi32(Word(s[0] + at), Word(s[1] + at), Word(s[2] + at), Word(s[3] + at),
                                 Word(s[4] + at), Word(s[5] + at), Word(s[6] + at), Word(s[7] + at),
                                 Word(s[8] + at), Word(s[9] + at), Word(s[10] + at), Word(s[11] + at),
                                 Word(s[12] + at), Word(s[13] + at), Word(s[14] + at), Word(s[15] + at));
    }

    static ZVF_INLINE void PutOnePair(uint8_t* const (&d)[16], int32_t at, const Reg& v) {
        alignas(64) int32_t w[16];
        _mm512_store_si512(w, v);
        for (int k = 0; k < 16; ++k)
            if (d[k] != nullptr) std::memcpy(d[k] + at, &w[k], 4);
    }

    // Pairs at..at+3 of sixteen rows, one register per pair, rows in the
    // order OnePair puts them: register k gets rows k, k + 4, k + 8 and
    // k + 12 in its four lanes, and the transpose makes lane L of register t
    // pair t of rows 4L..4L+3.
    static ZVF_INLINE void FourPairs(const uint8_t* const (&s)[16], int32_t at, Reg (&q)[4]) {
        for (int k = 0; k < 4; ++k) {
            __m512i r = _mm512_castsi128_si512(Load128(s[k] + at));
            r = _mm512_inserti32x4(r, Load128(s[k + 4] + at), 1);
            r = _mm512_inserti32x4(r, Load128(s[k + 8] + at), 2);
            q[k] = _mm512_inserti32x4(r, Load128(s[k + 12] + at), 3);
        }
        Transpose(q);
    }

    static ZVF_INLINE void PutFourPairs(uint8_t* const (&d)[16], int32_t at, Reg (&q)[4]) {
        Transpose(q);
        for (int k = 0; k < 4; ++k) {
            if (d[k] != nullptr) Store128(d[k] + at, _mm512_castsi512_si128(q[k]));
            if (d[k + 4] != nullptr) Store128(d[k + 4] + at, _mm512_extracti32x4_epi32(q[k], 1));
            if (d[k + 8] != nullptr) Store128(d[k + 8] + at, _mm512_extracti32x4_epi32(q[k], 2));
            if (d[k + 12] != nullptr) Store128(d[k + 12] + at, _mm512_extracti32x4_epi32(q[k], 3));
        }
    }
};

ZVF_INLINE __m512i Weights(int32_t a) {
    return _mm512_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(a) << 16) | static_cast<uint16_t>(32768 - a)));
}

}  // namespace

void SmoothRowsAvx512(const FieldView& v, int32_t a, std::span<int32_t> fwd) {
    // 192 bytes per pair of the group of sixteen rows, 48 lanes of the
    // scratch. Other weights and short fields: the AVX2 pass.
    const size_t room = fwd.size() / (smooth_passes::kEntry<Avx512> / 2 * static_cast<size_t>(v.pairs));
    if (room < 1 || v.rows < 9 || a < 1 || a > 32767) {
        SmoothRowsAvx2(v, a, fwd);
        return;
    }
    const __m512i weights = Weights(a);
    int16_t* states = reinterpret_cast<int16_t*>(fwd.data());
    ForEachRowGroup<1, 16>(v, [&](const auto& s, const auto& d) {
        smooth_passes::RowGroups<Avx512, 1>(weights, s, d, v.pairs, states);
    });
}

void SmoothStripAvx512(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    const int32_t whole = (a >= 1 && a <= 32767) ? lanes & ~63 : 0;  // other weights: see the SSE2 pass
    if (whole > 0) smooth_passes::Strips<Avx512>(Weights(a), base, step, rows, whole, up);
    if (whole < lanes) SmoothStripAvx2(base + whole, step, rows, lanes - whole, a, up);
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void SmoothRowsAvx512(const FieldView& v, int32_t a, std::span<int32_t> fwd) { SmoothRowsAvx2(v, a, fwd); }

void SmoothStripAvx512(uint8_t* base, ptrdiff_t step, int32_t rows, int32_t lanes, int32_t a, int32_t* up) {
    SmoothStripAvx2(base, step, rows, lanes, a, up);
}

}  // namespace zvf::filters

#endif
