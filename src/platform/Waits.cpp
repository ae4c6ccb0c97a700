#include "platform/Waits.h"

#include "platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace brennik {

namespace {

timespec TimeOf(int64_t lNanoseconds) {
    timespec time{};
    time.tv_sec = lNanoseconds / kNanosecondsOfSecond;
    time.tv_nsec = lNanoseconds % kNanosecondsOfSecond;
    return time;
}

} // namespace

int64_t MonotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * kNanosecondsOfSecond + now.tv_nsec;
}

int PollUntil(pollfd& watched, std::optional<int64_t> lDeadline) {
    return Resumed([&] {
        if (!lDeadline) {
            return ::ppoll(&watched, 1, nullptr, nullptr);
        }
        const timespec rest = TimeOf(std::max<int64_t>(*lDeadline - MonotonicNow(), 0));
        return ::ppoll(&watched, 1, &rest, nullptr);
    });
}

void SleepUntil(int64_t lDeadline) {
    const timespec until = TimeOf(lDeadline);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

} // namespace brennik
