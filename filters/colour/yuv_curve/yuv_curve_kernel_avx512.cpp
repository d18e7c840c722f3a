// AVX-512 twin of the table kernel, bit-exact with RenderCurveTables on every
// input. The three 256-byte tables sit in twelve registers; a two-register
// byte permute (VBMI) looks up 64 bytes in one half-table at a time, the
// byte's position in the pair (Y0 U Y1 V) picks the table and its top bit
// the half. Six permutes and five masked blends per 64 bytes, no memory
// lookups. The last one to fifteen pairs of every row go through the
// same step with masked loads and stores, which neither read nor write a
// byte past the row. Every 64 bytes the same column of the field's next row
// is asked for. Nothing is called while a 512-bit value is live, so none has
// to be kept on the (16-byte aligned) Windows stack.
#include "yuv_curve_kernel.h"

#if defined(__x86_64__) || defined(_M_X64)
#include "zvf/avx512.h"

#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

// Byte lanes of a 64-byte run by their place in the pair.
constexpr uint64_t kBlueLanes = 0x2222222222222222ull;  // U
constexpr uint64_t kRedLanes = 0x8888888888888888ull;   // V

struct HalfTables {
    __m512i lo0, lo1, hi0, hi1;  // entries 0..63, 64..127, 128..191, 192..255
};

#if defined(__GNUC__)
__attribute__((always_inline))
#endif
inline HalfTables LoadTable(const uint8_t* t) {
    return {_mm512_loadu_si512(t), _mm512_loadu_si512(t + 64), _mm512_loadu_si512(t + 128),
            _mm512_loadu_si512(t + 192)};
}

}  // namespace

void RenderCurveTablesAvx512(const FieldView& v, const uint8_t (&tables)[3][256]) {
    const HalfTables ty = LoadTable(tables[kCurveY]);
    const HalfTables tu = LoadTable(tables[kCurveU]);
    const HalfTables tv = LoadTable(tables[kCurveV]);
    // Each byte of x through the table of its lane.
    auto lookUp = [&](__m512i x) {
        __m512i lo = _mm512_permutex2var_epi8(ty.lo0, x, ty.lo1);
        __m512i hi = _mm512_permutex2var_epi8(ty.hi0, x, ty.hi1);
        lo = _mm512_mask_blend_epi8(kBlueLanes, lo, _mm512_permutex2var_epi8(tu.lo0, x, tu.lo1));
        hi = _mm512_mask_blend_epi8(kBlueLanes, hi, _mm512_permutex2var_epi8(tu.hi0, x, tu.hi1));
        lo = _mm512_mask_blend_epi8(kRedLanes, lo, _mm512_permutex2var_epi8(tv.lo0, x, tv.lo1));
        hi = _mm512_mask_blend_epi8(kRedLanes, hi, _mm512_permutex2var_epi8(tv.hi0, x, tv.hi1));
        return _mm512_mask_blend_epi8(_mm512_movepi8_mask(x), lo, hi);
    };
    WalkPairs<16>(
        v,
        [&](const uint8_t* s, uint8_t* d) { _mm512_storeu_si512(d, lookUp(_mm512_loadu_si512(s))); },
        [&](const FieldView& rest) {
            // Fewer than 16 pairs: one masked run per row.
            const __mmask64 bytes = (uint64_t{1} << (4 * rest.pairs)) - 1;
            for (int32_t r = 0; r < rest.rows; ++r) {
                const __m512i in = _mm512_maskz_loadu_epi8(bytes, rest.src + r * rest.step);
                _mm512_mask_storeu_epi8(rest.dst + r * rest.step, bytes, lookUp(in));
            }
        });
}

}  // namespace zvf::filters

#else

namespace zvf::filters {

void RenderCurveTablesAvx512(const FieldView& v, const uint8_t (&tables)[3][256]) { RenderCurveTables(v, tables); }

}  // namespace zvf::filters

#endif
