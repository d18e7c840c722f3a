// The demo's contact sheet: packed 4:2:2 frames as numbered RGB tiles on a
// grid, in the order given.
#pragma once

#include <cstdint>
#include <vector>

#include "png_writer.h"

namespace zvf::cli {

// Studio-range BT.601 to RGB; each pixel takes its pair's chroma.
void PackedToRgb(const uint8_t* packed, int32_t width, int32_t height, RgbImage* out, int32_t left, int32_t top);

// Tiles of equal size, `columns` to a row, each numbered from 1 in its corner.
RgbImage ContactSheet(const std::vector<std::vector<uint8_t>>& frames, int32_t width, int32_t height, int32_t columns);

}  // namespace zvf::cli
