#include "progress.h"

namespace zvf::cli {

Progress::Progress(FILE* err, bool enabled, std::optional<uint64_t> total)
    : err_(err), enabled_(enabled), total_(total), start_(Clock::now()), last_(start_) {}

std::string Progress::Line(uint64_t done, std::optional<uint64_t> total, double seconds) {
    char buf[160];
    const double fps = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    int n = total ? std::snprintf(buf, sizeof buf, "frame %llu/%llu  %.1f fps", static_cast<unsigned long long>(done),
                                  static_cast<unsigned long long>(*total), fps)
                  : std::snprintf(buf, sizeof buf, "frame %llu  %.1f fps", static_cast<unsigned long long>(done), fps);
    if (total && *total >= done && fps > 0) {
        const auto left = static_cast<unsigned long long>(static_cast<double>(*total - done) / fps + 0.5);
        std::snprintf(buf + n, sizeof buf - n, "  ETA %llu:%02llu:%02llu", left / 3600, left / 60 % 60, left % 60);
    }
    return buf;
}

void Progress::Frame(uint64_t done) {
    if (!enabled_) return;
    const Clock::time_point now = Clock::now();
    if (drawn_ && now - last_ < std::chrono::milliseconds(250)) return;
    last_ = now;
    drawn_ = true;
    const std::string line = Line(done, total_, std::chrono::duration<double>(now - start_).count());
    std::fprintf(err_, "\r%-60s", line.c_str());
    std::fflush(err_);
}

void Progress::Finish(uint64_t done) {
    if (!enabled_) return;
    const std::string line = Line(done, total_, std::chrono::duration<double>(Clock::now() - start_).count());
    std::fprintf(err_, "\r%-60s\n", line.c_str());
    std::fflush(err_);
}

}  // namespace zvf::cli
