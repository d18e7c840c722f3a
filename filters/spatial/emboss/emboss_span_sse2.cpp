// Emboss's span kernel for SSE2, bit-exact with the scalar EmbossSpan.
// Bytes moved to the signed range (xor 0x80) subtract with signed
// saturation to clamp(s - t, -128, 127); moving back adds the 128, so each
// byte is clamp(s - t + 128, 0, 255) exactly as the scalar version.
#include "emboss_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#include "zvf/row_prefetch.h"
#endif

namespace zvf::filters {

#if defined(__SSE2__)
namespace {

inline void Step(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t i) {
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    const __m128i a = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)), bias);
    const __m128i b = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(t + i)), bias);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_xor_si128(_mm_subs_epi8(a, b), bias));
}

}  // namespace
#endif

void EmbossSpanSse2(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t ahead, ptrdiff_t refAhead) {
    size_t i = 0;
#if defined(__SSE2__)
    // Four steps per 64-byte line, so each line of the next span is asked
    // for once.
    for (; i + 64 <= n; i += 64) {
        PrefetchLine(s + ahead + i);
        PrefetchLine(t + refAhead + i);
        PrefetchLineForWrite(out + ahead + i);
        Step(s, t, out, i);
        Step(s, t, out, i + 16);
        Step(s, t, out, i + 32);
        Step(s, t, out, i + 48);
    }
    for (; i + 16 <= n; i += 16) Step(s, t, out, i);
#else
    (void)ahead;
    (void)refAhead;
#endif
    EmbossSpan(s + i, t + i, out + i, n - i, 0, 0);
}

}  // namespace zvf::filters
