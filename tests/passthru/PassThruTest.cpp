#include "passthru/PassThruRun.h"
#include "tests/passthru/PassThruWorld.h"
#include "tests/session/SessionWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using session::Open;
using session::Write;
using ::testing::ElementsAre;

TEST(PassThruStateName, NamesEveryStateAndNothingElse) {
    const Lines names{"PASSTHRU_ST_COMLETE",         "PASSTHRU_ST_ERROR",
                      "PASSTHRU_ST_PARTIALDOWNLOAD", "PASSTHRU_ST_UPLOADFILES",
                      "PASSTHRU_ST_FULLDOWNLOAD",    "PASSTHRU_ST_TMSENQUIRY",
                      "PASSTHRU_ST_START",           "PASSTHRU_ST_USERABORTED",
                      "PASSTHRU_ST_FULLTMSAPP",      "PASSTHRU_ST_DOWNLOAAPPCOMPLETE",
                      "PASSTHRU_ST_LASTFULLTMSAPP"};
    for (int32_t lState = 0; lState < 11; ++lState)
        EXPECT_EQ(PassThruStateName(lState), names[static_cast<size_t>(lState)]);
    EXPECT_EQ(PassThruStateName(11), "");
    EXPECT_EQ(PassThruStateName(-1), "");
}

class PassThru : public PassThruTest {};

// ---- The cases, on both wires.

TEST_F(PassThru, PassesAPartialDownloadThrough) {
    Download("XDL", "P");
    EXPECT_EQ(Run(), 0);
    const std::string strOpen = Open("a.bin", 4);
    const std::string strWrite = Write("data");
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + EditedRequest("XDL", "P") + "]", "D:ACK",
                                   "D:[" + strOpen + "]", "S:ACK", "D:[" + strWrite + "]", "S:ACK",
                                   "D:[C]", "S:ACK", "D:[S]", "S:ACK"));
    EXPECT_THAT(Log(),
                ElementsAre("Brennik Client v1.3.2", "Brennik Profile=7",
                            "Connected to Port=COM2, BaudRate=19200, Parity=None ,Databits=8 "
                            ",Stopbit=1 ,Flowcontrol=None ,Connection Attempt=1",
                            "BaudRate set @ 19200",
                            "Attempting connection to 10.0.0.1, Port 5000, Connection attempt 1",
                            "Connected to 10.0.0.1, Port 5000, Socket 4",
                            "Connection Closed, Socket 4 Destroyed",
                            "State=PASSTHRU_ST_PARTIALDOWNLOAD", "Connection Closed",
                            "[B] State=PASSTHRU_ST_PARTIALDOWNLOAD, Exiting now as session is "
                            "complete"));
    EXPECT_EQ(engine->strDownloadFileName(), "a.bin");
    EXPECT_EQ(engine->lDownloadFileSize(), 4);
    EXPECT_EQ(engine->lFileBytesDownloaded(), 4);
    EXPECT_EQ(engine->lCurrentState(), BrennikState::DownloadingFile);
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(host.files.Get("/srv/pos/keep.txt"), "kept") << "a relay stores and wipes nothing";
    ExpectNothingOpen();
}

TEST_F(PassThru, PassesAFullDownloadThrough) {
    Download("XDL", "F");
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(wires[1], "S:[" + EditedRequest("XDL", "F") + "]");
    EXPECT_EQ(Log().back(),
              "[B] State=PASSTHRU_ST_FULLDOWNLOAD, Exiting now as session is complete");
}

TEST_F(PassThru, ForcesAFullDownload) {
    ForceFullDownload();
    const std::string strEdited = "VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT7,,";
    Serve(strEdited, {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(wires, ElementsAre("D:[3.9,2,U,Q,0,0,,,F,]", "D:ACK", "S:[" + strEdited + "]",
                                   "D:ACK", "D:[S]", "S:ACK"));
    EXPECT_EQ(Log().back(),
              "[B] State=PASSTHRU_ST_FULLDOWNLOAD, Exiting now as session is complete");
}

TEST_F(PassThru, PassesAnUploadThrough) {
    config.lPassThruType(1);
    config.lUploadFileType(3);
    config.bPedDownload(true); // plays no part: an upload makes no extra reboot
    device.ExpectLrc(true);
    device.On("[3.9,3,U,Q,0,0,,,U,3]", {Saying("\x06" + LrcFrame("3.9,1,U,Q,0,0,,,A"))});
    const std::string strRequest = DeviceRequest("XUL", "F");
    const std::string strEdited = "VFI,VX520,XUL,F,DAPP,T1,EPROM,1024,4096,PT7,,";
    device.On("ACK", {CrcFrame(strRequest), CrcFrame(Open("log.txt", 3)), CrcFrame(Write("abc")),
                      CrcFrame("C"), CrcFrame("S")});
    server.Always("[]", "\x06");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(wires,
                ElementsAre("D:[3.9,3,U,Q,0,0,,,U,3]", "D:ACK", "S:[" + strEdited + "]", "D:ACK",
                            "S:[" + Open("log.txt", 3) + "]", "D:ACK", "S:[" + Write("abc") + "]",
                            "D:ACK", "S:[C]", "D:ACK", "S:[S]", "D:ACK"));
    EXPECT_EQ(engine->lCurrentState(), BrennikState::UploadingFile);
    EXPECT_EQ(engine->strDownloadFileName(), "log.txt");
    EXPECT_EQ(engine->lFileBytesDownloaded(), 3);
    EXPECT_EQ(Log().back(),
              "[B] State=PASSTHRU_ST_UPLOADFILES, Exiting now as session is complete");
}

TEST_F(PassThru, GoesThroughASeriesOfApplicationsUpToTheLast) {
    AnswerStatusQueries();
    device.Always("[]", "\x06");
    device.On("ENQ", {CrcFrame(DeviceRequest("XCDL", "F")), CrcFrame(DeviceRequest("XCDLF", "F"))});
    const std::string strEdited = EditedRequest("XCDL", "F");
    server.On("[" + strEdited + "]",
              {Saying("\x06" + CrcFrame("S")), Saying("\x06" + CrcFrame("S"))});
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + strEdited + "]", "D:ACK", "D:[S]", "S:ACK",
                                   "D:[3.9,0,LS,Q,0,0,,,]", "D:ACK", "D:ENQ",
                                   "S:[" + strEdited + "]", "D:ACK", "D:[S]", "S:ACK"))
        << "the server never sees the F of XCDLF";
    EXPECT_GE(host.Now() - begin, 20 * kSecond);
    EXPECT_THAT(LogWith("State="),
                ElementsAre("[C] State=PASSTHRU_ST_FULLTMSAPP, lTries=1, Waiting for terminal to "
                            "reboot...",
                            "State=PASSTHRU_ST_LASTFULLTMSAPP",
                            "[B] State=PASSTHRU_ST_LASTFULLTMSAPP, Exiting now as session is "
                            "complete"));
    EXPECT_EQ(nServerConnections, 2);
}

TEST_F(PassThru, ServesTheLocalListAndGoesOnWithANewCycle) {
    AnswerStatusQueries();
    AskForLocalList();
    device.On("ENQ", {CrcFrame(DeviceRequest("XDL", "F")), CrcFrame(DeviceRequest("XDL", "P"))});
    Serve(EditedRequest("XDL", "P"), {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(nServerConnections, 1) << "the first cycle needs no server";
    EXPECT_THAT(LogWith("State="),
                ElementsAre("[C] State=PASSTHRU_ST_DOWNLOAAPPCOMPLETE, lTries=1, Waiting for "
                            "terminal to reboot...",
                            "State=PASSTHRU_ST_PARTIALDOWNLOAD",
                            "[B] State=PASSTHRU_ST_PARTIALDOWNLOAD, Exiting now as session is "
                            "complete"));
}

TEST_F(PassThru, PassesAnEnquiryAndGoesOnWithoutAWait) {
    device.On("ENQ", {CrcFrame(kEnquiry), CrcFrame(DeviceRequest("XDL", "P"))});
    device.Always("[]", "\x06");
    server.On("[" + kEditedEnquiry + "]", {Saying("\x06" + CrcFrame(kAccepted))});
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("S"))});
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 0);
    EXPECT_LT(host.Now() - begin, 2 * kSecond);
    EXPECT_THAT(wires,
                ElementsAre("D:ENQ", "S:[" + kEditedEnquiry + "]", "S:ACK", "D:ACK",
                            "D:[" + kAccepted + "]", "D:ENQ",
                            "S:[" + EditedRequest("XDL", "P") + "]", "D:ACK", "D:[S]", "S:ACK"));
    EXPECT_EQ(LogWith("STATE=TMSENQUIRY").size(), 1u);
    EXPECT_THAT(LogWith("[C]"), ElementsAre("[C] State=PASSTHRU_ST_TMSENQUIRY, lTries=1, Waiting "
                                            "for terminal to reboot..."));
    EXPECT_TRUE(LogWith("Delaying").empty());
}

TEST_F(PassThru, CarriesOutTheRequestThatFollowsARefusedEnquiry) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame(Open("a.bin", 4)))});
    server.On("ACK", {"", CrcFrame(Write("data")), CrcFrame("C"), CrcFrame("S")});
    EXPECT_EQ(Run(), 1) << "however the relay went";
    ExpectError(1000030, "not known");
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + kEditedEnquiry + "]", "S:ACK", "D:ACK",
                                   "D:[" + kRefused + "]", "S:[" + EditedRequest("XDL", "P") + "]",
                                   "S:ACK", "D:ACK", "D:[" + Open("a.bin", 4) + "]", "S:ACK",
                                   "D:[" + Write("data") + "]", "S:ACK", "D:[C]", "S:ACK", "D:[S]"))
        << "the links acknowledge by themselves";
    EXPECT_EQ(engine->lCurrentState(), BrennikState::UploadingFile);
    EXPECT_TRUE(LogWith("ERROR").empty());
    EXPECT_TRUE(LogWith("State=").empty()) << "nothing but the close is done for such an end";
}

TEST_F(PassThru, AnUnsuccessfulRelayBehindARefusedEnquiryIsNoError) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("U"))});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000030, "Brennik upload failed.");
    EXPECT_TRUE(LogWith("ERROR").empty());
}

// ---- Acknowledgements.

TEST_F(PassThru, CopiesANakToTheServerWhichSendsAgain) {
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {"C", "S"});
    device.On("[C]", {"\x15", "\x06"});
    server.On("NAK", {CrcFrame("C")});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + EditedRequest("XDL", "P") + "]", "D:ACK",
                                   "D:[C]", "S:NAK", "D:[C]", "S:ACK", "D:[S]", "S:ACK"));
}

TEST_F(PassThru, GivesAFrameThatArrivedWithAWrongCheckARightOne) {
    Ask(DeviceRequest("XDL", "P"));
    std::string strWrong = CrcFrame("MHi");
    strWrong.back() = static_cast<char>(strWrong.back() ^ 1);
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + strWrong)});
    server.On("ACK", {CrcFrame("S")});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(wires[3], "D:[MHi]");
    EXPECT_EQ(server.Count("NAK"), 0);
}

TEST_F(PassThru, GivesTheDeviceTheServersVerdictOnItsRequest) {
    Ask(DeviceRequest("XDL", "P"));
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x15")});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(device.Count("NAK"), 1);
}

TEST_F(PassThru, PassesAnyVerdictOnButNothingElseThatIsNoAnswer) {
    Ask(DeviceRequest("XDL", "P"));
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("v" + CrcFrame("S"))});
    device.On("[S]", {"zz\x06"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + EditedRequest("XDL", "P") + "]", "D:noise",
                                   "D:[S]", "S:ACK"));
}

TEST_F(PassThru, PassesNoNoiseOnInAnUpload) {
    Upload({"C", "S"});
    server.On("[C]", {"zz\x06"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(device.Count("noise"), 0);
    EXPECT_THAT(Lines(wires.end() - 4, wires.end()),
                ElementsAre("S:[C]", "D:ACK", "S:[S]", "D:ACK"));
}

TEST_F(PassThru, CopiesAnAnswerOfManyBytesAsItIs) {
    Download("XDL", "P");
    const std::string strAnswer = "\x02R4\x03??"; // with a check that is none
    device.On("[" + Open("a.bin", 4) + "]", {Saying(strAnswer)});
    server.On("bad[R4]", {CrcFrame("S")});
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(server.Bytes().find(strAnswer) != std::string::npos);
    EXPECT_EQ(device.Payloads(), (Lines{Open("a.bin", 4), "S"}));
}

TEST_F(PassThru, TellsTheProgressOfTheLastFileAlone) {
    Ask(DeviceRequest("XDL", "P"));
    const std::string strAppend = Open("b.bin", 9, 'A');
    Serve(EditedRequest("XDL", "P"),
          {Open("a.bin", 4), Write("data"), "C", strAppend, Write("ab"), Write("cde"), "C", "S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(engine->strDownloadFileName(), "b.bin");
    EXPECT_EQ(engine->lDownloadFileSize(), 9);
    EXPECT_EQ(engine->lFileBytesDownloaded(), 5);
}

// ---- The extra reboot of a device that is told to download.

TEST_F(PassThru, MakesNoExtraRebootBehindAnUpload) {
    config.bPedDownload(true);
    Upload({"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("State="),
                ElementsAre("State=PASSTHRU_ST_UPLOADFILES",
                            "[B] State=PASSTHRU_ST_UPLOADFILES, Exiting now as session is "
                            "complete"));
}

TEST_F(PassThru, MakesOneExtraRebootCycleForAPedDownload) {
    AnswerStatusQueries();
    TellToDownload();
    server.On("[" + EditedRequest("XDL", "F") + "]",
              {Saying("\x06" + CrcFrame("S")), Saying("\x06" + CrcFrame("S"))});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(wires,
                ElementsAre("D:[3.9,2,U,Q,0,0,,,T,]", "D:ACK",
                            "S:[" + EditedRequest("XDL", "F") + "]", "D:ACK", "D:[S]", "S:ACK",
                            "D:[3.9,0,LS,Q,0,0,,,]", "D:ACK", "D:[3.9,2,U,Q,0,0,,,T,]", "D:ACK",
                            "S:[" + EditedRequest("XDL", "F") + "]", "D:ACK", "D:[S]", "S:ACK"))
        << "told once more to download behind the extra reboot";
    EXPECT_THAT(LogWith("State="),
                ElementsAre("State=PASSTHRU_ST_FULLDOWNLOAD",
                            "[A] State=PASSTHRU_ST_FULLDOWNLOAD, lTries=1, Waiting for terminal "
                            "to reboot...",
                            "State=PASSTHRU_ST_FULLDOWNLOAD",
                            "[B] State=PASSTHRU_ST_FULLDOWNLOAD, Exiting now as session is "
                            "complete"));
}

TEST_F(PassThru, TellsTheDeviceAnewInAnotherRunOfTheSameEngine) {
    AnswerStatusQueries();
    TellToDownload();
    server.Always("[]", "\x06" + CrcFrame("S"));
    const std::string strCommand = std::string("[") + kDownloadCommand + "]";
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(device.Count(strCommand), 2) << "once ahead of the extra reboot, and once behind it";
    EXPECT_EQ(RunAgain(), 0);
    EXPECT_EQ(device.Count(strCommand), 4);
}

TEST_F(PassThru, ForgetsInAnotherRunThatTheDeviceHasAnswered) {
    AnswerStatusQueries();
    TellToDownload();
    server.Always("[]", "\x06" + CrcFrame("S"));
    EXPECT_EQ(Run(), 0);
    EXPECT_TRUE(TBrennikProtocolTestAccess(*engine).bDeviceAnswered());
    config.bPedDownload(false);
    Download("XDL", "P");
    EXPECT_EQ(RunAgain(), 0);
    EXPECT_FALSE(TBrennikProtocolTestAccess(*engine).bDeviceAnswered());
}

// ---- Failures.

TEST_F(PassThru, MakesThirteenCyclesWithADeviceThatNeverAnswers) {
    host.SetBudget(50000000);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000011, "Timed out reading ISO packet");
    EXPECT_EQ(LogWith("[C] State=PASSTHRU_ST_START").size(), 13u);
    EXPECT_EQ(LogWith("Brennik Profile=7").size(), 13u);
    EXPECT_EQ(LogWith("BaudRate set @").size(), 5u) << "only the first cycle does any work";
    EXPECT_EQ(LogWith("[C]").back(), "[C] State=PASSTHRU_ST_START, lTries=13, Waiting for terminal "
                                     "to reboot...");
    EXPECT_EQ(Log().back(), "ERROR  : Error Code=1000011, Error Message=Timed out reading ISO "
                            "packet");
    EXPECT_EQ(nServerConnections, 0);
    ExpectNothingOpen();
}

TEST_F(PassThru, EndsBehindTheCycleWhenTheServerCantBeReached) {
    host.network.Refuse("10.0.0.1", 5000);
    Ask(DeviceRequest("XDL", "P"));
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000004);
    EXPECT_EQ(device.Count("ACK"), 0) << "the device hears nothing of its request";
    EXPECT_EQ(LogWith("[B]").size(), 1u);
    EXPECT_EQ(LogWith("ERROR").size(), 2u) << "the attempt and the run";
}

TEST_F(PassThru, EndsWithTheServersRefusalInADownload) {
    Download("XDL", "F", "U");
    EXPECT_EQ(Run(), 1);
    ExpectError(1000030, "Brennik download failed.");
    EXPECT_EQ(wires.back(), "S:ACK") << "delivered and acknowledged all the same";
    EXPECT_THAT(LogWith("ERROR"),
                ElementsAre("ERROR  : Error Code=1000030, Error Message=Brennik download failed."));
}

TEST_F(PassThru, EndsBehindAFrameThatItDoesNotUnderstand) {
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {"X", "S"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000022, "Unknown brennik packet type");
    EXPECT_THAT(Lines(wires.end() - 2, wires.end()), ElementsAre("D:[X]", "S:ACK"));
}

TEST_F(PassThru, EndsBehindAnEmptyFrameOnceItIsDelivered) {
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {"", "S"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000022, "Unknown brennik packet type");
    EXPECT_THAT(Lines(wires.end() - 2, wires.end()), ElementsAre("D:[]", "S:ACK"));
}

TEST_F(PassThru, EndsAnUploadBehindAnEmptyFrameOnceItIsDelivered) {
    Upload({"", "S"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000022, "Unknown brennik packet type");
    EXPECT_THAT(Lines(wires.end() - 2, wires.end()), ElementsAre("S:[]", "D:ACK"));
}

TEST_F(PassThru, TakesTheTextOfADeviceThatFallsSilentInAnUploadFromTheServersLink) {
    Upload({}); // its own link times out, the server's has no text
    EXPECT_EQ(Run(), 1);
    ExpectError(0, "");
    EXPECT_THAT(LogWith("ERROR"), ElementsAre("ERROR  : Error Code=0, Error Message="));
}

TEST_F(PassThru, EndsAnUploadByItsOwnText) {
    Upload({"U"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000030, "Brennik upload failed.");
}

TEST_F(PassThru, RefusesADeviceOnTcpAtTheHandOver) {
    host.network.AddPeer("10.0.0.2", 6000);
    config.lOperatingMode(3);
    config.strClientIPAddress1("10.0.0.2");
    config.lClientPort1(6000);
    config.lClientConnectTimeout(5);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000000, "TBrennikProtocol.DoBrennikPassThruProtocol() Failed - Type mismatch");
    EXPECT_EQ(Log().back(), "Connected to 10.0.0.2, Port 6000, Socket 4");
    ExpectNothingOpen();
}

TEST_F(PassThru, KeepsTheStateOfAnUploadThatTheDeviceRefused) {
    config.lPassThruType(1);
    device.ExpectLrc(true);
    device.On("[3.9,3,U,Q,0,0,,,U,0]", {Saying("\x06" + LrcFrame("3.9,1,U,Q,0,0,,,N"))});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000032, "Quayminder does not authorise upload of files");
    EXPECT_EQ(LogWith("[B] State=PASSTHRU_ST_UPLOADFILES").size(), 1u) << "stops at once";
}

TEST_F(PassThru, KeepsTheStateOfAForcedDownloadThatTheDeviceRefused) {
    ForceFullDownload("3.9,1,T,Q,0,0,,,N");
    EXPECT_EQ(Run(), 1);
    ExpectError(1000032, "Quayminder does not authorise upload of files");
    EXPECT_EQ(LogWith("[B] State=PASSTHRU_ST_FULLDOWNLOAD").size(), 1u);
    EXPECT_EQ(nServerConnections, 0);
}

TEST_F(PassThru, PassesARequestOfAnotherKindAsItCame) {
    Ask(DeviceRequest("XUL", "F"));
    Serve(DeviceRequest("XUL", "F"), {"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(LogWith("[B] State=PASSTHRU_ST_PARTIALDOWNLOAD").size(), 1u);
}

// ---- Times and attempts, which are those of the profile on both sides.

TEST_F(PassThru, WaitsForAFrameOfTheServerAsOftenAndAsLongAsTheProfileSays) {
    config.lReadPacketAttempts(2);
    config.lReadPacketTimeout(7);
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {});
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    EXPECT_GE(host.Now() - begin, 21 * kSecond);
    EXPECT_LT(host.Now() - begin, 22 * kSecond);
}

TEST_F(PassThru, WaitsForAFrameOfTheDeviceAsOftenAndAsLongAsTheProfileSays) {
    config.lReadPacketAttempts(2);
    config.lReadPacketTimeout(7);
    Upload({});
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    EXPECT_GE(host.Now() - begin, 21 * kSecond);
    EXPECT_LT(host.Now() - begin, 22 * kSecond);
}

TEST_F(PassThru, WaitsForAnAnswerOfTheDeviceAsLongAsTheProfileSays) {
    config.lCharTimeout(11);
    Download("XDL", "P");
    device.On("[" + Open("a.bin", 4) + "]", {""});
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    EXPECT_GE(host.Now() - begin, 10 * kSecond); // its end is a whole second
    EXPECT_LT(host.Now() - begin, 12 * kSecond);
}

TEST_F(PassThru, SendsARefusedEnquiryAsOftenAsTheProfileSays) {
    config.lSendPacketAttempts(4);
    device.On("ENQ", {CrcFrame(kEnquiry)});
    server.Always("[]", "\x15");
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(server.Count("[" + kEditedEnquiry + "]"), 4);
    ExpectError(0, "");
}

// ---- Cancel.

TEST_F(PassThru, SeesACancelInARelayAtOnce) {
    Download("XDL", "P");
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "[C]")
            engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(device.Count("[S]"), 0);
    EXPECT_TRUE(LogWith("State=").empty());
    EXPECT_TRUE(LogWith("ERROR").empty()) << "a cancel is no error of its own";
    EXPECT_EQ(Log().back(), "Connection Closed");
    ExpectNothingOpen();
}

TEST_F(PassThru, SeesACancelDuringThePolling) {
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        engine->bCancelComms(true);
    };
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    // The failed handshake leaves its error, and the next cycle sees the cancel.
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(nServerConnections, 0);
    EXPECT_EQ(LogWith("[C]").size(), 1u);
    EXPECT_LT(host.Now() - begin, 300 * kSecond);
}

TEST_F(PassThru, SeesACancelAsTheServerAnswers) {
    Download("XDL", "F");
    config.bInjectPublicKeyFile(true);
    server.onHeard = [this, note = server.onHeard](const std::string& strText) {
        note(strText);
        engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(device.Count("[" + Open("a.bin", 4) + "]"), 0);
    EXPECT_TRUE(LogWith("injection").empty());
}

} // namespace
} // namespace brennik::passthru
