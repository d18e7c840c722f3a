// zvf: command-line host for ZelVideoFilters.tpi, built on the host kit.
#include <csignal>

#include "commands.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
    // Video through stdin and stdout must not meet newline translation.
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#else
    // A reader that goes away shows up as EPIPE on write, not a signal.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    return zvf::cli::Run(argc, argv, zvf::cli::Streams());
}
