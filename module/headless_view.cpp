// A dialog view without a window system: it keeps the rectangle and the
// visibility a real window would have, so the setup lifecycle runs the same.
#include <memory>
#include <new>

#include "zvf/setup_dialog.h"

namespace zvf {
namespace {

class HeadlessView final : public DialogView {
public:
    HeadlessView(int32_t widthPx, int32_t heightPx) : rect_{0, 0, widthPx, heightPx} {}
    void Show(bool show) override { visible_ = show; }
    bool IsVisible() const override { return visible_; }
    Rect WindowRect() const override { return rect_; }
    void MoveTo(int32_t left, int32_t top) override {
        const int32_t w = rect_.right - rect_.left;
        const int32_t h = rect_.bottom - rect_.top;
        rect_ = {left, top, left + w, top + h};
    }
    void* Handle() const override { return const_cast<HeadlessView*>(this); }

private:
    Rect rect_;
    bool visible_ = false;
};

}  // namespace

std::unique_ptr<DialogView> CreateDialogView(uint32_t, int32_t widthDlu, int32_t heightDlu, void*) {
    // Dialog units of the 8-point dialog font at 96 dpi: 6 px per 4 across, 13 px per 8 down.
    return std::unique_ptr<DialogView>(new (std::nothrow) HeadlessView(widthDlu * 6 / 4, heightDlu * 13 / 8));
}

}  // namespace zvf
