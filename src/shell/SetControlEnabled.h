// How the windows enable and disable a field: its state and its background go together.
// Free of any toolkit: an adaptor over a control of the windows stands behind EnabledControl for
// real, tests put a plain record there.
#pragma once

#include <cstdint>

namespace brennik {

/// System colours, as the high bit marks them.
inline constexpr uint32_t kWindowBackground = 0x80000005;
inline constexpr uint32_t kButtonFace = 0x8000000F;

class EnabledControl {
  public:
    virtual ~EnabledControl() = default;

    virtual void Enabled(bool bEnabled) = 0;
    virtual void BackColor(uint32_t lColor) = 0;
};

/// Enables the control on a window's background, or disables it on a button's face.
void SetControlEnabled(bool bEnabled, EnabledControl& oControl);

} // namespace brennik
