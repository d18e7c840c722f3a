#include "anti_flicker_engine.h"

#include "anti_flicker_kernel.h"
#include "zvf/field.h"
#include "zvf/guids.h"

namespace zvf::filters {
namespace {

IFieldSync* QuerySync(IHost* host) {
    void* out = nullptr;
    if (host == nullptr || host->QueryInterface(&iid::IFieldSync, &out) < 0) return nullptr;
    return static_cast<IFieldSync*>(out);
}

}  // namespace

AntiFlickerEngine::~AntiFlickerEngine() {
    if (sync_ != nullptr) sync_->Release();
}

void AntiFlickerEngine::Prepare(IHost* host) {
    std::lock_guard<std::mutex> lock(lock_);
    if (sync_ != nullptr) sync_->Release();
    sync_ = QuerySync(host);
    prepared_ = true;
    source_[0] = source_[1] = Remembered{};
}

void AntiFlickerEngine::Forget() {
    std::lock_guard<std::mutex> lock(lock_);
    source_[0] = source_[1] = Remembered{};
}

Status AntiFlickerEngine::Render(IHost* host, IVideoFrame* dst, IVideoFrame* src, const Rect* rect, int32_t field,
                                 uint32_t power, SimdLevel level) {
    FieldView v;
    const Status opened = OpenField(dst, src, rect, field, &v);
    if (opened != status::ok) return opened;
    const int32_t f = v.odd;

    IFieldSync* sync = nullptr;
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (!prepared_) {
            sync_ = QuerySync(host);
            prepared_ = true;
        }
        source_[f] = Remembered{v.srcFrame, v.width, v.height};
        sync = sync_;
        if (sync != nullptr) sync->AddRef();
    }
    // Once the other field's call of this frame has remembered its source too.
    if (sync != nullptr) sync->Synchronize(f);

    Remembered other;
    {
        std::lock_guard<std::mutex> lock(lock_);
        other = source_[1 - f];
    }
    const bool usable = other.base != nullptr && other.width == v.width && other.height == v.height;
    const uint8_t* neighbours = (usable ? other.base : v.srcFrame) + (v.src - v.srcFrame);
    BlendField(v.src, neighbours, v.dst, v.pitch, v.rows, v.pairs, AntiFlickerWeight(power), BlendRowsFor(level));

    if (sync != nullptr) {
        sync->Synchronize(f);
        sync->Release();
    }
    return status::ok;
}

}  // namespace zvf::filters
