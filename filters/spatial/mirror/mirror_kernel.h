// Mirror's kernel: copies pixel pairs of one field from the source into the
// destination in a changed order, no arithmetic on the samples. Source and
// destination must not overlap (the filter detaches the source first).
#pragma once

#include <cstdint>

#include "zvf/field.h"

namespace zvf::filters {

// Field row (0..rows-1) that destination field row k is taken from.
// Without the vertical flip, k itself. With it, the odd field is reversed
// (rows-1-k) while the even field keeps its first row and reverses the rest
// (rows-k): over a whole frame y -> H - y for y >= 1 with row 0 kept, so the
// two fields never trade places.
int32_t MirrorSourceRow(int32_t k, int32_t rows, bool oddField, bool vertical);

// True when destination field row k is reversed left to right: with the
// horizontal flip every row is, except the even field's kept first row when
// both flips are on.
bool MirrorReversesRow(int32_t k, bool oddField, bool horizontal, bool vertical);

// Writes the view's rows: row mapping as above; a reversed row takes source
// pair pairs-1-j into pair j with its two luma bytes exchanged (Y1 Cb Y0 Cr),
// which is the exact pixel mirror of an even-width rectangle. An odd
// trailing pixel and the other field's rows are not written.
void MirrorField(const FieldView& v, bool horizontal, bool vertical);

}  // namespace zvf::filters
