#include "shell/SetControlEnabled.h"

namespace brennik {

void SetControlEnabled(bool bEnabled, EnabledControl& oControl) {
    oControl.Enabled(bEnabled);
    oControl.BackColor(bEnabled ? kWindowBackground : kButtonFace);
}

} // namespace brennik
