// The reference host kit: loads ZelVideoFilters.tpi by path and drives it
// only through the binary interface, as the editor does. Tests, tools and
// benchmarks build on this API.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/frame.h"
#include "kit/services.h"
#include "zvf/abi.h"

namespace zvf::host {

struct FilterIdentity {
    std::string identifier;  // UTF-8 copies of the module's strings ("" for a null string)
    std::string name;
    std::string category;
    std::string description;
    std::string vendor;
    uint32_t kind = 0;
    uint32_t version = 0;
};

std::string Utf8(const char16_t* s);
// The key word inside "Velmora Co., Ltd. <key> Video Filter".
std::string IdentifierKey(std::string_view identifier);
// Folder of the running program, where the module and core library are built.
std::string ProgramDirectory();
std::string DefaultModulePath();

class LoadedModule;

class Instance {
public:
    Instance(LoadedModule& module, IFilterInstance* instance) : module_(module), instance_(instance) {}
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    IFilterInstance* Get() const { return instance_; }
    IFilterInstance* operator->() const { return instance_; }

    Status RenderField(Frame& dst, Frame& src, const Rect& rect, int32_t field, uint32_t frame = 0,
                       uint32_t refresh = 0);
    // Both fields of the whole frame; on two threads at once when asked,
    // with the field synchronisation service pairing their calls.
    Status RenderFrame(Frame& dst, Frame& src, uint32_t frame = 0, bool twoThreads = false, uint32_t refresh = 0);
    // The blob bytes SaveParameters produces.
    Status Save(std::vector<uint8_t>* out);

private:
    LoadedModule& module_;
    IFilterInstance* instance_;
};

class LoadedModule {
public:
    // Loads the module, calls Startup with a host built from `options`.
    static std::unique_ptr<LoadedModule> Load(const std::string& path, const HostOptions& options = HostOptions(),
                                              std::string* error = nullptr);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    int32_t StartupResult() const { return startupResult_; }
    int32_t Shutdown();  // the module's Shutdown; the destructor calls it too

    size_t FilterCount() const { return host_->registered.size(); }
    IVideoFilter* FilterAt(size_t i) const { return host_->registered[i]; }
    FilterIdentity Identity(size_t i) const;
    static FilterIdentity IdentityOf(IVideoFilter* f);
    // By English or displayed name, identifier key or full identifier.
    std::optional<size_t> Find(std::string_view name) const;

    std::unique_ptr<Instance> Create(size_t filter, const std::vector<uint8_t>* blob = nullptr,
                                     uint32_t context = 0, Status* result = nullptr);

    // Filter objects alive in the module (its diagnostic export).
    int32_t LiveObjects() const;
    // Code of the language module the module installed ("" for its built-in tables).
    std::string ResourceLanguage() const;
    // The next `count` blobs of the core library fail their allocation.
    void FailBlobAllocations(int32_t count);
    int32_t PendingBlobFailures() const;
    HostObject& Host() { return *host_; }

private:
    LoadedModule() = default;

    void* library_ = nullptr;
    void* core_ = nullptr;
    std::unique_ptr<HostObject> host_;
    int32_t (*startup_)(IHost*) = nullptr;
    int32_t (*shutdown_)() = nullptr;
    int32_t (*liveObjects_)() = nullptr;
    int32_t startupResult_ = 0;
};

}  // namespace zvf::host
