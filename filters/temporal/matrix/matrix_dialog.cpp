#include "matrix_dialog.h"

#include <cstring>

namespace zvf::filters {

void MatrixSetupDialog::OnShown() {
    std::lock_guard<std::mutex> lock(lock_);
    shown_ = *record_;
}

bool MatrixSetupDialog::Apply(const MatrixRecord& next) {
    {
        std::lock_guard<std::mutex> lock(lock_);
        if (std::memcmp(record_, &next, sizeof next) == 0) return false;
        *record_ = next;
        *coefficients_ = DeriveMatrixCoefficients(next);
    }
    NotifyChanged();
    return true;
}

void MatrixSetupDialog::SetCell(uint32_t controlId, int32_t value) {
    if (controlId < kFirstCell || controlId >= kFirstCell + 9) return;
    MatrixRecord next = Current();
    next.kernel[controlId - kFirstCell] = value < kCellMin ? kCellMin : (value > kCellMax ? kCellMax : value);
    Apply(next);
}

void MatrixSetupDialog::SetNormalize(bool on) {
    MatrixRecord next = Current();
    next.normalize = on ? 1 : 0;
    Apply(next);
}

void MatrixSetupDialog::Cancel() { Apply(Shown()); }

MatrixRecord MatrixSetupDialog::Current() const {
    std::lock_guard<std::mutex> lock(lock_);
    return *record_;
}

MatrixRecord MatrixSetupDialog::Shown() const {
    std::lock_guard<std::mutex> lock(lock_);
    return shown_;
}

}  // namespace zvf::filters
