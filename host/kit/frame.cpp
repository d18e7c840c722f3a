#include "kit/frame.h"

#include <new>

#include "zvf/guids.h"

namespace zvf::host {
namespace {
std::atomic<int32_t> g_liveCompatible{0};
}

Frame::Frame(uint8_t* pixels, int32_t width, int32_t height, uint32_t property)
    : pixels_(pixels), width_(width), height_(height), property_(property) {}

Frame::Frame(int32_t width, int32_t height, uint32_t property)
    : own_(static_cast<size_t>(width) * height * 2), pixels_(own_.data()), width_(width), height_(height),
      property_(property) {}

int32_t Frame::LiveCompatibleFrames() { return g_liveCompatible.load(); }

Status Frame::QueryInterface(const Guid* iid, void** out) {
    if (out == nullptr) return status::pointer;
    if (iid != nullptr && (*iid == iid::IUnknown || *iid == iid::IVideoFrame)) {
        *out = static_cast<IVideoFrame*>(this);
        AddRef();
        return status::ok;
    }
    *out = nullptr;
    return status::no_interface;
}

uint32_t Frame::AddRef() { return refs_.fetch_add(1) + 1; }

uint32_t Frame::Release() {
    const uint32_t left = refs_.fetch_sub(1) - 1;
    if (left == 0 && heapAllocated_) {
        g_liveCompatible.fetch_sub(1);
        delete this;
    }
    return left;
}

Status Frame::CreateCompatible(uint32_t request, IVideoFrame** out) {
    if (out == nullptr) return status::pointer;
    *out = nullptr;
    if (request != 12) return status::invalid_arg;
    if (refuseCompatible_) return status::out_of_memory;
    auto* frame = new (std::nothrow) Frame(width_, height_, property_);
    if (frame == nullptr) return status::out_of_memory;
    frame->heapAllocated_ = true;
    g_liveCompatible.fetch_add(1);
    *out = frame;
    return status::ok;
}

Status Frame::GetSize(FrameSize* out) {
    if (out == nullptr) return status::pointer;
    *out = {width_, height_};
    return status::ok;
}

}  // namespace zvf::host
