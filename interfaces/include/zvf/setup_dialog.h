// Platform-free model of a modeless setup dialog. The window itself is a
// DialogView: Win32 on Windows, headless elsewhere, so the lifecycle and its
// status codes behave the same on every platform.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "zvf/abi.h"

namespace zvf {

class DialogView {
public:
    virtual ~DialogView() = default;
    virtual void Show(bool show) = 0;
    virtual bool IsVisible() const = 0;
    virtual Rect WindowRect() const = 0;
    virtual void MoveTo(int32_t left, int32_t top) = 0;  // size and Z order unchanged
    virtual void* Handle() const = 0;
};

// Creates the view for a dialog template; null when the window cannot be made.
// Sizes are in dialog units.
std::unique_ptr<DialogView> CreateDialogView(uint32_t templateId, int32_t widthDlu, int32_t heightDlu, void* parent);

class SetupDialog {
public:
    SetupDialog(uint32_t templateId, int32_t widthDlu, int32_t heightDlu)
        : templateId_(templateId), widthDlu_(widthDlu), heightDlu_(heightDlu) {}
    virtual ~SetupDialog() = default;
    SetupDialog(const SetupDialog&) = delete;
    SetupDialog& operator=(const SetupDialog&) = delete;

    // Binds the dialog to its instance's host context; false fails OpenSetup
    // with 0x80004002.
    virtual bool Initialize(IHost* host, uint32_t context) {
        host_ = host;
        context_ = context;
        return true;
    }
    // RefreshSetup: reload every control from the instance's record.
    virtual void Reload() {}
    // Called each time the dialog is shown: refresh the shown copy.
    virtual void OnShown() {}
    // Whether the first show keeps the dialog inside the monitor's work area
    // (taskbar excluded) rather than its full rectangle.
    virtual bool PlacesInWorkArea() const { return false; }
    // IsSetupIdle while a dialog exists; by default idle when not visible.
    virtual int32_t IdleState() const { return view_ && view_->IsVisible() ? 0 : 1; }

    bool Create(void* parent);
    DialogView* View() const { return view_.get(); }
    void DestroyWindow() { view_.reset(); }
    uint32_t Context() const { return context_; }

protected:
    // Asks the host to redraw its preview after a parameter change.
    void NotifyChanged() const;

    mutable std::mutex lock_;  // guards the working copy and commits
    IHost* host_ = nullptr;
    uint32_t context_ = 0;

private:
    uint32_t templateId_;
    int32_t widthDlu_;
    int32_t heightDlu_;
    std::unique_ptr<DialogView> view_;
};

}  // namespace zvf
