// Where a setup dialog appears the first time it is shown: centred on the
// mouse cursor, then pushed inside the monitor's full rectangle.
#pragma once

#include "zvf/abi.h"

namespace zvf {

struct Point {
    int32_t x;
    int32_t y;
};

// `dialog` gives the size (right - left, bottom - top); the result is the new
// top-left corner. Edges are tested in the order left, right, bottom, top, so
// a dialog larger than the monitor ends up one pixel below its top edge.
Point PlaceAtCursor(const Rect& dialog, Point cursor, const Rect& monitor);

}  // namespace zvf
