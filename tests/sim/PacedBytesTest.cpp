#include "sim/PacedBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using sim::Microseconds;
using sim::PacedBytes;

constexpr Microseconds kStart = 7'000'000;

TEST(PacedBytes, LetsEachByteThroughAtItsOwnEnd) {
    PacedBytes line(1000); // 10 ms a byte
    line.Put("abc", kStart);
    EXPECT_EQ(line.AllThrough(), kStart + 30'000);
    EXPECT_EQ(line.TakeThrough(kStart), "");
    EXPECT_EQ(line.TakeThrough(kStart + 9'999), "");
    EXPECT_EQ(line.TakeThrough(kStart + 10'000), "a");
    EXPECT_EQ(line.LastThrough(), kStart + 10'000);
    EXPECT_EQ(line.TakeThrough(kStart + 19'999), "");
    EXPECT_EQ(line.nUnderWay(), 2U);
    EXPECT_EQ(line.TakeThrough(kStart + 30'000), "bc");
    EXPECT_EQ(line.LastThrough(), kStart + 30'000);
    EXPECT_EQ(line.nUnderWay(), 0U);
    EXPECT_EQ(line.TakeThrough(kStart + 99'000), "");
}

TEST(PacedBytes, RoundsNoByteEarly) {
    PacedBytes line(9600); // 1041 and two thirds microseconds a byte
    line.Put("ab", kStart);
    EXPECT_EQ(line.TakeThrough(kStart + 1041), "");
    EXPECT_EQ(line.TakeThrough(kStart + 1042), "a");
    EXPECT_EQ(line.LastThrough(), kStart + 1042);
    EXPECT_EQ(line.TakeThrough(kStart + 2083), "");
    EXPECT_EQ(line.TakeThrough(kStart + 2084), "b");
}

TEST(PacedBytes, PutsBytesBehindThoseUnderWay) {
    PacedBytes line(1000);
    line.Put("ab", kStart);
    EXPECT_EQ(line.TakeThrough(kStart + 12'000), "a");
    line.Put("cd", kStart + 12'000);
    EXPECT_EQ(line.AllThrough(), kStart + 40'000);
    EXPECT_EQ(line.TakeThrough(kStart + 35'000), "bc");
    EXPECT_EQ(line.TakeThrough(kStart + 40'000), "d");
}

TEST(PacedBytes, BeginsAnewOnAnIdleLine) {
    PacedBytes line(1000);
    line.Put("a", kStart);
    EXPECT_EQ(line.TakeThrough(kStart + 15'000), "a");
    line.Put("b", kStart + 15'000);
    EXPECT_EQ(line.TakeThrough(kStart + 24'999), "");
    EXPECT_EQ(line.TakeThrough(kStart + 25'000), "b");
}

TEST(PacedBytes, BeginsAnewBehindBytesThatNobodyTook) {
    PacedBytes line(1000);
    line.Put("ab", kStart);
    line.Put("c", kStart + 50'000);
    EXPECT_EQ(line.nUnderWay(), 3U);
    EXPECT_EQ(line.TakeThrough(kStart + 59'999), "ab");
    EXPECT_LE(line.LastThrough(), kStart + 50'000);
    EXPECT_EQ(line.TakeThrough(kStart + 60'000), "c");
}

TEST(PacedBytes, TakesUpWhereTheLastByteOfTheOtherSideWasThrough) {
    // An answer that is noticed late still goes out from the moment at which it could.
    PacedBytes line(1000);
    line.Put("a", kStart);
    EXPECT_EQ(line.TakeThrough(kStart + 10'400), "a");
    line.Put("b", kStart + 10'100);
    EXPECT_EQ(line.AllThrough(), kStart + 20'100);
}

TEST(PacedBytes, LooksAtTheEndOfEachByteOfASlowLine) {
    PacedBytes line(1000);
    EXPECT_FALSE(line.NextLook());
    line.Put("ab", kStart);
    EXPECT_EQ(line.NextLook(), kStart + 10'000);
    line.TakeThrough(kStart + 10'300);
    EXPECT_EQ(line.NextLook(), kStart + 20'000);
    line.TakeThrough(kStart + 20'000);
    EXPECT_FALSE(line.NextLook());
}

TEST(PacedBytes, LooksOnceAMillisecondOnAFastLine) {
    PacedBytes line(1'000'000); // 100 bytes a millisecond
    line.Put(std::string(250, 'x'), kStart);
    EXPECT_EQ(line.NextLook(), kStart + 1'000);
    EXPECT_EQ(line.TakeThrough(kStart + 1'007).size(), 100U);
    EXPECT_EQ(line.NextLook(), kStart + 2'007);
    EXPECT_EQ(line.TakeThrough(kStart + 2'007).size(), 100U);
    EXPECT_EQ(line.NextLook(), kStart + 2'500) << "the last byte isn't kept waiting";
    EXPECT_EQ(line.TakeThrough(kStart + 2'500).size(), 50U);
}

TEST(PacedBytes, KeepsTheRateExactlyHoweverItIsLookedAt) {
    for (const int64_t lRate : {sim::kLowestRate, int64_t{115'200}, sim::kHighestRate}) {
        PacedBytes line(lRate);
        const std::string strPiece(1034, 'x');
        constexpr int64_t kPieces = 100;
        Microseconds now = kStart;
        size_t nTaken = 0;
        for (int64_t n = 0; n < kPieces; ++n) {
            line.Put(strPiece, now);
            while (line.nUnderWay() > strPiece.size()) { // never idle
                now = line.NextLook().value_or(0) + 137 % (n + 1);
                nTaken += line.TakeThrough(now).size();
            }
        }
        const int64_t lBits = kPieces * 1034 * 10;
        EXPECT_EQ(line.AllThrough(), kStart + (lBits * 1'000'000 + lRate - 1) / lRate) << lRate;
        nTaken += line.TakeThrough(line.AllThrough()).size();
        EXPECT_EQ(nTaken, strPiece.size() * kPieces);
    }
}

TEST(PacedBytes, KeepsTheOrderOfItsBytes) {
    PacedBytes line(115'200);
    std::string strPut;
    std::string strTaken;
    Microseconds now = kStart;
    for (int n = 0; n < 300; ++n) {
        const std::string strPiece(static_cast<size_t>(n % 50), static_cast<char>(n));
        line.Put(strPiece, now);
        strPut += strPiece;
        now += 1'700;
        strTaken += line.TakeThrough(now);
    }
    strTaken += line.TakeThrough(line.AllThrough());
    EXPECT_EQ(strTaken, strPut);
}

TEST(PacedBytes, BearsALineThatWasIdleForYears) {
    PacedBytes line(sim::kHighestRate);
    line.Put("a", kStart);
    constexpr Microseconds kYears = Microseconds{100} * 365 * 86'400 * 1'000'000;
    EXPECT_EQ(line.TakeThrough(kStart + kYears), "a");
    EXPECT_EQ(line.TakeThrough(kStart + 2 * kYears), "");
    line.Put("b", kStart + 2 * kYears);
    EXPECT_EQ(line.AllThrough(), kStart + 2 * kYears + 3);
}

} // namespace
} // namespace brennik
