#include "shell/SetControlEnabled.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

class RecordedControl : public EnabledControl {
  public:
    void Enabled(bool bValue) override { bEnabled = bValue; }
    void BackColor(uint32_t lValue) override { lColor = lValue; }

    bool bEnabled = false;
    uint32_t lColor = 0;
};

TEST(SetControlEnabled, GivesAnEnabledControlTheBackgroundOfAWindow) {
    RecordedControl control;
    SetControlEnabled(true, control);
    EXPECT_TRUE(control.bEnabled);
    EXPECT_EQ(control.lColor, 0x80000005u);
}

TEST(SetControlEnabled, GivesADisabledControlTheFaceOfAButton) {
    RecordedControl control;
    control.bEnabled = true;
    SetControlEnabled(false, control);
    EXPECT_FALSE(control.bEnabled);
    EXPECT_EQ(control.lColor, 0x8000000Fu);
}

} // namespace
} // namespace brennik
