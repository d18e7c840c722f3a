// ZelCore.DLL: the host core library the module loads at run time. Its class
// object answers IClassFactory and the core object interface; slot 7 of the
// core object creates parameter blobs (kind 1).
#include <atomic>
#include <new>

#include "core/memory_blob.h"
#include "zvf/abi.h"
#include "zvf/guids.h"

#if defined(_WIN32)
#define ZELCORE_EXPORT
#else
#define ZELCORE_EXPORT __attribute__((visibility("default")))
#endif

namespace zvf::host {
namespace {

std::atomic<int32_t> g_failAllocations{0};  // test hook: blobs whose Allocate fails

class CoreClassObject final : public IClassFactory, public ICoreObject {
public:
    Status ZVF_CALL QueryInterface(const Guid* iid, void** out) override {
        if (out == nullptr) return status::pointer;
        if (iid != nullptr) {
            if (*iid == iid::IUnknown || *iid == iid::IClassFactory) {
                *out = static_cast<IClassFactory*>(this);
                return status::ok;
            }
            if (*iid == iid::ICoreObject) {
                *out = static_cast<ICoreObject*>(this);
                return status::ok;
            }
        }
        *out = nullptr;
        return status::no_interface;
    }
    // One static object for the library's life: counting is not needed.
    uint32_t ZVF_CALL AddRef() override { return 2; }
    uint32_t ZVF_CALL Release() override { return 1; }

    Status ZVF_CALL CreateInstance(IUnknown*, const Guid* iid, void** out) override { return QueryInterface(iid, out); }
    Status ZVF_CALL LockServer(int32_t) override { return status::ok; }

    Status ZVF_CALL Reserved3() override { return status::not_implemented; }
    Status ZVF_CALL Reserved4() override { return status::not_implemented; }
    Status ZVF_CALL Reserved5() override { return status::not_implemented; }
    Status ZVF_CALL Reserved6() override { return status::not_implemented; }
    Status ZVF_CALL CreateObject(uint32_t kind, void** out) override {
        if (out == nullptr) return status::pointer;
        *out = nullptr;
        if (kind != 1) return status::invalid_arg;
        bool fail = false;
        for (int32_t n = g_failAllocations.load(); n > 0;) {
            if (g_failAllocations.compare_exchange_weak(n, n - 1)) {
                fail = true;
                break;
            }
        }
        auto* blob = new (std::nothrow) MemoryBlob(fail);
        if (blob == nullptr) return status::out_of_memory;
        *out = static_cast<IParameterBlob*>(blob);
        return status::ok;
    }
};

CoreClassObject g_classObject;

}  // namespace
}  // namespace zvf::host

extern "C" {

ZELCORE_EXPORT zvf::Status ZVF_CALL DllGetClassObject(const zvf::Guid* clsid, const zvf::Guid* iid, void** out) {
    using namespace zvf;
    if (out == nullptr) return status::pointer;
    *out = nullptr;
    if (clsid == nullptr || !(*clsid == clsid::CoreObject)) return static_cast<Status>(0x80040111u);  // CLASS_E_CLASSNOTAVAILABLE
    return host::g_classObject.QueryInterface(iid, out);
}

ZELCORE_EXPORT zvf::Status ZVF_CALL DllCanUnloadNow() { return 1; }

// Test hook: the next `count` blobs fail their allocation.
ZELCORE_EXPORT void ZelCoreFailAllocations(int32_t count) { zvf::host::g_failAllocations.store(count); }
ZELCORE_EXPORT int32_t ZelCorePendingFailures() { return zvf::host::g_failAllocations.load(); }

}
