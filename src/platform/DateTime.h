// A civil date and time of whole seconds, and its conversion from seconds since the epoch.
// Plain arithmetic: no time zone and no locale. The clock and the files of the seam deliver it.
#pragma once

#include <compare>
#include <cstdint>

namespace brennik {

struct DateTime {
    int32_t iYear = 0;   ///< four digits
    int32_t iMonth = 0;  ///< 1 to 12
    int32_t iDay = 0;    ///< 1 to 31
    int32_t iHour = 0;   ///< 0 to 23
    int32_t iMinute = 0; ///< 0 to 59
    int32_t iSecond = 0; ///< 0 to 59

    auto operator<=>(const DateTime&) const = default;
};

/// The date and time that stand `lSeconds` after 1 January 1970, 00:00:00, without any offset.
DateTime DateTimeFromSeconds(int64_t lSeconds) noexcept;

/// Whole days from 1 January 1970 to the date alone; the time of day plays no part.
int64_t DayNumber(const DateTime& date) noexcept;

} // namespace brennik
