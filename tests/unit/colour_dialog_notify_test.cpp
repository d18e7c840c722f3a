// The Monotone and Color Balance dialogs ask the host to redraw its preview,
// with the instance's context value, for every change that reaches the
// record, and only then.
#include <gtest/gtest.h>

#include <vector>

#include "colour/color_balance/color_balance_dialog.h"
#include "colour/monotone/monotone_dialog.h"
#include "module_state.h"

namespace zvf::filters {
namespace {

class CountingSharedObject final : public ISharedHostObject {
public:
    Status ZVF_CALL QueryInterface(const Guid*, void** out) override {
        *out = nullptr;
        return status::no_interface;
    }
    uint32_t ZVF_CALL AddRef() override { return 2; }
    uint32_t ZVF_CALL Release() override { return 1; }
    Status ZVF_CALL ParametersChanged(uint32_t context) override {
        contexts.push_back(context);
        return status::ok;
    }
    std::vector<uint32_t> contexts;
};

// Installs the counting object as the module's shared host object for one test.
class DialogNotify : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = SharedHostSlot();
        SharedHostSlot() = &shared;
    }
    void TearDown() override { SharedHostSlot() = saved_; }
    CountingSharedObject shared;

private:
    ISharedHostObject* saved_ = nullptr;
};

TEST_F(DialogNotify, MonotoneRedrawsForEveryChangeAndCancel) {
    MonotoneRecord record;
    MonotoneSetupDialog dialog(&record);
    ASSERT_TRUE(dialog.Initialize(nullptr, 41));
    dialog.SetComponent(0, 10);
    dialog.SetComponent(1, 20);
    dialog.SetComponent(7, 20);  // no such control: nothing changes
    dialog.Ok();                 // the record already shows the change
    dialog.Cancel();
    EXPECT_EQ(shared.contexts, (std::vector<uint32_t>{41, 41, 41}));
}

TEST_F(DialogNotify, ColorBalanceRedrawsForSlidersSafeColourDefaultAndCancel) {
    ColorBalanceRecord record;
    ColorBalanceSetupDialog dialog(&record);
    ASSERT_TRUE(dialog.Initialize(nullptr, 7));
    dialog.SetSlider(BalanceSlider::Chroma, 3);
    dialog.SetSlider(BalanceSlider::BlueYellow, -3);
    dialog.SetSafeColor(true);
    dialog.Default();
    dialog.Ok();
    dialog.Cancel();
    EXPECT_EQ(shared.contexts, (std::vector<uint32_t>{7, 7, 7, 7, 7}));
}

}  // namespace
}  // namespace zvf::filters
