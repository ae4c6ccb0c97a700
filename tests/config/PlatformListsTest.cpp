// The two lists of the file beside the profiles: platforms and application names.
#include "config/TBrennikClientConfig.h"
#include "tests/world/SimHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace brennik {
namespace {

using testing::ElementsAre;

constexpr const char* kFolder = "C:\\pos";
constexpr const char* kFile = "/pos/BrennikClient.ini";

class PlatformLists : public world::WorldTest {
  protected:
    /// A file whose platform lines are these, numbered from 1.
    void PutPlatforms(const std::vector<std::string>& strLines) {
        std::string strContent = "[PLATFORMS]\r\n";
        for (size_t nLine = 0; nLine < strLines.size(); ++nLine) {
            strContent += std::to_string(nLine + 1) + "=" + strLines[nLine] + "\r\n";
        }
        host.files.Put(kFile, strContent);
    }

    /// The platforms as "name (Eprom count/application count)".
    std::vector<std::string> Platforms() const {
        std::vector<std::string> strPlatforms;
        for (int32_t lIndex = 0; lIndex < config.lPlatformCount(); ++lIndex) {
            strPlatforms.push_back(config.GetPlatFormName(lIndex) + " (" +
                                   std::to_string(config.GetEpromCount(lIndex)) + "/" +
                                   std::to_string(config.GetApplicationCount(lIndex)) + ")");
        }
        return strPlatforms;
    }

    std::vector<std::string> Eproms(int32_t lPlatform, int32_t lPositions) const {
        std::vector<std::string> strNames;
        for (int32_t lPosition = 0; lPosition < lPositions; ++lPosition) {
            strNames.push_back(config.GetEpromName(lPlatform, lPosition));
        }
        return strNames;
    }

    int32_t ReadApplications() {
        return config.ReadApplications(kFolder, strApplications, lNoApplications);
    }

    TBrennikClientConfig config;
    std::vector<std::string> strApplications;
    int32_t lNoApplications = 99;
};

TEST_F(PlatformLists, FileWithoutPlatformsGivesNone) {
    config.GetPlatforms(kFolder);
    EXPECT_EQ(config.lPlatformCount(), 0);
    host.files.Put(kFile, "[GENERAL]\r\n1=VX520,E1,A1\r\n");
    config.GetPlatforms(kFolder);
    EXPECT_EQ(config.lPlatformCount(), 0);
}

TEST_F(PlatformLists, BreaksPlatformLinesOut) {
    PutPlatforms({"VX520,EP1:EP2,EFTPOS", "\"Omni, 3750\",EP3,POS:HOTEL:FUEL"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("VX520 (2/1)", "Omni, 3750 (1/3)"));
    EXPECT_EQ(config.GetEpromName(0, 0), "EP1");
    EXPECT_EQ(config.GetEpromName(0, 1), "EP2");
    EXPECT_EQ(config.GetApplicationName(0, 0), "EFTPOS");
    EXPECT_EQ(config.GetEpromName(1, 0), "EP3");
    EXPECT_EQ(config.GetApplicationName(1, 0), "POS");
    EXPECT_EQ(config.GetApplicationName(1, 1), "HOTEL");
    EXPECT_EQ(config.GetApplicationName(1, 2), "FUEL");
}

TEST_F(PlatformLists, IgnoresFieldsBehindTheThird) {
    PutPlatforms({"VX520,EP1,EFTPOS,more,and more"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("VX520 (1/1)"));
}

TEST_F(PlatformLists, GapHidesAllThatFollows) {
    host.files.Put(kFile, "[PLATFORMS]\r\n1=A,E,P\r\n2=B,E,P\r\n4=D,E,P\r\n");
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("A (1/1)", "B (1/1)"));
}

TEST_F(PlatformLists, BlankLineEndsTheList) {
    PutPlatforms({"A,E,P", "\"   \"", "C,E,P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("A (1/1)"));
}

TEST_F(PlatformLists, EachCallAddsAllPlatformsOnceMore) {
    PutPlatforms({"A,E,P", "B,E1:E2,P"});
    config.GetPlatforms(kFolder);
    config.GetPlatforms(kFolder);
    EXPECT_EQ(config.lPlatformCount(), 4);
    EXPECT_THAT(Platforms(), ElementsAre("A (1/1)", "B (2/1)", "A (1/1)", "B (2/1)"));
    config.GetPlatforms(kFolder);
    EXPECT_EQ(config.lPlatformCount(), 6);
}

TEST_F(PlatformLists, LineThatFailsIsNotCountedAndTheNextTakesItsIndex) {
    for (const char* strBad :
         {"BAD", "BAD,E", "BAD,,P", "BAD,E,", "BAD,E,\"P\"x", "\"BAD\"x,E,P", "\"BAD", ",E"}) {
        TBrennikClientConfig one;
        PutPlatforms({"A,E,P", strBad, "C,E,P1:P2"});
        one.GetPlatforms(kFolder);
        EXPECT_EQ(one.lPlatformCount(), 2) << strBad;
        EXPECT_EQ(one.GetPlatFormName(0), "A") << strBad;
        EXPECT_EQ(one.GetPlatFormName(1), "C") << strBad;
        EXPECT_EQ(one.GetEpromCount(1), 1) << strBad;
        EXPECT_EQ(one.GetApplicationCount(1), 2) << strBad;
        EXPECT_EQ(one.strErrorMessage(), "");
        EXPECT_EQ(one.lErrorCode(), 0);
    }
}

TEST_F(PlatformLists, FailedLineLeavesNothingToBeRead) {
    PutPlatforms({"BAD,E1:E2"});
    config.GetPlatforms(kFolder);
    EXPECT_EQ(config.lPlatformCount(), 0);
    EXPECT_EQ(config.GetPlatFormName(0), "");
    EXPECT_EQ(config.GetEpromCount(0), 0);
    EXPECT_EQ(config.GetEpromName(0, 0), "");
}

TEST_F(PlatformLists, CountsOfAFailedLineStartAgain) {
    PutPlatforms({"BAD,E1:E2:E3", "C,E,P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("C (1/1)"));
    EXPECT_THAT(Eproms(0, 3), ElementsAre("E", "", ""));
}

TEST_F(PlatformLists, NextLineTakesTheIndexWithWhatTheFailedOneLeft) {
    PutPlatforms({"BAD,X:Y", "C, :E,P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("C (1/1)"));
    EXPECT_THAT(Eproms(0, 2), ElementsAre("X", "E"));
}

TEST_F(PlatformLists, EmptyNameIsAPlatformToo) {
    PutPlatforms({",E,P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre(" (1/1)"));
}

TEST_F(PlatformLists, BlankTokensKeepTheirPositionAndAreNotCounted) {
    PutPlatforms({"A,EP1: :EP3,P1::P3"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("A (2/2)"));
    EXPECT_THAT(Eproms(0, 4), ElementsAre("EP1", "", "EP3", ""));
    EXPECT_EQ(config.GetApplicationName(0, 0), "P1");
    EXPECT_EQ(config.GetApplicationName(0, 1), "");
    EXPECT_EQ(config.GetApplicationName(0, 2), "P3");
}

TEST_F(PlatformLists, ListsOfBlanksCountNothing) {
    PutPlatforms({"A, : ,::", "B,E:,P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("A (0/0)", "B (1/1)"));
    EXPECT_THAT(Eproms(0, 2), ElementsAre("", ""));
}

TEST_F(PlatformLists, QuotedTokensKeepTheirBlanks) {
    PutPlatforms({"A,\"\"\" E1 \"\":E2\",P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("A (2/1)"));
    EXPECT_THAT(Eproms(0, 2), ElementsAre(" E1 ", "E2"));
}

TEST_F(PlatformLists, CommaInAQuotedListSeparatesLikeAColon) {
    PutPlatforms({"A,\"E1,E2:E3\",P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Eproms(0, 3), ElementsAre("E1", "E2", "E3"));
}

TEST_F(PlatformLists, LinesAreCutWhereTheBufferEnds) {
    PutPlatforms({"A,E," + std::string(9995, 'p') + "more", "B,E,P"});
    config.GetPlatforms(kFolder);
    EXPECT_THAT(Platforms(), ElementsAre("A (1/1)", "B (1/1)"));
    EXPECT_EQ(config.GetApplicationName(0, 0), std::string(9995, 'p'));
    host.files.Put(kFile, "[APPLICATION]\r\n1=" + std::string(10001, 'a') + "\r\n");
    EXPECT_EQ(ReadApplications(), 0);
    EXPECT_THAT(strApplications, ElementsAre(std::string(9999, 'a')));
}

TEST_F(PlatformLists, IndicesOutOfRangeGiveNothing) {
    PutPlatforms({"A,E1:E2,P"});
    config.GetPlatforms(kFolder);
    constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    for (const int32_t lIndex : {-1, 1, 2, kLeast, kMost}) {
        EXPECT_EQ(config.GetPlatFormName(lIndex), "");
        EXPECT_EQ(config.GetEpromCount(lIndex), 0);
        EXPECT_EQ(config.GetApplicationCount(lIndex), 0);
        EXPECT_EQ(config.GetEpromName(lIndex, 0), "");
        EXPECT_EQ(config.GetApplicationName(lIndex, 0), "");
    }
    for (const int32_t lIndex : {-1, 2, kLeast, kMost}) {
        EXPECT_EQ(config.GetEpromName(0, lIndex), "");
        EXPECT_EQ(config.GetApplicationName(0, lIndex), "");
    }
    EXPECT_EQ(config.strErrorMessage(), "");
    EXPECT_EQ(config.lErrorCode(), 0);
}

TEST_F(PlatformLists, ReadsTheApplicationsUpToTheFirstGap) {
    host.files.Put(kFile, "[APPLICATION]\r\n1=EFTPOS\r\n2=\" HOTEL \"\r\n3=FUEL\r\n5=never\r\n");
    EXPECT_EQ(ReadApplications(), 0);
    EXPECT_EQ(lNoApplications, 3);
    EXPECT_THAT(strApplications, ElementsAre("EFTPOS", " HOTEL ", "FUEL"));
}

TEST_F(PlatformLists, BlankApplicationIsAnApplication) {
    host.files.Put(kFile, "[APPLICATION]\r\n1=\" \"\r\n2=B\r\n");
    EXPECT_EQ(ReadApplications(), 0);
    EXPECT_THAT(strApplications, ElementsAre(" ", "B"));
}

TEST_F(PlatformLists, WithoutApplicationsTheArrayStaysAsItWas) {
    strApplications = {"old"};
    EXPECT_EQ(ReadApplications(), 0);
    EXPECT_EQ(lNoApplications, 0);
    EXPECT_THAT(strApplications, ElementsAre("old"));
}

TEST_F(PlatformLists, ApplicationsReplaceWhatTheArrayHeld) {
    strApplications = {"u", "v", "w"};
    host.files.Put(kFile, "[APPLICATION]\r\n1=A\r\n2=B\r\n");
    EXPECT_EQ(ReadApplications(), 0);
    EXPECT_THAT(strApplications, ElementsAre("A", "B"));
}

TEST_F(PlatformLists, NothingOfThemIsEverWritten) {
    host.files.Put(kFile, "[APPLICATION]\r\n1=A\r\n[PLATFORMS]\r\n1=A,E,P\r\n");
    EXPECT_EQ(ReadApplications(), 0);
    config.GetPlatforms(kFolder);
    EXPECT_TRUE(host.profileStrings.writes.empty());
    EXPECT_EQ(host.files.Get(kFile), "[APPLICATION]\r\n1=A\r\n[PLATFORMS]\r\n1=A,E,P\r\n");
}

} // namespace
} // namespace brennik
