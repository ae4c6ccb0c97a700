#include "platform/LinuxClock.h"

#include "platform/Waits.h"

#include <clocale>
#include <cmath>
#include <ctime>
#include <langinfo.h>
#include <locale.h>
#include <sys/prctl.h>

namespace brennik {

namespace {

constexpr int64_t kSecondsOfMinute = 60;
constexpr int64_t kSecondsOfDay = 86400;

/// How late the kernel may end a wait to save a wake-up. Left to itself it takes 50 us, and a frame
/// on a serial line waits twice.
constexpr unsigned long kTimerSlackNanoseconds = 1;

timespec Now(clockid_t clock = CLOCK_REALTIME) {
    timespec now{};
    clock_gettime(clock, &now);
    return now;
}

int64_t FlooredDivision(int64_t lDividend, int64_t lDivisor) {
    const int64_t lQuotient = lDividend / lDivisor;
    return lDividend % lDivisor < 0 ? lQuotient - 1 : lQuotient;
}

int32_t LookUpOffset(int64_t lSeconds) {
    tzset(); // sees a change of the zone while the program runs
    const time_t point = static_cast<time_t>(lSeconds);
    tm local{};
    return localtime_r(&point, &local) == nullptr ? 0 : static_cast<int32_t>(local.tm_gmtoff);
}

} // namespace

LinuxClock::LinuxClock() {
    static_cast<void>(prctl(PR_SET_TIMERSLACK, kTimerSlackNanoseconds)); // a wish
}

float LinuxClock::SecondsSinceMidnight() {
    const timespec now = Now();
    return SecondsOfDay(now.tv_sec + OffsetAt(now.tv_sec), now.tv_nsec);
}

DateTime LinuxClock::LocalNow() {
    // Whole seconds are all that is told: the time of the system's last tick is a third of the
    // cost.
    const int64_t lSeconds = Now(CLOCK_REALTIME_COARSE).tv_sec;
    return DateTimeFromSeconds(lSeconds + OffsetAt(lSeconds));
}

int32_t LinuxClock::LocalOffsetSeconds() {
    return OffsetAt(Now().tv_sec);
}

std::string LinuxClock::MonthName(int32_t iMonth) {
    if (iMonth < 1 || iMonth > 12) {
        return {};
    }
    if (monthNames_[0].empty()) {
        // The process keeps the plain locale: numbers must never follow the user's.
        locale_t locale = newlocale(LC_TIME_MASK, "", nullptr);
        if (locale == nullptr) {
            locale = newlocale(LC_TIME_MASK, "C", nullptr);
        }
        constexpr nl_item kItems[] = {ABMON_1, ABMON_2, ABMON_3, ABMON_4,  ABMON_5,  ABMON_6,
                                      ABMON_7, ABMON_8, ABMON_9, ABMON_10, ABMON_11, ABMON_12};
        for (size_t n = 0; n < monthNames_.size(); ++n) {
            monthNames_[n] = nl_langinfo_l(kItems[n], locale);
        }
        freelocale(locale);
    }
    return monthNames_[static_cast<size_t>(iMonth - 1)];
}

void LinuxClock::Sleep(int32_t lMilliseconds) {
    if (lMilliseconds > 0) {
        SleepUntil(MonotonicNow() + lMilliseconds * kNanosecondsOfMillisecond);
    }
}

int32_t LinuxClock::OffsetAt(int64_t lSeconds) {
    const int64_t lMinute = FlooredDivision(lSeconds, kSecondsOfMinute);
    const int64_t lKnown = lMinuteAndOffset_.load(std::memory_order_relaxed);
    if (lKnown != -1 && (lKnown >> 32) == lMinute) {
        return static_cast<int32_t>(static_cast<uint32_t>(lKnown));
    }
    const int32_t lOffset = LookUpOffset(lSeconds);
    const uint64_t lKept = (static_cast<uint64_t>(lMinute) << 32) | static_cast<uint32_t>(lOffset);
    lMinuteAndOffset_.store(static_cast<int64_t>(lKept), std::memory_order_relaxed);
    return lOffset;
}

float LinuxClock::SecondsOfDay(int64_t lLocalSeconds, int64_t lNanoseconds) {
    const int64_t lDay = FlooredDivision(lLocalSeconds, kSecondsOfDay);
    const auto lSeconds = static_cast<double>(lLocalSeconds - lDay * kSecondsOfDay);
    const auto fSeconds = static_cast<float>(lSeconds + static_cast<double>(lNanoseconds) * 1e-9);
    // Single precision would round the last milliseconds of a day up to a time that no clock shows.
    constexpr auto fDay = static_cast<float>(kSecondsOfDay);
    return fSeconds < fDay ? fSeconds : std::nextafter(fDay, 0.0F);
}

} // namespace brennik
