#include "yuv_curve_dialog.h"

#include <cstdio>
#include <new>

#include "yuv_curve_tables.h"

namespace zvf::filters {
namespace {

uint32_t Coord(int64_t v) { return static_cast<uint32_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

YuvCurveRecord Read(const YuvCurveRecord* live, std::mutex* lock) {
    std::lock_guard<std::mutex> hold(*lock);
    return *live;
}

}  // namespace

YuvCurveSetupDialog::YuvCurveSetupDialog(YuvCurveRecord* live, std::mutex* liveLock)
    : SetupDialog(kTemplate, 300, 230), live_(live), liveLock_(liveLock), working_(Read(live, liveLock)),
      opened_(working_) {}

void YuvCurveSetupDialog::Reload() {
    YuvCurveRecord r = Read(live_, liveLock_);
    std::lock_guard<std::mutex> lock(lock_);
    opened_ = r;
    working_ = std::move(r);
}

// Applies a change to a copy, rebuilds its tables and publishes it: either
// all of that happens or (out of memory, or no change) nothing.
template <class Change>
bool YuvCurveSetupDialog::Edit(Change change) {
    try {
        {
            std::lock_guard<std::mutex> lock(lock_);
            YuvCurveRecord next = working_;
            if (!change(next)) return false;
            for (int c = 0; c < 3; ++c) next.fixed.count[c] = static_cast<uint32_t>(next.points[c].size());
            RebuildTables(next);
            YuvCurveRecord published = next;
            {
                std::lock_guard<std::mutex> hold(*liveLock_);
                std::swap(*live_, published);
            }
            working_ = std::move(next);
        }
        NotifyChanged();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

const char* YuvCurveSetupDialog::TabLabel(int curve) {
    static const char* const kLabels[3] = {"Y", "U", "V"};
    return curve >= 0 && curve < 3 ? kLabels[curve] : "";
}

void YuvCurveSetupDialog::SelectCurve(int curve) {
    std::lock_guard<std::mutex> lock(lock_);
    if (curve >= 0 && curve < 3) curve_ = curve;
}

int YuvCurveSetupDialog::CurrentCurve() const {
    std::lock_guard<std::mutex> lock(lock_);
    return curve_;
}

bool YuvCurveSetupDialog::AddPoint(int32_t x, int32_t y) {
    const CurvePoint p{Coord(x), Coord(y)};
    return Edit([&](YuvCurveRecord& r) {
        auto& pts = r.points[curve_];
        auto at = pts.begin();
        while (at != pts.end() && at->x < p.x) ++at;
        if (at != pts.end() && at->x == p.x) {
            if (at->y == p.y) return false;
            at->y = p.y;
            return true;
        }
        if (pts.size() >= kMaxPoints) return false;
        pts.insert(at, p);
        return true;
    });
}

bool YuvCurveSetupDialog::MovePoint(size_t index, int32_t x, int32_t y) {
    return Edit([&](YuvCurveRecord& r) {
        auto& pts = r.points[curve_];
        if (index >= pts.size()) return false;
        int32_t lo = index > 0 ? static_cast<int32_t>(pts[index - 1].x) + 1 : 0;
        int32_t hi = index + 1 < pts.size() ? static_cast<int32_t>(pts[index + 1].x) - 1 : 255;
        if (lo > 255 || hi < 0 || lo > hi) return false;  // no room (or a loaded curve out of order)
        const CurvePoint p{static_cast<uint32_t>(x < lo ? lo : (x > hi ? hi : x)), Coord(y)};
        if (pts[index] == p) return false;
        pts[index] = p;
        return true;
    });
}

bool YuvCurveSetupDialog::DeletePoint(size_t index) {
    return Edit([&](YuvCurveRecord& r) {
        auto& pts = r.points[curve_];
        if (index >= pts.size() || pts.size() <= 2) return false;
        pts.erase(pts.begin() + static_cast<ptrdiff_t>(index));
        return true;
    });
}

void YuvCurveSetupDialog::SetLinear(bool linear) {
    Edit([&](YuvCurveRecord& r) {
        r.fixed.linear[curve_] = linear ? 1 : 0;
        return true;
    });
}

void YuvCurveSetupDialog::SetSafeColour(bool on) {
    Edit([&](YuvCurveRecord& r) {
        r.fixed.safeColour = on ? 1 : 0;
        return true;
    });
}

void YuvCurveSetupDialog::Default() {
    Edit([](YuvCurveRecord& r) {
        const YuvCurveRecord def;
        for (int c = 0; c < 3; ++c) {
            r.points[c] = def.points[c];
            r.fixed.linear[c] = 0;
        }
        return true;
    });
}

void YuvCurveSetupDialog::Commit() {
    try {
        std::lock_guard<std::mutex> lock(lock_);
        YuvCurveRecord published = working_;
        YuvCurveRecord kept = working_;
        {
            std::lock_guard<std::mutex> hold(*liveLock_);
            std::swap(*live_, published);
        }
        opened_ = std::move(kept);
    } catch (const std::bad_alloc&) {
        // The record keeps what the last change published.
    }
}

void YuvCurveSetupDialog::Cancel() {
    try {
        {
            std::lock_guard<std::mutex> lock(lock_);
            YuvCurveRecord published = opened_;
            YuvCurveRecord back = opened_;
            {
                std::lock_guard<std::mutex> hold(*liveLock_);
                std::swap(*live_, published);
            }
            working_ = std::move(back);
        }
        NotifyChanged();
    } catch (const std::bad_alloc&) {
    }
}

YuvCurveRecord YuvCurveSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

CurvePoint YuvCurveSetupDialog::PointAt(int32_t px, int32_t py) {
    return {Coord(int64_t{px} * 255 / (kEditorSize - 1)), Coord(255 - int64_t{py} * 255 / (kEditorSize - 1))};
}

std::string YuvCurveSetupDialog::StatusText(int32_t x, int32_t y) {
    char text[32];
    const int n = std::snprintf(text, sizeof text, "(%3d, %3d)", static_cast<int>(x), static_cast<int>(y));
    return n < 0 ? std::string() : std::string(text);
}

}  // namespace zvf::filters
