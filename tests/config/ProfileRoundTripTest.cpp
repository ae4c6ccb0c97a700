// Every key of a profile on its way to the file and back: order, texts and forms.
#include "config/TBrennikClientConfig.h"
#include "tests/config/KeyTables.h"
#include "tests/world/SimHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace brennik {
namespace {

using namespace configtest;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFolder = "C:\\pos";
constexpr const char* kFile = "/pos/BrennikClient.ini";

/// What a profile with every property set holds, line by line, in the order of the writes.
const std::vector<std::pair<std::string, std::string>> kFullProfile = {
    {"ProfileName", "text of ProfileName"},
    {"Mode", "1001"},
    {"PedDownLoad", "TRUE"},
    {"WorkingFolder", "text of WorkingFolder"},
    {"PlatformName", "text of PlatformName"},
    {"DownloadType", "F"},
    {"ApplicationID", "text of ApplicationID"},
    {"TerminalID", "text of TerminalID"},
    {"PTID", "text of PTID"},
    {"EpromID", "text of EpromID"},
    {"BlockSize", "1002"},
    {"FolderPerDownloadAttempt", "TRUE"},
    {"DeleteFolderAfterDownloadAttempt", "TRUE"},
    {"ScriptFileName", "text of ScriptFileName"},
    {"ExecuteScriptFile", "TRUE"},
    {"MemorySize", "1003"},
    {"TmsAppListFile", "text of TmsAppListFile"},
    {"TmsAppFolder", "text of TmsAppFolder"},
    {"LogFilePath", "text of LogFilePath"},
    {"LogFileName", "text of LogFileName"},
    {"LoggingEnabled", "TRUE"},
    {"LogControlPackets", "TRUE"},
    {"LogProcessingPackets", "TRUE"},
    {"ServerMode", "1004"},
    {"ServerIPAddress1", "text of ServerIPAddress1"},
    {"ServerIPAddress2", "text of ServerIPAddress2"},
    {"ServerIPAddress3", "text of ServerIPAddress3"},
    {"ServerPortNo1", "1005"},
    {"ServerPortNo2", "1006"},
    {"ServerPortNo3", "1007"},
    {"ServerBlockedSocket", "1"},
    {"ServerComPort", "1008"},
    {"ServerBaudRate", "1009"},
    {"ServerParity", "text of ServerParity"},
    {"ServerDatabits", "1010"},
    {"ServerStopbit", "1.5"},
    {"ServerFlowControl", "1011"},
    {"ServerConnectTimeout", "1012"},
    {"ClientMode", "1013"},
    {"ClientIPAddress1", "text of ClientIPAddress1"},
    {"ClientIPAddress2", "text of ClientIPAddress2"},
    {"ClientIPAddress3", "text of ClientIPAddress3"},
    {"ClientPortNo1", "1014"},
    {"ClientPortNo2", "1015"},
    {"ClientPortNo3", "1016"},
    {"ClientBlockedSocket", "1"},
    {"ClientComPort", "1017"},
    {"ClientBaudRate", "1018"},
    {"ClientParity", "text of ClientParity"},
    {"ClientDatabits", "1019"},
    {"ClientStopbit", "2"},
    {"ClientFlowControl", "1020"},
    {"ClientConnectTimeout", "1021"},
    {"ReadPacketAttempts", "1022"},
    {"SendPacketAttempts", "1023"},
    {"CharTimeout", "1024"},
    {"ConnectAttempts", "1025"},
    {"ReadPacketTimeout", "1026"},
    {"ConfigTitle", "text of ConfigTitle"},
    {"ReleaseTitle", "text of ReleaseTitle"},
    {"Autobaud", "TRUE"},
    {"InjectPublicKeyFile", "TRUE"},
    {"PublicKeyFileLocation", "text of PublicKeyFileLocation"},
    {"PassThruType", "1027"},
    {"UploadFileTypes", "1028"},
};

void SetEveryProperty(TBrennikClientConfig& config) {
    config.strProfileName("text of ProfileName");
    config.lOperatingMode(1001);
    config.bPedDownload(true);
    config.strWorkingFolder("text of WorkingFolder");
    config.strPlatformName("text of PlatformName");
    config.lDownloadType(0);
    config.strApplicationID("text of ApplicationID");
    config.strTerminalId("text of TerminalID");
    config.strPTid("text of PTID");
    config.strEpromID("text of EpromID");
    config.lBlockSize(1002);
    config.bFolderperDownloadAttempt(true);
    config.bDeleteFolderPerDownloadAttempt(true);
    config.strScriptFileName("text of ScriptFileName");
    config.bExecuteScriptFile(true);
    config.lMemory(1003);
    config.strTmsAppListFile("text of TmsAppListFile");
    config.strTmsAppFolder("text of TmsAppFolder");
    config.strLogFilePath("text of LogFilePath");
    config.strLogFileName("text of LogFileName");
    config.bLoggingEnabled(true);
    config.bLogControlPackets(true);
    config.bLogProcessingPackets(true);
    config.lServerMode(1004);
    config.strServerIPAddress1("text of ServerIPAddress1");
    config.strServerIPAddress2("text of ServerIPAddress2");
    config.strServerIPAddress3("text of ServerIPAddress3");
    config.lServerPort1(1005);
    config.lServerPort2(1006);
    config.lServerPort3(1007);
    config.bServerBlockedSocket(true);
    config.iServerComPort(1008);
    config.lServerBaudRate(1009);
    config.strServerParity("text of ServerParity");
    config.iServerDatabits(1010);
    config.dServerStopBit(1.5);
    config.iServerFlowControl(1011);
    config.lServerConnectTimeout(1012);
    config.lClientMode(1013);
    config.strClientIPAddress1("text of ClientIPAddress1");
    config.strClientIPAddress2("text of ClientIPAddress2");
    config.strClientIPAddress3("text of ClientIPAddress3");
    config.lClientPort1(1014);
    config.lClientPort2(1015);
    config.lClientPort3(1016);
    config.bClientBlockedSocket(true);
    config.iClientComPort(1017);
    config.lClientBaudRate(1018);
    config.strClientParity("text of ClientParity");
    config.iClientDatabits(1019);
    config.dClientStopBit(2);
    config.iClientFlowControl(1020);
    config.lClientConnectTimeout(1021);
    config.lReadPacketAttempts(1022);
    config.lSendPacketAttempts(1023);
    config.lCharTimeout(1024);
    config.lConnectAttempts(1025);
    config.lReadPacketTimeout(1026);
    config.strConfigTitle("text of ConfigTitle");
    config.strReleaseTitle("text of ReleaseTitle");
    config.bAutoBaud(true);
    config.bInjectPublicKeyFile(true);
    config.strPublickeyLocation("text of PublicKeyFileLocation");
    config.lPassThruType(1027);
    config.lUploadFileType(1028);
    config.bForceApplicationSwap(true);
}

void ExpectEveryPropertyReadBack(const TBrennikClientConfig& config) {
    EXPECT_EQ(config.strProfileName(), "text of ProfileName");
    EXPECT_EQ(config.lOperatingMode(), 1001);
    EXPECT_TRUE(config.bPedDownload());
    EXPECT_EQ(config.strWorkingFolder(), "text of WorkingFolder");
    EXPECT_EQ(config.strPlatformName(), "text of PlatformName");
    EXPECT_EQ(config.lDownloadType(), 0);
    EXPECT_EQ(config.strApplicationID(), "text of ApplicationID");
    EXPECT_EQ(config.strTerminalId(), "text of TerminalID");
    EXPECT_EQ(config.strPTid(), "text of PTID");
    EXPECT_EQ(config.strEpromID(), "text of EpromID");
    EXPECT_EQ(config.lBlockSize(), 1002);
    EXPECT_TRUE(config.bFolderperDownloadAttempt());
    EXPECT_TRUE(config.bDeleteFolderPerDownloadAttempt());
    EXPECT_EQ(config.strScriptFileName(), "text of ScriptFileName");
    EXPECT_TRUE(config.bExecuteScriptFile());
    EXPECT_EQ(config.lMemory(), 1003);
    EXPECT_EQ(config.strTmsAppListFile(), "text of TmsAppListFile");
    EXPECT_EQ(config.strTmsAppFolder(), "text of TmsAppFolder");
    EXPECT_EQ(config.strLogFilePath(), "text of LogFilePath");
    EXPECT_EQ(config.strLogFileName(), "text of LogFileName");
    EXPECT_TRUE(config.bLoggingEnabled());
    EXPECT_TRUE(config.bLogControlPackets());
    EXPECT_TRUE(config.bLogProcessingPackets());
    EXPECT_EQ(config.lServerMode(), 1004);
    EXPECT_EQ(config.strServerIPAddress1(), "text of ServerIPAddress1");
    EXPECT_EQ(config.strServerIPAddress2(), "text of ServerIPAddress2");
    EXPECT_EQ(config.strServerIPAddress3(), "text of ServerIPAddress3");
    EXPECT_EQ(config.lServerPort1(), 1005);
    EXPECT_EQ(config.lServerPort2(), 1006);
    EXPECT_EQ(config.lServerPort3(), 1007);
    EXPECT_FALSE(config.bServerBlockedSocket()); // written as "1", which is not "TRUE"
    EXPECT_EQ(config.iServerComPort(), 1008);
    EXPECT_EQ(config.lServerBaudRate(), 1009);
    EXPECT_EQ(config.strServerParity(), "text of ServerParity");
    EXPECT_EQ(config.iServerDatabits(), 1010);
    EXPECT_EQ(config.dServerStopBit(), 1.5);
    EXPECT_EQ(config.iServerFlowControl(), 1011);
    EXPECT_EQ(config.lServerConnectTimeout(), 1012);
    EXPECT_EQ(config.lClientMode(), 1013);
    EXPECT_EQ(config.strClientIPAddress1(), "text of ClientIPAddress1");
    EXPECT_EQ(config.strClientIPAddress2(), "text of ClientIPAddress2");
    EXPECT_EQ(config.strClientIPAddress3(), "text of ClientIPAddress3");
    EXPECT_EQ(config.lClientPort1(), 1014);
    EXPECT_EQ(config.lClientPort2(), 1015);
    EXPECT_EQ(config.lClientPort3(), 1016);
    EXPECT_FALSE(config.bClientBlockedSocket()); // written as "1", which is not "TRUE"
    EXPECT_EQ(config.iClientComPort(), 1017);
    EXPECT_EQ(config.lClientBaudRate(), 1018);
    EXPECT_EQ(config.strClientParity(), "text of ClientParity");
    EXPECT_EQ(config.iClientDatabits(), 1019);
    EXPECT_EQ(config.dClientStopBit(), 2);
    EXPECT_EQ(config.iClientFlowControl(), 1020);
    EXPECT_EQ(config.lClientConnectTimeout(), 1021);
    EXPECT_EQ(config.lReadPacketAttempts(), 1022);
    EXPECT_EQ(config.lSendPacketAttempts(), 1023);
    EXPECT_EQ(config.lCharTimeout(), 1024);
    EXPECT_EQ(config.lConnectAttempts(), 1025);
    EXPECT_EQ(config.lReadPacketTimeout(), 1026);
    EXPECT_EQ(config.strConfigTitle(), "text of ConfigTitle");
    EXPECT_EQ(config.strReleaseTitle(), "text of ReleaseTitle");
    EXPECT_TRUE(config.bAutoBaud());
    EXPECT_TRUE(config.bInjectPublicKeyFile());
    EXPECT_EQ(config.strPublickeyLocation(), "text of PublicKeyFileLocation");
    EXPECT_EQ(config.lPassThruType(), 1027);
    EXPECT_EQ(config.lUploadFileType(), 1028);
    EXPECT_FALSE(config.bForceApplicationSwap()); // never written
}

class ProfileRoundTrip : public world::WorldTest {
  protected:
    ProfileRoundTrip() { host.files.MakeFolder("/pos"); }

    /// A file in which profile 1 holds one key.
    void PutKey(const std::string& strKey, const std::string& strText) {
        host.files.Put(kFile, "[PROFILE_1]\r\n" + strKey + "=" + strText + "\r\n");
    }

    /// The text of one key of profile 1 in the file, its quotes still on it.
    std::string TextOf(const std::string& strKey) {
        for (const std::string& strLine : host.files.Lines(kFile)) {
            if (strLine.starts_with(strKey + "=")) {
                return strLine.substr(strKey.size() + 1);
            }
        }
        return "no such key";
    }

    int32_t Load() { return config.GetConfiguration(kFolder, 1); }
    int32_t Save() { return config.SaveConfiguration(kFolder, 1, false); }

    TBrennikClientConfig config;
};

TEST_F(ProfileRoundTrip, KeyTablesHoldAllKeys) {
    // All but DownloadType, which has a form of its own.
    EXPECT_EQ(kTextKeys.size() + kLongKeys.size() + kIntKeys.size() + kDoubleKeys.size() +
                  kBooleanKeys.size(),
              65U);
    EXPECT_EQ(kFullProfile.size(), 65U); // all but ForceApplicationSwap
}

TEST_F(ProfileRoundTrip, WritesEveryKeyInItsOrder) {
    SetEveryProperty(config);
    EXPECT_EQ(Save(), 0);
    const auto& writes = host.profileStrings.writes;
    ASSERT_EQ(writes.size(), kFullProfile.size());
    for (size_t nKey = 0; nKey < kFullProfile.size(); ++nKey) {
        EXPECT_EQ(writes[nKey], (world::ProfileWrite{"PROFILE_1", kFullProfile[nKey].first,
                                                     kFullProfile[nKey].second,
                                                     "C:\\pos\\BrennikClient.ini", true}));
    }
}

TEST_F(ProfileRoundTrip, LaysTheFileOutLineByLine) {
    SetEveryProperty(config);
    EXPECT_EQ(Save(), 0);
    std::string strExpected = "[PROFILE_1]\r\n";
    for (const auto& [strKey, strText] : kFullProfile) {
        strExpected += strKey + "=" + strText + "\r\n";
    }
    EXPECT_EQ(host.files.Get(kFile), strExpected);
}

TEST_F(ProfileRoundTrip, ReadsEveryKeyBack) {
    SetEveryProperty(config);
    EXPECT_EQ(Save(), 0);
    TBrennikClientConfig other;
    EXPECT_EQ(other.GetConfiguration(kFolder, 1), 0);
    ExpectEveryPropertyReadBack(other);
}

TEST_F(ProfileRoundTrip, NewObjectSavesNeutralValues) {
    EXPECT_EQ(Save(), 0);
    for (const TextKey& key : kTextKeys) {
        EXPECT_EQ(TextOf(key.strKey), "") << key.strKey;
    }
    for (const LongKey& key : kLongKeys) {
        EXPECT_EQ(TextOf(key.strKey), "0") << key.strKey;
    }
    for (const IntKey& key : kIntKeys) {
        EXPECT_EQ(TextOf(key.strKey), "0") << key.strKey;
    }
    for (const DoubleKey& key : kDoubleKeys) {
        EXPECT_EQ(TextOf(key.strKey), "0") << key.strKey;
    }
    EXPECT_EQ(TextOf("DownloadType"), "F");
    EXPECT_EQ(TextOf("LoggingEnabled"), "FALSE");
    EXPECT_EQ(TextOf("ServerBlockedSocket"), "0");
    EXPECT_EQ(TextOf("ClientBlockedSocket"), "0");
}

void ExpectNeutral(const TBrennikClientConfig& config) {
    for (const TextKey& key : kTextKeys) {
        EXPECT_EQ((config.*key.get)(), "") << key.strKey;
    }
    for (const LongKey& key : kLongKeys) {
        EXPECT_EQ((config.*key.get)(), 0) << key.strKey;
    }
    for (const IntKey& key : kIntKeys) {
        EXPECT_EQ((config.*key.get)(), 0) << key.strKey;
    }
    for (const DoubleKey& key : kDoubleKeys) {
        EXPECT_EQ((config.*key.get)(), 0.0) << key.strKey;
    }
    for (const BooleanKey& key : kBooleanKeys) {
        EXPECT_FALSE((config.*key.get)()) << key.strKey;
    }
}

TEST_F(ProfileRoundTrip, NewObjectHoldsNeutralValues) {
    ExpectNeutral(config);
    EXPECT_EQ(config.lDownloadType(), 0);
}

TEST_F(ProfileRoundTrip, MissingProfileOverwritesEveryPropertyWithItsNeutralValue) {
    for (const char* strContent : {"", "[PROFILE_2]\r\nTerminalID=x\r\n"}) {
        host.files.Put(kFile, strContent);
        SetEveryProperty(config);
        EXPECT_EQ(Load(), 0);
        ExpectNeutral(config);
        EXPECT_EQ(config.lDownloadType(), 1);
        EXPECT_EQ(config.strErrorMessage(), "");
    }
}

TEST_F(ProfileRoundTrip, MissingFileIsNoFailure) {
    SetEveryProperty(config);
    EXPECT_EQ(Load(), 0);
    ExpectNeutral(config);
    EXPECT_EQ(config.lDownloadType(), 1);
    EXPECT_FALSE(host.files.Exists(kFile));
}

TEST_F(ProfileRoundTrip, TextsAreReadRawOrTrimmed) {
    for (const TextKey& key : kTextKeys) {
        PutKey(key.strKey, "\"  a b \tc \"");
        EXPECT_EQ(Load(), 0);
        EXPECT_EQ((config.*key.get)(), key.bTrimmed ? "a b \tc" : "  a b \tc ") << key.strKey;
        PutKey(key.strKey, "\"   \"");
        EXPECT_EQ(Load(), 0);
        EXPECT_EQ((config.*key.get)(), key.bTrimmed ? "" : "   ") << key.strKey;
        PutKey(key.strKey, std::string(10500, 'x'));
        EXPECT_EQ(Load(), 0);
        EXPECT_EQ((config.*key.get)(), std::string(9999, 'x')) << key.strKey;
    }
}

TEST_F(ProfileRoundTrip, TrimmedKeysAreTheseAndNoOthers) {
    std::vector<std::string> strTrimmed;
    for (const TextKey& key : kTextKeys) {
        if (key.bTrimmed) {
            strTrimmed.emplace_back(key.strKey);
        }
    }
    EXPECT_THAT(strTrimmed,
                ElementsAre("WorkingFolder", "ApplicationID", "TerminalID", "PTID", "EpromID",
                            "ScriptFileName", "LogFilePath", "LogFileName", "ServerIPAddress1",
                            "ServerIPAddress2", "ServerIPAddress3", "ClientIPAddress1",
                            "ClientIPAddress2", "ClientIPAddress3"));
}

TEST_F(ProfileRoundTrip, TextsAreWrittenAsTheyStand) {
    for (const TextKey& key : kTextKeys) {
        host.profileStrings.writes.clear();
        TBrennikClientConfig one;
        (one.*key.set)(" a, b ");
        EXPECT_EQ(one.SaveConfiguration(kFolder, 1, false), 0);
        for (const world::ProfileWrite& write : host.profileStrings.writes) {
            EXPECT_EQ(write.strValue == " a, b ", write.strKey == key.strKey) << write.strKey;
        }
    }
}

TEST_F(ProfileRoundTrip, LongsAreReadSafely) {
    const std::pair<const char*, int32_t> cases[] = {
        {"0", 0},
        {"7", 7},
        {"007", 7},
        {"-7", -7},
        {"40000", 40000},
        {"2147483647", 2147483647},
        {"-2147483648", std::numeric_limits<int32_t>::min()},
        {"2147483648", 0},
        {"-2147483649", 0},
        {"99999999999999999999999", 0},
        {"", 0},
        {"abc", 0},
        {"7x", 0},
        {"0x10", 0},
        {"&H10", 0},
        {"1,000", 0},
        {"TRUE", 0},
    };
    for (const LongKey& key : kLongKeys) {
        for (const auto& [strText, lExpected] : cases) {
            PutKey(key.strKey, strText);
            EXPECT_EQ(Load(), 0);
            EXPECT_EQ((config.*key.get)(), lExpected) << key.strKey << "=" << strText;
        }
    }
}

TEST_F(ProfileRoundTrip, LongsAreWrittenAsDecimalDigits) {
    for (const LongKey& key : kLongKeys) {
        for (const auto& [lValue, strText] : {std::pair<int32_t, const char*>{1234567, "1234567"},
                                              {-1, "-1"},
                                              {std::numeric_limits<int32_t>::min(), "-2147483648"},
                                              {0, "0"}}) {
            (config.*key.set)(lValue);
            EXPECT_EQ(Save(), 0);
            EXPECT_EQ(TextOf(key.strKey), strText) << key.strKey;
        }
    }
}

TEST_F(ProfileRoundTrip, ModeOfLettersIsZero) {
    PutKey("Mode", "two");
    config.lOperatingMode(2);
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(config.lOperatingMode(), 0);
}

TEST_F(ProfileRoundTrip, ModeIsReadWithoutItsBlanks) {
    PutKey("Mode", "\"  2 \"");
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(config.lOperatingMode(), 2);
}

TEST_F(ProfileRoundTrip, IntsAreReadSafely) {
    for (const IntKey& key : kIntKeys) {
        for (const auto& [strText, iExpected] : {std::pair<const char*, int16_t>{"8", int16_t{8}},
                                                 {"-8", int16_t{-8}},
                                                 {"32767", int16_t{32767}},
                                                 {"-32768", int16_t{-32768}},
                                                 {"2147483648", int16_t{0}},
                                                 {"-2147483649", int16_t{0}},
                                                 {"", int16_t{0}},
                                                 {"eight", int16_t{0}}}) {
            PutKey(key.strKey, strText);
            EXPECT_EQ(Load(), 0) << key.strKey << "=" << strText;
            EXPECT_EQ((config.*key.get)(), iExpected) << key.strKey << "=" << strText;
        }
    }
}

TEST_F(ProfileRoundTrip, NumberBetween16And32BitsIsZeroOrEndsTheLoad) {
    for (const IntKey& key : kIntKeys) {
        for (const char* strText : {"32768", "-32769", "2147483647", "-2147483648"}) {
            TBrennikClientConfig one;
            (one.*key.set)(5);
            PutKey(key.strKey, strText);
            EXPECT_EQ(one.GetConfiguration(kFolder, 1), key.bThroughLong ? 1 : 0);
            EXPECT_EQ((one.*key.get)(), key.bThroughLong ? 5 : 0) << key.strKey;
            EXPECT_EQ(one.strErrorMessage(),
                      key.bThroughLong ? "TBrennikClientConfig.GetConfiguration() Failed - Overflow"
                                       : "");
            EXPECT_EQ(one.lErrorCode(), key.bThroughLong ? 1000000 : 0);
        }
    }
}

TEST_F(ProfileRoundTrip, OnlyTheComPortsAreReadThroughLongs) {
    for (const IntKey& key : kIntKeys) {
        const std::string strKey = key.strKey;
        EXPECT_EQ(key.bThroughLong, strKey == "ServerComPort" || strKey == "ClientComPort");
    }
}

TEST_F(ProfileRoundTrip, OverflowLeavesThePropertiesReadSoFarChanged) {
    host.files.Put(kFile, "[PROFILE_1]\r\nProfileName=first\r\nServerIPAddress1=10.0.0.1\r\n"
                          "ServerComPort=40000\r\nServerBaudRate=300\r\nConfigTitle=new\r\n");
    config.strProfileName("old");
    config.iServerComPort(3);
    config.lServerBaudRate(9600);
    config.strConfigTitle("old");
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(config.strProfileName(), "first");
    EXPECT_EQ(config.strServerIPAddress1(), "10.0.0.1");
    EXPECT_EQ(config.iServerComPort(), 3);
    EXPECT_EQ(config.lServerBaudRate(), 9600);
    EXPECT_EQ(config.strConfigTitle(), "old");
}

TEST_F(ProfileRoundTrip, IntsAreWrittenAsDecimalDigits) {
    for (const IntKey& key : kIntKeys) {
        (config.*key.set)(-32768);
        EXPECT_EQ(Save(), 0);
        EXPECT_EQ(TextOf(key.strKey), "-32768") << key.strKey;
    }
}

TEST_F(ProfileRoundTrip, DoublesAreReadSafely) {
    for (const DoubleKey& key : kDoubleKeys) {
        for (const auto& [strText, dExpected] : {std::pair<const char*, double>{"1", 1.0},
                                                 {"1.5", 1.5},
                                                 {"2", 2.0},
                                                 {"-0.25", -0.25},
                                                 {"1,5", 0.0},
                                                 {"", 0.0},
                                                 {"one", 0.0}}) {
            PutKey(key.strKey, strText);
            EXPECT_EQ(Load(), 0);
            EXPECT_EQ((config.*key.get)(), dExpected) << key.strKey << "=" << strText;
        }
    }
}

TEST_F(ProfileRoundTrip, DoublesAreWrittenInTheirShortestDecimalForm) {
    for (const DoubleKey& key : kDoubleKeys) {
        for (const auto& [dValue, strText] : {std::pair<double, const char*>{1.0, "1"},
                                              {1.5, "1.5"},
                                              {2.0, "2"},
                                              {0.0, "0"},
                                              {0.1, "0.1"},
                                              {-2.5, "-2.5"},
                                              {100000.0, "100000"},
                                              {1e21, "1000000000000000000000"},
                                              {0.00001, "0.00001"}}) {
            (config.*key.set)(dValue);
            EXPECT_EQ(Save(), 0);
            EXPECT_EQ(TextOf(key.strKey), strText) << key.strKey;
        }
        for (const double dValue :
             {std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::max()}) {
            (config.*key.set)(dValue);
            EXPECT_EQ(Save(), 0);
            EXPECT_EQ(Load(), 0);
            EXPECT_EQ((config.*key.get)(), dValue) << key.strKey;
        }
    }
}

TEST_F(ProfileRoundTrip, BooleansAreTrueForTrueInAnyCaseAlone) {
    for (const BooleanKey& key : kBooleanKeys) {
        for (const char* strText : {"TRUE", "true", "True", "tRuE"}) {
            PutKey(key.strKey, strText);
            EXPECT_EQ(Load(), 0);
            for (const BooleanKey& other : kBooleanKeys) {
                EXPECT_EQ((config.*other.get)(), &other == &key)
                    << key.strKey << ", " << other.strKey;
            }
        }
        for (const char* strText :
             {"1", "-1", "0", "FALSE", "YES", "T", "TRUE1", "", "\" TRUE\"", "\"TRUE \""}) {
            (config.*key.set)(true);
            PutKey(key.strKey, strText);
            EXPECT_EQ(Load(), 0);
            EXPECT_FALSE((config.*key.get)()) << key.strKey << "=" << strText;
        }
    }
}

TEST_F(ProfileRoundTrip, BooleansAreWrittenEachToItsKey) {
    for (const BooleanKey& key : kBooleanKeys) {
        TBrennikClientConfig one;
        (one.*key.set)(true);
        host.profileStrings.writes.clear();
        EXPECT_EQ(one.SaveConfiguration(kFolder, 1, false), 0);
        std::vector<std::string> strTrue;
        for (const world::ProfileWrite& write : host.profileStrings.writes) {
            if (write.strValue == "TRUE" || write.strValue == "1") {
                strTrue.push_back(write.strKey + "=" + write.strValue);
            }
        }
        if (std::string(key.strKey) == "ForceApplicationSwap") {
            EXPECT_THAT(strTrue, IsEmpty());
        } else {
            EXPECT_THAT(strTrue,
                        ElementsAre(std::string(key.strKey) + (key.bAsDigit ? "=1" : "=TRUE")));
        }
    }
}

TEST_F(ProfileRoundTrip, BlockedSocketsNeverSurviveASave) {
    config.bServerBlockedSocket(true);
    config.bClientBlockedSocket(true);
    EXPECT_EQ(Save(), 0);
    EXPECT_EQ(TextOf("ServerBlockedSocket"), "1");
    EXPECT_EQ(TextOf("ClientBlockedSocket"), "1");
    EXPECT_EQ(Load(), 0);
    EXPECT_FALSE(config.bServerBlockedSocket());
    EXPECT_FALSE(config.bClientBlockedSocket());
}

TEST_F(ProfileRoundTrip, DownloadTypeIsFullForFAlone) {
    for (const char* strText : {"F", "f", "\" F \"", "\"f \""}) {
        PutKey("DownloadType", strText);
        config.lDownloadType(9);
        EXPECT_EQ(Load(), 0);
        EXPECT_EQ(config.lDownloadType(), 0) << strText;
    }
    for (const char* strText : {"P", "p", "", "FULL", "FF", "0", "1", "x"}) {
        PutKey("DownloadType", strText);
        config.lDownloadType(9);
        EXPECT_EQ(Load(), 0);
        EXPECT_EQ(config.lDownloadType(), 1) << strText;
    }
}

TEST_F(ProfileRoundTrip, DownloadTypeIsWrittenAsFOrP) {
    for (const auto& [lValue, strText] :
         {std::pair<int32_t, const char*>{0, "F"}, {1, "P"}, {2, "P"}, {-1, "P"}}) {
        config.lDownloadType(lValue);
        EXPECT_EQ(Save(), 0);
        EXPECT_EQ(TextOf("DownloadType"), strText);
    }
}

TEST_F(ProfileRoundTrip, PlatformNameKeepsItsBlanks) {
    PutKey("PlatformName", "\" VX520 \"");
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(config.strPlatformName(), " VX520 ");
}

TEST_F(ProfileRoundTrip, ForceApplicationSwapIsReadAndNeverWritten) {
    PutKey("ForceApplicationSwap", "TRUE");
    EXPECT_EQ(Load(), 0);
    EXPECT_TRUE(config.bForceApplicationSwap());
    config.bForceApplicationSwap(false);
    EXPECT_EQ(Save(), 0);
    EXPECT_EQ(TextOf("ForceApplicationSwap"), "TRUE");
}

} // namespace
} // namespace brennik
