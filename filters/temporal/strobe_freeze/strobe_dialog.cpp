#include "strobe_dialog.h"

namespace zvf::filters {
namespace {

uint32_t InRange(const char* name, int64_t value) {
    const FieldDesc* f = FindField(kStrobeRecord, name);
    const auto lo = static_cast<int64_t>(f->min);
    const auto hi = static_cast<int64_t>(f->max);
    return static_cast<uint32_t>(value < lo ? lo : (value > hi ? hi : value));
}

}  // namespace

void StrobeSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = Snapshot(*record_);
    shown_ = working_;
}

void StrobeSetupDialog::Reload() {
    std::lock_guard<std::mutex> lock(lock_);
    working_ = Snapshot(*record_);
}

void StrobeSetupDialog::Write(uint32_t StrobeRecord::*field, uint32_t value) {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_.*field = value;
        StoreStrobeWord(record_->*field, value);
    }
    NotifyChanged();
}

void StrobeSetupDialog::SetInterval(int64_t frames) { Write(&StrobeRecord::interval, InRange("interval", frames)); }

void StrobeSetupDialog::SetDuration(int64_t frames) { Write(&StrobeRecord::duration, InRange("duration", frames)); }

void StrobeSetupDialog::SetFirstHalfMode(uint32_t mode) {
    if (mode == strobe_mode::kMove || mode == strobe_mode::kFirstFreeze) Write(&StrobeRecord::firstHalfMode, mode);
}

void StrobeSetupDialog::SetSecondHalfMode(uint32_t mode) {
    if (mode == strobe_mode::kSecondFreeze || mode == strobe_mode::kColorFrame)
        Write(&StrobeRecord::secondHalfMode, mode);
}

void StrobeSetupDialog::SetFrameColor(uint32_t colorref) { Write(&StrobeRecord::frameColor, colorref & 0x00FFFFFFu); }

bool StrobeSetupDialog::SwatchEnabled() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_.secondHalfMode == strobe_mode::kColorFrame;
}

uint32_t StrobeSetupDialog::SwatchColor() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_.frameColor;
}

void StrobeSetupDialog::Cancel() {
    {
        std::lock_guard<std::mutex> lock(lock_);
        working_ = shown_;
        StoreStrobeWord(record_->interval, shown_.interval);
        StoreStrobeWord(record_->duration, shown_.duration);
        StoreStrobeWord(record_->frameColor, shown_.frameColor);
        StoreStrobeWord(record_->firstHalfMode, shown_.firstHalfMode);
        StoreStrobeWord(record_->secondHalfMode, shown_.secondHalfMode);
    }
    NotifyChanged();
}

StrobeRecord StrobeSetupDialog::Working() const {
    std::lock_guard<std::mutex> lock(lock_);
    return working_;
}

StrobeRecord StrobeSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
