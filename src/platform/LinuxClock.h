// The clock of the operating system in the local time zone, cheap enough to be asked at every
// turn of a waiting loop: the zone's offset is looked up once a minute.
// Tests put the virtual clock of the simulated host in its place.
#pragma once

#include "platform/Clock.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

namespace brennik {

class LinuxClock : public Clock {
  public:
    /// Has the waits of the calling thread, and of those it starts, end on time.
    LinuxClock();

    float SecondsSinceMidnight() override;
    DateTime LocalNow() override;
    int32_t LocalOffsetSeconds() override;
    std::string MonthName(int32_t iMonth) override;
    void Sleep(int32_t lMilliseconds) override;

    /// Seconds that local time is ahead at the moment that lies so many seconds after the epoch.
    /// The time zone is looked up once for each minute, since zones change at whole minutes only.
    int32_t OffsetAt(int64_t lSeconds);

    /// The time of day of a moment in local time, in single precision and always below 86400.
    static float SecondsOfDay(int64_t lLocalSeconds, int64_t lNanoseconds);

  private:
    /// The minute since the epoch in the upper half, the offset in the lower one.
    std::atomic<int64_t> lMinuteAndOffset_{-1};
    std::array<std::string, 12> monthNames_; ///< filled at their first use
};

} // namespace brennik
