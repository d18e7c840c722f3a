// Module entry and exit: the exported Startup and Shutdown, and the two
// module-wide pointers they manage.
#include "registration.h"
#include "zvf/filter_base.h"
#include "zvf/guids.h"
#include "zvf/module_services.h"

#include "language_loader.h"
#include "module_state.h"

#if defined(_WIN32)
#define ZVF_EXPORT  // names come from ZelVideoFilters.def
#else
#define ZVF_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

ZVF_EXPORT int32_t Startup(zvf::IHost* host) {
    using namespace zvf;
    ISharedHostObject*& g_shared = SharedHostSlot();
    SetModuleHost(host);
    if (host == nullptr) return 0;
    // Strings are first needed by the registration below: pick the language now.
    try {
        (void)ModuleLanguageLoader().Load();
    } catch (...) {
        // Out of memory while choosing: the built-in tables serve.
    }
    if (g_shared != nullptr) {  // a second Startup replaces, never leaks, the shared object
        g_shared->Release();
        g_shared = nullptr;
    }
    (void)host->CreateObject(0, 0, &iid::ISharedHostObject, reinterpret_cast<void**>(&g_shared));
    IFilterRegistry* registry = nullptr;
    if (host->QueryInterface(&iid::IFilterRegistry, reinterpret_cast<void**>(&registry)) < 0 || registry == nullptr)
        return 0;
    RegisterAll(registry, host);
    registry->Release();
    return 1;
}

ZVF_EXPORT int32_t Shutdown() {
    using namespace zvf;
    ISharedHostObject*& g_shared = SharedHostSlot();
    if (g_shared != nullptr) {
        g_shared->Release();
        g_shared = nullptr;
    }
    return 1;
}

// Diagnostics for hosts and tests: filter objects alive in the module.
ZVF_EXPORT int32_t ZelLiveObjectCount() { return zvf::LiveFilterObjects(); }

// Diagnostics: the code of the installed language module, or null when the
// built-in tables are in use.
ZVF_EXPORT const char16_t* ZelResourceLanguage() {
    const zvf::LanguageLoader& loader = zvf::ModuleLanguageLoader();
    return loader.ResourceModule() != nullptr ? loader.Code().c_str() : nullptr;
}

}
