#include "module_state.h"

#include "zvf/module_services.h"

namespace zvf {
namespace {

IHost* g_host = nullptr;
ISharedHostObject* g_shared = nullptr;

}  // namespace

void SetModuleHost(IHost* host) { g_host = host; }
ISharedHostObject*& SharedHostSlot() { return g_shared; }
ISharedHostObject* SharedHostObject() { return g_shared; }
IHost* ModuleHost() { return g_host; }

}  // namespace zvf
