#include "language_loader.h"

namespace zvf {

std::optional<std::u16string> LanguageModuleString(uint32_t) { return std::nullopt; }

}  // namespace zvf
