// Every refusal of the command line: its message, its exit code, and that
// nothing partial reaches the output.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "errors.h"
#include "zvf_test_util.h"

namespace zvf::test {
namespace {

using cli::kExitBadInput;
using cli::kExitIo;
using cli::kExitModule;
using cli::kExitUsage;

const std::string kFrame(4 * 2 * 2, '\x50');  // one 4x2 frame, planar or packed

TEST(Refusals, InputVideo) {
    const std::string head = "YUV4MPEG2 W4 H2 F25:1 C422\n";
    struct Case {
        const char* what;
        std::string input;
        std::vector<std::string> extra;
        const char* message;
        size_t framesWritten;
    } cases[] = {
        {"empty", "", {}, "empty input", 0},
        {"not y4m", "RIFF....WAVEfmt \n", {}, "not a Y4M stream", 0},
        {"4:2:0", "YUV4MPEG2 W4 H2 C420jpeg\nFRAME\n" + kFrame, {}, "unsupported Y4M colour space 'C420jpeg'", 0},
        {"10 bit", "YUV4MPEG2 W4 H2 C422p10\n", {}, "'C422p10'", 0},
        {"no colour tag", "YUV4MPEG2 W4 H2\n", {}, "no C tag", 0},
        {"odd width", "YUV4MPEG2 W3 H2 C422\n", {}, "odd width 3", 0},
        {"header cut", "YUV4MPEG2 W4 H2 C422", {}, "ends inside it", 0},
        {"header endless", "YUV4MPEG2 " + std::string(70000, 'X'), {}, "longer than 65536", 0},
        {"first frame cut", head + "FRAME\n" + kFrame.substr(3), {}, "frame 0 is truncated: 13 of 16 bytes", 0},
        {"second frame cut", head + "FRAME\n" + kFrame + "FRAME\n" + kFrame.substr(1), {}, "frame 1 is truncated", 1},
        {"marker cut", head + "FRAME\n" + kFrame + "FRA", {}, "frame 1: truncated frame marker", 1},
        {"bad marker", head + "FRAMES\n" + kFrame, {}, "frame 0: expected a FRAME marker", 0},
        {"raw cut", kFrame + kFrame.substr(2), {"--size", "4x2"}, "frame 1 is truncated: 14 of 16 bytes", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ScratchDir dir;
        std::vector<std::string> args{"render", "-i", "-", "-o", dir / "out"};
        args.insert(args.end(), c.extra.begin(), c.extra.end());
        const ZvfResult r = RunZvf(args, c.input);
        EXPECT_EQ(r.code, kExitBadInput);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << "one line: " << r.err;
        // Whole frames only: the header plus complete frames, or nothing.
        const std::string out = ReadAll(dir / "out");
        const bool raw = !c.extra.empty();
        const size_t whole = c.framesWritten * (kFrame.size() + (raw ? 0 : 6)) + (c.framesWritten && !raw ? head.size() : 0);
        EXPECT_EQ(out.size(), whole);
    }
}

TEST(Refusals, CommandLine) {
    ScratchDir dir;
    const std::string clip = dir / "clip.y4m";
    WriteAll(clip, Y4mClip(4, 2, 1));
    WriteAll(dir / "foreign.blob", "not a blob at all");
    struct Case {
        std::vector<std::string> args;
        int code;
        const char* message;
    } cases[] = {
        {{"render", "-i", clip, "-o", dir / "o", "nosuchfilter"}, kExitUsage, "no filter named 'nosuchfilter'"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor:w=3"}, kExitUsage, "Block Color has no parameter 'w' (parameters: y, u, v)"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor:y=256"}, kExitUsage, "y=256: outside 0..255"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor:y=1.5"}, kExitUsage, "whole numbers"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor:y=red"}, kExitUsage, "not a number"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor:y"}, kExitUsage, "'y' is not name=value"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor:y=1,2"}, kExitUsage, "y takes 1 value(s), not 2"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor@"}, kExitUsage, "no blob file after '@'"},
        {{"render", "-i", clip, "-o", dir / "o", "--size", "5x2"}, kExitUsage, "even width"},
        {{"render", "-i", clip, "-o", dir / "o", "--size", "4by2"}, kExitUsage, "--size takes WxH"},
        {{"render", "-i", clip, "-o", dir / "o", "--size", "4x2", "--rate", "0/1"}, kExitUsage, "must be positive"},
        {{"render", "-i", clip, "-o", dir / "o", "--output-format", "avi"}, kExitUsage, "avi"},
        {{"render", "-o", dir / "o"}, kExitUsage, "--input is required"},
        {{"frobnicate"}, kExitUsage, "A subcommand is required"},
        {{"render", "-i", dir / "missing.y4m", "-o", dir / "o"}, kExitIo, "cannot open"},
        {{"render", "-i", clip, "-o", dir / "no/such/dir/o"}, kExitIo, "cannot create"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor@" + (dir / "missing.blob")}, kExitIo, "cannot open"},
        {{"render", "-i", clip, "-o", dir / "o", "blockcolor@" + (dir / "foreign.blob")}, kExitBadInput,
         "Block Color would ignore this blob: wrong format tag"},
        {{"render", "-i", clip, "-o", dir / "o", "--module", dir / "nothing.tpi"}, kExitModule, "cannot load the module"},
        {{"blob", "show", dir / "missing.blob"}, kExitIo, "cannot open"},
        {{"blob", "save", "blockcolor:v=-1", "-o", dir / "b"}, kExitUsage, "v=-1: outside 0..255"},
    };
    for (const Case& c : cases) {
        std::string line;
        for (const std::string& a : c.args) line += a + " ";
        SCOPED_TRACE(line);
        const ZvfResult r = RunZvf(c.args);
        EXPECT_EQ(r.code, c.code);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
    }
}

// A filter whose rendering is not built is refused before any file is made.
TEST(Refusals, UnbuiltFilterBeforeAnyOutput) {
    ScratchDir dir;
    WriteAll(dir / "clip.y4m", Y4mClip(4, 2, 1));
    const ZvfResult list = RunZvf({"list", "--json"});
    ASSERT_EQ(list.code, 0);
    std::string unbuilt;
    for (const auto& f : nlohmann::json::parse(list.out))
        if (!f["rendering"].get<bool>()) unbuilt = f["identifier"].get<std::string>();
    if (unbuilt.empty()) GTEST_SKIP() << "every filter renders";
    const ZvfResult r = RunZvf({"render", "-i", dir / "clip.y4m", "-o", dir / "o", unbuilt});
    EXPECT_EQ(r.code, kExitModule);
    EXPECT_NE(r.err.find("rendering is not built yet (Render answers 0x80004001)"), std::string::npos) << r.err;
    EXPECT_FALSE(std::filesystem::exists(dir / "o"));
}

}  // namespace
}  // namespace zvf::test
