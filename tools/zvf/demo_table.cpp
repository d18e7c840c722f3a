#include "demo_table.h"

namespace zvf::cli {
namespace {

struct Entry {
    std::string_view key;
    std::string_view pairs;
};

// A filter whose record has other field names falls back to its defaults
// (the legend says so), so this table may run ahead of the filters.
constexpr Entry kTable[] = {
    {"SolidColor", "y=81:u=90:v=240"},                // a saturated red fill
    {"Mirror", "horizontalFlip=1:verticalFlip=1"},   // both flips: bars move to the bottom right
    {"Blur", "radius=12"},                           // wide enough to smear the fine detail
    {"BlurHQ", "radius=12"},
    {"Noise", "ratio=40"},                           // visible grain on the flat ramps
    {"Strobe", "interval=2:duration=1"},
};

}  // namespace

std::string_view TellingParameters(std::string_view identifierKey) {
    for (const Entry& e : kTable)
        if (e.key == identifierKey) return e.pairs;
    return {};
}

}  // namespace zvf::cli
