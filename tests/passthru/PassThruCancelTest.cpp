// A cancel at every stage of a run: what is still done behind it, and what is not sent any more.
#include "tests/passthru/PassThruWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using session::Open;
using session::Write;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PassThruCancel : public PassThruTest {
  protected:
    /// The run ends with the cycle, whose device side closes, and no more.
    void ExpectAborted() const {
        ExpectError(1000031, "Communications aborted by user");
        EXPECT_THAT(LogWith("State=PASSTHRU"), IsEmpty());
        EXPECT_THAT(LogWith("ERROR"), IsEmpty());
        EXPECT_EQ(LogWith("Brennik Profile").size(), 1u);
        EXPECT_EQ(Log().back(), "Connection Closed");
        ExpectNothingOpen();
    }
};

TEST_F(PassThruCancel, InAnUploadIsSeenBehindTheFrame) {
    Upload({Open("log.txt", 3), Write("abc"), "C", "S"});
    CancelAt("S:[" + Write("abc") + "]");
    EXPECT_EQ(Run(), 1);
    ExpectAborted();
    EXPECT_EQ(wires.at(wires.size() - 2), "S:[" + Write("abc") + "]");
    EXPECT_EQ(wires.back(), "D:ACK") << "its answer is still passed on, the next frame isn't";
    EXPECT_EQ(engine->lFileBytesDownloaded(), 3);
}

TEST_F(PassThruCancel, WithTheVerdictOnAnUploadLeavesItsFramesUnread) {
    Upload({Open("log.txt", 3), "S"});
    CancelAt("S:[VFI,VX520,XUL,F,DAPP,T1,EPROM,1024,4096,PT7,,]");
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(wires.back(), "D:ACK");
}

TEST_F(PassThruCancel, InAnEnquiryIsSeenBehindItsReply) {
    Enquire(kAccepted);
    device.Always("[]", "\x06");
    CancelAt("S:[" + kEditedEnquiry + "]");
    EXPECT_EQ(Run(), 1);
    ExpectAborted();
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + kEditedEnquiry + "]", "S:ACK", "D:ACK",
                                   "D:[" + kAccepted + "]"))
        << "the device isn't polled again";
}

TEST_F(PassThruCancel, InAnEnquiryWithoutAReplyTakesThePlaceOfItsText) {
    Enquire(kAccepted);
    server.On("[" + kEditedEnquiry + "]", {"\x06"});
    CancelAt("S:[" + kEditedEnquiry + "]");
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(wires.back(), "S:[" + kEditedEnquiry + "]");
    EXPECT_THAT(LogWith("State=PASSTHRU"), IsEmpty());
    EXPECT_THAT(LogWith("ERROR"), ElementsAre("ERROR  : Error Code=1000031, Error Message="
                                              "Communications aborted by user"));
}

TEST_F(PassThruCancel, WithTheRefusalOfAnEnquiryLeavesTheServersFramesUnread) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("C"))});
    CancelAt("D:[" + kRefused + "]");
    EXPECT_EQ(Run(), 1);
    ExpectAborted();
    EXPECT_EQ(server.Count("[" + EditedRequest("XDL", "P") + "]"), 1)
        << "the request is still passed on";
    EXPECT_EQ(device.Count("[C]"), 0);
}

TEST_F(PassThruCancel, InTheRelayBehindARefusalIsSeenBehindTheFrame) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("C"))});
    server.On("ACK", {"", CrcFrame("S")});
    CancelAt("D:[C]");
    EXPECT_EQ(Run(), 1);
    ExpectAborted();
    EXPECT_EQ(device.Count("[S]"), 0);
}

TEST_F(PassThruCancel, WithTheLastFrameOfASessionIsSeenAheadOfTheEnd) {
    Download("XDL", "F");
    CancelAt("D:[S]");
    EXPECT_EQ(Run(), 1);
    ExpectAborted();
    EXPECT_EQ(wires.back(), "S:ACK") << "the session is whole, the run isn't";
}

TEST_F(PassThruCancel, DuringAKeyInjectionIsSeenByTheRelay) {
    config.bInjectPublicKeyFile(true);
    config.strPublickeyLocation("/keys");
    host.files.Put("/keys/flkeyfile.txt", "[ENCRYPTION]\r\nRsaKey=K\r\nRsaKeyIndex=1\r\n"
                                          "RsaKeyExpiryDate=20301231\r\n");
    config.strPlatformName("P400PLUS");
    Download("XDL", "F");
    CancelAt("D:[D\x1A/home/usr1/flash/fernlatch]");
    EXPECT_EQ(Run(), 1);
    ExpectAborted();
    EXPECT_EQ(LogWith("Successfully injected key file").size(), 1u) << "it goes to its end";
    EXPECT_EQ(device.Payloads().size(), 4u) << "the server's frame isn't passed on";
}

TEST_F(PassThruCancel, DuringTheWaitForARebootTakesEffectInTheNextCycle) {
    AnswerStatusQueries();
    Ask(DeviceRequest("XCDL", "F"));
    Serve(EditedRequest("XCDL", "F"), {"S"});
    host.At(10 * kSecond, [this] { engine->bCancelComms(true); });
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_GE(host.Now() - begin, 20 * kSecond) << "the wait looks at no cancel";
    EXPECT_THAT(Lines(wires.end() - 3, wires.end()),
                ElementsAre("S:ACK", std::string("D:[") + kStatusQuery + "]", "D:ACK"))
        << "the next cycle opens the device side and polls nobody";
    const Lines log = Log();
    EXPECT_THAT(Lines(log.end() - 7, log.end()),
                ElementsAre("[C] State=PASSTHRU_ST_FULLTMSAPP, lTries=1, Waiting for terminal to "
                            "reboot...",
                            "Delaying for 20 secs", "Connection Closed", "Brennik Client v1.3.2",
                            "Brennik Profile=7",
                            "Connected to Port=COM2, BaudRate=19200, Parity=None ,Databits=8 "
                            ",Stopbit=1 ,Flowcontrol=None ,Connection Attempt=1",
                            "Connection Closed"));
    ExpectNothingOpen();
}

TEST_F(PassThruCancel, DuringTheExtraRebootOfAPedDownloadMakesNoSecondDownload) {
    AnswerStatusQueries();
    TellToDownload();
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "[S]")
            host.At(10 * kSecond, [this] { engine->bCancelComms(true); });
    };
    Serve(EditedRequest("XDL", "F"), {"S"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(device.Count(std::string("[") + kDownloadCommand + "]"), 1);
    EXPECT_THAT(LogWith("State="),
                ElementsAre("State=PASSTHRU_ST_FULLDOWNLOAD",
                            "[A] State=PASSTHRU_ST_FULLDOWNLOAD, lTries=1, Waiting for terminal "
                            "to reboot..."));
    EXPECT_EQ(nServerConnections, 1);
}

TEST_F(PassThruCancel, ShortensTheCyclesThatFollowAFailure) {
    host.At(500 * kSecond, [this] { engine->bCancelComms(true); });
    const world::Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(LogWith("[C]").size(), 2u);
    EXPECT_EQ(LogWith("Brennik Profile").size(), 3u);
    EXPECT_LT(host.Now() - begin, 600 * kSecond);
    EXPECT_EQ(Log().back(), "ERROR  : Error Code=1000031, Error Message=Communications aborted by "
                            "user");
}

} // namespace
} // namespace brennik::passthru
