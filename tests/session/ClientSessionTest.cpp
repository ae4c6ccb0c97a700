#include "link/TConnectionInfo.h"
#include "platform/RuntimeFailure.h"
#include "tests/session/SessionWorld.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using namespace session;
using namespace std::string_literals;
using world::Op;

class ClientSession : public SessionTest {};

constexpr const char* kTimedOut = "Timed out reading ISO packet";

TEST_F(ClientSession, SucceedsOnASessionWhoseFirstPacketIsSuccess) {
    Say({"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(engine->lCurrentState(), BrennikState::DisconnectingFromServer);
    EXPECT_EQ(peer.nDisconnected(), 1);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(ClientSession, WritesItsCourseToTheLog) {
    Say({Open("a.txt", 5), Write("hello"), "C", "S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(Log(),
              (std::vector<std::string>{
                  "INFO   : Brennik Client v1.3.2", "INFO   : Brennik Profile=7",
                  "INFO   : Brennik Application=APP", "INFO   : Brennik Terminal Id=T1",
                  "INFO   : Attempting connection to 10.0.0.1, Port 5000, Connection attempt 1",
                  "INFO   : Connected to 10.0.0.1, Port 5000, Socket " +
                      Log()[5].substr(Log()[5].rfind(' ') + 1),
                  "INFO   : Downloaded file=/srv/pos\\a.txt, filesize=5",
                  "INFO   : Connection Closed, Socket " + Log()[5].substr(Log()[5].rfind(' ') + 1) +
                      " Destroyed"}));
}

TEST_F(ClientSession, LogsEveryPacketWhenAsked) {
    config.bLogControlPackets(true);
    config.bLogProcessingPackets(true);
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    const auto lines = Log();
    ASSERT_EQ(lines.size(), 12u);
    EXPECT_EQ(lines[6], "CLIENT IN  : <ENQ>");
    EXPECT_EQ(lines[7].rfind("CLIENT OUT : <STX>VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,RELEASE,"
                             "CONFIG<ETX>",
                             0),
              0u);
    EXPECT_EQ(lines[8], "CLIENT IN  : <ACK>");
    EXPECT_EQ(lines[9].substr(0, 24), "CLIENT IN  : <STX>S<ETX>");
    EXPECT_EQ(lines[10], "CLIENT OUT : <ACK>");
}

TEST_F(ClientSession, SendsTheRequestOfTheProfileOnce) {
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    const std::string strRequest =
        Frame("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,RELEASE,CONFIG");
    EXPECT_EQ(peer.Received(), strRequest + kAck);
}

TEST_F(ClientSession, AsksForAFullDownloadOnlyForDownloadType0) {
    for (const auto& [lType, letter] :
         std::vector<std::pair<int32_t, std::string>>{{0, "F"}, {1, "P"}, {2, "P"}, {-1, "P"}}) {
        peer.Take();
        config.lDownloadType(lType);
        Say({"S"});
        ASSERT_EQ(Run(), 0);
        EXPECT_EQ(peer.Received().substr(0, 17), "\x02VFI,VX520,XDL," + letter + ",") << lType;
    }
}

TEST_F(ClientSession, ReadsTheProfileAnewForEachRun) {
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    config.strTerminalId("T2");
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_NE(peer.Received().find(",T2,"), std::string::npos);
}

TEST_F(ClientSession, StoresFilesAndCountsThem) {
    Say({Open("a.txt", 8), Write("one "), Write("two ", 4), "C", Open("b.bin", 4),
         "B\0\x04\0\0\0\0"s + "\0\x01\x02\xFF"s, "C", "S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(File("/srv/pos/a.txt"), "one two ");
    EXPECT_EQ(File("/srv/pos/b.bin"), "\0\x01\x02\xFF"s);
    ASSERT_EQ(engine->lNumFilesDownloaded(), 2);
    EXPECT_EQ(engine->GetFolderFromDownloadArray(0), "/srv/pos\\");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "a.txt");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(1), "b.bin");
    EXPECT_EQ(engine->strBaseFolder(), "/srv/pos\\");
    EXPECT_EQ(engine->strCurrentFolder(), "/srv/pos\\");
}

TEST_F(ClientSession, ActsOnLowerCasePacketsAsOnUpperCaseOnes) {
    Say({"o" + Open("a.txt", 2).substr(1), "b\0\x02\0\0\0\0hi"s, "lA\x1C"s + "1", "mHello",
         "psecret", "t20261114120000", "d\x01x"s, "c", "s"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(File("/srv/pos/a.txt"), "hi");
    EXPECT_EQ(File("/srv/pos/config.sys"), "A=1\r\n");
    EXPECT_EQ(engine->strStatusMessage(), "Hello");
}

TEST_F(ClientSession, IgnoresTheOffsetOfWriteData) {
    Say({Open("a.txt", 4), Write("cd", 2), Write("ab", 0), "C", "S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(File("/srv/pos/a.txt"), "cdab");
}

TEST_F(ClientSession, ShowsTheStateOfEachPacket) {
    std::vector<BrennikState> states;
    Say({"T20261114120000", "LA\x1C"s + "1", "MHi", "Psecret", "D\x01x"s, Open("a", 1), Write("x"),
         "C", Open("a", 1, 'A'), "C", "S"});
    onPayload = [&](size_t) { states.push_back(engine->lCurrentState()); };
    ASSERT_EQ(Run(), 0);
    using S = BrennikState;
    EXPECT_EQ(states,
              (std::vector<S>{S::Idle, S::ProcessingSetTime, S::ProcessingConfigSysVariable,
                              S::ProcessingMessage, S::ProcessingSetPassword,
                              S::ProcessingSetPassword, S::DownloadingFile, S::DownloadingFile,
                              S::DownloadingFile, S::DownloadingFile, S::DownloadingFile}));
    EXPECT_EQ(engine->lCurrentState(), S::DisconnectingFromServer);
}

TEST_F(ClientSession, NumbersTheStatesAsTheStatusWindowShowsThem) {
    using S = BrennikState;
    int32_t lNumber = 0;
    for (S state : {S::Idle, S::ProcessingSetTime, S::ProcessingConfigSysVariable,
                    S::ProcessingMessage, S::DownloadingFile, S::ProcessingSetPassword,
                    S::ConnectingToServer, S::DisconnectingFromServer, S::UploadingFile,
                    S::DownloadingTmsApplication, S::WaitingForDeviceReboot})
        EXPECT_EQ(static_cast<int32_t>(state), lNumber++);
}

TEST_F(ClientSession, ShowsTheProgressOfTheFileAsTheFarEndStatesIt) {
    std::vector<std::string> seen;
    // The second block states 9 bytes and carries 2: what it states counts.
    Say({Open("a.txt", 13), "B\0\x04\0\0\0\0abcd"s, "B\0\x09\0\0\0\x04"s + "de", "C", "S"});
    onPayload = [&](size_t) {
        seen.push_back(engine->strDownloadFileName() + " " +
                       std::to_string(engine->lFileBytesDownloaded()) + "/" +
                       std::to_string(engine->lDownloadFileSize()));
    };
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(seen, (std::vector<std::string>{" 0/0", "a.txt 0/13", "a.txt 4/13", "a.txt 13/13",
                                              "a.txt 13/13"}));
}

TEST_F(ClientSession, AnswersWithTheApplicationDownloadsProgressWhileOneWorks) {
    class Fixed : public DownloadProgress {
      public:
        const std::string& strDownloadFileName() const override { return strName; }
        int32_t lDownloadFileSize() const override { return 30; }
        int32_t lFileBytesDownloaded() const override { return 20; }
        std::string strName = "tms.out";
    };
    Say({Open("a.txt", 5), Write("hi"), "C", "S"});
    ASSERT_EQ(Run(), 0);
    TBrennikProtocolTestAccess access(*engine);
    access.BeginTmsAppDownload(std::make_unique<Fixed>());
    EXPECT_EQ(engine->strDownloadFileName(), "tms.out");
    EXPECT_EQ(engine->lDownloadFileSize(), 30);
    EXPECT_EQ(engine->lFileBytesDownloaded(), 20);
    access.EndTmsAppDownload();
    EXPECT_EQ(engine->strDownloadFileName(), "a.txt");
    EXPECT_EQ(engine->lDownloadFileSize(), 5);
    EXPECT_EQ(engine->lFileBytesDownloaded(), 2);
}

TEST_F(ClientSession, ClosesAFileLeftOpenAtSuccessAndDoesNotRecordIt) {
    Say({Open("a.txt", 5), Write("hello"), "S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(File("/srv/pos/a.txt"), "hello");
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(ClientSession, RecordsTheLastNameOnceMoreOnACloseWithNothingOpen) {
    Say({"C", Open("a.txt", 0), "C", "C", "S"});
    ASSERT_EQ(Run(), 0);
    ASSERT_EQ(engine->lNumFilesDownloaded(), 3);
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(0), "");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(1), "a.txt");
    EXPECT_EQ(engine->GetFileNameFromDownloadArray(2), "a.txt");
}

TEST_F(ClientSession, GivesEmptyTextsForIndexesOutOfRange) {
    Say({Open("a.txt", 0), "C", "S"});
    ASSERT_EQ(Run(), 0);
    for (int32_t lIndex : {-1, 1, 2, 1000000}) {
        EXPECT_EQ(engine->GetFolderFromDownloadArray(lIndex), "") << lIndex;
        EXPECT_EQ(engine->GetFileNameFromDownloadArray(lIndex), "") << lIndex;
    }
}

TEST_F(ClientSession, FailsOnUnsuccessfulAlthoughTheLinkIsFine) {
    Say({Open("a.txt", 1), Write("x"), "C", "U"});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000030, "Brennik download failed.");
    EXPECT_EQ(engine->lCurrentState(), BrennikState::DownloadingFile) << "unchanged by the packet";
    EXPECT_EQ(peer.nDisconnected(), 1);
    EXPECT_EQ(engine->lNumFilesDownloaded(), 1);
}

TEST_F(ClientSession, FailsOnAnUnknownPacketWhichTheLinkHasAcknowledged) {
    Say({"X", "S"});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000022, "Unknown brennik packet type");
    EXPECT_EQ(peer.Received().back(), '\x06');
    EXPECT_EQ(engine->lCurrentState(), BrennikState::Idle);
}

TEST_F(ClientSession, FailsOnAPacketTooShortForItsLayout) {
    Say({"Oshort", "S"});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000000, "TBrennikPacket.BreakOutOpenFilePacket() Failed - Type mismatch");
}

TEST_F(ClientSession, KeepsThreeFilesWhenTheSessionDiesByTimeOut) {
    Say({Open("1", 1), Write("x"), "C", Open("2", 0), "C", Open("3", 0), "C"});
    const auto begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, kTimedOut);
    EXPECT_EQ(engine->lNumFilesDownloaded(), 3);
    EXPECT_TRUE(Exists("/srv/pos/1") && Exists("/srv/pos/2") && Exists("/srv/pos/3"));
    // ReadPacketAttempts 1 makes two reads of ReadPacketTimeout 3 seconds.
    EXPECT_GE(host.Now() - begin, 6000000);
    EXPECT_LE(host.Now() - begin, 6100000);
}

TEST_F(ClientSession, ClosesAFileCutOffByATimeOutAndLeavesItThere) {
    Say({Open("part", 100), Write("half")});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(File("/srv/pos/part"), "half");
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(host.files.nOpenStreams(), 0);
}

TEST_F(ClientSession, FailsWithTheChannelsErrorWhenNobodyListensAndDoesNotDisconnect) {
    host.network.Refuse("10.0.0.1", 5000);
    EXPECT_EQ(Run(), 1);
    const std::string strText = "Timed out waiting for connection to remote machine - WSA Error "
                                "Code=10061 WSA Error Message=";
    EXPECT_EQ(engine->lErrorCode(), 1000004);
    EXPECT_EQ(engine->strErrorMessage(), strText);
    // The channel has logged its own failure; the session logs it once more at its end.
    const std::string strLine = "Error Code=1000004, Error Message=" + strText;
    EXPECT_EQ(Errors(), (std::vector<std::string>{strLine, strLine}));
    for (const std::string& line : Log())
        EXPECT_EQ(line.find("Connection Closed"), std::string::npos);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(ClientSession, FailsWhenTheFarEndDoesNotSpeakWithinTenSeconds) {
    peer.OnConnect = nullptr;
    const auto begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000012, "Failed reading ENQ character");
    EXPECT_GE(host.Now() - begin, 10000000);
    EXPECT_LE(host.Now() - begin, 10050000);
    EXPECT_EQ(peer.Received(), "") << "nothing may go out before the ENQ";
    EXPECT_EQ(peer.nDisconnected(), 1);
}

TEST_F(ClientSession, FailsWithoutATextWhenEverySendOfTheRequestIsRefused) {
    peer.OnBytes = [&](std::string_view) { peer.Push(kNak); };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(0, "");
    const std::string strFrame = Frame("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1,RELEASE,CONFIG");
    EXPECT_EQ(peer.Received(), strFrame + strFrame + strFrame);
}

TEST_F(ClientSession, FailsWhenTheRequestCannotBeSent) {
    host.FailNext(Op::Send, {.lLastError = 10054});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), -1);
    EXPECT_EQ(engine->strErrorMessage().substr(0, 34), "Failed sending data to socket Data");
    EXPECT_EQ(peer.nDisconnected(), 1);
}

TEST_F(ClientSession, FailsWithAnInvalidNumberOfConnectionAttempts) {
    config.lConnectAttempts(0);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000010, "Connection Attempts configuration value is invalid");
}

TEST_F(ClientSession, StopsBeforeTheConnectionWhenFoldersFail) {
    config.strWorkingFolder("/missing/parent/pos");
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000026, "Failed creating folder : /missing/parent/pos\\");
    EXPECT_EQ(peer.nConnections(), 0);
    EXPECT_EQ(Log().size(), 5u);
}

TEST_F(ClientSession, SendsNoRequestFieldsBeyondTheRecordsOwnQuoting) {
    config.strApplicationID("A,B");
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_NE(peer.Received().find(",\"A,B\","), std::string::npos);
}

TEST_F(ClientSession, WritesNoLogWithLoggingOff) {
    config.bLoggingEnabled(false);
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_FALSE(Exists("/log/session.log"));
}

TEST_F(ClientSession, HandsEveryOtherModeToThePassThroughAtOnce) {
    for (int32_t lMode : {2, 3, 4, -1}) {
        config.lOperatingMode(lMode);
        config.iClientComPort(99);
        config.strClientIPAddress1("10.0.0.99");
        config.lConnectAttempts(0); // the device side fails at once
        EXPECT_EQ(Run(), 1) << lMode;
        EXPECT_EQ(engine->lErrorCode(), 1000010) << lMode;
        EXPECT_EQ(peer.nConnections(), 0) << lMode;
        EXPECT_FALSE(Exists("/srv/pos")) << "no step of the client session may run";
    }
    EXPECT_EQ(Log()[2], "INFO   : [C] State=PASSTHRU_ST_START, lTries=1, Waiting for terminal to "
                        "reboot...");
}

// ---- Run-time failures end the run at once.

TEST_F(ClientSession, EndsAtOnceOnARunTimeFailureWithoutDisconnectAndLog) {
    Say({"MHi", "S"});
    // The first events behind a packet are pumped by the session itself.
    host.OnPump([&] {
        if (engine->lCurrentState() == BrennikState::ProcessingMessage)
            throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    });
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000000);
    EXPECT_EQ(engine->strErrorMessage(),
              "TBrennikProtocol.DoBrennikProtocol() Failed - Subscript out of range");
    EXPECT_TRUE(Errors().empty());
    EXPECT_EQ(Log().back().rfind("INFO   : Connected to", 0), 0u) << "nothing tells of a close";
}

// ---- The connection values of a profile.

TEST_F(ClientSession, ConvertsTheParityByItsFirstLetter) {
    for (const auto& [strParity, lExpected] :
         std::vector<std::pair<std::string, int32_t>>{{"EVEN", 0},
                                                      {"e", 0},
                                                      {"NONE", 2},
                                                      {"none", 2},
                                                      {"SPACE", 3},
                                                      {"s", 3},
                                                      {"MARK", 4},
                                                      {"m", 4},
                                                      {"ODD", 1},
                                                      {"o", 1},
                                                      {"x", 1},
                                                      {"", 1},
                                                      {" EVEN", 1}}) {
        for (bool bServer : {true, false}) {
            TConnectionInfo oConnInfo;
            config.strServerParity(bServer ? strParity : "EVEN");
            config.strClientParity(bServer ? "EVEN" : strParity);
            TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, bServer);
            EXPECT_EQ(oConnInfo.lParity(), lExpected) << strParity;
        }
    }
}

TEST_F(ClientSession, ConvertsDataBitsStopBitsAndFlowControl) {
    const std::vector<std::pair<int16_t, int32_t>> databits = {
        {4, 0}, {5, 1}, {6, 2}, {7, 3}, {8, 4}, {9, 4}, {0, 4}, {3, 4}, {-1, 4}};
    const std::vector<std::pair<double, int32_t>> stopbits = {
        {1.0, 0}, {1.5, 1}, {2.0, 2}, {0.0, 2}, {1.25, 2}};
    const std::vector<std::pair<int16_t, int32_t>> flows = {{0, 0}, {1, 3}, {2, 1},
                                                            {3, 2}, {7, 2}, {-1, 2}};
    TConnectionInfo oConnInfo;
    for (const auto& [iValue, lExpected] : databits) {
        config.iServerDatabits(iValue);
        config.iClientDatabits(iValue);
        for (bool bServer : {true, false}) {
            TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, bServer);
            EXPECT_EQ(oConnInfo.lDatabits(), lExpected) << iValue;
        }
    }
    for (const auto& [dValue, lExpected] : stopbits) {
        config.dServerStopBit(dValue);
        config.dClientStopBit(dValue);
        for (bool bServer : {true, false}) {
            TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, bServer);
            EXPECT_EQ(oConnInfo.lStopbit(), lExpected) << dValue;
        }
    }
    for (const auto& [iValue, lExpected] : flows) {
        config.iServerFlowControl(iValue);
        config.iClientFlowControl(iValue);
        for (bool bServer : {true, false}) {
            TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, bServer);
            EXPECT_EQ(oConnInfo.lFlowControl(), lExpected) << iValue;
        }
    }
}

TEST_F(ClientSession, FillsTheConnectionFromTheKeysOfTheSide) {
    config.iServerComPort(3);
    config.lServerBaudRate(19200);
    config.lServerConnectTimeout(11);
    config.bServerBlockedSocket(true);
    config.strServerIPAddress1("s1");
    config.strServerIPAddress2("s2");
    config.strServerIPAddress3("s3");
    config.lServerPort1(1);
    config.lServerPort2(2);
    config.lServerPort3(3);
    config.iClientComPort(12);
    config.lClientBaudRate(115200);
    config.lClientConnectTimeout(22);
    config.strClientIPAddress1("c1");
    config.strClientIPAddress2("c2");
    config.strClientIPAddress3("c3");
    config.lClientPort1(4);
    config.lClientPort2(5);
    config.lClientPort3(6);
    config.lConnectAttempts(9);

    TConnectionInfo oConnInfo;
    oConnInfo.lSendAttempts(77); // not of the profile: keeps what it holds
    TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, true);
    EXPECT_EQ(oConnInfo.strComPort(), "COM3");
    EXPECT_EQ(oConnInfo.lBaudRate(), 19200);
    EXPECT_EQ(oConnInfo.lConnectTimeout(), 11);
    EXPECT_TRUE(oConnInfo.bBlockedSocket());
    EXPECT_EQ(oConnInfo.strIPAddress1() + oConnInfo.strIPAddress2() + oConnInfo.strIPAddress3(),
              "s1s2s3");
    EXPECT_EQ(oConnInfo.lIPPortNo1(), 1);
    EXPECT_EQ(oConnInfo.lIPPortNo2(), 2);
    EXPECT_EQ(oConnInfo.lIPPortNo3(), 3);
    EXPECT_EQ(oConnInfo.lConnectionAttempts(), 9);
    EXPECT_EQ(oConnInfo.lSendAttempts(), 77);

    TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, false);
    EXPECT_EQ(oConnInfo.strComPort(), "COM12");
    EXPECT_EQ(oConnInfo.lBaudRate(), 115200);
    EXPECT_EQ(oConnInfo.lConnectTimeout(), 22);
    EXPECT_FALSE(oConnInfo.bBlockedSocket());
    config.bServerBlockedSocket(false);
    config.bClientBlockedSocket(true);
    TBrennikProtocolTestAccess::LoadConnectionInfo(config, oConnInfo, false);
    EXPECT_TRUE(oConnInfo.bBlockedSocket());
    EXPECT_EQ(oConnInfo.strIPAddress1() + oConnInfo.strIPAddress2() + oConnInfo.strIPAddress3(),
              "c1c2c3");
    EXPECT_EQ(oConnInfo.lIPPortNo1(), 4);
    EXPECT_EQ(oConnInfo.lIPPortNo2(), 5);
    EXPECT_EQ(oConnInfo.lIPPortNo3(), 6);
    EXPECT_EQ(oConnInfo.lConnectionAttempts(), 9);
    EXPECT_EQ(oConnInfo.lSendAttempts(), 77);
}

} // namespace
} // namespace brennik
