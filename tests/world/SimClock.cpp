#include "tests/world/SimClock.h"

#include <algorithm>

namespace brennik::world {

namespace {

constexpr Microseconds kDay = 86400 * kSecond;

/// The whole part of a quotient that rounds down, so that days before 1970 count too.
constexpr Microseconds FloorDivide(Microseconds value, Microseconds divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

/// The largest single below 86400: the last moments of a day would round up to the next one.
constexpr float kLastMoment = 86399.9921875F;

} // namespace

SimClock::SimClock(SimTimeline& timeline, CallLedger& ledger)
    : timeline_(timeline), ledger_(ledger), months_{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"} {
    SetLocal(DateTime{2026, 11, 14, 12, 0, 0});
}

float SimClock::SecondsSinceMidnight() {
    ledger_.Enter();
    const auto dSeconds = static_cast<double>(PeekMicrosecondOfDay()) / 1e6;
    return std::min(static_cast<float>(dSeconds), kLastMoment);
}

DateTime SimClock::LocalNow() {
    ledger_.Enter();
    return PeekLocal();
}

int32_t SimClock::LocalOffsetSeconds() {
    ledger_.Enter();
    return lOffset_;
}

std::string SimClock::MonthName(int32_t iMonth) {
    ledger_.Enter();
    return iMonth >= 1 && iMonth <= 12 ? months_[static_cast<size_t>(iMonth - 1)] : std::string();
}

void SimClock::Sleep(int32_t lMilliseconds) {
    ledger_.Enter();
    if (ledger_.Recording()) {
        ledger_.Record("Sleep " + std::to_string(lMilliseconds));
    }
    if (lMilliseconds > 0) {
        timeline_.Advance(lMilliseconds * kMillisecond);
    }
}

void SimClock::SetLocal(const DateTime& local, Microseconds lMicroseconds) {
    const int64_t lSecondOfDay = (int64_t{local.iHour} * 60 + local.iMinute) * 60 + local.iSecond;
    base_ = DayNumber(local) * kDay + lSecondOfDay * kSecond + lMicroseconds - timeline_.Now();
}

void SimClock::SetTimeOfDay(Microseconds sinceMidnight) {
    base_ += sinceMidnight - PeekMicrosecondOfDay();
}

void SimClock::SetMonthName(int32_t iMonth, const std::string& strName) {
    months_.at(static_cast<size_t>(iMonth - 1)) = strName;
}

DateTime SimClock::PeekLocal() const {
    return DateTimeFromSeconds(FloorDivide(LocalMicroseconds(), kSecond));
}

Microseconds SimClock::PeekMicrosecondOfDay() const {
    return LocalMicroseconds() - FloorDivide(LocalMicroseconds(), kDay) * kDay;
}

int64_t SimClock::PeekEpochSeconds() const {
    return FloorDivide(LocalMicroseconds(), kSecond) - lOffset_;
}

} // namespace brennik::world
