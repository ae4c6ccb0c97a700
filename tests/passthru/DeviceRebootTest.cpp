// The wait for a device that reboots: twenty seconds of rest, then queries until it is ready.

#include "tests/passthru/DeviceWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kQuery = "[3.9,0,LS,Q,0,0,,,]";
const std::string kReady = LrcFrame("3.9,1,LS,Q,0,0,,,R");
const std::string kBusy = LrcFrame("3.9,1,LS,Q,0,0,,,B");
const std::string kError = LrcFrame("3.9,1,E,Q,0,0,,,R"); // whatever else it says

class DeviceReboot : public DeviceTest {
  protected:
    DeviceReboot() {
        StartAt(0, 1, 40); // an hour at which the clock tells microseconds apart
        device.ExpectLrc(true);
        Connect();
        host.files.Remove(kLogFile);
        link.lChecksumType(1);
        link.bAckPackets(false);
        link.lPacketReadAttempts(7);
        link.lPacketTimeout(9);
    }

    /// How long the wait lasted.
    Microseconds Wait(int32_t lTimeout = 240) {
        begin = host.Now();
        access.WaitForDeviceReboot(link, lTimeout, log, config);
        return host.Now() - begin;
    }
    void ExpectAbout(Microseconds actual, Microseconds expected) const {
        EXPECT_GE(actual, expected);
        EXPECT_LT(actual, expected + 50 * kMillisecond);
    }
    void ExpectLinkGivenBack() const {
        ExpectLink(1, false);
        EXPECT_EQ(link.lPacketReadAttempts(), 7);
        EXPECT_EQ(link.lPacketTimeout(), 9);
    }
    /// Answers so many queries with that, the ones behind it with the other.
    void Answer(size_t nFirst, const std::string& strFirst, const std::string& strThen) {
        device.On(kQuery, std::deque<Saying>(nFirst, Saying(strFirst)));
        device.Always(kQuery, strThen);
    }

    Microseconds begin = 0;
};

TEST_F(DeviceReboot, AsksOnceWhenTheDeviceIsReadyAtOnce) {
    device.Always(kQuery, kAck + kReady);
    RecordSteps();
    ExpectAbout(Wait(), 20 * kSecond);
    EXPECT_THAT(Steps(), ElementsAre("log Delaying for 20 secs", "Sleep 20000", "pump",
                                     "Read 1",             // the flush
                                     "Write 20", "Read 1", // the query and its ACK
                                     "pump", "Read 1",     // the reply
                                     "Write 1",            // its ACK
                                     "pump"));
    host.RunFor(kMillisecond);
    EXPECT_EQ(device.Bytes(), "\x02"
                              "3.9,0,LS,Q,0,0,,,\x03"
                              "Y\x06");
    EXPECT_THAT(Log(), ElementsAre("Delaying for 20 secs"));
    ExpectLinkGivenBack();
    ExpectError(0, "");
}

TEST_F(DeviceReboot, SpeaksTheNewVersionToTheOnePlatform) {
    config.strPlatformName("p400plus");
    device.Always("[]", kAck + kReady);
    ExpectAbout(Wait(), 20 * kSecond);
    EXPECT_EQ(device.Bytes().substr(0, 20), "\x02"
                                            "5.8,0,LS,Q,0,0,,,\x03^");
}

TEST_F(DeviceReboot, SetsTheLinkUpBehindTheRest) {
    host.At(19 * kSecond, [&] {
        ExpectLink(1, false);
        EXPECT_EQ(device.Bytes(), "");
        link.lPacketTimeout(11); // so that what is given back is what was found then
    });
    device.onHeard = [&](const std::string& strWhat) {
        if (strWhat == kQuery) {
            ExpectLink(0, true);
            EXPECT_EQ(link.lPacketReadAttempts(), 1);
            EXPECT_EQ(link.lPacketTimeout(), 3);
        }
    };
    Answer(2, kAck + kBusy, kAck + kReady);
    Wait();
    EXPECT_EQ(device.Count(kQuery), 3);
    EXPECT_EQ(link.lPacketTimeout(), 11);
    link.lPacketTimeout(9);
    ExpectLinkGivenBack();
}

TEST_F(DeviceReboot, AsksEveryFiveSecondsWhileTheDeviceIsBusy) {
    Answer(4, kAck + kBusy, kAck + kReady);
    RecordSteps();
    // Each turn costs its frames, too: some forty bytes at 1920 a second.
    const Microseconds lasted = Wait();
    EXPECT_GE(lasted, 40 * kSecond);
    EXPECT_LT(lasted, 40 * kSecond + 5 * 60 * kMillisecond);
    EXPECT_EQ(device.Count(kQuery), 5);
    const Lines steps = Steps();
    EXPECT_EQ(std::ranges::count(steps, "Sleep 5000"), 4);
    EXPECT_THAT(Lines(steps.end() - 11, steps.end()),
                ElementsAre("Write 1", "Sleep 5000", "pump", "pump", "Read 1", "Write 20", "Read 1",
                            "pump", "Read 1", "Write 1", "pump"));
}

TEST_F(DeviceReboot, TakesAnyReplyButReadyAndErrorForBusy) {
    for (const char* strReply :
         {"3.9,1,LS,Q,0,0,,,r", "3.9,1,LS,Q,0,0,,R", "R", "E", "", ",,e,,,,,,", R"(,,,,,,,,"R)"}) {
        device.Forget();
        Answer(1, kAck + LrcFrame(strReply), kAck + kReady);
        ExpectAbout(Wait() - 25 * kSecond - 60 * kMillisecond, 0);
        EXPECT_EQ(device.Count(kQuery), 2) << strReply;
    }
}

TEST_F(DeviceReboot, GivesADeviceThatTellsAnErrorFortySecondsAndStops) {
    device.Always(kQuery, kAck + kError);
    RecordSteps();
    ExpectAbout(Wait(), 60 * kSecond);
    EXPECT_EQ(device.Count(kQuery), 1);
    const Lines steps = Steps();
    EXPECT_THAT(Lines(steps.end() - 3, steps.end()), ElementsAre("Write 1", "Sleep 40000", "pump"));
    ExpectLinkGivenBack();
    ExpectError(0, "");
}

TEST_F(DeviceReboot, StopsAtAnErrorBehindBusyRepliesToo) {
    Answer(2, kAck + kBusy, kAck + kError);
    const Microseconds lasted = Wait();
    EXPECT_GE(lasted, 70 * kSecond);
    EXPECT_LT(lasted, 70 * kSecond + 200 * kMillisecond);
}

// A silent device costs the time for an ACK, two seconds in this profile, and the pause.
TEST_F(DeviceReboot, AsksASilentDeviceForTwoHundredAndFortySeconds) {
    const int64_t nCallsBefore = host.nCalls();
    const Microseconds lasted = Wait();
    EXPECT_EQ(device.Count(kQuery), 32) << "the last one begins in the last seconds";
    EXPECT_GT(lasted, 244 * kSecond);
    EXPECT_LT(lasted, 245 * kSecond);
    EXPECT_LT(device.All().back().moment - begin, 240 * kSecond);
    EXPECT_EQ(device.Texts(), Lines(32, kQuery)) << "nothing is sent twice, no NAK";
    EXPECT_LT(host.nCalls() - nCallsBefore, 20000);
    ExpectLinkGivenBack();
    ExpectError(0, "");
}

TEST_F(DeviceReboot, ReadsAReplyTwiceForThreeSecondsWhenTheQueryWasTaken) {
    device.Always(kQuery, kAck);
    const Microseconds lasted = Wait(21);
    ExpectAbout(lasted, 31 * kSecond);
    EXPECT_EQ(device.Texts(), Lines(1, kQuery));
}

TEST_F(DeviceReboot, TakesADeviceThatIsReadyAtTheLastMoment) {
    Answer(31, "", kAck + kReady);
    const Microseconds lasted = Wait();
    EXPECT_EQ(device.Count(kQuery), 32);
    EXPECT_GT(lasted, 237 * kSecond);
    EXPECT_LT(lasted, 240 * kSecond) << "no pause behind it";
}

TEST_F(DeviceReboot, EndsItsTimeAtAWholeSecondAndAsksNothingBehindIt) {
    struct {
        Microseconds more; ///< behind the whole second at which the wait begins
        int32_t lTimeout;
        int64_t nQueries;
    } const cases[] = {
        {0, 20, 0},                  // 120 is over when the rest is
        {0, 21, 1},                  // 121 isn't
        {400 * kMillisecond, 20, 0}, // 120.4 is 120
        {600 * kMillisecond, 20, 1}, // 120.6 is 121
        {600 * kMillisecond, 19, 0}, // 119.6 is 120
        {0, 27, 1},                  // the second query would be at 127.0x
        {0, 28, 2},
        {0, 0, 0},
        {0, -100, 0},
    };
    for (const auto& c : cases) {
        StartAt(0, 1, 40, c.more);
        device.Forget();
        const Microseconds lasted = Wait(c.lTimeout);
        EXPECT_EQ(device.Count(kQuery), c.nQueries) << c.more << " " << c.lTimeout;
        EXPECT_GE(lasted, (20 + 7 * c.nQueries) * kSecond);
        EXPECT_LT(lasted, (20 + 7 * c.nQueries) * kSecond + 100 * kMillisecond);
        ExpectLinkGivenBack();
    }
}

TEST_F(DeviceReboot, FlushesWhatTheDeviceSaidWhileItRebooted) {
    device.Always(kQuery, kAck + kReady);
    device.Say({"booting", 15 * kSecond});
    ExpectAbout(Wait(), 20 * kSecond);
    EXPECT_THAT(Log(), ElementsAre("Delaying for 20 secs", "Flushed Buffer: strData=booting"));
    EXPECT_EQ(device.Count(kQuery), 1);
}

TEST_F(DeviceReboot, FlushesAReplyThatCameTooLate) {
    device.On(kQuery, {Saying(kAck + kReady, 4 * kSecond)}); // in the pause of the first turn
    Wait(28);
    EXPECT_EQ(device.Count(kQuery), 2) << "nobody answered the second one";
    EXPECT_EQ(Log().back().substr(0, 40), "Flushed Buffer: strData=<ACK><STX>3.9,1,");
}

TEST_F(DeviceReboot, AsksForABrokenReplyOnceMore) {
    std::string strBroken = kReady;
    strBroken.back() ^= 1;
    device.Always(kQuery, kAck + strBroken);
    device.On("NAK", {strBroken, kReady});
    // Of two broken ones the second gets no NAK, and the query is made again.
    const Microseconds lasted = Wait();
    host.RunFor(kMillisecond);
    EXPECT_THAT(device.Texts(), ElementsAre(kQuery, "NAK", kQuery, "NAK", "ACK"));
    EXPECT_LT(lasted, 26 * kSecond);
}

TEST_F(DeviceReboot, SendsTheQueryAgainForANak) {
    device.On(kQuery, {kNak, kNak, kAck + kReady});
    ExpectAbout(Wait() - 30 * kMillisecond, 20 * kSecond);
    EXPECT_EQ(device.Count(kQuery), 3);
}

TEST_F(DeviceReboot, TakesALineThatFailsForAFurtherTurn) {
    device.Always(kQuery, kAck + kReady);
    host.FailNext(Op::ComWrite, {.lLastError = 5}, 2);
    const Microseconds lasted = Wait();
    EXPECT_GE(lasted, 30 * kSecond);
    EXPECT_LT(lasted, 30 * kSecond + 200 * kMillisecond);
    ExpectError(0, "");
    host.FailNext(Op::ComRead, {.lLastError = 5}, 1, 1); // the flush passes, the look for ACK fails
    EXPECT_GE(Wait(), 25 * kSecond);
    ExpectError(0, "");
}

TEST_F(DeviceReboot, IdlesOverALineThatHungUp) {
    host.At(kSecond, [&] { Line().HangUp(); });
    const int64_t nCallsBefore = host.nCalls();
    const Microseconds lasted = Wait();
    EXPECT_GE(lasted, 240 * kSecond);
    EXPECT_LT(lasted, 246 * kSecond);
    EXPECT_LT(host.nCalls() - nCallsBefore, 1000);
    ExpectLinkGivenBack();
}

TEST_F(DeviceReboot, LooksAtNoCancel) {
    engine.bCancelComms(true);
    Answer(1, kAck + kBusy, kAck + kReady);
    EXPECT_GE(Wait(), 25 * kSecond);
    EXPECT_TRUE(engine.bCancelComms()) << "for the next cycle to see";
}

TEST_F(DeviceReboot, PumpsEventsAtBothEndsOfEachTurn) {
    // A line that is down has no reads that pump.
    Line().HangUp();
    host.RecordCalls();
    int64_t nBefore = host.nPumps();
    Wait(26); // two turns of five seconds each
    EXPECT_EQ(host.nPumps() - nBefore, 2 * 2 + 2) << "and one of each flush";
}

// ---- Midnight.

TEST_F(DeviceReboot, WaitsPastMidnightForAsLongAsTheDeviceIsNotReady) {
    StartAt(23, 59, 50);
    host.At(3600 * kSecond, [&] { device.Always(kQuery, kAck + kReady); });
    const Microseconds lasted = Wait();
    EXPECT_GT(lasted, 3600 * kSecond);
    EXPECT_LT(lasted, 3610 * kSecond);
    ExpectLinkGivenBack();
}

TEST_F(DeviceReboot, EndsPastMidnightByAnErrorToo) {
    StartAt(23, 59, 50);
    host.At(600 * kSecond, [&] { device.Always(kQuery, kAck + kError); });
    const Microseconds lasted = Wait();
    EXPECT_GT(lasted, 640 * kSecond);
    EXPECT_LT(lasted, 650 * kSecond);
}

TEST_F(DeviceReboot, EndsItsTimeJustBeforeMidnight) {
    StartAt(23, 55, 50);
    const Microseconds lasted = Wait();
    EXPECT_GT(lasted, 240 * kSecond);
    EXPECT_LT(lasted, 247 * kSecond);
}

// The single-precision clock goes in steps of 8 milliseconds by then.
TEST_F(DeviceReboot, LastsAsLongInTheEvening) {
    StartAt(23, 50, 0, 300 * kMillisecond);
    const Microseconds lasted = Wait(21);
    EXPECT_GE(lasted, 27 * kSecond);
    EXPECT_LT(lasted, 27 * kSecond + 50 * kMillisecond);
}

} // namespace
} // namespace brennik::passthru
