#include <gtest/gtest.h>

#include "zvf/placement.h"

namespace zvf {
namespace {

struct PlacementCase {
    const char* what;
    Rect dialog;
    Point cursor;
    Rect monitor;
    Point expected;
};

const Rect kMonitor{0, 0, 1920, 1080};

TEST(Placement, CentresOnCursorAndKeepsInsideTheMonitor) {
    const PlacementCase cases[] = {
        {"centred", {0, 0, 300, 200}, {960, 540}, kMonitor, {810, 440}},
        {"odd size rounds the half down", {0, 0, 301, 201}, {960, 540}, kMonitor, {810, 440}},
        {"past the left edge", {0, 0, 300, 200}, {100, 540}, kMonitor, {1, 440}},
        {"past the right edge", {0, 0, 300, 200}, {1900, 540}, kMonitor, {1619, 440}},
        {"past the bottom", {0, 0, 300, 200}, {960, 1070}, kMonitor, {810, 879}},
        {"past the top", {0, 0, 300, 200}, {960, 10}, kMonitor, {810, 1}},
        {"corner: left and top", {0, 0, 300, 200}, {0, 0}, kMonitor, {1, 1}},
        {"corner: right and bottom", {0, 0, 300, 200}, {1919, 1079}, kMonitor, {1619, 879}},
        {"exactly touching the right edge moves in", {0, 0, 300, 200}, {1770, 540}, kMonitor, {1620, 440}},
        {"second monitor left of the first", {0, 0, 300, 200}, {-1900, 540}, {-1920, 0, 0, 1080}, {-1919, 440}},
        {"second monitor, right edge at 0", {0, 0, 300, 200}, {-10, 540}, {-1920, 0, 0, 1080}, {-301, 440}},
        // Wider and taller than the monitor: the left then top tests win last.
        {"larger than the monitor", {0, 0, 2000, 1200}, {960, 540}, kMonitor, {-81, 1}},
        {"window rect not at the origin", {50, 60, 350, 260}, {960, 540}, kMonitor, {810, 440}},
    };
    for (const PlacementCase& c : cases) {
        const Point p = PlaceAtCursor(c.dialog, c.cursor, c.monitor);
        EXPECT_EQ(p.x, c.expected.x) << c.what;
        EXPECT_EQ(p.y, c.expected.y) << c.what;
    }
}

}  // namespace
}  // namespace zvf
