// Running zvf's commands in-process with captured streams, and scratch
// folders for their files.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "commands.h"

namespace zvf::test {

struct ZvfResult {
    int code = -1;
    std::string out;
    std::string err;
};

inline std::string Drain(FILE* f) {
    std::string s;
    std::rewind(f);
    char buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) s.append(buf, n);
    std::fclose(f);
    return s;
}

// Runs "zvf args..." with `input` on stdin.
inline ZvfResult RunZvf(const std::vector<std::string>& args, const std::string& input = "") {
    cli::Streams io{std::tmpfile(), std::tmpfile(), std::tmpfile()};
    std::fwrite(input.data(), 1, input.size(), io.in);
    std::rewind(io.in);
    std::vector<const char*> argv{"zvf"};
    for (const std::string& a : args) argv.push_back(a.c_str());
    ZvfResult r;
    r.code = cli::Run(static_cast<int>(argv.size()), argv.data(), io);
    std::fclose(io.in);
    r.out = Drain(io.out);
    r.err = Drain(io.err);
    return r;
}

// A fresh folder under the system's temporary folder, removed afterwards.
struct ScratchDir {
    ScratchDir() {
        static int counter = 0;
        path = std::filesystem::temp_directory_path() /
               ("zvf-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(path);
    }
    ~ScratchDir() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
    std::string operator/(const std::string& name) const { return (path / name).string(); }
    std::filesystem::path path;
};

inline std::string ReadAll(const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return {};
    return Drain(f);
}

inline void WriteAll(const std::string& path, const std::string& bytes) {
    FILE* f = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

// A Y4M stream of `frames` frames with deterministic varied samples.
inline std::string Y4mClip(int w, int h, int frames, const std::string& tags = "F25:1 It A1:1 C422") {
    std::string s = "YUV4MPEG2 W" + std::to_string(w) + " H" + std::to_string(h) + " " + tags + "\n";
    uint32_t seed = 12345;
    for (int f = 0; f < frames; ++f) {
        s += "FRAME\n";
        for (int i = 0; i < w * h * 2; ++i) {
            seed = seed * 1664525u + 1013904223u;
            s += static_cast<char>(seed >> 24);
        }
    }
    return s;
}

}  // namespace zvf::test
