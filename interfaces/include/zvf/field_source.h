// A field's source rows kept apart from its destination. Kernels that read
// other rows or other pairs than the one they write (a mirror, a relief) go
// wrong when the host hands one frame as both source and destination: this
// copies the source rows the field view covers first, so the results are the
// same as with two frames.
#pragma once

#include <cstdint>
#include <memory>

#include "zvf/field.h"

namespace zvf {

// True when the source and destination frames of the view share any byte.
bool SourceOverlapsDestination(const FieldView& v);

// Copies the view's source rows (rows x pairs, at the view's step) into
// `scratch` and points v->src there; v->srcFrame becomes null, since the copy
// is no longer a whole frame. False, with the view unchanged, when memory
// runs out.
bool DetachSource(FieldView* v, std::unique_ptr<uint8_t[]>* scratch);

}  // namespace zvf
