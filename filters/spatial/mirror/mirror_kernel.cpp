#include "mirror_kernel.h"

#include <cstring>

#include "zvf/row_alignment.h"

namespace zvf::filters {
namespace {

// Lumas of one pair exchanged, chroma kept: every target is little-endian,
// so in a 32-bit word Y0 is the low byte and Y1 the third.
inline uint32_t SwapLumas(uint32_t w) { return (w & 0xFF00FF00u) | ((w >> 16) & 0xFFu) | ((w & 0xFFu) << 16); }

}  // namespace

// Two pairs per 64-bit word: the word's halves trade places (pair order
// reversed) and each half has its lumas exchanged.
void ReverseRowScalar(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t*, uint8_t*) {
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(pairs);
    int32_t j = 0;
    for (; j + 2 <= pairs; j += 2, dst += 8) {
        s -= 8;
        uint64_t w;
        std::memcpy(&w, s, 8);
        const uint64_t chroma = w & 0xFF00FF00FF00FF00u;
        const uint64_t swapped = chroma | ((w >> 16) & 0x000000FF000000FFu) | ((w & 0x000000FF000000FFu) << 16);
        const uint64_t out = (swapped << 32) | (swapped >> 32);
        std::memcpy(dst, &out, 8);
    }
    if (j < pairs) {
        uint32_t w;
        std::memcpy(&w, src, 4);
        w = SwapLumas(w);
        std::memcpy(dst, &w, 4);
    }
}

bool PeelToBoundary(uint8_t*& dst, const uint8_t* src, int32_t& pairs, uint8_t*& nextDst, uintptr_t boundary) {
    if (reinterpret_cast<uintptr_t>(dst) % 4 != 0) return false;
    const auto peel = static_cast<int32_t>(BytesToAlignment(dst, 4 * static_cast<size_t>(pairs), boundary) / 4);
    // The first destination pairs take the last source pairs.
    ReverseRowScalar(dst, src + 4 * static_cast<ptrdiff_t>(pairs - peel), peel, src, dst);
    dst += 4 * peel;
    nextDst += 4 * peel;
    pairs -= peel;
    return true;
}

MirrorRowFn SelectReverseRow(SimdLevel level, bool stream) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (level >= SimdLevel::avx2) return stream ? ReverseRowAvx2Stream : ReverseRowAvx2;
    if (level >= SimdLevel::sse2) return stream ? ReverseRowSse2Stream : ReverseRowSse2;
#else
    (void)level;
    (void)stream;
#endif
    return ReverseRowScalar;
}

int32_t MirrorSourceRow(int32_t k, int32_t rows, bool oddField, bool vertical) {
    if (!vertical) return k;
    if (oddField) return rows - 1 - k;
    return k == 0 ? 0 : rows - k;
}

bool MirrorReversesRow(int32_t k, bool oddField, bool horizontal, bool vertical) {
    if (!horizontal) return false;
    return !(vertical && !oddField && k == 0);
}

void MirrorField(const FieldView& v, bool horizontal, bool vertical, SimdLevel level) {
    const bool odd = v.odd != 0;
    const size_t rowBytes = size_t{4} * static_cast<size_t>(v.pairs);
    const bool stream = level >= SimdLevel::sse2 && rowBytes * static_cast<size_t>(v.rows) >= kStreamFieldBytes;
    const MirrorRowFn reverse = SelectReverseRow(level, stream);
    for (int32_t k = 0; k < v.rows; ++k) {
        uint8_t* dst = v.dst + k * v.step;
        const uint8_t* src = v.src + MirrorSourceRow(k, v.rows, odd, vertical) * v.step;
        if (MirrorReversesRow(k, odd, horizontal, vertical)) {
            const bool last = k + 1 == v.rows;
            reverse(dst, src, v.pairs, last ? src : v.src + MirrorSourceRow(k + 1, v.rows, odd, vertical) * v.step,
                    last ? dst : dst + v.step);
        } else {
            std::memcpy(dst, src, rowBytes);
        }
    }
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    if (stream) EndStreamedRows();
#endif
}

void MirrorFieldInPlace(const FieldView& v, bool horizontal, bool vertical, SimdLevel level, uint8_t* row) {
    const bool odd = v.odd != 0;
    const size_t rowBytes = size_t{4} * static_cast<size_t>(v.pairs);
    const MirrorRowFn reverse = SelectReverseRow(level);
    // The reversals fetch ahead the two rows the next exchange works on.
    auto put = [&](int32_t k, const uint8_t* from, const uint8_t* nextFrom, uint8_t* nextTo) {
        uint8_t* to = v.dst + k * v.step;
        if (MirrorReversesRow(k, odd, horizontal, vertical))
            reverse(to, from, v.pairs, nextFrom, nextTo);
        else
            std::memcpy(to, from, rowBytes);
    };
    for (int32_t k = 0; k < v.rows; ++k) {
        const int32_t m = MirrorSourceRow(k, v.rows, odd, vertical);
        if (m < k) continue;  // exchanged when its partner came by
        if (m == k && !MirrorReversesRow(k, odd, horizontal, vertical)) continue;  // stays as it is
        const int32_t kn = k + 1 < v.rows ? k + 1 : k;
        uint8_t* nextRow = v.dst + kn * v.step;
        const uint8_t* nextPartner = v.dst + MirrorSourceRow(kn, v.rows, odd, vertical) * v.step;
        std::memcpy(row, v.dst + k * v.step, rowBytes);
        if (m != k) put(k, v.dst + m * v.step, nextPartner, nextRow);
        put(m, row, nextPartner, nextRow);
    }
}

}  // namespace zvf::filters
