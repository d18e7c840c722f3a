// zvf render: video in, through a chain of filters, video out.
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

#include "chain.h"
#include "commands.h"
#include "errors.h"
#include "progress.h"
#include "video_io.h"

namespace zvf::cli {
namespace {

int32_t ParseInt(std::string_view s, std::string_view what) {
    int32_t v = 0;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (s.empty() || ec != std::errc() || end != s.data() + s.size())
        throw CliError(kExitUsage, std::string(what) + ": '" + std::string(s) + "' is not a whole number");
    return v;
}

// --size WxH and --rate N/D for raw input.
VideoFormat RawInputFormat(const RenderOptions& o) {
    const size_t x = o.size.find('x');
    if (x == std::string::npos) throw CliError(kExitUsage, "--size takes WxH, not '" + o.size + "'");
    const int32_t w = ParseInt(std::string_view(o.size).substr(0, x), "--size width");
    const int32_t h = ParseInt(std::string_view(o.size).substr(x + 1), "--size height");
    if (w <= 0 || h <= 0 || w > kMaxDimension || h > kMaxDimension)
        throw CliError(kExitUsage, "--size " + o.size + ": sizes run from 1 to " + std::to_string(kMaxDimension));
    if (w % 2 != 0) throw CliError(kExitUsage, "--size " + o.size + ": packed 4:2:2 needs an even width");
    const size_t slash = o.rate.find('/');
    if (slash == std::string::npos) throw CliError(kExitUsage, "--rate takes N/D, not '" + o.rate + "'");
    const int32_t n = ParseInt(std::string_view(o.rate).substr(0, slash), "--rate numerator");
    const int32_t d = ParseInt(std::string_view(o.rate).substr(slash + 1), "--rate denominator");
    if (n <= 0 || d <= 0) throw CliError(kExitUsage, "--rate " + o.rate + ": both numbers must be positive");
    return RawFormat(w, h, std::to_string(n) + ":" + std::to_string(d), o.outputFormat == "y4m");
}

struct File {
    FILE* f = nullptr;
    bool own = false;
    ~File() {
        if (own && f != nullptr) std::fclose(f);
    }
};

}  // namespace

int RenderCommand(const std::string& module, const RenderOptions& o, const Streams& io) {
    // Everything that can be refused from the command line is refused before
    // any file is touched.
    if (o.output == "-" && isatty(fileno(io.out)) != 0)
        throw CliError(kExitUsage, "not writing video to a terminal: give -o FILE or redirect stdout");
    std::optional<VideoFormat> raw;
    if (!o.size.empty()) raw = RawInputFormat(o);
    Session session(module);
    Chain chain(session, o.filters);
    for (const std::string& note : chain.Notes()) std::fprintf(io.err, "zvf: note: %s\n", note.c_str());

    File in{o.input == "-" ? io.in : std::fopen(o.input.c_str(), "rb"), o.input != "-"};
    if (in.f == nullptr) throw CliError(kExitIo, "cannot open " + o.input + ": " + std::strerror(errno));
    VideoReader reader(in.f, raw);
    VideoFormat outFormat = reader.Format();
    if (!o.outputFormat.empty()) outFormat.y4m = o.outputFormat == "y4m";

    File out{o.output == "-" ? io.out : std::fopen(o.output.c_str(), "wb"), o.output != "-"};
    if (out.f == nullptr) throw CliError(kExitIo, "cannot create " + o.output + ": " + std::strerror(errno));
    VideoWriter writer(out.f, outFormat);

    const bool terminal = isatty(fileno(io.err)) != 0;
    Progress progress(io.err, !o.noProgress && (o.progress || terminal), reader.FramesHint());
    std::vector<uint8_t> frame;
    uint32_t number = 0;
    while (reader.Next(&frame)) {
        chain.Render(&frame, reader.Format().width, reader.Format().height, reader.Format().frameProperty, number);
        writer.Write(frame, reader.FrameParameters());
        progress.Frame(++number);
    }
    writer.Flush();
    progress.Finish(number);
    return kExitOk;
}

}  // namespace zvf::cli
