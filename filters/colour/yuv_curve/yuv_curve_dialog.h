// YuvCurveSetupDialog, platform-free: one curve editor per component (tabs
// Y, U, V), spline or straight segments per curve, safe colour and
// "&Default". Every change rebuilds the tables and goes at once into the
// instance's record, so the preview follows; Cancel puts back the record as
// it was when the dialog was opened.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "yuv_curve_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class YuvCurveSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 12320;
    static constexpr size_t kMaxPoints = 32;  // per curve, in the editor
    static constexpr int32_t kEditorSize = 256;  // curve editor, pixels a side

    // `live` is the instance's record, guarded by `liveLock` against the
    // render thread; both outlive the dialog.
    YuvCurveSetupDialog(YuvCurveRecord* live, std::mutex* liveLock);

    void Reload() override;

    static const char* TabLabel(int curve);
    void SelectCurve(int curve);
    int CurrentCurve() const;

    // Point editing on the current curve; coordinates are clamped to 0..255
    // and x stays strictly ascending. Each returns false when it changed
    // nothing.
    // A new point; at an x that already has one, that point takes the new y.
    bool AddPoint(int32_t x, int32_t y);
    // Drags point `index`: x stays between its neighbours.
    bool MovePoint(size_t index, int32_t x, int32_t y);
    // Removes point `index`; a curve keeps at least two.
    bool DeletePoint(size_t index);
    // "&Spline" (false) or "&Linear" (true) for the current curve.
    void SetLinear(bool linear);
    void SetSafeColour(bool on);
    // "&Default": every curve back to (0, 0), (255, 255) as a spline; safe
    // colour keeps its state.
    void Default();
    // OK keeps the record; Cancel restores the copy taken on opening.
    void Commit();
    void Cancel();

    YuvCurveRecord Working() const;
    // The curve point under editor pixel (px, py), y growing downwards, and
    // its status text "(%3d, %3d)".
    static CurvePoint PointAt(int32_t px, int32_t py);
    static std::string StatusText(int32_t x, int32_t y);

private:
    template <class Change>
    bool Edit(Change change);

    YuvCurveRecord* live_;
    std::mutex* liveLock_;
    YuvCurveRecord working_;
    YuvCurveRecord opened_;
    int curve_ = kCurveY;
};

}  // namespace zvf::filters
