#include "platform/DateTime.h"

#include <chrono>

namespace brennik {

DateTime DateTimeFromSeconds(int64_t lSeconds) noexcept {
    const std::chrono::sys_seconds point{std::chrono::seconds{lSeconds}};
    const auto day = std::chrono::floor<std::chrono::days>(point);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{point - day};
    return DateTime{static_cast<int>(date.year()),
                    static_cast<int32_t>(static_cast<unsigned>(date.month())),
                    static_cast<int32_t>(static_cast<unsigned>(date.day())),
                    static_cast<int32_t>(time.hours().count()),
                    static_cast<int32_t>(time.minutes().count()),
                    static_cast<int32_t>(time.seconds().count())};
}

int64_t DayNumber(const DateTime& date) noexcept {
    const std::chrono::year_month_day day{std::chrono::year{date.iYear},
                                          std::chrono::month{static_cast<unsigned>(date.iMonth)},
                                          std::chrono::day{static_cast<unsigned>(date.iDay)}};
    return std::chrono::sys_days{day}.time_since_epoch().count();
}

} // namespace brennik
