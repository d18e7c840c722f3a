// Exit codes of zvf and the error that carries one up to the command line.
#pragma once

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace zvf::cli {

enum ExitCode : int {
    kExitOk = 0,
    kExitUsage = 1,     // bad command line: unknown filter or parameter, value out of range
    kExitBadInput = 2,  // input video or blob refused
    kExitModule = 3,    // the module did not load, or a filter failed to render
    kExitIo = 4,        // a file could not be opened, read or written
};

class CliError : public std::runtime_error {
public:
    CliError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    int Code() const { return code_; }

private:
    int code_;
};

inline std::string Hex(uint32_t v) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08X", v);
    return buf;
}

// The reader of our output went away (a closed pipe): stop quietly.
class ReaderGone : public std::exception {};

}  // namespace zvf::cli
