// A parameter blob in plain heap memory: what the core library hands the
// module to save into, and what the host kit hands a filter to load from.
#pragma once

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "zvf/abi.h"
#include "zvf/guids.h"

namespace zvf::host {

class MemoryBlob final : public IParameterBlob {
public:
    // failAllocation: the next Allocate returns null (injected for tests).
    explicit MemoryBlob(bool failAllocation = false) : failAllocation_(failAllocation) {}

    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override {
        if (out == nullptr) return status::pointer;
        if (iid != nullptr && (*iid == iid::IUnknown || *iid == iid::IParameterBlob)) {
            *out = static_cast<IParameterBlob*>(this);
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
    void* ZVF_CALL Allocate(uint32_t bytes) override {
        if (failAllocation_) return nullptr;
        void* fresh = std::malloc(bytes == 0 ? 1 : bytes);
        if (fresh == nullptr) return nullptr;
        std::free(data_);
        data_ = fresh;
        size_ = bytes;
        return data_;
    }
    Status ZVF_CALL Reserved4() override { return status::not_implemented; }
    uint32_t ZVF_CALL GetDataSize() override { return size_; }
    void* ZVF_CALL GetData() override { return size_ == 0 ? nullptr : data_; }

private:
    ~MemoryBlob() { std::free(data_); }

    std::atomic<uint32_t> refs_{1};
    bool failAllocation_;
    void* data_ = nullptr;
    uint32_t size_ = 0;
};

}  // namespace zvf::host
