#include "png_writer.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include "errors.h"

namespace zvf::cli {

void WritePng(const std::string& path, const RgbImage& image) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) throw CliError(kExitIo, "cannot create " + path + ": " + std::strerror(errno));
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    bool ok = png != nullptr && info != nullptr;
    // libpng reports errors by longjmp; nothing with a destructor lives
    // between here and the writes.
    if (ok && setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, f);
        png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height), 8,
                     PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
        for (int32_t y = 0; y < image.height; ++y)
            png_write_row(png, image.rgb.data() + static_cast<size_t>(y) * image.width * 3);
        png_write_end(png, nullptr);
    } else {
        ok = false;
    }
    png_destroy_write_struct(png ? &png : nullptr, info ? &info : nullptr);
    if (std::fclose(f) != 0) ok = false;
    if (!ok) throw CliError(kExitIo, "cannot write " + path);
}

}  // namespace zvf::cli
