#include "contact_sheet.h"

#include <cmath>
#include <string>

namespace zvf::cli {
namespace {

constexpr int32_t kGap = 8;
constexpr int32_t kScale = 2;  // glyph pixels per font pixel

// 3x5 digits, one row per nibble (bit 2 = left column).
constexpr uint8_t kDigits[10][5] = {{7, 5, 5, 5, 7}, {2, 6, 2, 2, 7}, {7, 1, 7, 4, 7}, {7, 1, 7, 1, 7},
                                    {5, 5, 7, 1, 1}, {7, 4, 7, 1, 7}, {7, 4, 7, 5, 7}, {7, 1, 1, 1, 1},
                                    {7, 5, 7, 5, 7}, {7, 5, 7, 1, 7}};

uint8_t Clamp(double v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : std::lround(v)); }

void Fill(RgbImage* img, int32_t x0, int32_t y0, int32_t w, int32_t h, uint8_t v) {
    for (int32_t y = y0; y < y0 + h && y < img->height; ++y)
        for (int32_t x = x0; x < x0 + w && x < img->width; ++x) {
            uint8_t* p = img->At(x, y);
            p[0] = p[1] = p[2] = v;
        }
}

// The number in white on a black plate, readable on any picture.
void Label(RgbImage* img, int32_t x0, int32_t y0, int number) {
    const std::string text = std::to_string(number);
    const int32_t advance = 4 * kScale;
    Fill(img, x0, y0, static_cast<int32_t>(text.size()) * advance + kScale, 7 * kScale, 0);
    for (size_t i = 0; i < text.size(); ++i)
        for (int32_t row = 0; row < 5; ++row)
            for (int32_t col = 0; col < 3; ++col)
                if (kDigits[text[i] - '0'][row] & (4 >> col))
                    Fill(img, x0 + kScale + static_cast<int32_t>(i) * advance + col * kScale, y0 + kScale + row * kScale,
                         kScale, kScale, 255);
}

}  // namespace

void PackedToRgb(const uint8_t* packed, int32_t width, int32_t height, RgbImage* out, int32_t left, int32_t top) {
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const uint8_t* pair = packed + (static_cast<size_t>(y) * width + (x & ~1)) * 2;
            const double l = 1.164383 * (pair[(x & 1) * 2] - 16);
            const double cb = pair[1] - 128.0, cr = pair[3] - 128.0;
            uint8_t* p = out->At(left + x, top + y);
            p[0] = Clamp(l + 1.596027 * cr);
            p[1] = Clamp(l - 0.391762 * cb - 0.812968 * cr);
            p[2] = Clamp(l + 2.017232 * cb);
        }
}

RgbImage ContactSheet(const std::vector<std::vector<uint8_t>>& frames, int32_t width, int32_t height, int32_t columns) {
    const auto count = static_cast<int32_t>(frames.size());
    const int32_t rows = count == 0 ? 0 : (count + columns - 1) / columns;
    const int32_t cols = count < columns ? count : columns;
    RgbImage sheet(kGap + cols * (width + kGap), kGap + rows * (height + kGap), 48);
    for (int32_t i = 0; i < count; ++i) {
        const int32_t left = kGap + (i % columns) * (width + kGap), top = kGap + (i / columns) * (height + kGap);
        PackedToRgb(frames[i].data(), width, height, &sheet, left, top);
        Label(&sheet, left + 2, top + 2, i + 1);
    }
    return sheet;
}

}  // namespace zvf::cli
