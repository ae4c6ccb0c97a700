#include "config/TBrennikClientConfig.h"

#include "tests/world/AllocationLimit.h"
#include "tests/world/SimHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using world::AllocationLimit;

constexpr const char* kFolder = "C:\\pos";
constexpr const char* kFile = "/pos/BrennikClient.ini";

class TBrennikClientConfigTest : public world::WorldTest {
  protected:
    TBrennikClientConfigTest() { host.files.MakeFolder("/pos"); }

    void PutFile(const std::string& strContent) { host.files.Put(kFile, strContent); }

    /// The writes so far as "SECTION key=value".
    std::vector<std::string> Writes() const {
        std::vector<std::string> strWrites;
        for (const world::ProfileWrite& write : host.profileStrings.writes) {
            strWrites.push_back(write.strSection + " " + write.strKey + "=" + write.strValue);
        }
        return strWrites;
    }

    int32_t GetNames() {
        return config.GetProfileNamesAndCount(kFolder, strProfileNames, lProfileCount);
    }

    /// Makes the object fail once, with a text and a code that must then stay.
    void FailOnce() {
        PutFile("[PROFILE_9]\r\nServerComPort=99999\r\n");
        ASSERT_EQ(config.GetConfiguration(kFolder, 9), 1);
        host.files.Remove(kFile);
    }

    TBrennikClientConfig config;
    std::vector<std::string> strProfileNames = {"left over"};
    int32_t lProfileCount = 77;
};

TEST_F(TBrennikClientConfigTest, ReadsTheProfileNamesInTheirOrder) {
    PutFile("[GENERAL]\r\nProfilecount=3\r\n[PROFILE_2]\r\nProfileName=second\r\n"
            "[PROFILE_1]\r\nProfileName=\" first \"\r\n[PROFILE_3]\r\nProfileName=third\r\n"
            "[PROFILE_4]\r\nProfileName=beyond\r\n");
    EXPECT_EQ(GetNames(), 0);
    EXPECT_EQ(lProfileCount, 3);
    EXPECT_THAT(strProfileNames, ElementsAre(" first ", "second", "third"));
}

TEST_F(TBrennikClientConfigTest, NamelessProfileKeepsItsPlace) {
    PutFile("[GENERAL]\r\nProfilecount=3\r\n[PROFILE_1]\r\nProfileName=first\r\n"
            "[PROFILE_3]\r\nProfileName=third\r\n");
    EXPECT_EQ(GetNames(), 0);
    EXPECT_THAT(strProfileNames, ElementsAre("first", "", "third"));
}

TEST_F(TBrennikClientConfigTest, NoFileOrCountMeansNoProfiles) {
    EXPECT_EQ(GetNames(), 0);
    EXPECT_EQ(lProfileCount, 0);
    EXPECT_THAT(strProfileNames, IsEmpty());
    for (const char* strCount : {"0", "", "many", "2147483648", "-2147483649", "1.5x"}) {
        strProfileNames = {"left over"};
        lProfileCount = 77;
        PutFile(std::string("[GENERAL]\r\nProfilecount=") + strCount + "\r\n");
        EXPECT_EQ(GetNames(), 0) << strCount;
        EXPECT_EQ(lProfileCount, 0) << strCount;
        EXPECT_THAT(strProfileNames, IsEmpty()) << strCount;
    }
    EXPECT_EQ(config.strErrorMessage(), "");
    EXPECT_EQ(config.lErrorCode(), 0);
}

TEST_F(TBrennikClientConfigTest, NegativeProfileCountFails) {
    for (const char* strCount : {"-1", "-2147483648"}) {
        PutFile(std::string("[GENERAL]\r\nProfilecount=") + strCount + "\r\n");
        EXPECT_EQ(GetNames(), 1);
        EXPECT_EQ(config.strErrorMessage(), "TBrennikClientConfig.GetProfileNamesAndCount() "
                                            "Failed - Subscript out of range");
        EXPECT_EQ(config.lErrorCode(), 1000000);
        EXPECT_EQ(lProfileCount, 0);
        EXPECT_THAT(strProfileNames, IsEmpty());
    }
}

TEST_F(TBrennikClientConfigTest, ProfileCountBeyondMemoryFailsBeforeANameIsRead) {
    for (const char* strCount : {"2147483647", "100001"}) {
        PutFile(std::string("[GENERAL]\r\nProfilecount=") + strCount + "\r\n");
        const int64_t nBefore = host.nFailable();
        EXPECT_EQ(GetNames(), 1);
        EXPECT_EQ(config.strErrorMessage(),
                  "TBrennikClientConfig.GetProfileNamesAndCount() Failed - Out of memory");
        EXPECT_EQ(config.lErrorCode(), 1000000);
        EXPECT_EQ(lProfileCount, 0);
        EXPECT_THAT(strProfileNames, IsEmpty());
        EXPECT_EQ(host.nFailable() - nBefore, 1);
    }
}

TEST_F(TBrennikClientConfigTest, HoldsAHundredThousandProfiles) {
    PutFile("[GENERAL]\r\nProfilecount=100000\r\n[PROFILE_100000]\r\nProfileName=last\r\n");
    EXPECT_EQ(GetNames(), 0);
    EXPECT_EQ(lProfileCount, 100000);
    ASSERT_EQ(strProfileNames.size(), 100000U);
    EXPECT_EQ(strProfileNames.back(), "last");
}

TEST_F(TBrennikClientConfigTest, OpensTheFileInTheFolderThatItIsGiven) {
    host.files.Put("/elsewhere/BrennikClient.ini", "[PROFILE_1]\r\nTerminalID=there\r\n");
    PutFile("[PROFILE_1]\r\nTerminalID=here\r\n");
    EXPECT_EQ(config.GetConfiguration("/elsewhere/", 1), 0);
    EXPECT_EQ(config.strTerminalId(), "there");
    EXPECT_EQ(config.GetConfiguration("C:\\pos\\", 1), 0);
    EXPECT_EQ(config.strTerminalId(), "here");
}

TEST_F(TBrennikClientConfigTest, ReadsTheProfileOfTheNumber) {
    PutFile("[PROFILE_1]\r\nTerminalID=one\r\n[PROFILE_12]\r\nTerminalID=twelve\r\n"
            "[PROFILE_-1]\r\nTerminalID=minus\r\n");
    EXPECT_EQ(config.GetConfiguration(kFolder, 12), 0);
    EXPECT_EQ(config.strTerminalId(), "twelve");
    EXPECT_EQ(config.GetConfiguration(kFolder, -1), 0);
    EXPECT_EQ(config.strTerminalId(), "minus");
    EXPECT_EQ(config.GetConfiguration(kFolder, 1), 0);
    EXPECT_EQ(config.strTerminalId(), "one");
}

TEST_F(TBrennikClientConfigTest, LoadingLeavesThePlatformsAlone) {
    PutFile("[PLATFORMS]\r\n1=VX520,E1,A1\r\n");
    config.GetPlatforms(kFolder);
    EXPECT_EQ(config.GetConfiguration(kFolder, 1), 0);
    EXPECT_EQ(config.lPlatformCount(), 1);
    EXPECT_EQ(config.GetPlatFormName(0), "VX520");
}

TEST_F(TBrennikClientConfigTest, SavesANewProfileBehindTheLastOne) {
    PutFile("[GENERAL]\r\nProfilecount=3\r\n");
    config.strProfileName("new");
    EXPECT_EQ(config.SaveConfiguration(kFolder, 2, true), 0);
    const std::vector<std::string> strWrites = Writes();
    ASSERT_EQ(strWrites.size(), 66U);
    EXPECT_EQ(strWrites.front(), "PROFILE_4 ProfileName=new");
    EXPECT_EQ(strWrites[64], "PROFILE_4 UploadFileTypes=0");
    EXPECT_EQ(strWrites.back(), "GENERAL Profilecount=4");
    EXPECT_EQ(GetNames(), 0);
    EXPECT_THAT(strProfileNames, ElementsAre("", "", "", "new"));
}

TEST_F(TBrennikClientConfigTest, FirstProfileOfAMissingFileIsOne) {
    EXPECT_EQ(config.SaveConfiguration(kFolder, -1, true), 0);
    EXPECT_EQ(Writes().front(), "PROFILE_1 ProfileName=");
    EXPECT_EQ(Writes().back(), "GENERAL Profilecount=1");
}

TEST_F(TBrennikClientConfigTest, CountThatIsNoNumberGrowsFromZero) {
    PutFile("[GENERAL]\r\nProfilecount=three\r\n");
    EXPECT_EQ(config.SaveConfiguration(kFolder, 2, true), 0);
    EXPECT_EQ(Writes().back(), "GENERAL Profilecount=1");
}

TEST_F(TBrennikClientConfigTest, NewProfileBehindTheGreatestCountFails) {
    PutFile("[GENERAL]\r\nProfilecount=2147483647\r\n");
    EXPECT_EQ(config.SaveConfiguration(kFolder, 2, true), 1);
    EXPECT_EQ(config.strErrorMessage(),
              "TBrennikClientConfig.SaveConfiguration() Failed - Overflow");
    EXPECT_EQ(config.lErrorCode(), 1000000);
    EXPECT_THAT(Writes(), IsEmpty());
    PutFile("[GENERAL]\r\nProfilecount=2147483646\r\n");
    EXPECT_EQ(config.SaveConfiguration(kFolder, 2, true), 0);
    EXPECT_EQ(Writes().back(), "GENERAL Profilecount=2147483647");
}

TEST_F(TBrennikClientConfigTest, SavingAnExistingProfileLeavesTheCountAlone) {
    PutFile("[GENERAL]\r\nProfilecount=3\r\n");
    EXPECT_EQ(config.SaveConfiguration(kFolder, 2, false), 0);
    EXPECT_EQ(config.SaveConfiguration(kFolder, 8, false), 0);
    for (const world::ProfileWrite& write : host.profileStrings.writes) {
        EXPECT_NE(write.strSection, "GENERAL");
    }
    EXPECT_EQ(host.profileStrings.writes.front().strSection, "PROFILE_2");
    EXPECT_EQ(host.profileStrings.writes.back().strSection, "PROFILE_8");
    EXPECT_THAT(host.files.Lines(kFile), testing::Contains("Profilecount=3"));
}

TEST_F(TBrennikClientConfigTest, NewProfileIdReadsZeroAtAllTimes) {
    EXPECT_EQ(config.lNewProfileId(), 0);
    EXPECT_EQ(config.SaveConfiguration(kFolder, -1, true), 0);
    EXPECT_EQ(config.lNewProfileId(), 0);
    EXPECT_EQ(config.GetConfiguration(kFolder, 1), 0);
    EXPECT_EQ(config.lNewProfileId(), 0);
}

TEST_F(TBrennikClientConfigTest, SavingToAFileThatCanNotBeWrittenIsASuccess) {
    PutFile("[GENERAL]\r\nProfilecount=3\r\n");
    host.files.DenyWrites(kFile);
    EXPECT_EQ(config.SaveConfiguration(kFolder, 1, true), 0);
    EXPECT_EQ(host.files.Get(kFile), "[GENERAL]\r\nProfilecount=3\r\n");
    EXPECT_EQ(config.strErrorMessage(), "");
    EXPECT_EQ(host.profileStrings.writes.size(), 66U); // each one was tried
}

TEST_F(TBrennikClientConfigTest, SetsTheBaudRateOfTheSecondLinkAlone) {
    PutFile("[PROFILE_2]\r\nServerBaudRate=300\r\nClientBaudRate=300\r\n");
    config.lClientBaudRate(1200);
    config.SetBaudRateForProfile(kFolder, 2, 115200);
    EXPECT_EQ(host.files.Get(kFile), "[PROFILE_2]\r\nServerBaudRate=300\r\n"
                                     "ClientBaudRate=115200\r\n");
    EXPECT_THAT(Writes(), ElementsAre("PROFILE_2 ClientBaudRate=115200"));
    EXPECT_EQ(config.lClientBaudRate(), 1200);
}

TEST_F(TBrennikClientConfigTest, SetsTheComPortOfBothLinks) {
    PutFile("[PROFILE_2]\r\nServerComPort=1\r\nClientComPort=2\r\n[PROFILE_1]\r\n"
            "ServerComPort=3\r\n");
    config.iServerComPort(7);
    config.iClientComPort(8);
    config.SetComPortForProfile(kFolder, 2, 5);
    EXPECT_EQ(host.files.Get(kFile), "[PROFILE_2]\r\nServerComPort=5\r\nClientComPort=5\r\n"
                                     "[PROFILE_1]\r\nServerComPort=3\r\n");
    EXPECT_THAT(Writes(), ElementsAre("PROFILE_2 ClientComPort=5", "PROFILE_2 ServerComPort=5"));
    EXPECT_EQ(config.iServerComPort(), 7);
    EXPECT_EQ(config.iClientComPort(), 8);
}

TEST_F(TBrennikClientConfigTest, ComPortOf32BitsIsWrittenAndEndsTheNextLoad) {
    config.SetComPortForProfile(kFolder, 1, 70000);
    EXPECT_EQ(Writes().front(), "PROFILE_1 ClientComPort=70000");
    EXPECT_EQ(config.GetConfiguration(kFolder, 1), 1);
}

TEST_F(TBrennikClientConfigTest, SetsTerminalIdAndApplicationAsTheyStand) {
    config.strTerminalId("kept");
    config.strApplicationID("kept");
    config.SetBrennikTerminalIdForProfile(kFolder, 3, "12345678");
    config.SetApplicationForProfile(kFolder, 4, "EFT POS");
    EXPECT_THAT(Writes(),
                ElementsAre("PROFILE_3 TerminalID=12345678", "PROFILE_4 ApplicationID=EFT POS"));
    EXPECT_THAT(host.files.Lines(kFile), testing::Contains("TerminalID=12345678"));
    EXPECT_EQ(config.strTerminalId(), "kept");
    EXPECT_EQ(config.strApplicationID(), "kept");
}

TEST_F(TBrennikClientConfigTest, SettersFailWithoutAWord) {
    PutFile("[PROFILE_1]\r\nTerminalID=x\r\n");
    host.files.DenyWrites(kFile);
    config.SetBaudRateForProfile(kFolder, 1, 1);
    config.SetComPortForProfile(kFolder, 1, 1);
    config.SetBrennikTerminalIdForProfile(kFolder, 1, "y");
    config.SetApplicationForProfile(kFolder, 1, "y");
    EXPECT_EQ(host.profileStrings.writes.size(), 5U);
    EXPECT_EQ(host.files.Get(kFile), "[PROFILE_1]\r\nTerminalID=x\r\n");
    EXPECT_EQ(config.strErrorMessage(), "");
    EXPECT_EQ(config.lErrorCode(), 0);
}

TEST_F(TBrennikClientConfigTest, FailureStaysReadableUntilTheNextOne) {
    FailOnce();
    EXPECT_EQ(config.SaveConfiguration(kFolder, 1, false), 0);
    EXPECT_EQ(config.GetConfiguration(kFolder, 1), 0);
    EXPECT_EQ(GetNames(), 0);
    std::vector<std::string> strApplications;
    int32_t lNoApplications = 0;
    EXPECT_EQ(config.ReadApplications(kFolder, strApplications, lNoApplications), 0);
    EXPECT_EQ(config.strErrorMessage(),
              "TBrennikClientConfig.GetConfiguration() Failed - Overflow");
    EXPECT_EQ(config.lErrorCode(), 1000000);
    PutFile("[GENERAL]\r\nProfilecount=-1\r\n");
    EXPECT_EQ(GetNames(), 1);
    EXPECT_EQ(config.strErrorMessage(),
              "TBrennikClientConfig.GetProfileNamesAndCount() Failed - Subscript out of range");
}

TEST_F(TBrennikClientConfigTest, FailingReadsAreEmptyTexts) {
    PutFile("[GENERAL]\r\nProfilecount=2\r\n[PROFILE_1]\r\nProfileName=a\r\n"
            "[PROFILE_2]\r\nProfileName=b\r\n");
    host.FailNext(world::Op::ReadProfileString, {}, 1, 1);
    EXPECT_EQ(GetNames(), 0);
    EXPECT_THAT(strProfileNames, ElementsAre("", "b"));
}

/// A folder text that can't be copied once allocations are limited.
const std::string kHugeFolder(1 << 20, 'x');

TEST_F(TBrennikClientConfigTest, RunningOutOfMemoryIsAFailureLikeAnyOther) {
    std::vector<std::string> strApplications;
    int32_t lNoApplications = 5;
    int32_t lStatuses = 0;
    std::vector<std::string> strMessages;
    for (int32_t lOperation = 0; lOperation < 4; ++lOperation) {
        {
            const AllocationLimit limit(1 << 19);
            switch (lOperation) {
            case 0:
                lStatuses += config.ReadApplications(kHugeFolder, strApplications, lNoApplications);
                break;
            case 1:
                lStatuses +=
                    config.GetProfileNamesAndCount(kHugeFolder, strProfileNames, lProfileCount);
                break;
            case 2:
                lStatuses += config.GetConfiguration(kHugeFolder, 1);
                break;
            default:
                lStatuses += config.SaveConfiguration(kHugeFolder, 1, false);
            }
        }
        EXPECT_EQ(config.lErrorCode(), 1000000);
        strMessages.push_back(config.strErrorMessage());
    }
    EXPECT_EQ(lStatuses, 4);
    EXPECT_THAT(strMessages,
                ElementsAre("TBrennikClientConfig.ReadApplications() Failed - Out of memory",
                            "TBrennikClientConfig.GetProfileNamesAndCount() Failed - Out of memory",
                            "TBrennikClientConfig.GetConfiguration() Failed - Out of memory",
                            "TBrennikClientConfig.SaveConfiguration() Failed - Out of memory"));
}

TEST_F(TBrennikClientConfigTest, RunningOutOfMemoryEndsTheOthersQuietly) {
    {
        const AllocationLimit limit(1 << 19);
        config.SetBaudRateForProfile(kHugeFolder, 1, 1);
        config.SetComPortForProfile(kHugeFolder, 1, 1);
        config.SetBrennikTerminalIdForProfile(kHugeFolder, 1, "y");
        config.SetApplicationForProfile(kHugeFolder, 1, "y");
        config.GetPlatforms(kHugeFolder);
    }
    EXPECT_THAT(Writes(), IsEmpty());
    EXPECT_EQ(config.lPlatformCount(), 0);
    EXPECT_EQ(config.strErrorMessage(), "");
    EXPECT_EQ(config.lErrorCode(), 0);
}

TEST_F(TBrennikClientConfigTest, CollectsUploadFileTypes) {
    for (const int32_t lOther : {3, 4, -1, 256, 257}) {
        config.AddUploadFileType(lOther);
        EXPECT_EQ(config.lUploadFileType(), 0);
    }
    config.AddUploadFileType(1);
    EXPECT_EQ(config.lUploadFileType(), 1);
    config.AddUploadFileType(2);
    EXPECT_EQ(config.lUploadFileType(), 3);
    config.AddUploadFileType(2);
    EXPECT_EQ(config.lUploadFileType(), 3);
    for (const int32_t lOther : {3, 4, -1, 256}) {
        config.AddUploadFileType(lOther);
        EXPECT_EQ(config.lUploadFileType(), 3);
    }
    config.AddUploadFileType(0);
    EXPECT_EQ(config.lUploadFileType(), 0);
    config.AddUploadFileType(2);
    EXPECT_EQ(config.lUploadFileType(), 2);
    config.lUploadFileType(0x7FFFFF00);
    config.AddUploadFileType(1);
    EXPECT_EQ(config.lUploadFileType(), 0x7FFFFF01);
}

} // namespace
} // namespace brennik
