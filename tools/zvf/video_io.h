// Reading and writing whole frames of Y4M 4:2:2 or raw yuyv422 over stdio
// streams. Frames are handed over packed (Y0 Cb Y1 Cr), ready for the host.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "y4m.h"

namespace zvf::cli {

class VideoReader {
public:
    // Reads the Y4M header at once; with `raw` set, the stream is raw yuyv422
    // frames of that format. Throws CliError on a refused header.
    VideoReader(FILE* in, const std::optional<VideoFormat>& raw);

    const VideoFormat& Format() const { return format_; }
    // Frames left, when the input is a regular file.
    std::optional<uint64_t> FramesHint() const { return framesHint_; }
    // The next frame, packed; false at the end of the stream. A truncated
    // frame or a bad frame marker throws CliError (bad input).
    bool Next(std::vector<uint8_t>* packed);
    // Parameters after FRAME in the last frame marker (verbatim, may be empty).
    const std::string& FrameParameters() const { return frameParams_; }
    uint64_t FramesRead() const { return frames_; }

private:
    bool ReadLine(std::string* line, size_t limit, bool* eof);

    FILE* in_;
    VideoFormat format_;
    std::optional<uint64_t> framesHint_;
    std::string frameParams_;
    std::vector<uint8_t> planar_;
    uint64_t frames_ = 0;
};

class VideoWriter {
public:
    VideoWriter(FILE* out, const VideoFormat& format);
    // Writes the header before the first frame. Throws ReaderGone when the
    // reader closed the pipe, CliError (i/o) on any other failure.
    void Write(const std::vector<uint8_t>& packed, const std::string& frameParams = {});
    void Flush();

private:
    void Put(const void* data, size_t size);

    FILE* out_;
    VideoFormat format_;
    bool headerWritten_ = false;
    std::vector<uint8_t> planar_;
};

// Reads a whole file, or stdin for "-"; throws CliError (i/o).
std::vector<uint8_t> ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes);

}  // namespace zvf::cli
