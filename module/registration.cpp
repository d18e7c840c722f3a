#include "registration.h"

#include "../filters/factories.h"
#include "zvf/guids.h"

namespace zvf {
namespace {

struct Factory {
    IVideoFilter* (*plain)();
    IVideoFilter* (*withHost)(IHost*);
};

using namespace filters;
constexpr Factory kOrder[] = {
    {CreateMonotone, nullptr},      {CreateVideoNoise, nullptr},     {CreateMatrix, nullptr},
    {CreateAntiFlicker, nullptr},   {CreateOldMovie, nullptr},       {CreateRegion, nullptr},
    {CreateChrominance, nullptr},   {CreateBlendFilters, nullptr},   {CreateCombineFilters, nullptr},
    {CreateStrobeFreeze, nullptr},  {CreateLoopSlide, nullptr},      {CreateTunnelVision, nullptr},
    {nullptr, CreateMirror},        {nullptr, CreateRasterWipe},     {nullptr, CreateWhiteBalance},
    {nullptr, CreateBlur},          {nullptr, CreateSmoothBlur},     {nullptr, CreateEmboss},
    {nullptr, CreatePencilSketch},  {nullptr, CreateMosaic},         {nullptr, CreateMotionBlur},
    {nullptr, CreateSharpness},     {nullptr, CreateSoftFocus},      {nullptr, CreateBlockColor},
    {nullptr, CreateColorBalance},  {nullptr, CreateYuvCurve},       {nullptr, CreateColorWheel},
};
static_assert(sizeof(kOrder) / sizeof(kOrder[0]) == 27);

}  // namespace

Status RegisterOne(IFilterRegistry* registry, IVideoFilter* object) {
    if (object == nullptr) return status::out_of_memory;
    IVideoFilter* filter = nullptr;
    const Status queried = object->QueryInterface(&iid::IVideoFilter, reinterpret_cast<void**>(&filter));
    if (queried < 0 || filter == nullptr) {
        object->Release();
        return queried < 0 ? queried : status::fail;
    }
    const Status registered = registry->RegisterFilter(filter);
    if (registered < 0) {
        object->Release();  // the QueryInterface reference stays held on purpose
        return registered;
    }
    object->Release();
    filter->Release();
    return status::ok;
}

void RegisterAll(IFilterRegistry* registry, IHost* host) {
    for (const Factory& f : kOrder) {
        IVideoFilter* object = f.plain ? f.plain() : f.withHost(host);
        (void)RegisterOne(registry, object);
    }
}

}  // namespace zvf
