#include "platform/LinuxClock.h"

#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <sys/prctl.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace system_tests;

/// What the body gives in a process of the time zone, told in the rules' own form.
std::string InZone(const char* strZone, const std::function<std::string()>& body) {
    return ReportOfChild([&] {
        ::setenv("TZ", strZone, 1);
        return body();
    });
}

constexpr const char* kMiddleEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr int64_t kSummerBegins = 1711846800; // 31 March 2024, 01:00:00 universal time
constexpr int64_t kSummerEnds = 1729990800;   // 27 October 2024, 01:00:00 universal time

TEST(LinuxClock, ChangesItsOffsetAtTheVerySecond) {
    EXPECT_EQ(InZone(kMiddleEurope,
                     [] {
                         LinuxClock clock;
                         std::string strOffsets;
                         for (const int64_t lAt :
                              {kSummerBegins - 1, kSummerBegins, kSummerBegins + 1, kSummerEnds - 1,
                               kSummerEnds, kSummerEnds - 1, kSummerBegins - 61}) {
                             strOffsets += std::to_string(clock.OffsetAt(lAt)) + " ";
                         }
                         return strOffsets;
                     }),
              "3600 7200 7200 7200 3600 7200 3600 ");
}

TEST(LinuxClock, KnowsOffsetsBehindUniversalTimeAndTimesBeforeTheEpoch) {
    EXPECT_EQ(InZone("XYZ3:30",
                     [] {
                         LinuxClock clock;
                         return std::to_string(clock.OffsetAt(0)) + " " +
                                std::to_string(clock.OffsetAt(-1)) + " " +
                                std::to_string(clock.OffsetAt(-1)) + " " +
                                std::to_string(clock.OffsetAt(-100000));
                     }),
              "-12600 -12600 -12600 -12600");
}

TEST(LinuxClock, HasWaitsEndOnTime) {
    EXPECT_EQ(ReportOfChild([] {
                  prctl(PR_SET_TIMERSLACK, 50000);
                  const LinuxClock clock;
                  return std::to_string(prctl(PR_GET_TIMERSLACK));
              }),
              "1");
}

TEST(LinuxClock, ShowsLocalTime) {
    for (const char* strZone : {"UTC0", "XYZ3:30", "ABC-13:45"}) {
        EXPECT_EQ(
            InZone(strZone,
                   [] {
                       LinuxClock clock;
                       const time_t before = ::time(nullptr);
                       const DateTime now = clock.LocalNow();
                       const float fNow = clock.SecondsSinceMidnight();
                       const time_t after = ::time(nullptr) + 1;
                       tm local{};
                       localtime_r(&before, &local);
                       const DateTime first{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                                            local.tm_hour,        local.tm_min,     local.tm_sec};
                       localtime_r(&after, &local);
                       const DateTime last{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                                           local.tm_hour,        local.tm_min,     local.tm_sec};
                       const auto fOfDay =
                           static_cast<float>(now.iHour * 3600 + now.iMinute * 60 + now.iSecond);
                       const bool bSame = fNow >= fOfDay && fNow - fOfDay < 2;
                       const bool bWrapped = fNow < 2 && fOfDay > 86390;
                       return std::string(first <= now && now <= last ? "in time, " : "off, ") +
                              (bSame || bWrapped ? "in step, " : "out of step, ") +
                              std::to_string(clock.LocalOffsetSeconds());
                   }),
            std::string("in time, in step, ") +
                (strZone[0] == 'U' ? "0" : (strZone[0] == 'X' ? "-12600" : "49500")))
            << strZone;
    }
}

TEST(LinuxClock, SleepsItsWholeTime) {
    LinuxClock clock;
    const long long lBegin = MonotonicNanoseconds();
    clock.Sleep(20);
    EXPECT_GE(MonotonicNanoseconds() - lBegin, 20000000);
}

TEST(LinuxClock, InterruptedSleepsAreResumed) {
    EXPECT_EQ(ReportOfChild([] {
                  LinuxClock clock;
                  const Interruptions interruptions;
                  const long long lBegin = MonotonicNanoseconds();
                  clock.Sleep(100);
                  const bool bLong = MonotonicNanoseconds() - lBegin >= 100000000;
                  return std::string(bLong ? "whole" : "short") +
                         (Interruptions::Count() > 0 ? " interrupted" : " quiet");
              }),
              "whole interrupted");
}

TEST(LinuxClock, NoSleepReturnsAtOnce) {
    EXPECT_EQ(ReportOfChild([] {
                  LinuxClock clock;
                  clock.Sleep(0);
                  clock.Sleep(-1);
                  clock.Sleep(-2147483647 - 1);
                  return std::string("back");
              }),
              "back");
}

std::string MonthsIn(const std::string& strLocale) {
    return ReportOfChild([&] {
        ::unsetenv("LC_ALL");
        ::setenv("LC_TIME", strLocale.c_str(), 1);
        LinuxClock clock;
        std::string strMonths;
        for (int32_t iMonth = 0; iMonth <= 13; ++iMonth) {
            strMonths += clock.MonthName(iMonth) + " ";
        }
        return strMonths;
    });
}

constexpr const char* kPlainMonths = " Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec  ";

TEST(LinuxClock, MonthsHaveTheirShortNames) {
    EXPECT_EQ(MonthsIn("C"), kPlainMonths);
}

TEST(LinuxClock, ALocaleThatIsNotThereReadsAsThePlainOne) {
    EXPECT_EQ(MonthsIn("xx_XX.UTF-8"), kPlainMonths);
}

TEST(LinuxClock, MonthsFollowTheUsersLocaleAndNumbersDoNot) {
    const TempFolder folder;
    const std::string strMake =
        "localedef -i de_DE -f UTF-8 " + (folder / "de_DE.UTF-8") + " 2>/dev/null >/dev/null";
    static_cast<void>(!std::system(strMake.c_str())); // warnings make it fail, too
    ASSERT_EQ(::access((folder / "de_DE.UTF-8/LC_TIME").c_str(), R_OK), 0)
        << "the package \"locales\" is needed";
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  ::setenv("LOCPATH", folder.strPath().c_str(), 1);
                  ::setenv("LC_ALL", "de_DE.UTF-8", 1);
                  LinuxClock clock;
                  const std::string strMonths =
                      clock.MonthName(3) + " " + clock.MonthName(5) + " " + clock.MonthName(12);
                  const std::string strOurs = std::localeconv()->decimal_point;
                  std::setlocale(LC_ALL, "");
                  return strMonths + ", " + strOurs + " and not " +
                         std::localeconv()->decimal_point;
              }),
              "M\xC3\xA4r Mai Dez, . and not ,");
}

} // namespace
} // namespace brennik
