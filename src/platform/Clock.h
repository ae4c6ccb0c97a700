// The clock of the system: time of day, date, and sleeping.
// For real it stands on the operating system's clock and time zone (LinuxClock); tests put the
// virtual clock of the simulated host in its place, whose Sleep advances it.
#pragma once

#include "platform/DateTime.h"

#include <cstdint>
#include <string>

namespace brennik {

class Clock {
  public:
    virtual ~Clock() = default;

    /// Seconds since local midnight, single precision: 0 to just below 86400. Wraps at midnight.
    virtual float SecondsSinceMidnight() = 0;

    /// The current local date and time.
    virtual DateTime LocalNow() = 0;

    /// Seconds that local time is ahead of universal time at this moment.
    virtual int32_t LocalOffsetSeconds() = 0;

    /// The short name of a month (1 to 12) in the user's LC_TIME; "Nov" in the C locale.
    virtual std::string MonthName(int32_t iMonth) = 0;

    /// Blocks the thread for so many milliseconds; 0 or less returns at once. Interrupted sleeps
    /// are resumed.
    virtual void Sleep(int32_t lMilliseconds) = 0;
};

/// The same operations of the current host's clock.
float SecondsSinceMidnight();
DateTime LocalNow();
void Sleep(int32_t lMilliseconds);

} // namespace brennik
