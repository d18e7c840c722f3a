#include "emboss_kernel.h"

#include <algorithm>
#include <cstring>

namespace zvf::filters {
namespace {

constexpr EmbossStep kSteps[8] = {{+1, 0}, {+1, -1}, {0, -1}, {-1, -1}, {-1, 0}, {-1, +1}, {0, +1}, {+1, +1}};

inline uint8_t Relief(uint8_t s, uint8_t t) {
    const int32_t x = int32_t{s} - int32_t{t} + 128;
    return static_cast<uint8_t>(x < 0 ? 0 : (x > 255 ? 255 : x));
}

// Pairs whose reference is clamped to one pair at the row's edge.
void AgainstPair(const uint8_t* s, const uint8_t* pair, uint8_t* out, int32_t pairs) {
    for (int32_t c = 0; c < pairs; ++c, s += 4, out += 4)
        for (int k = 0; k < 4; ++k) out[k] = Relief(s[k], pair[k]);
}

// One row against its reference row `t`: the pairs whose reference is
// clamped and the pairs whose reference is inside are separate loops, so the
// span loop carries no test. The next row lies `ahead` bytes on, its
// reference `refAhead`.
template <int DC>
void ReliefRow(const uint8_t* s, const uint8_t* t, uint8_t* out, int32_t pairs, int32_t d, EmbossSpanFn span,
               ptrdiff_t ahead, ptrdiff_t refAhead) {
    if constexpr (DC == 0) {
        span(s, t, out, size_t{4} * static_cast<size_t>(pairs), ahead, refAhead);
    } else if constexpr (DC < 0) {
        const int32_t clamped = std::min(d, pairs);  // pairs c < d refer to pair 0
        AgainstPair(s, t, out, clamped);
        const size_t at = size_t{4} * static_cast<size_t>(clamped);
        span(s + at, t, out + at, size_t{4} * static_cast<size_t>(pairs - clamped), ahead, refAhead);
    } else {
        const int32_t inside = pairs > d ? pairs - d : 0;  // pairs c < Q - d refer to c + d
        if (inside > 0)
            span(s, t + size_t{4} * static_cast<size_t>(d), out, size_t{4} * static_cast<size_t>(inside), ahead,
                 refAhead);
        const size_t at = size_t{4} * static_cast<size_t>(inside);
        AgainstPair(s + at, t + size_t{4} * static_cast<size_t>(pairs - 1), out + at, pairs - inside);
    }
}

template <int DR, int DC>
void ReliefField(const FieldView& v, int32_t d, EmbossSpanFn span) {
    for (int32_t r = 0; r < v.rows; ++r) {
        const int32_t ref = std::clamp(r + DR * d, 0, v.rows - 1);
        const bool last = r + 1 == v.rows;
        const ptrdiff_t ahead = last ? 0 : v.step;
        const ptrdiff_t refAhead = last ? 0 : (std::clamp(r + 1 + DR * d, 0, v.rows - 1) - ref) * v.step;
        ReliefRow<DC>(v.src + r * v.step, v.src + ref * v.step, v.dst + r * v.step, v.pairs, d, span, ahead, refAhead);
    }
}

using FieldFn = void (*)(const FieldView&, int32_t, EmbossSpanFn);
constexpr FieldFn kKernels[8] = {ReliefField<+1, 0>, ReliefField<+1, -1>, ReliefField<0, -1>, ReliefField<-1, -1>,
                                 ReliefField<-1, 0>, ReliefField<-1, +1>, ReliefField<0, +1>, ReliefField<+1, +1>};

}  // namespace

EmbossStep EmbossDirection(uint32_t direction) { return kSteps[std::min(direction, 7u)]; }

void EmbossSpan(const uint8_t* s, const uint8_t* t, uint8_t* out, size_t n, ptrdiff_t, ptrdiff_t) {
    for (size_t i = 0; i < n; ++i) out[i] = Relief(s[i], t[i]);
}

EmbossSpanFn SelectEmbossSpan(SimdLevel level) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx2) return EmbossSpanAvx2;
#endif
    return level >= SimdLevel::sse2 ? EmbossSpanSse2 : EmbossSpan;
}

void EmbossField(const FieldView& v, uint32_t direction, uint32_t depth, EmbossSpanFn span) {
    if (v.rows <= 0 || v.pairs <= 0 || depth == 0) return;
    // Past the field's size every reference is clamped to the same place, so
    // capping the depth changes nothing and keeps the offsets in range.
    const auto d = static_cast<int32_t>(std::min<uint32_t>(depth, static_cast<uint32_t>(std::max(v.rows, v.pairs))));
    kKernels[std::min(direction, 7u)](v, d, span);
}

void GreyField(const FieldView& v) {
    const size_t rowBytes = size_t{4} * static_cast<size_t>(v.pairs);
    for (int32_t r = 0; r < v.rows; ++r) std::memset(v.dst + r * v.step, 0x80, rowBytes);
}

}  // namespace zvf::filters
