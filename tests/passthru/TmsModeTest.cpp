// The command by which a device that doesn't call by itself is told to.

#include "tests/passthru/DeviceWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kCommand = "[3.9,2,U,Q,0,0,,,T,]";
constexpr const char* kAgreed = "3.9,1,T,Q,0,0,,,A";
constexpr const char* kNo = "3.9,1,T,Q,0,0,,,N";
const std::string kRequest = Request("XDL", "P");

class TmsMode : public DeviceTest {
  protected:
    TmsMode() {
        StartAt(0, 1, 40);
        config.bPedDownload(true);
        config.bAutoBaud(false);
        device.ExpectLrc(true);
        Connect();
    }

    /// The device agrees, then sends that on its own.
    void AgreeThenSend(const std::string& strFirstPacket) {
        device.On(kCommand, {kAck + LrcFrame(kAgreed)});
        device.On("ACK", {CrcFrame(strFirstPacket)});
    }
    void CancelAfter(Microseconds delay) {
        host.At(delay, [this] { engine.bCancelComms(true); });
    }
    void ExpectFlags(bool bRequested, bool bAnswered) const {
        EXPECT_EQ(access.bTmsModeRequested(), bRequested);
        EXPECT_EQ(access.bDeviceAnswered(), bAnswered);
    }
};

TEST_F(TmsMode, TellsTheDeviceToCallAndReadsItsRequestWithoutAPoll) {
    AgreeThenSend(kRequest);
    RecordSteps();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Bytes(), "\x02"
                              "3.9,2,U,Q,0,0,,,T,\x03"
                              "i\x06");
    EXPECT_EQ(strPacket, kRequest);
    EXPECT_EQ(strPTID, "DPT");
    EXPECT_EQ(lState, PASSTHRU_ST_PARTIALDOWNLOAD);
    EXPECT_EQ(VfiCopy(), kRequest + "\r\n");
    EXPECT_NE(Ini().find("ClientBaudRate=19200"), std::string::npos);
    ExpectFlags(true, true);
    ExpectLink(2, false);
    const Lines steps = Steps();
    EXPECT_THAT(Lines(steps.begin() + 3, steps.begin() + 11),
                ElementsAre("log BaudRate set @ 19200", "Sleep 50", "Write 21", "Read 1", // ACK
                            "pump", "Read 1",    // the agreement
                            "Write 1", "pump")); // and on to the request
    EXPECT_EQ(std::ranges::count(steps, "Sleep 50"), 1) << "no poll";
}

TEST_F(TmsMode, SpeaksTheNewVersionToTheOnePlatform) {
    config.strPlatformName("P400PLUS");
    device.On("[5.8,2,U,Q,0,0,,,T,]", {kAck + LrcFrame(kAgreed)});
    device.On("ACK", {CrcFrame(kRequest)});
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Bytes().substr(0, 21), "\x02"
                                            "5.8,2,U,Q,0,0,,,T,\x03n");
}

TEST_F(TmsMode, IsLeftAloneWithoutPedDownload) {
    config.bPedDownload(false);
    device.Always("ENQ", CrcFrame(kRequest));
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Bytes(), kEnq);
    ExpectFlags(false, false);
}

TEST_F(TmsMode, IsAskedForWithALinkOfManagementMessages) {
    std::vector<std::pair<int32_t, bool>> settings;
    device.onHeard = [&](const std::string&) {
        settings.emplace_back(link.lChecksumType(), link.bAckPackets());
    };
    AgreeThenSend(kRequest);
    link.lChecksumType(3);
    EXPECT_EQ(Handshake(), 0);
    // The ACK of the agreement arrives when the read of the request has begun.
    EXPECT_THAT(settings, ElementsAre(std::pair(0, true), std::pair(3, false)));
    ExpectLink(3, false);
    EXPECT_EQ(link.lPacketReadAttempts(), 1);
    EXPECT_EQ(link.lPacketTimeout(), 3);
}

// ---- Failures stop nothing.

TEST_F(TmsMode, PollsADeviceThatRefuses) {
    device.On(kCommand, {kAck + LrcFrame(kNo)});
    device.On("ENQ", {"", CrcFrame(kRequest)});
    EXPECT_EQ(Handshake(), 0);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK", "ENQ", "ENQ"));
    EXPECT_EQ(strPacket, kRequest);
    ExpectError(1000011, kTimedOut); // of the poll that replaced the refusal
    ExpectFlags(true, true);
    ExpectLink(2, false);
}

TEST_F(TmsMode, TakesAnyReplyButAnAgreementForARefusal) {
    engine.bCancelComms(true);
    for (const char* strReply :
         {"", "A", "3.9,1,T,Q,0,0,,A", "3.9,1,LS,Q,0,0,,,A", "3.9,1,T,Q,0,0,,,a"}) {
        access.bTmsModeRequested(false);
        device.Always("[]", kAck + LrcFrame(strReply));
        EXPECT_EQ(Handshake(), 1);
        ExpectError(1000032, kRefused);
        ExpectLink(2, false);
        EXPECT_EQ(strPacket, "");
        host.RunFor(10 * kMillisecond);
    }
}

TEST_F(TmsMode, LeavesItsTextWhereNothingFollows) {
    engine.bCancelComms(true); // the command goes out all the same, the polls don't
    device.On(kCommand, {kAck + LrcFrame(kNo)});
    EXPECT_EQ(Handshake(), 1);
    ExpectError(1000032, kRefused);
    EXPECT_EQ(device.Count("ENQ"), 0);
    EXPECT_EQ(device.Count(kCommand), 1);
}

TEST_F(TmsMode, PollsADeviceThatDoesntTakeTheCommand) {
    device.Always("ENQ", CrcFrame(kRequest));
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_GT(host.Now() - begin, 2 * kSecond) << "the wait for an ACK";
    EXPECT_LT(host.Now() - begin, 2 * kSecond + 300 * kMillisecond);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ENQ"));
    ExpectError(1000011, kTimedOut);
    ExpectFlags(true, false);
    ExpectLink(2, false);
}

TEST_F(TmsMode, PollsADeviceThatTakesTheCommandAndDoesntReply) {
    device.On(kCommand, {kAck});
    device.Always("ENQ", CrcFrame(kRequest));
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_GT(host.Now() - begin, 6 * kSecond);
    EXPECT_LT(host.Now() - begin, 6 * kSecond + 400 * kMillisecond);
    ExpectFlags(true, false);
    ExpectLink(2, false);
}

TEST_F(TmsMode, PollsADeviceThatAgreesAndStaysSilent) {
    device.On(kCommand, {kAck + LrcFrame(kAgreed)});
    device.Always("ENQ", CrcFrame(kRequest));
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_GT(host.Now() - begin, 6 * kSecond);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK", "ENQ"));
    ExpectError(1000011, kTimedOut);
    ExpectFlags(true, true);
    ExpectLink(2, false);
}

TEST_F(TmsMode, PollsWhenTheCommandCantBeSent) {
    host.FailNext(Op::ComWrite, {.lLastError = 5});
    device.Always("ENQ", CrcFrame(kRequest));
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Bytes(), kEnq);
    ExpectError(5, "Failed writing data to the opened port");
    ExpectFlags(true, false);
    ExpectLink(2, false);
}

// Meant: attempts used up by NAKs are silent, and the text of the link is an old one or none.
TEST_F(TmsMode, LeavesNoTextWhenTheDeviceTakesTheCommandForBroken) {
    engine.bCancelComms(true);
    device.Always(kCommand, kNak);
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(device.Count(kCommand), 3) << "as often as the profile sends";
    ExpectError(0, "");
    ExpectFlags(true, false);
}

// ---- How often.

TEST_F(TmsMode, IsAskedForOnceEvenWhenItFailed) {
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(device.Count(kCommand), 1);
    EXPECT_GT(device.Count("ENQ"), 1300) << "four periods";
    EXPECT_EQ(device.Texts().front(), kCommand);
    // The periods begin behind the command.
    EXPECT_GT(host.Now() - begin, 82 * kSecond);
    EXPECT_LT(host.Now() - begin, 82 * kSecond + 61 * kMillisecond);
}

TEST_F(TmsMode, IsAskedForOnceARunAndAgainWhereTheFlagIsCleared) {
    AgreeThenSend(kRequest);
    device.Always("ENQ", CrcFrame(kRequest));
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(Handshake(), 0);
    host.RunFor(10 * kMillisecond);
    EXPECT_EQ(device.Count(kCommand), 1);
    EXPECT_EQ(device.Count("ENQ"), 2);
    access.bTmsModeRequested(false); // as behind the extra reboot
    AgreeThenSend(kRequest);
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Count(kCommand), 2);
    EXPECT_EQ(device.Count("ENQ"), 2);
}

TEST_F(TmsMode, IsAskedForAgainBehindAnEnquiry) {
    AgreeThenSend("3.9,1,TMS,d,e,f,g,h,T,j,A");
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(lState, PASSTHRU_ST_TMSENQUIRY);
    ExpectFlags(false, true); // that it answered is never forgotten
    AgreeThenSend(kRequest);
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Count(kCommand), 2);
    ExpectFlags(true, true);
}

TEST_F(TmsMode, IsNotAskedForWhenItWasBefore) {
    access.bTmsModeRequested(true);
    device.Always("ENQ", CrcFrame(kRequest));
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Bytes(), kEnq);
    ExpectFlags(true, false);
}

TEST_F(TmsMode, TakesTheRequestOfADeviceThatAgreedInARunThatWasCancelled) {
    engine.bCancelComms(true);
    AgreeThenSend(kRequest);
    EXPECT_EQ(Handshake(), 0) << "the engine looks at the cancel in the cycle, not here";
    EXPECT_EQ(strPacket, kRequest);
}

TEST_F(TmsMode, FinishesTheCommandInWhichItIsCancelledAndPollsNoMore) {
    for (const Microseconds delay : {60 * kMillisecond, 1 * kSecond}) {
        engine.bCancelComms(false);
        access.bTmsModeRequested(false);
        device.Forget();
        CancelAfter(delay);
        const Microseconds begin = host.Now();
        EXPECT_EQ(Handshake(), 1);
        EXPECT_GT(host.Now() - begin, 2 * kSecond);
        EXPECT_LT(host.Now() - begin, 2 * kSecond + 300 * kMillisecond);
        EXPECT_EQ(device.Texts(), Lines(1, kCommand));
        ExpectError(1000011, kTimedOut);
    }
}

TEST_F(TmsMode, EndsItsWaitForTheAckPastMidnightOnlyByAByte) {
    StartAt(23, 59, 59);
    host.At(300 * kSecond, [&] { device.Say(kNak); });
    device.Always("ENQ", CrcFrame(kRequest));
    device.On(kCommand, {"", kAck + LrcFrame(kAgreed)});
    device.On("ACK", {CrcFrame(kRequest)});
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_GT(host.Now() - begin, 300 * kSecond);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, kCommand, "ACK"));
}

} // namespace
} // namespace brennik::passthru
