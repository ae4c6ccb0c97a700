// The virtual time of the simulated host: whole microseconds, and the events that are due.
// Nothing real stands behind it; the clock, the network and the fixtures of the tests share one.
// Events run in the order of their times, equal times in the order in which they were planned.
#pragma once

#include "sim/FarEnd.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace brennik::world {

using sim::Microseconds;

inline constexpr Microseconds kMillisecond = 1000;
inline constexpr Microseconds kSecond = 1000 * kMillisecond;
inline constexpr Microseconds kNever = INT64_MAX;

class SimTimeline {
  public:
    /// Microseconds since the host was made; starts at 0 and never goes back.
    Microseconds Now() const { return now_; }

    /// Runs the action once, `delay` microseconds from now (a negative delay counts as 0), when
    /// time is moved there. Actions may plan further actions and may move time themselves.
    void At(Microseconds delay, std::function<void()> action);

    /// The same at an absolute moment; one that is past runs at the next move of time.
    void AtMoment(Microseconds moment, std::function<void()> action);

    /// Moves time on and runs everything due on the way, each at its own moment.
    void Advance(Microseconds duration) {
        AdvanceTo(duration < kNever - now_ ? now_ + duration : kNever);
    }
    void AdvanceTo(Microseconds moment) {
        if (!events_.empty() && events_.front().moment <= moment) {
            RunUntil(moment);
        }
        if (now_ < moment) {
            now_ = moment;
        }
    }

    /// Moves time to the next event and runs it, if that lies no later than `limit`; otherwise
    /// moves time to `limit` and gives false. For waits that look after each event.
    bool Step(Microseconds limit);

    /// Events that are planned and have not run.
    size_t Pending() const { return events_.size(); }

  private:
    struct Event {
        Microseconds moment;
        uint64_t nOrder;
        std::function<void()> action;
    };
    static bool Later(const Event& a, const Event& b) {
        return a.moment != b.moment ? a.moment > b.moment : a.nOrder > b.nOrder;
    }
    void RunUntil(Microseconds moment);
    void RunFront();

    Microseconds now_ = 0;
    uint64_t nPlanned_ = 0;
    std::vector<Event> events_; // a heap whose front is the next to run
};

} // namespace brennik::world
