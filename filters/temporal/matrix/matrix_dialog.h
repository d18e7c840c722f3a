// MatrixSetupDialog, platform-free: nine kernel cells and the normalise box
// write straight into the instance's record and re-derive its coefficients,
// so the preview follows every change; Cancel puts back the values the
// dialog was last shown with.
#pragma once

#include <cstdint>

#include "matrix_coefficients.h"
#include "matrix_record.h"
#include "zvf/setup_dialog.h"

namespace zvf::filters {

class MatrixSetupDialog final : public SetupDialog {
public:
    static constexpr uint32_t kTemplate = 11007;
    static constexpr uint32_t kFirstCell = 11091;  // id - 11091 = 3 x row + column
    static constexpr uint32_t kNormalizeBox = 11109;
    static constexpr int32_t kCellMin = -255;
    static constexpr int32_t kCellMax = 255;

    MatrixSetupDialog(MatrixRecord* record, MatrixCoefficients* coefficients)
        : SetupDialog(kTemplate, 170, 112), record_(record), coefficients_(coefficients), shown_(*record) {}

    void OnShown() override;

    // An edit control of a cell, by control id; clamped to -255..255. Other
    // ids are ignored.
    void SetCell(uint32_t controlId, int32_t value);
    void SetNormalize(bool on);
    // OK keeps what the record holds; Cancel restores the shown copy.
    void Cancel();

    MatrixRecord Current() const;
    MatrixRecord Shown() const;

private:
    // Writes `next` and its coefficients if it differs; true when it did.
    bool Apply(const MatrixRecord& next);

    MatrixRecord* record_;
    MatrixCoefficients* coefficients_;
    MatrixRecord shown_;
};

}  // namespace zvf::filters
