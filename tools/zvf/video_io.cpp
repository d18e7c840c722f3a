#include "video_io.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "errors.h"

namespace zvf::cli {
namespace {

constexpr size_t kHeaderLimit = 65536;
constexpr std::string_view kFrameMarker = "FRAME";

std::optional<uint64_t> BytesLeft(FILE* f) {
    struct stat st {};
    if (fstat(fileno(f), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
    const long pos = std::ftell(f);
    if (pos < 0 || st.st_size < pos) return std::nullopt;
    return static_cast<uint64_t>(st.st_size - pos);
}

}  // namespace

VideoReader::VideoReader(FILE* in, const std::optional<VideoFormat>& raw) : in_(in) {
    if (raw) {
        format_ = *raw;
        format_.y4m = false;
        if (const auto left = BytesLeft(in_)) framesHint_ = *left / format_.FrameBytes();
        return;
    }
    std::string line;
    bool eof = false;
    if (!ReadLine(&line, kHeaderLimit, &eof)) {
        if (eof && line.empty()) throw CliError(kExitBadInput, "empty input: no Y4M header");
        if (eof) throw CliError(kExitBadInput, "bad Y4M header: the stream ends inside it");
        throw CliError(kExitBadInput, "bad Y4M header: longer than 65536 bytes");
    }
    format_ = ParseY4mHeader(line);
    // Frame markers are usually bare: "FRAME\n".
    if (const auto left = BytesLeft(in_)) framesHint_ = *left / (format_.FrameBytes() + kFrameMarker.size() + 1);
    planar_.resize(format_.FrameBytes());
}

bool VideoReader::ReadLine(std::string* line, size_t limit, bool* eof) {
    line->clear();
    for (;;) {
        const int c = std::fgetc(in_);
        if (c == EOF) {
            if (std::ferror(in_)) throw CliError(kExitIo, std::string("cannot read input: ") + std::strerror(errno));
            *eof = true;
            return false;
        }
        if (c == '\n') return true;
        if (line->size() >= limit) return false;
        line->push_back(static_cast<char>(c));
    }
}

bool VideoReader::Next(std::vector<uint8_t>* packed) {
    const size_t bytes = format_.FrameBytes();
    const std::string which = "frame " + std::to_string(frames_);
    if (format_.y4m) {
        std::string line;
        bool eof = false;
        if (!ReadLine(&line, kHeaderLimit, &eof)) {
            if (eof && line.empty()) return false;
            throw CliError(kExitBadInput, which + (eof ? ": truncated frame marker" : ": frame marker longer than 65536 bytes"));
        }
        if (line.compare(0, kFrameMarker.size(), kFrameMarker) != 0 ||
            (line.size() > kFrameMarker.size() && line[kFrameMarker.size()] != ' '))
            throw CliError(kExitBadInput, which + ": expected a FRAME marker");
        frameParams_ = line.substr(kFrameMarker.size());
    }
    uint8_t* target = format_.y4m ? planar_.data() : (packed->resize(bytes), packed->data());
    const size_t got = std::fread(target, 1, bytes, in_);
    if (got != bytes) {
        if (std::ferror(in_)) throw CliError(kExitIo, std::string("cannot read input: ") + std::strerror(errno));
        if (got == 0 && !format_.y4m) return false;
        throw CliError(kExitBadInput, which + " is truncated: " + std::to_string(got) + " of " + std::to_string(bytes) +
                                          " bytes");
    }
    if (format_.y4m) {
        packed->resize(bytes);
        PackPlanar(planar_.data(), format_.width, format_.height, packed->data());
    }
    ++frames_;
    return true;
}

VideoWriter::VideoWriter(FILE* out, const VideoFormat& format) : out_(out), format_(format) {
    if (format_.y4m) planar_.resize(format_.FrameBytes());
}

void VideoWriter::Put(const void* data, size_t size) {
    if (std::fwrite(data, 1, size, out_) == size) return;
    if (errno == EPIPE) throw ReaderGone();
    throw CliError(kExitIo, std::string("cannot write output: ") + std::strerror(errno));
}

void VideoWriter::Write(const std::vector<uint8_t>& packed, const std::string& frameParams) {
    if (format_.y4m) {
        if (!headerWritten_) {
            const std::string header = Y4mHeaderLine(format_);
            Put(header.data(), header.size());
            headerWritten_ = true;
        }
        const std::string marker = std::string(kFrameMarker) + frameParams + '\n';
        Put(marker.data(), marker.size());
        UnpackToPlanar(packed.data(), format_.width, format_.height, planar_.data());
        Put(planar_.data(), planar_.size());
    } else {
        Put(packed.data(), packed.size());
    }
}

void VideoWriter::Flush() {
    if (format_.y4m && !headerWritten_) {
        // A stream without frames still names its format.
        const std::string header = Y4mHeaderLine(format_);
        Put(header.data(), header.size());
        headerWritten_ = true;
    }
    if (std::fflush(out_) == 0) return;
    if (errno == EPIPE) throw ReaderGone();
    throw CliError(kExitIo, std::string("cannot write output: ") + std::strerror(errno));
}

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
    FILE* f = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
    if (f == nullptr) throw CliError(kExitIo, "cannot open " + path + ": " + std::strerror(errno));
    std::vector<uint8_t> bytes;
    uint8_t buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) bytes.insert(bytes.end(), buf, buf + n);
    const bool failed = std::ferror(f) != 0;
    if (f != stdin) std::fclose(f);
    if (failed) throw CliError(kExitIo, "cannot read " + path);
    return bytes;
}

void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    FILE* f = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
    if (f == nullptr) throw CliError(kExitIo, "cannot create " + path + ": " + std::strerror(errno));
    const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    const bool closed = f == stdout ? std::fflush(f) == 0 : std::fclose(f) == 0;
    if (!ok || !closed) throw CliError(kExitIo, "cannot write " + path + ": " + std::strerror(errno));
}

}  // namespace zvf::cli
