// Strobe/Freeze's pure parts: the cycle decision, the colour of the flat
// frame, and the field kernels that capture, fill and copy. No COM here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "strobe_record.h"
#include "zvf/row_prefetch.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

enum class StrobeOutput : uint8_t {
    PassThrough,  // the source as it is
    Held,         // the held picture (captured first when `capture` is set)
    Color,        // the flat frame colour
    Nothing,      // a mode value the filter does not know: write nothing
};

struct StrobeStep {
    StrobeOutput output;
    bool capture;
};

// Where `frame` falls in the cycle and what it shows. `frozenValid` tells
// whether the held picture of this field holds a capture; `refresh` asks for
// a new one. An interval of 0 (only a hand-made record carries it) counts as
// a cycle of 2^32 frames, so the remainder is the frame number itself.
StrobeStep DecideStrobe(const StrobeRecord& record, uint32_t frame, bool frozenValid, bool refresh);

struct Yuv {
    uint8_t y, u, v;
};

// 0x00BBGGRR to full-range Y/Cb/Cr in 15-bit fixed point; the top byte is
// ignored.
Yuv ColorRefToYuv(uint32_t colorref);

// The rows below start at the first pair of the region's first field row;
// successive field rows are `2 * pitch` apart, neighbouring rows of the other
// field `pitch` away. Only `pairs * 4` bytes of each field row are touched.

// Copies the field's rows of the source into the held frame, smoothed
// vertically with the other field's lines (every byte alike, truncated):
// first row (3c + below) / 4, middle rows (above + 2c + below) / 4, last row
// (3c + above) / 4. A single field row has no lines of its own field around
// it to tell a comb from detail, and its neighbours may lie outside the
// frame: it is held as it is.
//
// Every row is one row function of three lines: (a + 2c + b) / 4, with
// a = c on the first and last rows. The SSE2 and AVX2 ones give the same
// bytes as the scalar one on every input, and ask for the lines of c, b and
// out `ahead` bytes on (the next row's, or their own on the last row) as
// they go.
using CaptureRowFn = void (*)(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n,
                              ptrdiff_t ahead);
void CaptureRow(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead = 0);
void CaptureRowSse2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead);
void CaptureRowAvx2(const uint8_t* a, const uint8_t* c, const uint8_t* b, uint8_t* out, size_t n, ptrdiff_t ahead);
CaptureRowFn SelectCaptureRow(SimdLevel level);
// The lines `ahead` bytes on of a row's own line, the line below it and its
// output: the next row's c, b and out.
inline void PrefetchNextRow(const uint8_t* c, const uint8_t* b, uint8_t* out, ptrdiff_t ahead) {
    PrefetchLine(c + ahead);
    PrefetchLine(b + ahead);
    PrefetchLineForWrite(out + ahead);
}
void CaptureSmoothed(const uint8_t* src, uint8_t* held, ptrdiff_t pitch, int32_t rows, int32_t pairs,
                     CaptureRowFn row = CaptureRow);

// Writes Y, U, Y, V into every pair of the field's rows.
void FillColor(uint8_t* dst, ptrdiff_t pitch, int32_t rows, int32_t pairs, Yuv colour);

// Copies `bytes` of every field row: the copy a host's rectangle copy makes,
// for hosts that offer none.
void CopyFieldRows(uint8_t* dst, const uint8_t* src, ptrdiff_t pitch, int32_t rows, size_t bytes);

}  // namespace zvf::filters
