// Loads the built module through the host kit for whole-module tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "kit/host_kit.h"

namespace zvf::test {

inline std::unique_ptr<host::LoadedModule> LoadModule(const host::HostOptions& options = host::HostOptions()) {
    std::string error;
    auto m = host::LoadedModule::Load(host::DefaultModulePath(), options, &error);
    EXPECT_NE(m, nullptr) << error;
    return m;
}

// A frame whose every byte is `fill`, with its own copy kept for comparison.
struct TestFrame {
    TestFrame(int32_t w, int32_t h, uint8_t fill = 0) : frame(w, h) { std::fill_n(frame.Pixels(), frame.Bytes(), fill); }
    uint8_t* Row(int32_t y) { return frame.Pixels() + static_cast<size_t>(y) * frame.Width() * 2; }
    std::vector<uint8_t> Bytes() const { return {frame.Pixels(), frame.Pixels() + frame.Bytes()}; }
    // Every byte drawn afresh, the same for the same seed.
    void Randomise(uint32_t seed) {
        std::mt19937 rng(seed);
        for (size_t i = 0; i < frame.Bytes(); ++i) frame.Pixels()[i] = static_cast<uint8_t>(rng());
    }
    host::Frame frame;
};

constexpr const char* kRegistrationOrder[27] = {
    "Monotone",     "Video Noise",   "Matrix",    "Anti Flicker",   "Old Movie/Film", "Region",      "Chrominance",
    "Blend Filters", "Combine Filters", "Strobe/Freeze", "Loop Slide", "Tunnel Vision", "Mirror",     "Raster Wipe",
    "White Balance", "Blur",          "Smooth Blur", "Emboss",       "Pencil Sketch",  "Mosaic",      "Motion Blur",
    "Sharpness",    "Soft Focus",    "Block Color", "Color Balance", "YUV Curve",      "Color Wheel"};

constexpr const char* kIdentifierKeys[27] = {
    "Monotone", "Noise",     "Matrix",       "AntiFlicker", "OldMovie",   "Rect",      "Chrominance",
    "Blend",    "Combine",   "Strobe",       "LoopSlide",   "Tunnel",     "Mirror",    "RasterScroll",
    "WhiteBalance", "Blur",  "BlurHQ",       "Emboss",      "PencilSketch", "Mosaic",  "MotionBlur",
    "Sharp",    "SoftFocus", "SolidColor",   "ColorCorrectionColor", "ColorCorrectionYUV", "ColorCorrectionUV"};

}  // namespace zvf::test
