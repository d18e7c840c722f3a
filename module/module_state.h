// The two module-wide pointers of Startup and Shutdown.
#pragma once

#include "zvf/abi.h"

namespace zvf {

void SetModuleHost(IHost* host);   // kept without a reference, never released
ISharedHostObject*& SharedHostSlot();  // held from Startup to Shutdown

}  // namespace zvf
