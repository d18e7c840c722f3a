// Emboss's span kernel for SSE2, bit-exact with the scalar EmbossSpan.
// Bytes moved to the signed range (xor 0x80) subtract with signed
// saturation to clamp(s - t, -128, 127); moving back adds the 128, so each
// byte is clamp(s - t + 128, 0, 255) exactly as the scalar version.
#include "emboss_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvf::filters {

void EmbossSpanSse2(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n) {
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    for (; i + 16 <= n; i += 16) {
        const __m128i a = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)), bias);
        const __m128i b = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(t + i)), bias);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_xor_si128(_mm_subs_epi8(a, b), bias));
    }
#endif
    EmbossSpan(s + i, t + i, out + i, n - i);
}

}  // namespace zvf::filters
