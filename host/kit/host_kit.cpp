#include "kit/host_kit.h"

#include <cstring>
#include <thread>

#include "core/memory_blob.h"
#include "kit/library.h"
#include "zvf/guids.h"

namespace zvf::host {

std::string Utf8(const char16_t* s) {
    std::string out;
    if (s == nullptr) return out;
    for (; *s; ++s) {
        uint32_t c = *s;
        if (c >= 0xD800 && c < 0xDC00 && s[1] >= 0xDC00 && s[1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (s[1] - 0xDC00);
            ++s;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::string IdentifierKey(std::string_view id) {
    constexpr std::string_view head = "Velmora Co., Ltd. ";
    constexpr std::string_view tail = " Video Filter";
    if (id.size() > head.size() + tail.size() && id.substr(0, head.size()) == head &&
        id.substr(id.size() - tail.size()) == tail)
        return std::string(id.substr(head.size(), id.size() - head.size() - tail.size()));
    return std::string(id);
}

// ---- Instance -------------------------------------------------------------

Instance::~Instance() {
    if (instance_ != nullptr) instance_->Release();
}

Status Instance::RenderField(Frame& dst, Frame& src, const Rect& rect, int32_t field, uint32_t frame,
                             uint32_t refresh) {
    return instance_->Render(&dst, &src, &rect, frame, 0, field, refresh);
}

Status Instance::RenderFrame(Frame& dst, Frame& src, uint32_t frame, bool twoThreads, uint32_t refresh) {
    const Rect all{0, 0, src.Width(), src.Height()};
    FieldSyncState& sync = module_.Host().Sync();
    sync.Begin(twoThreads);
    Status odd = status::ok;
    std::thread second;
    if (twoThreads) {
        second = std::thread([&] {
            odd = RenderField(dst, src, all, 1, frame, refresh);
            sync.Finish(1);
        });
    }
    const Status even = RenderField(dst, src, all, 0, frame, refresh);
    sync.Finish(0);
    if (twoThreads) {
        second.join();
    } else {
        odd = RenderField(dst, src, all, 1, frame, refresh);
        sync.Finish(1);
    }
    return even != status::ok ? even : odd;
}

Status Instance::Save(std::vector<uint8_t>* out) {
    out->clear();
    IParameterBlob* blob = nullptr;
    const int32_t pendingBefore = module_.PendingBlobFailures();
    const Status s = instance_->SaveParameters(&blob);
    // A filter that reports success after its blob's allocation failed hands
    // back a released blob: never touch it.
    if (s == status::ok && module_.PendingBlobFailures() < pendingBefore) return s;
    if (s == status::ok && blob != nullptr) {
        const auto* data = static_cast<const uint8_t*>(blob->GetData());
        if (data != nullptr) out->assign(data, data + blob->GetDataSize());
        blob->Release();
    }
    return s;
}

// ---- LoadedModule ---------------------------------------------------------

std::unique_ptr<LoadedModule> LoadedModule::Load(const std::string& path, const HostOptions& options,
                                                 std::string* error) {
    std::unique_ptr<LoadedModule> m(new LoadedModule());
    m->library_ = OpenLibrary(path, error);
    if (m->library_ == nullptr) return nullptr;
    m->startup_ = reinterpret_cast<int32_t (*)(IHost*)>(LibrarySymbol(m->library_, "Startup"));
    m->shutdown_ = reinterpret_cast<int32_t (*)()>(LibrarySymbol(m->library_, "Shutdown"));
    m->liveObjects_ = reinterpret_cast<int32_t (*)()>(LibrarySymbol(m->library_, "ZelLiveObjectCount"));
    if (m->startup_ == nullptr || m->shutdown_ == nullptr) {
        if (error) *error = path + " does not export Startup and Shutdown";
        CloseLibrary(m->library_);
        m->library_ = nullptr;
        return nullptr;
    }
    // The core library beside the module, for its test hooks.
    const size_t slash = path.find_last_of("/\\");
    const std::string dir = slash == std::string::npos ? std::string(".") : path.substr(0, slash);
    m->core_ = OpenLibrary(dir + "/ZelCore.DLL", nullptr);
    m->host_ = std::make_unique<HostObject>(options);
    m->startupResult_ = m->startup_(m->host_.get());
    return m;
}

LoadedModule::~LoadedModule() {
    if (library_ == nullptr) return;
    Shutdown();
    HostObject& h = *host_;
    for (IVideoFilter* f : h.registered) f->Release();
    // Refused filters keep the reference registration left held; drop it so
    // the module can be unloaded.
    for (IVideoFilter* f : h.attempted) {
        bool accepted = false;
        for (IVideoFilter* r : h.registered) accepted = accepted || r == f;
        if (f != nullptr && !accepted) f->Release();
    }
    h.registered.clear();
    h.attempted.clear();
    // Never unmap code that live objects still point into.
    if (LiveObjects() == 0 && h.LiveSharedObjects() == 0) {
        CloseLibrary(library_);
    }
    if (core_ != nullptr) CloseLibrary(core_);
}

int32_t LoadedModule::Shutdown() { return shutdown_ ? shutdown_() : 0; }

int32_t LoadedModule::LiveObjects() const { return liveObjects_ ? liveObjects_() : 0; }

std::string LoadedModule::ResourceLanguage() const {
    auto language = reinterpret_cast<const char16_t* (*)()>(LibrarySymbol(library_, "ZelResourceLanguage"));
    return language ? Utf8(language()) : std::string();
}

void LoadedModule::FailBlobAllocations(int32_t count) {
    if (core_ == nullptr) return;
    if (auto fail = reinterpret_cast<void (*)(int32_t)>(LibrarySymbol(core_, "ZelCoreFailAllocations"))) fail(count);
}

int32_t LoadedModule::PendingBlobFailures() const {
    if (core_ == nullptr) return 0;
    auto pending = reinterpret_cast<int32_t (*)()>(LibrarySymbol(core_, "ZelCorePendingFailures"));
    return pending ? pending() : 0;
}

FilterIdentity LoadedModule::IdentityOf(IVideoFilter* f) {
    FilterIdentity id;
    id.identifier = Utf8(f->GetIdentifier());
    id.name = Utf8(f->GetName());
    id.category = Utf8(f->GetCategory());
    id.description = Utf8(f->GetDescription());
    id.vendor = Utf8(f->GetVendor());
    id.kind = f->GetKind();
    id.version = f->GetVersion();
    return id;
}

FilterIdentity LoadedModule::Identity(size_t i) const { return IdentityOf(FilterAt(i)); }

std::optional<size_t> LoadedModule::Find(std::string_view name) const {
    auto fold = [](std::string_view s) {
        std::string out;
        for (char c : s)
            if (c != ' ' && c != '/' && c != '-' && c != '_') out += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
        return out;
    };
    const std::string wanted = fold(name);
    for (size_t i = 0; i < FilterCount(); ++i) {
        const FilterIdentity id = Identity(i);
        if (fold(id.name) == wanted || fold(IdentifierKey(id.identifier)) == wanted || fold(id.identifier) == wanted)
            return i;
    }
    return std::nullopt;
}

std::unique_ptr<Instance> LoadedModule::Create(size_t filter, const std::vector<uint8_t>* blob, uint32_t context,
                                               Status* result) {
    IParameterBlob* source = nullptr;
    if (blob != nullptr) {
        auto* b = new MemoryBlob();
        if (!blob->empty()) std::memcpy(b->Allocate(static_cast<uint32_t>(blob->size())), blob->data(), blob->size());
        source = b;
    }
    IFilterInstance* instance = nullptr;
    const Status s = FilterAt(filter)->CreateInstance(source, context, &instance);
    if (source != nullptr) source->Release();
    if (result != nullptr) *result = s;
    if (s != status::ok || instance == nullptr) return nullptr;
    return std::make_unique<Instance>(*this, instance);
}

}  // namespace zvf::host
