// Chooses a language resource module for the user's locale and makes it the
// place strings are looked up in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zvf {

// The string from the installed language module, if one is installed and has it.
std::optional<std::u16string> LanguageModuleString(uint32_t id);

// The built-in tables' text for an id.
std::optional<std::u16string> BuiltInString(uint32_t id, bool japanese);

}  // namespace zvf
