// Progress on one stderr line updated in place: frames, fps and, when the
// frame count is known, the time left.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace zvf::cli {

class Progress {
public:
    Progress(FILE* err, bool enabled, std::optional<uint64_t> total);
    void Frame(uint64_t done);  // after each frame; redraws at most four times a second
    void Finish(uint64_t done);

    // The line for `done` frames after `seconds`.
    static std::string Line(uint64_t done, std::optional<uint64_t> total, double seconds);

private:
    using Clock = std::chrono::steady_clock;
    FILE* err_;
    bool enabled_;
    std::optional<uint64_t> total_;
    Clock::time_point start_;
    Clock::time_point last_;
    bool drawn_ = false;
};

}  // namespace zvf::cli
