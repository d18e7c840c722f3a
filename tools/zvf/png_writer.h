// 8-bit RGB images and writing them as PNG (libpng).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zvf::cli {

struct RgbImage {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> rgb;  // rows top first, three bytes per pixel

    RgbImage() = default;
    RgbImage(int32_t w, int32_t h, uint8_t fill) : width(w), height(h), rgb(static_cast<size_t>(w) * h * 3, fill) {}
    uint8_t* At(int32_t x, int32_t y) { return rgb.data() + (static_cast<size_t>(y) * width + x) * 3; }
};

// Throws CliError (i/o) when the file cannot be written.
void WritePng(const std::string& path, const RgbImage& image);

}  // namespace zvf::cli
