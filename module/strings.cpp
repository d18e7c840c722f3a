// Built-in string tables and the lookup every identity getter goes through.
#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "language_loader.h"
#include "platform.h"
#include "zvf/module_services.h"

namespace zvf {
namespace {

struct Entry {
    uint32_t id;
    const char* en;  // UTF-8
    const char* ja;
};

constexpr Entry kTable[] = {
#define ZVF_STRING(id, en, ja) {id, en, ja},
#include "../resources/string_table.inc"
#undef ZVF_STRING
};

}  // namespace

std::optional<std::u16string> BuiltInString(uint32_t id, bool japanese) {
    for (const Entry& e : kTable)
        if (e.id == id) return platform::FromUtf8(japanese ? e.ja : e.en);
    return std::nullopt;
}

std::optional<std::u16string> LoadModuleString(uint32_t id) {
    // An installed language module takes precedence over the built-in tables.
    if (std::optional<std::u16string> s = LanguageModuleString(id)) return s;
    return BuiltInString(id, platform::PreferJapanese());
}

}  // namespace zvf
