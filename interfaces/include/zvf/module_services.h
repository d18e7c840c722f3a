// What filter objects need from the module around them: its string tables,
// the shared host object and the core library. Implemented in module/.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "zvf/abi.h"

namespace zvf {

// A string of the selected resources (language module or built-in tables);
// nullopt when the id does not exist.
std::optional<std::u16string> LoadModuleString(uint32_t id);

// The shared host object obtained in Startup, or null.
ISharedHostObject* SharedHostObject();

// Host pointer given to Startup (not owned).
IHost* ModuleHost();

}  // namespace zvf
