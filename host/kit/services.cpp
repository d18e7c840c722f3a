#include "kit/services.h"

#include <cstring>
#include <new>

#include "zvf/guids.h"

namespace zvf::host {

uint32_t DetectProcessorFeatures() {
    uint32_t f = 0;
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("mmx")) f |= cpu::mmx;
    if (__builtin_cpu_supports("sse")) f |= cpu::sse;
    if (__builtin_cpu_supports("sse2")) f |= cpu::sse2;
    if (__builtin_cpu_supports("ssse3")) f |= cpu::ssse3;
    if (__builtin_cpu_supports("sse4.1")) f |= cpu::sse41;
    if (__builtin_cpu_supports("avx2")) f |= cpu::avx2;
    // The runtime's check includes the system's saving of the registers.
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni"))
        f |= cpu::avx512;
#endif
    return f;
}

HostOptions::HostOptions() : processorFeatures(DetectProcessorFeatures()) {}

void FieldSyncState::Begin(bool concurrent) {
    std::lock_guard<std::mutex> lock(mutex_);
    concurrent_ = concurrent;
    calls_[0] = calls_[1] = 0;
    finished_[0] = finished_[1] = false;
}

void FieldSyncState::Finish(int32_t field) {
    std::lock_guard<std::mutex> lock(mutex_);
    finished_[field == 1 ? 1 : 0] = true;
    changed_.notify_all();
}

void FieldSyncState::Wait(int32_t field) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!concurrent_) return;
    const int me = field == 1 ? 1 : 0;
    const int other = 1 - me;
    const uint64_t mine = ++calls_[me];
    changed_.notify_all();
    changed_.wait(lock, [&] { return calls_[other] >= mine || finished_[other]; });
}

namespace {

// Null-safe reference counting for service objects that live with the host.
template <class I>
struct StaticObject : I {
    uint32_t ZVF_CALL AddRef() override { return 2; }
    uint32_t ZVF_CALL Release() override { return 1; }
};

bool Inside(const Rect& r, const FrameSize& s) {
    return r.left >= 0 && r.top >= 0 && r.left <= r.right && r.top <= r.bottom && r.right <= s.width &&
           r.bottom <= s.height;
}

}  // namespace

struct HostObject::Registry final : StaticObject<IFilterRegistry> {
    explicit Registry(HostObject& h) : host(h) {}
    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override { return host.QueryInterface(iid, out); }
    Status ZVF_CALL RegisterFilter(IVideoFilter* filter) override {
        host.attempted.push_back(filter);
        if (filter == nullptr) return status::pointer;
        if (host.options_.registryResult < 0) return host.options_.registryResult;
        filter->AddRef();
        host.registered.push_back(filter);
        return status::ok;
    }
    HostObject& host;
};

struct HostObject::Shared final : ISharedHostObject {
    explicit Shared(HostObject& h) : host(h) { host.liveShared_.fetch_add(1); }
    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override {
        if (out == nullptr) return status::pointer;
        if (iid != nullptr && (*iid == iid::IUnknown || *iid == iid::ISharedHostObject)) {
            *out = static_cast<ISharedHostObject*>(this);
            AddRef();
            return status::ok;
        }
        *out = nullptr;
        return status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return refs.fetch_add(1) + 1; }
    uint32_t ZVF_CALL Release() override {
        const uint32_t left = refs.fetch_sub(1) - 1;
        if (left == 0) {
            host.liveShared_.fetch_sub(1);
            delete this;
        }
        return left;
    }
    Status ZVF_CALL ParametersChanged(uint32_t context) override {
        std::lock_guard<std::mutex> lock(host.changedMutex_);
        ++host.changed_[context];
        return status::ok;
    }
    HostObject& host;
    std::atomic<uint32_t> refs{1};
};

struct HostObject::Services final {
    struct Sync final : StaticObject<IFieldSync> {
        explicit Sync(HostObject& h) : host(h) {}
        Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override { return host.QueryInterface(iid, out); }
        Status ZVF_CALL Synchronize(int32_t field) override {
            host.sync_.Wait(field);
            return status::ok;
        }
        HostObject& host;
    };
    struct Copy final : StaticObject<IFrameCopy> {
        explicit Copy(HostObject& h) : host(h) {}
        Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override { return host.QueryInterface(iid, out); }
        Status ZVF_CALL CopyFieldRect(IVideoFrame* dst, const Rect* dstRect, IVideoFrame* src, const Rect* srcRect,
                                      int32_t field) override {
            if (dst == nullptr || src == nullptr || dstRect == nullptr || srcRect == nullptr) return status::pointer;
            FrameSize ds{}, ss{};
            if (dst->GetSize(&ds) < 0 || src->GetSize(&ss) < 0) return status::invalid_arg;
            const Rect& d = *dstRect;
            const Rect& s = *srcRect;
            if (!Inside(d, ds) || !Inside(s, ss) || d.right - d.left != s.right - s.left ||
                d.bottom - d.top != s.bottom - s.top)
                return status::invalid_arg;
            uint8_t* dp = dst->GetBuffer();
            const uint8_t* sp = src->GetBuffer();
            if (dp == nullptr || sp == nullptr) return status::pointer;
            const int odd = field == 1 ? 1 : 0;
            const size_t bytes = static_cast<size_t>(d.right - d.left) * 2;
            for (int32_t y = 0; y < d.bottom - d.top; ++y) {
                if (((d.top + y) & 1) != odd) continue;  // rows of the selected field only
                std::memmove(dp + (static_cast<size_t>(d.top + y) * ds.width + d.left) * 2,
                             sp + (static_cast<size_t>(s.top + y) * ss.width + s.left) * 2, bytes);
            }
            return status::ok;
        }
        HostObject& host;
    };
    struct Format final : StaticObject<IProjectFormat> {
        explicit Format(HostObject& h) : host(h) {}
        Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override { return host.QueryInterface(iid, out); }
        Status ZVF_CALL GetFrameFormat(FrameFormat* out) override {
            if (out == nullptr) return status::pointer;
            *out = host.options_.projectFormat;
            return status::ok;
        }
        HostObject& host;
    };
    struct Features final : StaticObject<IProcessorFeatures> {
        explicit Features(HostObject& h) : host(h) {}
        Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override { return host.QueryInterface(iid, out); }
        uint32_t ZVF_CALL GetFeatures() override { return host.options_.processorFeatures; }
        HostObject& host;
    };
    explicit Services(HostObject& h) : sync(h), copy(h), format(h), features(h) {}
    Sync sync;
    Copy copy;
    Format format;
    Features features;
};

HostObject::HostObject(const HostOptions& options)
    : options_(options), registry_(new Registry(*this)), services_(new Services(*this)) {}

HostObject::~HostObject() {
    delete registry_;
    delete services_;
}

Status HostObject::QueryInterface(const Guid* iid, void** out) {
    if (out == nullptr) return status::pointer;
    *out = nullptr;
    if (iid == nullptr) return status::no_interface;
    if (*iid == iid::IUnknown || *iid == iid::IHost)
        *out = static_cast<IHost*>(this);
    else if (*iid == iid::IFilterRegistry && options_.registry)
        *out = static_cast<IFilterRegistry*>(registry_);
    else if (*iid == iid::IFieldSync && options_.fieldSync)
        *out = static_cast<IFieldSync*>(&services_->sync);
    else if (*iid == iid::IFrameCopy && options_.frameCopy)
        *out = static_cast<IFrameCopy*>(&services_->copy);
    else if (*iid == iid::IProjectFormat)
        *out = static_cast<IProjectFormat*>(&services_->format);
    else if (*iid == iid::IProcessorFeatures)
        *out = static_cast<IProcessorFeatures*>(&services_->features);
    return *out != nullptr ? status::ok : status::no_interface;
}

Status HostObject::CreateObject(uint32_t, uint32_t, const Guid* iid, void** out) {
    if (out == nullptr) return status::pointer;
    *out = nullptr;
    if (iid == nullptr || !(*iid == iid::ISharedHostObject) || !options_.sharedObject) return status::no_interface;
    auto* shared = new (std::nothrow) Shared(*this);
    if (shared == nullptr) return status::out_of_memory;
    *out = static_cast<ISharedHostObject*>(shared);
    return status::ok;
}

int32_t HostObject::ParametersChanged(uint32_t context) const {
    std::lock_guard<std::mutex> lock(changedMutex_);
    auto it = changed_.find(context);
    return it == changed_.end() ? 0 : it->second;
}

}  // namespace zvf::host
