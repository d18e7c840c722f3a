// libFuzzer target for every filter's blob reader: the first byte picks the
// filter; the rest is either a whole blob or, more usefully, the payload
// behind a valid header for that filter. Each accepted record is then
// rendered, so a record that loads but makes rendering read or write out of
// bounds is found too.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "core/memory_blob.h"
#include "kit/frame.h"
#include "registration.h"
#include "zvf/blob.h"
#include "zvf/guids.h"

namespace {

using namespace zvf;

struct Collector final : IFilterRegistry {
    Status ZVF_CALL QueryInterface(const Guid*, void** out) override {
        *out = nullptr;
        return status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return 2; }
    uint32_t ZVF_CALL Release() override { return 1; }
    Status ZVF_CALL RegisterFilter(IVideoFilter* f) override {
        f->AddRef();
        filters.push_back(f);
        return status::ok;
    }
    std::vector<IVideoFilter*> filters;
};

Collector g_collector;

void ReleaseFilters() {
    for (IVideoFilter* f : g_collector.filters) f->Release();
    g_collector.filters.clear();
}

Collector& Filters() {
    static const bool registered = [] {
        RegisterAll(&g_collector, nullptr);
        std::atexit(ReleaseFilters);  // runs before the leak check at exit
        return true;
    }();
    (void)registered;
    return g_collector;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Collector& all = Filters();
    if (size < 1 || all.filters.empty()) return 0;
    IVideoFilter* filter = all.filters[data[0] % all.filters.size()];
    const bool raw = (data[0] & 0x80) != 0;
    ++data;
    --size;

    std::vector<uint8_t> bytes;
    if (raw) {
        bytes.assign(data, data + size);
    } else {
        const std::u16string id(filter->GetIdentifier());
        bytes.resize(blob::EnvelopeSize(id, static_cast<uint32_t>(size)));
        uint8_t* payload = blob::WriteHeader(bytes.data(), id);
        if (size) std::memcpy(payload, data, size);
    }
    auto* source = new host::MemoryBlob();
    if (!bytes.empty()) std::memcpy(source->Allocate(static_cast<uint32_t>(bytes.size())), bytes.data(), bytes.size());
    IFilterInstance* instance = nullptr;
    if (filter->CreateInstance(source, 0, &instance) == status::ok && instance != nullptr) {
        host::Frame src(18, 9), dst(18, 9);
        for (size_t i = 0; i < src.Bytes(); ++i) src.Pixels()[i] = static_cast<uint8_t>(i * 37);
        const Rect all{0, 0, 18, 9};
        instance->Render(&dst, &src, &all, 1, 0, 0, 0);
        instance->Render(&dst, &src, &all, 1, 0, 1, 0);
        instance->Release();
    }
    source->Release();
    return 0;
}
