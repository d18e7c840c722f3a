// The demo's built-in test picture, drawn in code: colour bars, a luma ramp,
// Cb and Cr ramps, a zone plate and fine detail, packed Y0 Cb Y1 Cr.
#pragma once

#include <cstdint>
#include <vector>

namespace zvf::cli {

constexpr int32_t kDemoWidth = 352;
constexpr int32_t kDemoHeight = 288;

std::vector<uint8_t> DemoPicture(int32_t width = kDemoWidth, int32_t height = kDemoHeight);

}  // namespace zvf::cli
