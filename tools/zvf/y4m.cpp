#include "y4m.h"

#include <charconv>

#include "errors.h"

namespace zvf::cli {
namespace {

[[noreturn]] void Refuse(const std::string& why) { throw CliError(kExitBadInput, why); }

int32_t Dimension(std::string_view token) {
    int32_t v = 0;
    const std::string_view digits = token.substr(1);
    const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), v);
    if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size() || v <= 0 || v > kMaxDimension)
        Refuse("bad Y4M header: tag '" + std::string(token) + "' is not a size from 1 to " +
               std::to_string(kMaxDimension));
    return v;
}

std::vector<std::string_view> Tokens(std::string_view line) {
    std::vector<std::string_view> out;
    size_t i = 0;
    while (i < line.size()) {
        const size_t end = line.find(' ', i);
        const size_t stop = end == std::string_view::npos ? line.size() : end;
        if (stop > i) out.push_back(line.substr(i, stop - i));
        i = stop + 1;
    }
    return out;
}

}  // namespace

VideoFormat ParseY4mHeader(std::string_view line) {
    const std::vector<std::string_view> tokens = Tokens(line);
    if (tokens.empty() || tokens[0] != kY4mSignature) Refuse("not a Y4M stream: the header does not start with YUV4MPEG2");
    VideoFormat f;
    bool colour = false;
    for (size_t i = 1; i < tokens.size(); ++i) {
        const std::string_view t = tokens[i];
        switch (t[0]) {
            case 'W':
                f.width = Dimension(t);
                break;
            case 'H':
                f.height = Dimension(t);
                break;
            case 'C':
                if (t != "C422")
                    Refuse("unsupported Y4M colour space '" + std::string(t) + "': only 8-bit 4:2:2 (C422) is taken");
                colour = true;
                break;
            case 'I':
                if (t.size() != 2 || std::string_view("ptbm").find(t[1]) == std::string_view::npos)
                    Refuse("bad Y4M header: interlace tag '" + std::string(t) + "'");
                f.frameProperty = t[1] == 'b' ? 0 : 1;  // only bottom-field-first clears the flag
                break;
            default:
                break;  // F, A, X and unknown tags travel verbatim
        }
        f.tags.emplace_back(t);
    }
    if (f.width == 0 || f.height == 0) Refuse("bad Y4M header: no W or H tag");
    if (!colour) Refuse("unsupported Y4M colour space: no C tag means 4:2:0; only 8-bit 4:2:2 (C422) is taken");
    if (f.width % 2 != 0)
        Refuse("odd width " + std::to_string(f.width) + ": packed 4:2:2 needs whole pixel pairs");
    return f;
}

std::string Y4mHeaderLine(const VideoFormat& format) {
    std::string s(kY4mSignature);
    for (const std::string& t : format.tags) s += ' ' + t;
    return s + '\n';
}

VideoFormat RawFormat(int32_t width, int32_t height, std::string_view rate, bool y4mOut) {
    VideoFormat f;
    f.width = width;
    f.height = height;
    f.y4m = y4mOut;
    f.tags = {"W" + std::to_string(width), "H" + std::to_string(height), "F" + std::string(rate), "Ip", "A1:1", "C422"};
    return f;
}

void PackPlanar(const uint8_t* planar, int32_t width, int32_t height, uint8_t* packed) {
    const size_t pairs = static_cast<size_t>(width / 2) * height;
    const uint8_t* y = planar;
    const uint8_t* cb = planar + static_cast<size_t>(width) * height;
    const uint8_t* cr = cb + pairs;
    for (size_t i = 0; i < pairs; ++i) {
        packed[4 * i] = y[2 * i];
        packed[4 * i + 1] = cb[i];
        packed[4 * i + 2] = y[2 * i + 1];
        packed[4 * i + 3] = cr[i];
    }
}

void UnpackToPlanar(const uint8_t* packed, int32_t width, int32_t height, uint8_t* planar) {
    const size_t pairs = static_cast<size_t>(width / 2) * height;
    uint8_t* y = planar;
    uint8_t* cb = planar + static_cast<size_t>(width) * height;
    uint8_t* cr = cb + pairs;
    for (size_t i = 0; i < pairs; ++i) {
        y[2 * i] = packed[4 * i];
        cb[i] = packed[4 * i + 1];
        y[2 * i + 1] = packed[4 * i + 2];
        cr[i] = packed[4 * i + 3];
    }
}

}  // namespace zvf::cli
