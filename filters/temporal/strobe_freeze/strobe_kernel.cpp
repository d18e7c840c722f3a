#include "strobe_kernel.h"

#include <cstring>

namespace zvf::filters {
namespace {

uint8_t ClampByte(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

}  // namespace

StrobeStep DecideStrobe(const StrobeRecord& record, uint32_t frame, bool frozenValid, bool refresh) {
    const uint32_t r = record.interval == 0 ? frame : frame % record.interval;
    const uint32_t d = record.interval - record.duration;  // wraps when duration > interval, as it always has
    if (r < d) {
        switch (record.firstHalfMode) {
            case strobe_mode::kMove:
                return {StrobeOutput::PassThrough, false};
            case strobe_mode::kFirstFreeze:
                return {StrobeOutput::Held, r == 0 || !frozenValid || refresh};
            default:
                return {StrobeOutput::Nothing, false};
        }
    }
    switch (record.secondHalfMode) {
        case strobe_mode::kSecondFreeze:
            return {StrobeOutput::Held, r == d || !frozenValid || refresh};
        case strobe_mode::kColorFrame:
            return {StrobeOutput::Color, false};
        default:
            return {StrobeOutput::Nothing, false};
    }
}

Yuv ColorRefToYuv(uint32_t colorref) {
    const int32_t r = static_cast<int32_t>(colorref & 0xFF);
    const int32_t g = static_cast<int32_t>((colorref >> 8) & 0xFF);
    const int32_t b = static_cast<int32_t>((colorref >> 16) & 0xFF);
    const int32_t y = (9798 * r + 19235 * g + 3736 * b + 16384) >> 15;
    const int32_t u = (((b + 1) * 16384 - 10855 * g - 5529 * r) >> 15) + 128;
    const int32_t v = (((r + 1) * 16384 - 13720 * g - 2664 * b) >> 15) + 128;
    return {ClampByte(y), ClampByte(u), ClampByte(v)};
}

void CaptureRow(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t) {
    for (size_t i = 0; i < n; ++i) out[i] = static_cast<uint8_t>((a[i] + 2 * c[i] + b[i]) >> 2);
}

CaptureRowFn SelectCaptureRow(SimdLevel level) {
    return level >= SimdLevel::avx2 ? CaptureRowAvx2 : level >= SimdLevel::sse2 ? CaptureRowSse2 : CaptureRow;
}

void CaptureSmoothed(const uint8_t* src, uint8_t* held, ptrdiff_t pitch, int32_t rows, int32_t pairs,
                     CaptureRowFn row) {
    const size_t bytes = size_t{4} * static_cast<size_t>(pairs);
    const ptrdiff_t step = 2 * pitch;
    if (rows <= 0) return;
    if (rows == 1) {
        std::memcpy(held, src, bytes);
        return;
    }
    row(src, src, src + pitch, held, bytes, step);  // (3c + below) / 4
    for (int32_t k = 1; k < rows - 1; ++k) {
        const uint8_t* c = src + k * step;
        row(c - pitch, c, c + pitch, held + k * step, bytes, step);
    }
    const uint8_t* last = src + (rows - 1) * step;
    row(last, last, last - pitch, held + (rows - 1) * step, bytes, 0);  // (3c + above) / 4
}

void FillColor(uint8_t* dst, ptrdiff_t pitch, int32_t rows, int32_t pairs, Yuv colour) {
    const uint8_t word[4] = {colour.y, colour.u, colour.y, colour.v};
    for (int32_t k = 0; k < rows; ++k) {
        uint8_t* p = dst + k * 2 * pitch;
        for (int32_t i = 0; i < pairs; ++i) std::memcpy(p + 4 * i, word, 4);
    }
}

void CopyFieldRows(uint8_t* dst, const uint8_t* src, ptrdiff_t pitch, int32_t rows, size_t bytes) {
    for (int32_t k = 0; k < rows; ++k) std::memmove(dst + k * 2 * pitch, src + k * 2 * pitch, bytes);
}

}  // namespace zvf::filters
