#include "core_loader.h"

#include "platform.h"

namespace zvf {
namespace {

// Stands in for a core library that does not export DllCanUnloadNow.
Status ZVF_CALL BuiltInCanUnloadNow() { return 1; /* S_FALSE: keep it */ }

}  // namespace

CoreLibraryEntries& CoreLibrary() {
    static CoreLibraryEntries entries;
    return entries;
}

CoreLoader& ModuleCoreLoader() {
    static CoreLoader loader;
    return loader;
}

template <class Traits>
Status CZelComLoader<Traits>::LoadLibraryEntries() {
    CoreLibraryEntries& lib = CoreLibrary();
    if (lib.library == nullptr) {
        lib.library = platform::LoadLibraryPath(FirstPath());
        if (lib.library == nullptr) lib.library = platform::LoadLibraryPath(SecondPath());
        if (lib.library == nullptr) return status::fail;
    }
    if (lib.getClassObject == nullptr) {
        lib.getClassObject =
            reinterpret_cast<DllGetClassObjectFn>(platform::GetSymbol(lib.library, "DllGetClassObject"));
        lib.canUnloadNow = reinterpret_cast<DllCanUnloadNowFn>(platform::GetSymbol(lib.library, "DllCanUnloadNow"));
        if (lib.getClassObject == nullptr) {
            platform::FreeLibraryHandle(lib.library);
            lib = CoreLibraryEntries{};
            return status::fail;
        }
        if (lib.canUnloadNow == nullptr) lib.canUnloadNow = &BuiltInCanUnloadNow;
    }
    return status::ok;
}

template <class Traits>
Status CZelComLoader<Traits>::CreateObject(uint32_t kind, void** out) {
    if (out == nullptr) return status::pointer;
    *out = nullptr;
    if (core_ == nullptr) {
        if (factory_ == nullptr) {
            Lock();
            const Status loaded = LoadLibraryEntries();
            Unlock();
            if (loaded != status::ok) return loaded;
            void* factory = nullptr;
            const Status got = CoreLibrary().getClassObject(&ClassId(), &iid::IClassFactory, &factory);
            if (got < 0 || factory == nullptr) return got < 0 ? got : status::fail;
            factory_ = static_cast<IClassFactory*>(factory);
        }
        void* core = nullptr;
        const Status queried = factory_->QueryInterface(&iid::ICoreObject, &core);
        factory_->Release();
        factory_ = nullptr;
        if (queried < 0 || core == nullptr) return queried < 0 ? queried : status::fail;
        core_ = static_cast<ICoreObject*>(core);
    }
    return core_->CreateObject(kind, out);
}

template class CZelComLoader<CZelCoreLoader>;

}  // namespace zvf
