// YUV Curve's payload: the fixed part (fields 0 to 9, the three tables) as
// stored, then 8 bytes a point (x, y) for the Y, U and V curves in turn.
#pragma once

#include <cstddef>
#include <cstdint>

#include "yuv_curve_record.h"

namespace zvf::filters {

uint32_t CurvePayloadSize(const YuvCurveRecord& record);
void EncodeCurvePayload(const YuvCurveRecord& record, uint8_t* out);
// Reads a payload of `available` bytes (at least the fixed part). When the
// point counts ask for more bytes than there are, or the points cannot be
// allocated, returns false and leaves the record as it was. Loaded tables
// and points are taken as stored.
bool DecodeCurvePayload(const uint8_t* payload, size_t available, YuvCurveRecord* record);

}  // namespace zvf::filters
