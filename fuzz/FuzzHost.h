// The host of fuzz targets: the real one, but for a clock that moves on with every look at it, so
// that no wait takes time. No target opens a file, a socket or a port.
#pragma once

#include "platform/Host.h"

#include <string>

namespace brennik::fuzz {

/// Each look at the time of day takes 50 ms, so that every wait ends after few passes.
class HastyClock : public Clock {
  public:
    float SecondsSinceMidnight() override {
        lMilliseconds_ += 50;
        return static_cast<float>(lMilliseconds_) / 1000.0F;
    }
    DateTime LocalNow() override { return {2026, 11, 14, 12, 0, 0}; }
    int32_t LocalOffsetSeconds() override { return 0; }
    std::string MonthName(int32_t) override { return "Nov"; }
    void Sleep(int32_t lMilliseconds) override { lMilliseconds_ += lMilliseconds; }
    void Restart() { lMilliseconds_ = 0; }

  private:
    int64_t lMilliseconds_ = 0;
};

/// The real host with a hasty clock, in force as long as it lives.
class FuzzHost {
  public:
    HastyClock clock;

  private:
    Host host_{clock,
               RealHost().sockets,
               RealHost().comPorts,
               RealHost().files,
               RealHost().profileStrings,
               RealHost().processes,
               RealHost().ostRtl};
    ScopedHost scoped_{host_};
};

} // namespace brennik::fuzz
