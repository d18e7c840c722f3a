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
    // A four-neighbour sharpen; a centre of 9 would wrap its normalised
    // coefficient to a negative one and turn the picture white.
    {"Matrix", "k01=-1:k10=-1:k11=5:k12=-1:k21=-1:normalize=1"},
    // Towards red and yellow, with the chroma offsets the dialog derives:
    // U = (127B - 86G - 44R) / 127, V = (127R - 109G - 21B) / 127.
    {"ColorCorrectionColor", "red_cyan=60:blue_yellow=-60:u_offset=-80:v_offset=69"},
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
