// YUV4MPEG2 headers and the 4:2:2 plane layout. Only 8-bit 4:2:2 (C422) is
// taken; the other tags are kept verbatim so they pass through unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zvf::cli {

struct VideoFormat {
    int32_t width = 0;
    int32_t height = 0;
    bool y4m = true;                  // false: raw packed yuyv422 frames back to back
    std::vector<std::string> tags;    // Y4M header tokens after the signature, in order
    uint32_t frameProperty = 1;       // host frame property: bit 0 set = top field first

    size_t FrameBytes() const { return static_cast<size_t>(width) * static_cast<size_t>(height) * 2; }
};

constexpr std::string_view kY4mSignature = "YUV4MPEG2";
constexpr int32_t kMaxDimension = 16384;

// Parses the header line (without its newline). Throws CliError (bad input)
// naming the problem.
VideoFormat ParseY4mHeader(std::string_view line);
// The header line, newline included.
std::string Y4mHeaderLine(const VideoFormat& format);
// A Y4M format for raw input: width, height, rate "N:D", progressive.
VideoFormat RawFormat(int32_t width, int32_t height, std::string_view rate, bool y4mOut);

// Planar Y, Cb, Cr (Cb and Cr at half width) to packed Y0 Cb Y1 Cr and back;
// `planar` holds the three planes one after the other, as in a Y4M frame.
void PackPlanar(const uint8_t* planar, int32_t width, int32_t height, uint8_t* packed);
void UnpackToPlanar(const uint8_t* packed, int32_t width, int32_t height, uint8_t* planar);

}  // namespace zvf::cli
