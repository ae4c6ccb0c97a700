#include "tests/world/SeededMangler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <string>

namespace brennik::world {
namespace {

/// What comes out of a wire, with its cuts and delays.
class NotingOutlet : public Outlet {
  public:
    void Put(std::string_view strBytes, Microseconds delay) override {
        strAll += strBytes;
        strNotes += std::string(strBytes) + "@" + std::to_string(delay) + ";";
        ++nPieces;
        longest = std::max(longest, delay);
    }
    std::string strAll;
    std::string strNotes;
    int nPieces = 0;
    Microseconds longest = 0;
};

TEST(SeededMangler, PassesEverythingWithoutRates) {
    SeededMangler mangler(1, {}, {});
    NotingOutlet outlet;
    mangler.Pass(Direction::ToServer, "hello", outlet);
    EXPECT_EQ(outlet.strNotes, "hello@0;");
    EXPECT_EQ(mangler.nHarmed(), 0);
}

TEST(SeededMangler, TheSameSeedGivesTheSameDamage) {
    const MangleRates rates{
        .iSplit = 2000, .iDelay = 3000, .iDrop = 500, .iDouble = 500, .iFlip = 500};
    const std::string strBytes(500, 'x');
    std::array<std::string, 3> notes;
    const std::array<uint64_t, 3> seeds{7, 7, 8};
    for (size_t nRun = 0; nRun < seeds.size(); ++nRun) {
        SeededMangler mangler(seeds[nRun], rates, {});
        NotingOutlet outlet;
        mangler.Pass(Direction::ToServer, strBytes, outlet);
        EXPECT_GT(mangler.nHarmed(), 0);
        EXPECT_GT(outlet.nPieces, 20);
        EXPECT_GT(outlet.longest, 0);
        EXPECT_LE(outlet.longest, 20 * kMillisecond);
        notes[nRun] = outlet.strNotes;
    }
    EXPECT_EQ(notes[0], notes[1]);
    EXPECT_NE(notes[0], notes[2]);
}

struct DamageCase {
    const char* strWhat;
    MangleRates rates;
    std::string strExpected;
};

TEST(SeededMangler, EachDamageIsWhatItIsCalled) {
    for (const DamageCase& damage : {DamageCase{"drop", {.iDrop = 10000}, ""},
                                     DamageCase{"double", {.iDouble = 10000}, "aabb"},
                                     DamageCase{"split", {.iSplit = 10000}, "ab"}}) {
        SeededMangler mangler(3, damage.rates, {});
        NotingOutlet outlet;
        mangler.Pass(Direction::ToServer, "ab", outlet);
        EXPECT_EQ(outlet.strAll, damage.strExpected) << damage.strWhat;
        // The other direction has rates of its own.
        NotingOutlet other;
        mangler.Pass(Direction::ToClient, "ab", other);
        EXPECT_EQ(other.strNotes, "ab@0;") << damage.strWhat;
    }
    SeededMangler mangler(3, {.iFlip = 10000}, {});
    NotingOutlet outlet;
    mangler.Pass(Direction::ToServer, std::string(1, '\0'), outlet);
    ASSERT_EQ(outlet.strAll.size(), 1U);
    EXPECT_EQ(std::popcount(static_cast<unsigned char>(outlet.strAll[0])), 1);
}

TEST(DrawnRates, HarmNothingOnACleanWireAndAtMostTheWorstOnAHarmfulOne) {
    bool bHarmed = false;
    bool bSlow = false;
    for (uint64_t nSeed = 1; nSeed <= 300; ++nSeed) {
        SeededNumbers numbers(nSeed);
        const MangleRates clean = DrawnRates(numbers, false, 60);
        EXPECT_EQ(clean.iDrop + clean.iDouble + clean.iFlip, 0);
        EXPECT_LE(clean.longestDelay, 60 * kMillisecond);
        const MangleRates harmful = DrawnRates(numbers, true, 60);
        for (const int32_t iRate : {harmful.iDrop, harmful.iDouble, harmful.iFlip}) {
            EXPECT_GE(iRate, 0);
            EXPECT_LT(iRate, 60);
            bHarmed |= iRate > 0;
        }
        bSlow |= harmful.longestDelay == 3 * kSecond;
    }
    EXPECT_TRUE(bHarmed && bSlow);
}

} // namespace
} // namespace brennik::world
