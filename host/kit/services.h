// The host objects a module reaches through the host pointer: the host
// itself, the filter registry, the shared host object and the services.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "zvf/abi.h"

namespace zvf::host {

struct HostOptions {
    bool registry = true;          // answer IFilterRegistry
    Status registryResult = 0;     // a negative value refuses every filter
    bool sharedObject = true;      // CreateObject yields the shared host object
    bool fieldSync = true;         // answer the field synchronisation service
    bool frameCopy = true;         // answer the frame copy service
    FrameFormat projectFormat{1920, 1080, 16, 1};
    uint32_t processorFeatures;    // defaults to what this processor has
    HostOptions();
};

uint32_t DetectProcessorFeatures();

// Pairs the Synchronize calls of the two fields of one frame. When the host
// renders the fields one after the other, every call returns at once; a
// field that has finished its render never keeps the other waiting.
class FieldSyncState {
public:
    void Begin(bool concurrent);
    void Finish(int32_t field);
    void Wait(int32_t field);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool concurrent_ = false;
    uint64_t calls_[2] = {0, 0};
    bool finished_[2] = {false, false};
};

class HostObject final : public IHost {
public:
    explicit HostObject(const HostOptions& options);
    ~HostObject();
    HostObject(const HostObject&) = delete;
    HostObject& operator=(const HostObject&) = delete;

    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override;
    uint32_t ZVF_CALL AddRef() override { return 2; }  // lives as long as the host kit's module
    uint32_t ZVF_CALL Release() override { return 1; }
    Status ZVF_CALL CreateObject(uint32_t a, uint32_t b, const Guid* iid, void** out) override;

    const HostOptions& Options() const { return options_; }
    // The project format reported from now on, as an editor's project
    // settings change between sequences (filters read it in PrepareRender).
    // Not while a filter may be asking for it.
    void SetProjectFormat(const FrameFormat& f) { options_.projectFormat = f; }
    FieldSyncState& Sync() { return sync_; }

    // Observations for tests.
    std::vector<IVideoFilter*> registered;  // accepted, each holding one reference
    std::vector<IVideoFilter*> attempted;   // every RegisterFilter call, in order
    int32_t LiveSharedObjects() const { return liveShared_.load(); }
    int32_t ParametersChanged(uint32_t context) const;

    // Reached through the host's QueryInterface.
    struct Registry;
    struct Services;
    struct Shared;

private:
    friend struct Registry;
    friend struct Shared;
    HostOptions options_;
    FieldSyncState sync_;
    Registry* registry_;
    Services* services_;
    std::atomic<int32_t> liveShared_{0};
    mutable std::mutex changedMutex_;
    std::map<uint32_t, int32_t> changed_;
};

}  // namespace zvf::host
