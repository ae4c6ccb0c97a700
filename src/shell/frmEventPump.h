// What PumpEvents does while there are windows: it lets the toolkit handle what is pending, so that
// the window lives although the engine runs below it on the same stack.
// For real it measures with the toolkit's own timer; tests hand in the time.
#pragma once

#include <cstdint>
#include <functional>

namespace brennik {

/// Often enough for the eye and the cancel button, too seldom to slow the engine down.
inline constexpr int64_t kLeastPumpInterval = 5; // ms

class frmEventPump {
  public:
    /// now gives milliseconds on a clock that only goes forward.
    explicit frmEventPump(std::function<int64_t()> now = ForwardClock());

    /// Handles all pending events, unless it was done less than kLeastPumpInterval ago. A call from
    /// inside itself does nothing.
    void Pump();

  private:
    static std::function<int64_t()> ForwardClock();

    std::function<int64_t()> now_;
    int64_t lNextPump_ = INT64_MIN;
    bool bPumping_ = false;
};

} // namespace brennik
