#include "strobe_engine.h"

#include "strobe_kernel.h"
#include "zvf/field.h"
#include "zvf/guids.h"

namespace zvf::filters {
namespace {

template <class I>
I* QueryService(IHost* host, const Guid& iid) {
    void* out = nullptr;
    if (host == nullptr || host->QueryInterface(&iid, &out) < 0) return nullptr;
    return static_cast<I*>(out);
}

// One reference held for the length of a call, so that a frame or service
// replaced by another call stays alive while this one still uses it.
template <class I>
class Held {
public:
    Held() = default;
    explicit Held(I* p) : p_(p) {
        if (p_ != nullptr) p_->AddRef();
    }
    ~Held() {
        if (p_ != nullptr) p_->Release();
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    Held& operator=(Held&& other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }
    I* get() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }

private:
    I* p_ = nullptr;
};

void Synchronize(IFieldSync* sync, int32_t field) {
    if (sync != nullptr) sync->Synchronize(field);
}

// A held frame is usable while it matches the source frame it replaces.
bool Matches(IVideoFrame* frame, const FieldView& v) {
    FrameSize size{};
    return frame->GetSize(&size) == status::ok && size.width == v.width && size.height == v.height &&
           frame->GetBitsPerPixel() == 16 && frame->GetBuffer() != nullptr;
}

// Copies the field's rows of `rect` from `src` to `dst`: through the host's
// copy service when it has one and it succeeds, otherwise directly.
void CopyField(IFrameCopy* copy, IVideoFrame* dst, IVideoFrame* src, const Rect& rect, int32_t field,
               const FieldView& v) {
    if (copy != nullptr && copy->CopyFieldRect(dst, &rect, src, &rect, field) >= 0) return;
    const ptrdiff_t offset = v.src - v.srcFrame;
    CopyFieldRows(v.dst, src->GetBuffer() + offset, v.pitch, v.rows, size_t{2} * static_cast<size_t>(v.width_px));
}

}  // namespace

StrobeEngine::~StrobeEngine() { ReleaseAll(); }

void StrobeEngine::ReleaseAll() {
    if (held_ != nullptr) held_->Release();
    if (sync_ != nullptr) sync_->Release();
    if (copy_ != nullptr) copy_->Release();
    held_ = nullptr;
    sync_ = nullptr;
    copy_ = nullptr;
    frozenValid_[0] = false;
    frozenValid_[1] = false;
}

void StrobeEngine::Prepare(IHost* host) {
    std::lock_guard<std::mutex> lock(lock_);
    ReleaseAll();
    sync_ = QueryService<IFieldSync>(host, iid::IFieldSync);
    copy_ = QueryService<IFrameCopy>(host, iid::IFrameCopy);
    prepared_ = true;
}

bool StrobeEngine::HoldsFrame() const {
    std::lock_guard<std::mutex> lock(lock_);
    return held_ != nullptr;
}

Status StrobeEngine::Render(IHost* host, IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t frame,
                            int32_t field, bool refresh, const StrobeRecord& record, SimdLevel level) {
    FieldView v;
    const Status opened = OpenField(dst, src, rect, field, &v);
    if (opened != status::ok) return opened;
    const int32_t f = v.odd;

    Held<IFieldSync> sync;
    Held<IFrameCopy> copy;
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (!prepared_) {
            sync_ = QueryService<IFieldSync>(host, iid::IFieldSync);
            copy_ = QueryService<IFrameCopy>(host, iid::IFrameCopy);
            prepared_ = true;
        }
        sync = Held<IFieldSync>(sync_);
        copy = Held<IFrameCopy>(copy_);
    }

    // The held frame is made once, from whichever field gets here first.
    Synchronize(sync.get(), f);
    Held<IVideoFrame> held;
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (held_ != nullptr && !Matches(held_, v)) {
            // The frame size changed without a new sequence: start over.
            held_->Release();
            held_ = nullptr;
            frozenValid_[0] = false;
            frozenValid_[1] = false;
        }
        if (held_ == nullptr) {
            IVideoFrame* made = nullptr;
            if (src->CreateCompatible(12, &made) >= 0 && made != nullptr) {
                if (Matches(made, v))
                    held_ = made;
                else
                    made->Release();
            }
        }
        held = Held<IVideoFrame>(held_);
    }
    Synchronize(sync.get(), f);

    if (!held) {
        CopyField(copy.get(), dst, src, *rect, f, v);  // no frame from the host: pass the video through
        return status::ok;
    }

    const StrobeStep step = DecideStrobe(record, frame, frozenValid_[f].load(), refresh);
    switch (step.output) {
        case StrobeOutput::PassThrough:
            CopyField(copy.get(), dst, src, *rect, f, v);
            break;
        case StrobeOutput::Held:
            if (step.capture) {
                Synchronize(sync.get(), f);
                CaptureSmoothed(v.src, held.get()->GetBuffer() + (v.src - v.srcFrame), v.pitch, v.rows, v.pairs,
                                SelectCaptureRow(level));
                Synchronize(sync.get(), f);
                frozenValid_[f] = true;
            }
            CopyField(copy.get(), dst, held.get(), *rect, f, v);
            break;
        case StrobeOutput::Color:
            FillColor(v.dst, v.pitch, v.rows, v.pairs, ColorRefToYuv(record.frameColor));
            break;
        case StrobeOutput::Nothing:
            break;
    }
    return status::ok;
}

}  // namespace zvf::filters
