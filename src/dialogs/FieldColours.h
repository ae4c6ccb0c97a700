// Controls of the toolkit behind EnabledControl: SetControlEnabled enables or disables a field and
// gives it its background. The colours are roles of the palette, so that they fit a dark one too.
// Tests use it as it is.
#pragma once

#include "shell/SetControlEnabled.h"

class QWidget;

namespace brennik {

class FieldColours : public EnabledControl {
  public:
    /// The control is borrowed.
    explicit FieldColours(QWidget& control) : control_(control) {}

    void Enabled(bool bEnabled) override;
    void BackColor(uint32_t lColor) override;

  private:
    QWidget& control_;
};

} // namespace brennik
