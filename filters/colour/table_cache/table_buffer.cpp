#include "table_buffer.h"

#include <atomic>
#include <new>

#include "zvf/guids.h"

namespace zvf::filters {
namespace {

std::atomic<int32_t> g_liveBuffers{0};

class TableBuffer final : public ITableBuffer {
public:
    TableBuffer() { g_liveBuffers.fetch_add(1); }
    ~TableBuffer() {
        delete[] data_;
        g_liveBuffers.fetch_sub(1);
    }
    TableBuffer(const TableBuffer&) = delete;
    TableBuffer& operator=(const TableBuffer&) = delete;

    // Non-delegating: IUnknown is the buffer's own identity.
    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override {
        if (out == nullptr) return status::pointer;
        if (iid != nullptr && (*iid == iid::IUnknown || *iid == kTableBufferIid || *iid == kTableBufferIidAlt)) {
            *out = static_cast<ITableBuffer*>(this);
            AddRef();
            return status::ok;
        }
        *out = nullptr;
        return status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return refs_.fetch_add(1) + 1; }
    uint32_t ZVF_CALL Release() override {
        const uint32_t left = refs_.fetch_sub(1) - 1;
        if (left == 0) delete this;
        return left;
    }

    void ZVF_CALL Init(uint32_t size, uint32_t key) override {
        if (size == 0) return;
        delete[] data_;
        key_ = key;
        data_ = new (std::nothrow) uint8_t[size];
        // Without memory the block is absent and the size says so, rather
        // than promising bytes that do not exist.
        size_ = data_ != nullptr ? size : 0;
    }
    uint8_t* ZVF_CALL Data() override { return data_; }
    uint32_t ZVF_CALL Size() override { return size_; }
    uint32_t ZVF_CALL Key() override { return key_; }

private:
    std::atomic<uint32_t> refs_{1};
    uint32_t key_ = 0;
    uint32_t size_ = 0;
    uint8_t* data_ = nullptr;
};

}  // namespace

Status CreateTableBuffer(IUnknown* outer, const Guid* iid, void** out) {
    if (out == nullptr) return status::invalid_arg;
    if (outer != nullptr && (iid == nullptr || !(*iid == iid::IUnknown))) {
        *out = nullptr;
        return status::invalid_arg;
    }
    if (iid == nullptr || !(*iid == kTableBufferIid || *iid == kTableBufferIidAlt)) {
        *out = nullptr;
        return status::no_interface;
    }
    auto* buffer = new (std::nothrow) TableBuffer();
    if (buffer == nullptr) return status::out_of_memory;
    *out = static_cast<ITableBuffer*>(buffer);
    return status::ok;
}

int32_t LiveTableBuffers() { return g_liveBuffers.load(); }

}  // namespace zvf::filters
