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
    {"SolidColor", "y=81:u=90:v=240"},               // a saturated red fill
    {"Mirror", "horizontalFlip=1:verticalFlip=1"},  // both flips: the bars go to the bottom, turned round
    // A radius wide enough to smear the fine detail, with the weight the
    // dialog derives from it (32768 x 256^(-1/12), truncated).
    {"Blur", "radius=12:coefficient=20642"},
    {"BlurHQ", "radius=12:coefficient=20642"},
    {"Emboss", "depth=2"},
    {"Noise", "ratio=40"},                           // visible grain on the flat ramps
    {"Strobe", "interval=2:duration=1"},
    {"Monotone", "u=108:v=148"},                     // sepia
    {"Matrix", "k00=-1:k01=-1:k02=-1:k10=-1:k11=9:k12=-1:k20=-1:k21=-1:k22=-1:normalize=1"},  // sharpen
    {"ColorCorrectionColor", "red_cyan=60:blue_yellow=-60"},
    // A third of a turn, with the sine and cosine the dialog derives (x 16384).
    {"ColorCorrectionUV", "hue=2.0943951023931953:sine=14189:cosine=-8192:saturation=30"},
};

}  // namespace

std::string_view TellingParameters(std::string_view identifierKey) {
    for (const Entry& e : kTable)
        if (e.key == identifierKey) return e.pairs;
    return {};
}

}  // namespace zvf::cli
