// A stand-in for the host's shared object that counts the preview redraws a
// setup dialog asks for, installed for the lifetime of the counter.
#pragma once

#include <cstdint>

#include "module_state.h"
#include "zvf/abi.h"

namespace zvf::test {

class NotifyCounter final : public ISharedHostObject {
public:
    NotifyCounter() : previous_(SharedHostSlot()) { SharedHostSlot() = this; }
    ~NotifyCounter() { SharedHostSlot() = previous_; }
    NotifyCounter(const NotifyCounter&) = delete;
    NotifyCounter& operator=(const NotifyCounter&) = delete;

    Status ZVF_CALL QueryInterface(const Guid*, void** out) override {
        *out = nullptr;
        return status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return 1; }
    uint32_t ZVF_CALL Release() override { return 1; }
    Status ZVF_CALL ParametersChanged(uint32_t context) override {
        ++calls;
        lastContext = context;
        return status::ok;
    }

    int32_t calls = 0;
    uint32_t lastContext = 0;

private:
    ISharedHostObject* previous_;
};

}  // namespace zvf::test
