#include "tests/world/SimTimeline.h"

#include <algorithm>
#include <utility>

namespace brennik::world {

void SimTimeline::At(Microseconds delay, std::function<void()> action) {
    AtMoment(now_ + std::max<Microseconds>(delay, 0), std::move(action));
}

void SimTimeline::AtMoment(Microseconds moment, std::function<void()> action) {
    events_.push_back(Event{std::max(moment, now_), nPlanned_++, std::move(action)});
    std::push_heap(events_.begin(), events_.end(), Later);
}

void SimTimeline::RunFront() {
    std::pop_heap(events_.begin(), events_.end(), Later);
    Event event = std::move(events_.back());
    events_.pop_back();
    now_ = std::max(now_, event.moment);
    event.action();
}

void SimTimeline::RunUntil(Microseconds moment) {
    while (!events_.empty() && events_.front().moment <= moment) {
        RunFront();
    }
}

bool SimTimeline::Step(Microseconds limit) {
    if (!events_.empty() && events_.front().moment <= limit) {
        RunFront();
        return true;
    }
    now_ = std::max(now_, limit);
    return false;
}

} // namespace brennik::world
