// Emboss's span kernel for AVX2: the SSE2 arithmetic (signed saturating
// subtraction of the bytes moved to the signed range) on 32 bytes per step,
// bit-exact with the scalar EmbossSpan. The last 0..31 bytes go through the
// SSE2 span. Helpers are inlined, so no 256-bit value crosses a call.
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
#include <immintrin.h>

#include "emboss_kernel.h"
#include "zvf/row_prefetch.h"

namespace zvf::filters {
namespace {

__attribute__((always_inline)) inline void Step(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t i) {
    const __m256i bias = _mm256_set1_epi8(static_cast<char>(0x80));
    const __m256i a = _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)), bias);
    const __m256i b = _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(t + i)), bias);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_xor_si256(_mm256_subs_epi8(a, b), bias));
}

}  // namespace

void EmbossSpanAvx2(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t ahead, ptrdiff_t refAhead) {
    size_t i = 0;
    // Two steps per 64-byte line, so each line of the next span is asked
    // for once.
    for (; i + 64 <= n; i += 64) {
        PrefetchLine(s + ahead + i);
        PrefetchLine(t + refAhead + i);
        PrefetchLineForWrite(out + ahead + i);
        Step(s, t, out, i);
        Step(s, t, out, i + 32);
    }
    if (i + 32 <= n) {
        Step(s, t, out, i);
        i += 32;
    }
    if (i < n) EmbossSpanSse2(s + i, t + i, out + i, n - i, 0, 0);
}

}  // namespace zvf::filters
#endif
