// Parameters that show what each filter does on the demo picture.
#pragma once

#include <string_view>

namespace zvf::cli {

// name=value pairs joined by ':' for the filter with this identifier key
// ("Blur", "SolidColor"); empty for filters that show well at their defaults.
std::string_view TellingParameters(std::string_view identifierKey);

}  // namespace zvf::cli
