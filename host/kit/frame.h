// Host frames over caller-owned (or, for compatible frames, own) memory in
// packed 4:2:2, rows top first without padding.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "zvf/abi.h"

namespace zvf::host {

class Frame final : public IVideoFrame {
public:
    // Wraps `pixels` (width x height x 2 bytes), which must outlive the frame.
    Frame(uint8_t* pixels, int32_t width, int32_t height, uint32_t property = 1);
    // Allocates its own zeroed pixels.
    Frame(int32_t width, int32_t height, uint32_t property = 1);
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
    ~Frame() = default;

    uint8_t* Pixels() const { return pixels_; }
    int32_t Width() const { return width_; }
    int32_t Height() const { return height_; }
    size_t Bytes() const { return static_cast<size_t>(width_) * height_ * 2; }
    // Frames made by CreateCompatible that are still alive.
    static int32_t LiveCompatibleFrames();
    // Makes CreateCompatible fail, as a host out of frame buffers would.
    void RefuseCompatible(bool refuse) { refuseCompatible_ = refuse; }

    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override;
    uint32_t ZVF_CALL AddRef() override;
    uint32_t ZVF_CALL Release() override;
    Status ZVF_CALL CreateCompatible(uint32_t request, IVideoFrame** out) override;
    int32_t ZVF_CALL GetBitsPerPixel() override { return 16; }
    Status ZVF_CALL GetSize(FrameSize* out) override;
    Status ZVF_CALL Reserved6() override { return status::not_implemented; }
    Status ZVF_CALL Reserved7() override { return status::not_implemented; }
    Status ZVF_CALL Reserved8() override { return status::not_implemented; }
    Status ZVF_CALL Reserved9() override { return status::not_implemented; }
    Status ZVF_CALL Reserved10() override { return status::not_implemented; }
    uint32_t ZVF_CALL GetFrameProperty() override { return property_; }
    Status ZVF_CALL Reserved12() override { return status::not_implemented; }
    Status ZVF_CALL Reserved13() override { return status::not_implemented; }
    Status ZVF_CALL Reserved14() override { return status::not_implemented; }
    Status ZVF_CALL Reserved15() override { return status::not_implemented; }
    Status ZVF_CALL Reserved16() override { return status::not_implemented; }
    Status ZVF_CALL Reserved17() override { return status::not_implemented; }
    Status ZVF_CALL Reserved18() override { return status::not_implemented; }
    uint8_t* ZVF_CALL GetBuffer() override { return pixels_; }

private:
    std::vector<uint8_t> own_;
    uint8_t* pixels_;
    int32_t width_;
    int32_t height_;
    uint32_t property_;
    bool heapAllocated_ = false;  // compatible frames die with their last Release
    bool refuseCompatible_ = false;
    std::atomic<uint32_t> refs_{1};
};

}  // namespace zvf::host
