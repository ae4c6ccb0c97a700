// The clock of the simulated host: a civil date and time over the virtual timeline.
// Sleep moves the timeline on and runs what is due; nothing sleeps for real.
#pragma once

#include "platform/Clock.h"
#include "tests/world/CallLedger.h"

#include <array>
#include <string>

namespace brennik::world {

class SimClock : public Clock {
  public:
    /// 14 November 2026, 12:00:00, local time being universal time.
    SimClock(SimTimeline& timeline, CallLedger& ledger);

    float SecondsSinceMidnight() override;
    DateTime LocalNow() override;
    int32_t LocalOffsetSeconds() override;
    std::string MonthName(int32_t iMonth) override;
    void Sleep(int32_t lMilliseconds) override;

    // What follows is for tests; it costs nothing and counts nowhere.

    /// Makes it that local date and time now, to the microsecond.
    void SetLocal(const DateTime& local, Microseconds lMicroseconds = 0);
    /// Makes it so many microseconds after midnight of the current local day.
    void SetTimeOfDay(Microseconds sinceMidnight);
    /// The zone: seconds that local time is ahead. The local time of now stays.
    void SetLocalOffsetSeconds(int32_t lSeconds) { lOffset_ = lSeconds; }
    void SetMonthName(int32_t iMonth, const std::string& strName);

    DateTime PeekLocal() const;
    Microseconds PeekMicrosecondOfDay() const;
    /// Whole seconds since the epoch, universal time.
    int64_t PeekEpochSeconds() const;

  private:
    Microseconds LocalMicroseconds() const { return base_ + timeline_.Now(); }

    SimTimeline& timeline_;
    CallLedger& ledger_;
    Microseconds base_ = 0; // local time of the moment 0 of the timeline, since the epoch
    int32_t lOffset_ = 0;
    std::array<std::string, 12> months_;
};

} // namespace brennik::world
