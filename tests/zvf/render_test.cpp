// zvf render against the host kit driven directly: one filter, and a chain
// of two equal to applying them one after the other.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "kit/host_kit.h"
#include "y4m.h"
#include "zvf_test_util.h"

namespace zvf::test {
namespace {

constexpr int kW = 24, kH = 10, kFrames = 3;

std::vector<std::vector<uint8_t>> Direct(const std::vector<std::string>& chain, std::vector<std::vector<uint8_t>> frames);

std::vector<std::string> BuiltIdentifiers() {
    const ZvfResult list = RunZvf({"list", "--json"});
    std::vector<std::string> out;
    for (const auto& f : nlohmann::json::parse(list.out))
        if (f["rendering"].get<bool>()) out.push_back(f["identifier"].get<std::string>());
    return out;
}

// The packed frames of a Y4M clip with a bare header line.
std::vector<std::vector<uint8_t>> PackedFrames(const std::string& clip) {
    std::vector<std::vector<uint8_t>> frames;
    size_t at = clip.find('\n') + 1;
    const size_t bytes = kW * kH * 2;
    while (at + 6 + bytes <= clip.size()) {
        std::vector<uint8_t> packed(bytes);
        cli::PackPlanar(reinterpret_cast<const uint8_t*>(clip.data() + at + 6), kW, kH, packed.data());
        frames.push_back(packed);
        at += 6 + bytes;
    }
    return frames;
}

// Each filter over every frame with its defaults, filter by filter over the
// whole clip; the two fields at once, paired by the host's synchronisation
// as zvf renders them (a filter may look at the other field's source).
std::vector<std::vector<uint8_t>> Direct(const std::vector<std::string>& chain, std::vector<std::vector<uint8_t>> frames) {
    auto module = host::LoadedModule::Load(host::DefaultModulePath());
    for (const std::string& id : chain) {
        auto instance = module->Create(*module->Find(id));
        instance->Get()->PrepareRender();
        for (size_t n = 0; n < frames.size(); ++n) {
            std::vector<uint8_t> out = frames[n];
            host::Frame src(frames[n].data(), kW, kH, 1), dst(out.data(), kW, kH, 1);
            EXPECT_EQ(instance->RenderFrame(dst, src, static_cast<uint32_t>(n), true), 0);
            frames[n] = out;
        }
    }
    return frames;
}

std::vector<std::vector<uint8_t>> ThroughZvf(const std::vector<std::string>& chain, const std::string& clip) {
    std::vector<std::string> args{"render", "-i", "-", "-o", "-"};
    args.insert(args.end(), chain.begin(), chain.end());
    const ZvfResult r = RunZvf(args, clip);
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, r.out.find('\n')), clip.substr(0, clip.find('\n')));
    return PackedFrames(r.out);
}

// Filters whose output is meant to differ from run to run (noise seeded
// afresh on every call) cannot be compared frame for frame.
bool Reproducible(const std::string& id, const std::vector<std::vector<uint8_t>>& frames) {
    return Direct({id}, frames) == Direct({id}, frames);
}

TEST(Render, NoFiltersCopiesTheStream) {
    const std::string clip = Y4mClip(kW, kH, kFrames);
    const ZvfResult r = RunZvf({"render", "-i", "-", "-o", "-"}, clip);
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, clip);
    EXPECT_TRUE(r.err.empty()) << "no progress when stderr is not a terminal";
}

TEST(Render, EveryBuiltFilterEqualsTheHostKit) {
    const std::string clip = Y4mClip(kW, kH, kFrames);
    const auto frames = PackedFrames(clip);
    ASSERT_EQ(frames.size(), size_t{kFrames});
    for (const std::string& id : BuiltIdentifiers()) {
        SCOPED_TRACE(id);
        const auto viaZvf = ThroughZvf({id}, clip);
        EXPECT_EQ(viaZvf.size(), frames.size());
        if (Reproducible(id, frames)) {
            EXPECT_EQ(viaZvf, Direct({id}, frames));
        }
    }
}

TEST(Render, ChainOfTwoEqualsOneAfterTheOther) {
    const std::string clip = Y4mClip(kW, kH, kFrames);
    const auto frames = PackedFrames(clip);
    std::vector<std::string> built;
    for (const std::string& id : BuiltIdentifiers())
        if (Reproducible(id, frames)) built.push_back(id);
    ASSERT_FALSE(built.empty());
    for (size_t i = 0; i < built.size(); ++i) {
        const std::string& a = built[i];
        const std::string& b = built[(i + 1) % built.size()];
        SCOPED_TRACE(a + " then " + b);
        // Through zvf both at once, and through zvf one after the other.
        const auto chained = ThroughZvf({a, b}, clip);
        EXPECT_EQ(chained, Direct({a, b}, frames));
        const ZvfResult first = RunZvf({"render", "-i", "-", "-o", "-", a}, clip);
        EXPECT_EQ(ThroughZvf({b}, first.out), chained);
    }
}

TEST(Render, ParametersReachTheFilter) {
    // Block Color fills every pair with Y Cb Y Cr of its colour.
    const std::string clip = Y4mClip(kW, kH, 1, "Ib C422");
    const auto out = ThroughZvf({"Block Color:y=16:u=200:v=40"}, clip);
    ASSERT_EQ(out.size(), 1u);
    for (size_t i = 0; i < out[0].size(); i += 4) {
        ASSERT_EQ(out[0][i], 16);
        ASSERT_EQ(out[0][i + 1], 200);
        ASSERT_EQ(out[0][i + 2], 16);
        ASSERT_EQ(out[0][i + 3], 40);
    }
}

TEST(Render, RawInAndY4mOut) {
    std::string raw(kW * kH * 2 * 2, '\x40');
    const ZvfResult r =
        RunZvf({"render", "-i", "-", "-o", "-", "--size", "24x10", "--rate", "50/1", "--output-format", "y4m"}, raw);
    EXPECT_EQ(r.code, 0) << r.err;
    const std::string head = "YUV4MPEG2 W24 H10 F50:1 Ip A1:1 C422\n";
    EXPECT_EQ(r.out.substr(0, r.out.find('\n') + 1), head);
    EXPECT_EQ(r.out.size(), head.size() + 2 * (6 + raw.size() / 2));
}

TEST(Render, ProgressOnRequestOnly) {
    ScratchDir dir;
    WriteAll(dir / "clip.y4m", Y4mClip(kW, kH, kFrames));
    const ZvfResult r = RunZvf({"render", "-i", dir / "clip.y4m", "-o", dir / "o.y4m", "--progress"});
    EXPECT_EQ(r.code, 0);
    EXPECT_NE(r.err.find("frame 3/3"), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty());
}

}  // namespace
}  // namespace zvf::test
