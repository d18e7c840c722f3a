// Block Color's fill kernel.
#pragma once

#include <cstdint>

#include "zvf/field.h"

namespace zvf::filters {

// Stores the word y, u, y, v into every pair of the field's rows. After each
// row the write position advances by step - width_px * 2 measured from where
// the stores ended, so with an odd width each row starts one byte pair
// earlier than the last: kept as the module has always rendered it.
void FillField(const FieldView& v, uint8_t y, uint8_t u, uint8_t vv);

}  // namespace zvf::filters
