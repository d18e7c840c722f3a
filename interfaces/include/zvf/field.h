// The field view every kernel takes, and the opening steps every Render runs
// to get one. A field is a view, not a copy: base plus one pitch for the odd
// field, a row step of two pitches, half the rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zvf/abi.h"

namespace zvf {

constexpr int32_t kBytesPerPixel = 2;  // packed 4:2:2: Y0 Cb Y1 Cr per pair

struct FieldView {
    uint8_t* dst = nullptr;        // first pair of the first row of the field, at `left`
    const uint8_t* src = nullptr;  // same position in the source frame
    ptrdiff_t step = 0;            // bytes from one row of the field to the next (2 x pitch)
    int32_t rows = 0;              // rows of the field inside the rectangle
    int32_t pairs = 0;             // pixel pairs per row; an odd last pixel is not included

    // Whole-frame context for kernels that read neighbours or clamp at edges.
    uint8_t* dstFrame = nullptr;
    const uint8_t* srcFrame = nullptr;
    int32_t pitch = 0;
    int32_t width = 0;
    int32_t height = 0;
    int32_t firstRow = 0;  // frame row of the first field row
    int32_t left = 0;      // frame column of the first pair
    int32_t width_px = 0;  // right - left (may be odd)
    int32_t odd = 0;       // 1 when the odd rows are processed
};

// Selector rule: most filters take the odd rows only for selector 1; Matrix
// takes them for any non-zero selector.
enum class OddRule { SelectorIsOne, SelectorNonZero };

// Runs the common opening steps of Render:
//  - null frames, rectangle or buffers: status::pointer;
//  - frames that are not 16-bit or differ in size, or a rectangle outside the
//    frame or inverted: status::invalid_arg (a host bug never becomes a write
//    outside its buffer);
//  - no row of the selected parity or fewer than two pixels: status::fail.
// Nothing is written in any case; on status::ok `out` is filled.
Status OpenField(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, int32_t field, FieldView* out,
                 OddRule rule = OddRule::SelectorIsOne);

// Pure geometry of the opening steps, for a frame whose size is known.
struct FieldGeometry {
    int32_t firstRow;
    int32_t rows;   // 0 when no row of the parity lies inside
    int32_t pairs;  // (right - left) >> 1
    int32_t odd;
};
FieldGeometry ComputeFieldGeometry(const Rect& rect, int32_t field, OddRule rule = OddRule::SelectorIsOne);

}  // namespace zvf
