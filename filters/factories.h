// Factories of the 27 filter class objects, in registration order. Each
// returns a new class object with reference count 1, or null when it cannot
// be allocated. The first twelve take no argument; the others keep the host
// pointer.
#pragma once

#include "zvf/abi.h"
#include "zvf/filter_base.h"

namespace zvf::filters {

IVideoFilter* CreateMonotone();
IVideoFilter* CreateVideoNoise();
IVideoFilter* CreateMatrix();
IVideoFilter* CreateAntiFlicker();
IVideoFilter* CreateOldMovie();
IVideoFilter* CreateRegion();
IVideoFilter* CreateChrominance();
IVideoFilter* CreateBlendFilters();
IVideoFilter* CreateCombineFilters();
IVideoFilter* CreateStrobeFreeze();
IVideoFilter* CreateLoopSlide();
IVideoFilter* CreateTunnelVision();
IVideoFilter* CreateMirror(IHost* host);
IVideoFilter* CreateRasterWipe(IHost* host);
IVideoFilter* CreateWhiteBalance(IHost* host);
IVideoFilter* CreateBlur(IHost* host);
IVideoFilter* CreateSmoothBlur(IHost* host);
IVideoFilter* CreateEmboss(IHost* host);
IVideoFilter* CreatePencilSketch(IHost* host);
IVideoFilter* CreateMosaic(IHost* host);
IVideoFilter* CreateMotionBlur(IHost* host);
IVideoFilter* CreateSharpness(IHost* host);
IVideoFilter* CreateSoftFocus(IHost* host);
IVideoFilter* CreateBlockColor(IHost* host);
IVideoFilter* CreateColorBalance(IHost* host);
IVideoFilter* CreateYuvCurve(IHost* host);
IVideoFilter* CreateColorWheel(IHost* host);

// Capability constants reported by GetCapabilities.
namespace caps {
constexpr uint32_t kDefault = 0x102;
constexpr uint32_t kTemporal = 0x106;  // Strobe/Freeze, Motion Blur
constexpr uint32_t kOldMovie = 0x006;
constexpr uint32_t kPlain = 0x002;  // Tunnel Vision, Smooth Blur
}  // namespace caps

// Identity of a filter that keeps its strings one by one: name, vendor and
// description ids follow each other.
constexpr Identity FamilyA(std::u16string_view identifier, uint32_t nameId, uint32_t categoryId,
                           uint32_t capabilities = caps::kDefault) {
    return {Family::A, identifier, nameId, categoryId, nameId + 2, nameId + 1, 0, 0, capabilities};
}
// Identity of a filter with a class-wide string list: name, category, vendor,
// maintainer, creator, description, setup title.
constexpr Identity FamilyB(std::u16string_view identifier, uint32_t base, uint32_t capabilities = caps::kDefault) {
    return {Family::B, identifier, base, base + 1, base + 5, base + 2, base + 3, base + 4, capabilities};
}
constexpr uint32_t kCategoryTop = 10040;
constexpr uint32_t kCategoryColor = 10041;

}  // namespace zvf::filters
