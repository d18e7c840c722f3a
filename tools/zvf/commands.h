// The zvf commands, callable from tests with their own streams.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace zvf::cli {

struct Streams {
    FILE* in = stdin;
    FILE* out = stdout;
    FILE* err = stderr;
};

struct ListOptions {
    std::string lang;  // "", "en" or "ja"
    bool json = false;
};

struct RenderOptions {
    std::string input = "-";
    std::string output = "-";
    std::vector<std::string> filters;
    std::string size;           // "WxH": raw yuyv422 input
    std::string rate = "25/1";  // raw input only
    std::string outputFormat;   // "", "y4m" or "yuyv"
    bool progress = false;
    bool noProgress = false;
};

struct BlobSaveOptions {
    std::string filter;
    std::string output;
};

struct BlobShowOptions {
    std::string file;
    bool json = false;
};

struct DemoOptions {
    std::string dir = "zvf-demo";
};

// Each returns the exit code; failures throw CliError, which Run reports.
int ListCommand(const std::string& module, const ListOptions& o, const Streams& io);
int RenderCommand(const std::string& module, const RenderOptions& o, const Streams& io);
int BlobSaveCommand(const std::string& module, const BlobSaveOptions& o, const Streams& io);
int BlobShowCommand(const std::string& module, const BlobShowOptions& o, const Streams& io);
int DemoCommand(const std::string& module, const DemoOptions& o, const Streams& io);

// The whole command line: parses, runs, prints "zvf: <message>" for a
// failure and returns the exit code.
int Run(int argc, const char* const* argv, const Streams& io);

}  // namespace zvf::cli
