#include "demo_picture.h"

#include <cmath>

namespace zvf::cli {
namespace {

struct Ycc {
    double y, cb, cr;
};

// Studio-range BT.601 from RGB in 0..1.
Ycc FromRgb(double r, double g, double b) {
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    return {16 + 219 * y, 128 + 224 * (b - y) / 1.772, 128 + 224 * (r - y) / 1.402};
}

uint8_t Byte(double v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : std::lround(v)); }

// The colour of pixel (x, y); the pair's chroma is the mean of its two pixels.
Ycc Sample(int32_t x, int32_t y, int32_t w, int32_t h) {
    const int32_t bars = h * 30 / 100, ramp = h * 42 / 100, cb = h * 50 / 100, cr = h * 58 / 100;
    if (y < bars) {  // 75% colour bars: white, yellow, cyan, green, magenta, red, blue
        const int bar = x * 7 / w;
        const double v = 0.75;
        const double r = (bar == 0 || bar == 1 || bar == 4 || bar == 5) ? v : 0;
        const double g = (bar <= 3) ? v : 0;
        const double b = (bar == 0 || bar == 2 || bar == 4 || bar == 6) ? v : 0;
        return FromRgb(r, g, b);
    }
    if (y < ramp) return {16 + 219.0 * x / (w - 1), 128, 128};
    if (y < cb) return {128, 16 + 224.0 * x / (w - 1), 128};
    if (y < cr) return {128, 128, 16 + 224.0 * x / (w - 1)};
    const int32_t top = cr;
    if (x < w / 2) {  // zone plate: frequency rises with the distance from the centre
        const double cx = x - w / 4.0, cy = y - (top + h) / 2.0;
        const double k = 3.14159265358979 / (w / 2.0);
        return {126 + 109 * std::cos(k * (cx * cx + cy * cy) / 2), 128, 128};
    }
    // Fine detail in four blocks: one-pixel columns, one-pixel rows (one
    // field dark, the other light), a one-pixel checkerboard, and diagonals.
    const int32_t bx = (x - w / 2) * 2 / (w / 2), by = (y - top) * 2 / (h - top);
    const bool on = bx == 0 ? (by == 0 ? x % 2 == 0 : (x + y) % 2 == 0) : (by == 0 ? y % 2 == 0 : (x + y) % 8 < 2);
    return {on ? 235.0 : 16.0, 128, 128};
}

}  // namespace

std::vector<uint8_t> DemoPicture(int32_t width, int32_t height) {
    std::vector<uint8_t> out(static_cast<size_t>(width) * height * 2);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x + 1 < width; x += 2) {
            const Ycc a = Sample(x, y, width, height), b = Sample(x + 1, y, width, height);
            uint8_t* p = out.data() + (static_cast<size_t>(y) * width + x) * 2;
            p[0] = Byte(a.y);
            p[1] = Byte((a.cb + b.cb) / 2);
            p[2] = Byte(b.y);
            p[3] = Byte((a.cr + b.cr) / 2);
        }
    return out;
}

}  // namespace zvf::cli
