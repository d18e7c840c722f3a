// Loads the host core library on first use and creates core objects (kind 1:
// parameter blobs) through its class object.
#pragma once

#include <cstdint>

#include "zvf/abi.h"
#include "zvf/guids.h"

namespace zvf {

class CZelCoreLoader {
public:
    static constexpr const Guid& kClassId = clsid::CoreObject;
    static constexpr const char16_t* kFirstPath = u"ZelCore.DLL";
    static constexpr const char16_t* kSecondPath = u"../../../WIN32/Release/ZelCore.DLL";
};

// Module-wide library entries shared by every loader instance.
struct CoreLibraryEntries {
    void* library = nullptr;
    DllGetClassObjectFn getClassObject = nullptr;
    DllCanUnloadNowFn canUnloadNow = nullptr;
};
CoreLibraryEntries& CoreLibrary();

template <class Traits>
class CZelComLoader {
public:
    CZelComLoader() = default;
    CZelComLoader(const CZelComLoader&) = delete;
    CZelComLoader& operator=(const CZelComLoader&) = delete;
    virtual const Guid& ClassId() const { return Traits::kClassId; }
    virtual const char16_t* FirstPath() const { return Traits::kFirstPath; }
    virtual const char16_t* SecondPath() const { return Traits::kSecondPath; }
    virtual void Lock() {}
    virtual void Unlock() {}
    virtual ~CZelComLoader() {
        if (core_ != nullptr) core_->Release();
    }

    // Returns the core object's creation status; every earlier failure is
    // returned as it is.
    Status CreateObject(uint32_t kind, void** out);

private:
    Status LoadLibraryEntries();

    IClassFactory* factory_ = nullptr;
    ICoreObject* core_ = nullptr;
};

using CoreLoader = CZelComLoader<CZelCoreLoader>;

// The module-wide loader (Family A filters save through it).
CoreLoader& ModuleCoreLoader();

}  // namespace zvf
