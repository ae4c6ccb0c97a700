// What the cycles of a run keep and what they begin anew: the pass-through type, the extra reboot,
// the error, and the engine itself when it makes a second run.
#include "tests/passthru/PassThruWorld.h"
#include "tests/session/SessionWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using session::Open;
using session::Write;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PassThruCycles : public PassThruTest {
  protected:
    /// One more run of the engine that stands.
    int32_t RunAgain() { return engine->DoBrennikProtocol(config, "C:\\config", 7); }

    /// When the device heard that for the nth time.
    Microseconds MomentOf(const std::string& strWhat, int32_t nTimes = 1) const {
        for (const Device::Heard& heard : device.All()) {
            if (heard.strWhat == strWhat && --nTimes == 0)
                return heard.moment;
        }
        ADD_FAILURE() << "never heard: " << strWhat;
        return 0;
    }
};

// ---- A type beyond those that the profile's window offers.

TEST_F(PassThruCycles, AnotherTypePollsTheDeviceAndRelaysItsFrames) {
    for (const int32_t lType : {3, -1}) {
        wires.clear();
        config.lPassThruType(lType);
        config.bInjectPublicKeyFile(true);
        config.strPublickeyLocation("C:\\keys");
        host.files.Put("/keys/flkeyfile.txt", "[ENCRYPTION]\r\nRsaKey=KEY\r\nRsaKeyIndex=5\r\n"
                                              "RsaKeyExpiryDate=20301231\r\n");
        device.On("ENQ", {CrcFrame(DeviceRequest("XDL", "F"))});
        device.On("ACK", {CrcFrame(Open("log.txt", 3)), CrcFrame(Write("abc")), CrcFrame("S")});
        server.Always("[]", "\x06");
        EXPECT_EQ(Run(), 0);
        EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + EditedRequest("XDL", "F") + "]", "D:ACK",
                                       "S:[" + Open("log.txt", 3) + "]", "D:ACK",
                                       "S:[" + Write("abc") + "]", "D:ACK", "S:[S]", "D:ACK"))
            << "no key";
        EXPECT_THAT(LogWith("injection"), IsEmpty());
        EXPECT_EQ(engine->lCurrentState(), BrennikState::UploadingFile);
        EXPECT_EQ(Log().back(),
                  "[B] State=PASSTHRU_ST_FULLDOWNLOAD, Exiting now as session is complete");
    }
}

TEST_F(PassThruCycles, AnotherTypeEndsUnsuccessfullyAsAnUpload) {
    config.lPassThruType(3);
    device.On("ENQ", {CrcFrame(DeviceRequest("XDL", "P"))});
    device.On("ACK", {CrcFrame("U")});
    server.Always("[]", "\x06");
    EXPECT_EQ(Run(), 1);
    ExpectError(1000030, "Brennik upload failed.");
}

// ---- A cancel that is there from the beginning.

TEST_F(PassThruCycles, ACancelAheadOfTheRunOpensAndClosesTheDeviceSide) {
    engine = std::make_unique<TBrennikProtocol>();
    engine->bCancelComms(true);
    EXPECT_EQ(RunAgain(), 1);
    host.RunFor(10 * kMillisecond);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(device.Bytes(), "") << "no ENQ";
    EXPECT_THAT(Log(), ElementsAre("Brennik Client v1.3.2", "Brennik Profile=7",
                                   "Connected to Port=COM2, BaudRate=19200, Parity=None "
                                   ",Databits=8 ,Stopbit=1 ,Flowcontrol=None ,Connection Attempt=1",
                                   "Connection Closed"));
    EXPECT_EQ(nServerConnections, 0);
    ExpectNothingOpen();
}

// ---- The extra reboot.

TEST_F(PassThruCycles, AnApplicationOfASeriesLeavesTheExtraRebootToTheLast) {
    AnswerStatusQueries();
    TellToDownload(DeviceRequest("XCDL", "F"));
    device.On("ENQ", {CrcFrame(DeviceRequest("XCDLF", "F")), CrcFrame(DeviceRequest("XDL", "F"))});
    server.Always("[]", "\x06" + CrcFrame("S"));
    EXPECT_EQ(Run(), 0);
    const std::string strWait = ", Waiting for terminal to reboot...";
    EXPECT_THAT(LogWith("State="),
                ElementsAre("[C] State=PASSTHRU_ST_FULLTMSAPP, lTries=1" + strWait,
                            "State=PASSTHRU_ST_LASTFULLTMSAPP",
                            "[A] State=PASSTHRU_ST_LASTFULLTMSAPP, lTries=2" + strWait,
                            "[C] State=PASSTHRU_ST_FULLTMSAPP, lTries=3" + strWait,
                            "State=PASSTHRU_ST_FULLDOWNLOAD",
                            "[B] State=PASSTHRU_ST_FULLDOWNLOAD, Exiting now as session is "
                            "complete"));
    EXPECT_EQ(device.Count(std::string("[") + kDownloadCommand + "]"), 2)
        << "told anew behind the extra reboot alone";
    EXPECT_EQ(device.Count("ENQ"), 2);
}

TEST_F(PassThruCycles, TheExtraRebootHas240SecondsAndThenTheDeviceSideIsClosed) {
    AnswerStatusQueries();
    device.Always(std::string("[") + kStatusQuery + "]", ""); // no, it stays silent
    TellToDownload();
    server.Always("[]", "\x06" + CrcFrame("S"));
    EXPECT_EQ(Run(), 0);
    const Microseconds wait =
        MomentOf(std::string("[") + kDownloadCommand + "]", 2) - MomentOf("[S]");
    EXPECT_GE(wait, 240 * kSecond);
    EXPECT_LT(wait, 247 * kSecond);
    const Lines log = Log();
    const auto delaying = std::find(log.begin(), log.end(), "Delaying for 20 secs");
    ASSERT_GT(log.end() - delaying, 3);
    EXPECT_THAT(Lines(delaying - 1, delaying + 3),
                ElementsAre("[A] State=PASSTHRU_ST_FULLDOWNLOAD, lTries=1, Waiting for terminal to "
                            "reboot...",
                            "Delaying for 20 secs", "Connection Closed", "Brennik Client v1.3.2"));
}

// ---- The error of a run.

TEST_F(PassThruCycles, ALaterFailureTakesThePlaceOfTheFirst) {
    host.SetBudget(50000000);
    host.FailNext(Op::ComOpen, {.lLastError = 2}, 1, 1); // the second cycle
    EXPECT_EQ(Run(), 1);
    ExpectError(1000018, "Failed opening COM Port COM2");
    const std::string strError = "ERROR  : Error Code=1000018, Error Message="
                                 "Failed opening COM Port COM2";
    EXPECT_THAT(LogWith("ERROR"), ElementsAre(strError, strError)) << "of the port, and of the run";
    EXPECT_EQ(LogWith("Connected to Port=COM2").size(), 12u)
        << "the cycles behind it replace nothing";
}

// ---- A second run of one engine.

TEST_F(PassThruCycles, ASecondRunTellsTheDeviceAnew) {
    AnswerStatusQueries();
    TellToDownload();
    server.Always("[]", "\x06" + CrcFrame("S"));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(device.Count(std::string("[") + kDownloadCommand + "]"), 2);
    EXPECT_EQ(RunAgain(), 0);
    EXPECT_EQ(device.Count(std::string("[") + kDownloadCommand + "]"), 4);
    EXPECT_EQ(device.Count("ENQ"), 0);
}

TEST_F(PassThruCycles, ASecondRunForgetsThatADeviceAnswered) {
    AnswerStatusQueries();
    TellToDownload();
    server.Always("[]", "\x06" + CrcFrame("S"));
    EXPECT_EQ(Run(), 0);
    const TBrennikProtocolTestAccess access(*engine);
    EXPECT_TRUE(access.bDeviceAnswered());
    EXPECT_TRUE(access.bTmsModeRequested());
    config.bPedDownload(false);
    device.On("ENQ", {CrcFrame(DeviceRequest("XDL", "P"))});
    EXPECT_EQ(RunAgain(), 0);
    EXPECT_FALSE(access.bDeviceAnswered());
    EXPECT_FALSE(access.bTmsModeRequested());
}

TEST_F(PassThruCycles, ARunBehindAClientSessionForgetsItsFiles) {
    config.lOperatingMode(0);
    server.Always("[]", "\x06" + CrcFrame(Open("a.bin", 4)));
    server.On("ACK", {CrcFrame(Write("data")), CrcFrame("C"), CrcFrame("S")});
    EXPECT_EQ(Run(), 0);
    ASSERT_EQ(engine->lNumFilesDownloaded(), 1);
    config.lOperatingMode(2);
    Download("XDL", "P");
    EXPECT_EQ(RunAgain(), 0);
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
}

} // namespace
} // namespace brennik::passthru
