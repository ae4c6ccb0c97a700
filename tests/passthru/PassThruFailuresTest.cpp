// Failures in a whole run: whose text each takes, what is not done behind it, and how many cycles
// follow.
#include "tests/passthru/PassThruWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using session::Open;
using session::Write;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr int32_t kTimedOutCode = 1000011;
constexpr const char* kTimedOut = "Timed out reading ISO packet";

// A failed write, by the side.
constexpr int32_t kLineCode = 5;
constexpr const char* kLineText = "Failed writing data to the opened port";
constexpr const char* kConnectionText = "Failed sending data to socket Data=";

class PassThruFailures : public PassThruTest {
  protected:
    /// The write on the line that follows that many others fails.
    void BreakLine(int32_t nSkip) {
        host.FailNext(Op::ComWrite, {.lLastError = kLineCode}, 1, nSkip);
    }
    /// The same for the sends on the connection.
    void BreakConnection(int32_t nSkip) {
        host.FailNext(Op::Send, {.lLastError = 10054}, 1, nSkip);
    }
    std::string LastWire() const { return wires.empty() ? "" : wires.back(); }
    /// The session has been held, so that the run stops at the end of its one cycle.
    void ExpectOneCycle(const std::string& strState) const {
        EXPECT_THAT(LogWith("[B]"),
                    ElementsAre("[B] State=" + strState + ", Exiting now as session is complete"));
        EXPECT_EQ(LogWith("Brennik Profile").size(), 1u);
        EXPECT_EQ(LogWith("ERROR").size(), 1u) << "of the run";
        ExpectNothingOpen();
    }
    /// One cycle at work, and twelve that do nothing in that state.
    void ExpectThirteenCycles(const std::string& strState) const {
        Lines waits;
        for (int32_t lTries = 1; lTries <= 13; ++lTries)
            waits.push_back("[C] State=" + strState + ", lTries=" + std::to_string(lTries) +
                            ", Waiting for terminal to reboot...");
        EXPECT_EQ(LogWith("State="), waits);
        EXPECT_EQ(LogWith("Brennik Profile").size(), 13u);
        ExpectNothingOpen();
    }
};

// ---- A download: the text is that of the side that failed.

TEST_F(PassThruFailures, TheServersSilenceAheadOfItsEnqEndsTheRun) {
    Ask(DeviceRequest("XDL", "P"));
    host.network.AddPeer("10.0.0.1", 5000); // takes the connection and says nothing
    EXPECT_EQ(Run(), 1);
    ExpectError(1000012, "Failed reading ENQ character");
    EXPECT_EQ(LastWire(), "D:ENQ") << "the device hears nothing of its request";
    ExpectOneCycle("PASSTHRU_ST_PARTIALDOWNLOAD");
}

TEST_F(PassThruFailures, ARequestThatCantBePassedOnTakesTheServersText) {
    Download("XDL", "P");
    BreakConnection(0);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), -1);
    EXPECT_THAT(engine->strErrorMessage(), StartsWith(std::string(kConnectionText) + "\x02VFI,"));
    EXPECT_EQ(LastWire(), "D:ENQ") << "no verdict is waited for";
    ExpectOneCycle("PASSTHRU_ST_PARTIALDOWNLOAD");
}

TEST_F(PassThruFailures, AVerdictThatCantBePassedOnTakesTheDevicesText) {
    config.bInjectPublicKeyFile(true);
    Download("XDL", "F");
    BreakLine(1); // behind the poll
    EXPECT_EQ(Run(), 1);
    ExpectError(kLineCode, kLineText);
    EXPECT_EQ(LastWire(), "S:[" + EditedRequest("XDL", "F") + "]");
    EXPECT_THAT(LogWith("injection"), IsEmpty());
    ExpectOneCycle("PASSTHRU_ST_FULLDOWNLOAD");
}

TEST_F(PassThruFailures, AServerThatFallsSilentInADownloadGivesItsOwnText) {
    Ask(DeviceRequest("XDL", "P"));
    Serve(EditedRequest("XDL", "P"), {});
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    EXPECT_EQ(LastWire(), "D:ACK");
    ExpectOneCycle("PASSTHRU_ST_PARTIALDOWNLOAD");
}

TEST_F(PassThruFailures, AFrameThatCantBeDeliveredTakesTheDevicesText) {
    Download("XDL", "P");
    BreakLine(2); // behind the poll and the verdict
    EXPECT_EQ(Run(), 1);
    ExpectError(kLineCode, kLineText);
    EXPECT_EQ(LastWire(), "D:ACK") << "the server gets no answer";
    ExpectOneCycle("PASSTHRU_ST_PARTIALDOWNLOAD");
}

TEST_F(PassThruFailures, ADeviceThatFallsSilentInADownloadGivesItsOwnText) {
    Download("XDL", "P");
    device.On("[" + Open("a.bin", 4) + "]", {""});
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    EXPECT_EQ(LastWire(), "D:[" + Open("a.bin", 4) + "]") << "the server gets no answer";
    EXPECT_EQ(engine->strDownloadFileName(), "") << "a frame without an answer isn't looked at";
    ExpectOneCycle("PASSTHRU_ST_PARTIALDOWNLOAD");
}

TEST_F(PassThruFailures, AnAnswerThatCantBePassedOnTakesTheServersText) {
    Download("XDL", "P");
    BreakConnection(1); // behind the request
    EXPECT_EQ(Run(), 1);
    ExpectError(-1, std::string(kConnectionText) + "\x06");
    EXPECT_EQ(LastWire(), "D:[" + Open("a.bin", 4) + "]");
    ExpectOneCycle("PASSTHRU_ST_PARTIALDOWNLOAD");
}

// ---- An upload: the text is that of the other side, which has none here.

TEST_F(PassThruFailures, AFrameThatCantBePassedToTheServerTakesTheDevicesText) {
    Upload({Open("log.txt", 3), "S"});
    BreakConnection(1); // behind the request
    EXPECT_EQ(Run(), 1);
    ExpectError(0, "");
    EXPECT_EQ(LastWire(), "D:ACK") << "that of the request; the frame gets none";
    ExpectOneCycle("PASSTHRU_ST_UPLOADFILES");
}

TEST_F(PassThruFailures, AnAnswerThatCantBePassedToTheDeviceTakesTheServersText) {
    Upload({Open("log.txt", 3), "S"});
    BreakLine(3); // behind the command, the ACK of the agreement and the verdict
    EXPECT_EQ(Run(), 1);
    ExpectError(0, "");
    EXPECT_EQ(LastWire(), "S:[" + Open("log.txt", 3) + "]");
    EXPECT_EQ(engine->strDownloadFileName(), "");
    ExpectOneCycle("PASSTHRU_ST_UPLOADFILES");
}

// ---- The enquiry. The state stays, and so the run goes on, without a wait and without work.

TEST_F(PassThruFailures, AnEnquiryWithoutAServerTakesTheTextOfTheChannel) {
    host.network.Refuse("10.0.0.1", 5000);
    Enquire(kAccepted);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000004);
    EXPECT_EQ(LastWire(), "D:ENQ") << "not acknowledged";
    EXPECT_EQ(LogWith("Attempting connection").size(), 1u);
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
    EXPECT_THAT(LogWith("Delaying"), IsEmpty());
}

TEST_F(PassThruFailures, AnEnquiryTakesTheTextOfAServerThatSaysNothing) {
    Enquire(kAccepted);
    host.network.AddPeer("10.0.0.1", 5000);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000012, "Failed reading ENQ character");
    EXPECT_EQ(LastWire(), "D:ENQ");
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
}

TEST_F(PassThruFailures, AnEnquiryThatTheServerDoesNotGetTakesItsText) {
    Enquire(kAccepted);
    BreakConnection(0);
    EXPECT_EQ(Run(), 1);
    ExpectError(-1, kConnectionText + CrcFrame(kEditedEnquiry));
    EXPECT_EQ(LastWire(), "D:ENQ");
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
}

TEST_F(PassThruFailures, AnEnquiryWithoutAReplyIsNotAcknowledged) {
    Enquire(kAccepted);
    server.On("[" + kEditedEnquiry + "]", {"\x06"});
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    EXPECT_EQ(LastWire(), "S:[" + kEditedEnquiry + "]");
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
}

TEST_F(PassThruFailures, AnEnquiryThatCantBeAcknowledgedTakesTheDevicesText) {
    Enquire(kAccepted);
    BreakLine(1); // behind the poll
    EXPECT_EQ(Run(), 1);
    ExpectError(kLineCode, kLineText);
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + kEditedEnquiry + "]", "S:ACK"));
    EXPECT_THAT(LogWith("TMS Enq"), IsEmpty());
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
}

TEST_F(PassThruFailures, AReplyThatTheDeviceDoesNotTakeIsSentOnceMore) {
    Enquire(kAccepted);
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(wires, ElementsAre("D:ENQ", "S:[" + kEditedEnquiry + "]", "S:ACK", "D:ACK",
                                   "D:[" + kAccepted + "]", "D:[" + kAccepted + "]"));
    EXPECT_THAT(LogWith("TMS Enq"), ElementsAre("TMS Enq: Error 1"));
    ExpectError(kTimedOutCode, kTimedOut);
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
    EXPECT_THAT(LogWith("Delaying"), IsEmpty());
    EXPECT_EQ(nServerConnections, 1);
}

TEST_F(PassThruFailures, AReplyThatIsTakenTheSecondTimeIsAnErrorAllTheSame) {
    Enquire(kRefused);
    device.On("[" + kRefused + "]", {"", "\x06"});
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(LogWith("TMS Enq"), ElementsAre("TMS Enq: Error 0"));
    ExpectError(kTimedOutCode, kTimedOut);
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY"); // the refusal isn't looked at
}

TEST_F(PassThruFailures, TheSecondSendsTextIsNotTaken) {
    Enquire(kAccepted);
    BreakLine(3); // the poll, the ACK and the reply go out
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(LogWith("TMS Enq"), ElementsAre("TMS Enq: Error 1"));
    ExpectError(kTimedOutCode, kTimedOut);
}

TEST_F(PassThruFailures, ADeviceThatFallsSilentBehindItsEnquiryIsNotWaitedFor) {
    Enquire(kAccepted);
    device.Always("[]", "\x06");
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
    EXPECT_THAT(LogWith("Delaying"), IsEmpty());
}

TEST_F(PassThruFailures, ThirteenEnquiriesEndTheRunWithoutAText) {
    device.Always("ENQ", CrcFrame(kEnquiry));
    device.Always("[]", "\x06");
    server.Always("[" + kEditedEnquiry + "]", "\x06" + CrcFrame(kAccepted));
    EXPECT_EQ(Run(), 1) << "a session was never held";
    ExpectError(0, "");
    EXPECT_THAT(LogWith("ERROR"), IsEmpty());
    EXPECT_EQ(nServerConnections, 13);
    ExpectThirteenCycles("PASSTHRU_ST_TMSENQUIRY");
}

// ---- Behind a refused enquiry. The run ends with its cycle.

TEST_F(PassThruFailures, ARequestThatDoesNotFollowARefusalTakesTheServersText) {
    Enquire(kRefused);
    device.Always("[]", "\x06");
    EXPECT_EQ(Run(), 1);
    ExpectError(0, "");
    EXPECT_EQ(LastWire(), "D:[" + kRefused + "]");
    EXPECT_THAT(LogWith("ERROR"), ElementsAre("ERROR  : Error Code=0, Error Message="));
    EXPECT_THAT(LogWith("State="), IsEmpty());
}

TEST_F(PassThruFailures, ARequestThatTheServerDoesNotGetTakesTheDevicesText) {
    FallBack();
    BreakConnection(2); // behind the enquiry and the ACK of its reply
    EXPECT_EQ(Run(), 1);
    ExpectError(0, "");
    EXPECT_EQ(LastWire(), "D:ACK") << "acknowledged by this system";
    EXPECT_THAT(LogWith("ERROR"), ElementsAre("ERROR  : Error Code=0, Error Message="));
}

TEST_F(PassThruFailures, ATextTakenFromTheOtherSideMayBeAnOldOne) {
    FallBack();
    device.On("ENQ", {"", CrcFrame(kEnquiry)}); // one poll without an answer
    BreakConnection(2);
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
}

TEST_F(PassThruFailures, AServerThatFallsSilentBehindARefusalGivesItsOwnText) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {"\x06"});
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    EXPECT_EQ(LogWith("ERROR").size(), 1u);
    EXPECT_EQ(LastWire(), "D:ACK");
}

TEST_F(PassThruFailures, ADeviceThatFallsSilentBehindARefusalGivesItsOwnText) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("C"))});
    device.On("[C]", {""});
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    EXPECT_EQ(LastWire(), "D:[C]");
    EXPECT_EQ(LogWith("ERROR").size(), 1u);
}

TEST_F(PassThruFailures, AFrameThatTheDeviceRefusesBehindARefusalEndsTheRunWithoutAText) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("C"))});
    device.On("[C]", {"\x15", "\x15", "\x15"});
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(device.Count("[C]"), 3) << "sent again by the link itself";
    EXPECT_EQ(server.Count("NAK"), 0);
    ExpectError(0, "");
}

TEST_F(PassThruFailures, AFrameThatItDoesNotUnderstandBehindARefusalIsAnError) {
    FallBack();
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("\x06" + CrcFrame("X"))});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000022, "Unknown brennik packet type");
    EXPECT_EQ(LastWire(), "D:[X]") << "delivered first";
    EXPECT_EQ(LogWith("ERROR").size(), 1u);
}

TEST_F(PassThruFailures, AnErrorReplyWithoutItsTextEndsTheRunAtOnce) {
    Enquire("a,b,E");
    device.Always("[]", "\x06");
    EXPECT_EQ(Run(), 1);
    ExpectError(1000000, "TBrennikProtocol.DoBrennikPassThruProtocol() Failed - Subscript out of "
                         "range");
    EXPECT_EQ(LastWire(), "D:[a,b,E]") << "delivered first";
    EXPECT_THAT(LogWith("ERROR"), IsEmpty());
    EXPECT_THAT(LogWith("State="), IsEmpty());
    ExpectNothingOpen();
}

// ---- Cycles without work.

TEST_F(PassThruFailures, ADeviceSideThatCantBeOpenedIsTriedInThirteenCycles) {
    config.iClientComPort(9);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000018, "Failed opening COM Port COM9");
    ExpectThirteenCycles("PASSTHRU_ST_START");
    EXPECT_EQ(LogWith("Delaying for 20 secs").size(), 13u);
    EXPECT_THAT(LogWith("BaudRate set"), IsEmpty());
    EXPECT_EQ(LogWith("Failed opening COM Port COM9").size(), 14u) << "each attempt, and the run";
    EXPECT_THAT(wires, IsEmpty());
}

TEST_F(PassThruFailures, ASeriesThatBreaksOffKeepsItsState) {
    AnswerStatusQueries();
    Ask(DeviceRequest("XCDL", "F"));
    Serve(EditedRequest("XCDL", "F"), {"X"});
    EXPECT_EQ(Run(), 1);
    ExpectError(1000022, "Unknown brennik packet type");
    ExpectThirteenCycles("PASSTHRU_ST_FULLTMSAPP");
    EXPECT_EQ(LogWith("Delaying for 20 secs").size(), 13u);
    EXPECT_EQ(nServerConnections, 1);
}

TEST_F(PassThruFailures, ALocalListKeepsItsStateWhenNobodyCallsBehindIt) {
    AnswerStatusQueries();
    AskForLocalList();
    EXPECT_EQ(Run(), 1);
    ExpectError(kTimedOutCode, kTimedOut);
    ExpectThirteenCycles("PASSTHRU_ST_DOWNLOAAPPCOMPLETE");
    EXPECT_EQ(nServerConnections, 0);
}

TEST_F(PassThruFailures, AFailedLocalListLeavesTheStateAsItWas) {
    config.strTmsAppFolder("/tms"); // without a list in it
    Ask(DeviceRequest("XDL", "F"));
    EXPECT_EQ(Run(), 1);
    EXPECT_NE(engine->strErrorMessage(), "");
    ExpectThirteenCycles("PASSTHRU_ST_START");
    EXPECT_EQ(nServerConnections, 0);
}

TEST_F(PassThruFailures, AFailedPedDownloadTakesItsExtraRebootAndThenIdles) {
    TellToDownload();
    Serve(EditedRequest("XDL", "F"), {"U"});
    host.SetBudget(20000000);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000030, "Brennik download failed.");
    Lines waits{"State=PASSTHRU_ST_FULLDOWNLOAD",
                "[A] State=PASSTHRU_ST_FULLDOWNLOAD, lTries=1, Waiting for terminal to reboot..."};
    for (int32_t lTries = 2; lTries <= 13; ++lTries)
        waits.push_back("[C] State=PASSTHRU_ST_START, lTries=" + std::to_string(lTries) +
                        ", Waiting for terminal to reboot...");
    EXPECT_EQ(LogWith("State="), waits);
    EXPECT_EQ(device.Count(std::string("[") + kDownloadCommand + "]"), 1)
        << "the cycles behind it do no work";
    EXPECT_EQ(nServerConnections, 1);
}

} // namespace
} // namespace brennik::passthru
