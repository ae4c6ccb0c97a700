// The polling of a device, step by step. How its request is then taken is told in FirstPacketTest,
// the hunt for its rate in BaudHuntTest.

#include "tests/passthru/DeviceWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kRequest = Request("XDL", "P");

class DeviceHandshake : public DeviceTest {
  protected:
    DeviceHandshake() {
        StartAt(0, 1, 40); // an hour at which the clock tells microseconds apart
        Connect();
    }

    /// So many ENQs get no answer, the next one the request.
    void AnswerAfter(int32_t lPolls, const std::string& strAnswer = CrcFrame(kRequest)) {
        std::deque<Saying> sayings(static_cast<size_t>(lPolls), Saying(""));
        sayings.emplace_back(strAnswer);
        device.On("ENQ", std::move(sayings));
    }
    void CancelAfter(Microseconds delay) {
        host.At(delay, [this] { engine.bCancelComms(true); });
    }
};

// ---- The steps.

TEST_F(DeviceHandshake, SetsTheLineThenPollsUntilTheDeviceSendsAFrame) {
    AnswerAfter(2);
    RecordSteps();
    EXPECT_EQ(Handshake(), 0);
    const Lines steps = Steps();
    const Lines polling = {
        "GetState", "SetState 19200", "SetTimeouts", "log BaudRate set @ 19200",
        "Sleep 50",                                          // at the head of the attempt
        "Sleep 50", "Write 1",        "Read 1",      "pump", // silence
        "Sleep 50", "Write 1",        "Read 1",      "pump", // silence
        "Sleep 50", "Write 1",        "Read 1",              // STX
        "pump",     "Read 1", // the rest of the frame, as a read of the link
        "pump",
    };
    ASSERT_GT(steps.size(), polling.size());
    EXPECT_EQ(Lines(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(polling.size())),
              polling);
    EXPECT_EQ(device.Bytes(), "\x05\x05\x05") << "the frame gets no answer yet";
    EXPECT_EQ(strPacket, kRequest);
    ExpectLink(2, false);
}

TEST_F(DeviceHandshake, PollsEverySixtyMilliseconds) {
    AnswerAfter(4);
    ASSERT_EQ(Handshake(), 0);
    ASSERT_EQ(device.All().size(), 5u);
    for (size_t n = 1; n < 5; ++n) {
        const Microseconds gap = device.All()[n].moment - device.All()[n - 1].moment;
        // The pause, the look at the line, and a microsecond for each call of this host.
        EXPECT_GE(gap, 60 * kMillisecond);
        EXPECT_LT(gap, 60 * kMillisecond + 20);
    }
}

TEST_F(DeviceHandshake, TakesRateAndSettingsOfTheConnectionToThePort) {
    connection.lBaudRate(300);
    connection.lParity(0);
    connection.lDatabits(3);
    config.lClientBaudRate(57600);
    EXPECT_EQ(Line().State().BaudRate, 19200);
    engine.bCancelComms(true);
    config.bAutoBaud(false);
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(connection.lBaudRate(), 57600);
    EXPECT_EQ(Line().State().BaudRate, 57600);
    EXPECT_EQ(Line().State().Parity, 2);
    EXPECT_EQ(Line().State().ByteSize, 7);
    EXPECT_EQ(Line().nOpenings(), 1);
}

TEST_F(DeviceHandshake, EmptiesThePacketFirst) {
    engine.bCancelComms(true);
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(strPacket, "");
    EXPECT_EQ(strPTID, "old id");
    EXPECT_EQ(lState, PASSTHRU_ST_START);
    ExpectError(0, "");
}

TEST_F(DeviceHandshake, ReadsABrokenFrameAsItCame) {
    std::string strBroken = CrcFrame(kRequest);
    strBroken.back() ^= 1;
    AnswerAfter(0, strBroken);
    EXPECT_EQ(Handshake(), 0) << "without acknowledgement the check isn't enforced";
    EXPECT_EQ(strPacket, kRequest);
    EXPECT_EQ(device.Bytes(), kEnq);
}

TEST_F(DeviceHandshake, ReadsAFrameThatComesInPieces) {
    AnswerAfter(0, kStx);
    const std::string strRest = CrcFrame(kRequest).substr(1);
    device.onHeard = [&](const std::string&) {
        device.Say({strRest.substr(0, 5), 1 * kSecond});
        device.Say({strRest.substr(5), 2 * kSecond});
        device.onHeard = nullptr;
    };
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(strPacket, kRequest);
    EXPECT_EQ(device.Count("ENQ"), 1) << "a frame that was begun isn't polled for";
}

// ---- Silence.

TEST_F(DeviceHandshake, GivesASilentDeviceFourPeriodsOfTwentySeconds) {
    config.bAutoBaud(false);
    const Microseconds begin = host.Now();
    const int64_t nCallsBefore = host.nCalls();
    EXPECT_EQ(Handshake(), 1);
    ExpectError(1000011, kTimedOut);
    // Each period ends at a whole second, 20 later, with the poll under way.
    EXPECT_GT(host.Now() - begin, 80 * kSecond);
    EXPECT_LT(host.Now() - begin, 80 * kSecond + 61 * kMillisecond);
    EXPECT_LT(host.nCalls() - nCallsBefore, 20000);
    EXPECT_EQ(strPacket, "");
    EXPECT_EQ(strPTID, "old id");
    EXPECT_EQ(lState, PASSTHRU_ST_START);
    EXPECT_THAT(host.profileStrings.writes, IsEmpty());
    EXPECT_EQ(VfiCopy(), "no file");
    // 20 s behind the pause of 50 ms are 333 polls of 60 ms, the last one begun just in time.
    int64_t nInFirst = 0;
    for (const auto& heard : device.All())
        nInFirst += heard.moment < ports.rates.at(2).moment ? 1 : 0;
    EXPECT_EQ(nInFirst, 333);
    EXPECT_EQ(device.Texts(), Lines(device.All().size(), "ENQ"));
}

// The end of a period is a whole second: up to half a second comes or goes.
TEST_F(DeviceHandshake, EndsItsPeriodsAtWholeSeconds) {
    struct {
        Microseconds more; ///< behind the whole second at which the handshake begins
        Microseconds length;
    } const cases[] = {
        {0, 20 * kSecond},
        {400 * kMillisecond, 19600 * kMillisecond}, // 100.45 + 20 is 120
        {449 * kMillisecond, 19551 * kMillisecond},
        {451 * kMillisecond, 20549 * kMillisecond}, // 100.501 + 20 is 121
        {900 * kMillisecond, 20100 * kMillisecond},
    };
    for (const auto& c : cases) {
        StartAt(0, 1, 40, c.more);
        ports.rates.clear();
        const Microseconds begin = host.Now();
        ASSERT_EQ(Handshake(), 1);
        ASSERT_EQ(ports.rates.size(), 5u);
        EXPECT_GT(ports.rates[1].moment - begin, c.length);
        EXPECT_LT(ports.rates[1].moment - begin, c.length + 61 * kMillisecond);
        // The next one begins at a whole second and the rest of a poll.
        EXPECT_GT(ports.rates[2].moment - begin, c.length + 20 * kSecond);
        EXPECT_LT(ports.rates[2].moment - begin, c.length + 20 * kSecond + 61 * kMillisecond);
    }
}

TEST_F(DeviceHandshake, TakesARequestUpToTheLastMomentOfTheFourthPeriod) {
    config.bAutoBaud(false);
    for (const bool bInTime : {true, false}) {
        StartAt(0, 1, 40);
        device.Forget();
        // Said at the moment, whatever was asked.
        device.Say({CrcFrame(kRequest), (bInTime ? 79950 : 80070) * kMillisecond});
        EXPECT_EQ(Handshake(), bInTime ? 0 : 1);
        host.RunFor(kSecond);
    }
}

TEST_F(DeviceHandshake, SpeaksAgainWhenTheDeviceCallsInALaterPeriod) {
    for (const int32_t lAttempt : {2, 3, 4}) {
        StartAt(0, 1, 40);
        config.bAutoBaud(false);
        AnswerAfter((lAttempt - 1) * 333 + 5);
        const Microseconds begin = host.Now();
        EXPECT_EQ(Handshake(), 0);
        EXPECT_GT(host.Now() - begin, (lAttempt - 1) * 20 * kSecond);
        EXPECT_LT(host.Now() - begin, (lAttempt - 1) * 20 * kSecond + 2 * kSecond);
    }
}

// ---- SYN.

TEST_F(DeviceHandshake, GoesOnPollingAtTheSameRateAfterASyn) {
    device.On("ENQ", {kSyn, kSyn, "", kSyn, CrcFrame(kRequest)});
    RecordSteps();
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(device.Bytes(), "\x05\x05\x05\x05\x05");
    EXPECT_EQ(ports.rates.size(), 2u) << "of the opening and of the handshake";
    EXPECT_EQ(Line().nOpenings(), 1);
    const Lines steps = Steps();
    // A SYN costs no more than the poll that it answers.
    EXPECT_THAT(Lines(steps.begin() + 5, steps.begin() + 9),
                ElementsAre("Sleep 50", "Write 1", "Read 1", "pump"));
}

TEST_F(DeviceHandshake, UsesUpThePeriodOnSynAndSetsTheNextRateAllTheSame) {
    device.Always("ENQ", kSyn);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    ASSERT_EQ(ports.rates.size(), 6u);
    EXPECT_GT(ports.rates[2].moment - begin, 20 * kSecond);
    EXPECT_LT(ports.rates[2].moment - begin, 20 * kSecond + 61 * kMillisecond);
    EXPECT_THAT(RateLines(), ElementsAre("open 19200", "BaudRate set @ 19200",
                                         "BaudRate set @ 115200", "BaudRate set @ 19200",
                                         "BaudRate set @ 115200", "BaudRate set @ 19200"));
    ExpectError(1000011, kTimedOut); // of the polls at the other rate
}

TEST_F(DeviceHandshake, LeavesNoTextWhenAllThatCameWasSyn) {
    config.bAutoBaud(false);
    device.Always("ENQ", kSyn);
    EXPECT_EQ(Handshake(), 1);
    ExpectError(0, "");
    EXPECT_EQ(strPacket, kSyn);
}

// ---- A frame that is begun and not completed.

TEST_F(DeviceHandshake, EndsForGoodWhenAFrameIsNotCompleted) {
    AnswerAfter(1, kStx);
    RecordSteps();
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_GT(host.Now() - begin, 6 * kSecond) << "two reads of three seconds";
    EXPECT_LT(host.Now() - begin, 6 * kSecond + 250 * kMillisecond);
    EXPECT_EQ(device.Bytes(), "\x05\x05") << "no NAK, no further poll";
    EXPECT_THAT(RateLines(), ElementsAre("open 19200", "BaudRate set @ 19200"));
    EXPECT_EQ(connection.lBaudRate(), 19200);
    EXPECT_THAT(host.profileStrings.writes, IsEmpty());
    EXPECT_EQ(lState, PASSTHRU_ST_START);
    EXPECT_EQ(Steps().back(), "pump");
    EXPECT_EQ(strPacket, kStx) << "what the read had gathered";
}

TEST_F(DeviceHandshake, StartsEachReadOfTheFrameAgainFromItsStart) {
    AnswerAfter(0, kStx);
    device.onHeard = [&](const std::string&) {
        // The first read gathers rubbish and times out; the second one meets the rest.
        device.Say({"rubbish", 1 * kSecond});
        device.Say({CrcFrame(kRequest).substr(1), 4 * kSecond});
        device.onHeard = nullptr;
    };
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(strPacket, kRequest);
}

TEST_F(DeviceHandshake, EndsForGoodWhenTheLineFailsInAFrame) {
    AnswerAfter(0, kStx);
    device.onHeard = [&](const std::string&) {
        host.At(100 * kMillisecond, [&] { Line().HangUp(); });
    };
    EXPECT_EQ(Handshake(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_EQ(device.Count("ENQ"), 1);
}

// ---- Lines that fail while the device is polled.

TEST_F(DeviceHandshake, LooksAtTheLineEvenWhenItsEnqCouldNotBeSent) {
    device.Say({CrcFrame(kRequest), 80 * kMillisecond});
    host.FailNext(Op::ComWrite, {.lLastError = 5});
    RecordSteps();
    EXPECT_EQ(Handshake(), 0);
    ExpectError(5, "Failed writing data to the opened port"); // a success clears nothing
    EXPECT_EQ(device.Bytes(), "");
    const Lines steps = Steps();
    EXPECT_THAT(Lines(steps.begin() + 4, steps.begin() + 8),
                ElementsAre("Sleep 50", "Sleep 50", "Write 1", "Read 1"));
}

TEST_F(DeviceHandshake, KeepsTheTextOfTheLastStepThatFailed) {
    config.bAutoBaud(false);
    CancelAfter(130 * kMillisecond); // in the second poll
    host.FailNext(Op::ComWrite, {.lLastError = 5}, 2);
    EXPECT_EQ(Handshake(), 1);
    ExpectError(1000011, kTimedOut); // silence came behind the failed ENQ
}

TEST_F(DeviceHandshake, PollsOnWhenALookAtTheLineFails) {
    AnswerAfter(3);
    host.FailNext(Op::ComRead, {.lLastError = 5}, 2);
    EXPECT_EQ(Handshake(), 0);
    ExpectError(1000011, kTimedOut); // of the third look
    EXPECT_EQ(device.Count("ENQ"), 4);
    CancelAfter(70 * kMillisecond);
    host.FailNext(Op::ComRead, {.lLastError = 5});
    EXPECT_EQ(Handshake(), 1);
    ExpectError(5, "Failed reading data from the opened port");
}

TEST_F(DeviceHandshake, IdlesOverALineThatHungUp) {
    host.At(kSecond, [&] { Line().HangUp(); });
    const int64_t nCallsBefore = host.nCalls();
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    ExpectError(5, "Failed reading data from the opened port");
    EXPECT_GT(host.Now() - begin, 80 * kSecond);
    EXPECT_LT(host.Now() - begin, 80 * kSecond + 61 * kMillisecond);
    EXPECT_LT(host.nCalls() - nCallsBefore, 25000);
}

// ---- Cancel.

TEST_F(DeviceHandshake, PollsNothingWhenItWasCancelledBefore) {
    engine.bCancelComms(true);
    RecordSteps();
    EXPECT_EQ(Handshake(), 1);
    EXPECT_THAT(Steps(),
                ElementsAre("GetState", "SetState 19200", "SetTimeouts", "log BaudRate set @ 19200",
                            "Sleep 50", "GetState", "SetState 115200", "log BaudRate set @ 115200",
                            "Sleep 50", "GetState", "SetState 19200", "log BaudRate set @ 19200",
                            "Sleep 50", "GetState", "SetState 115200", "log BaudRate set @ 115200",
                            "Sleep 50", "GetState", "SetState 19200", "log BaudRate set @ 19200"));
    EXPECT_EQ(device.Bytes(), "");
    ExpectError(0, "");
}

TEST_F(DeviceHandshake, EndsThePeriodAtTheNextPollWhenCancelled) {
    for (const Microseconds delay :
         {20 * kMillisecond, 80 * kMillisecond, 105 * kMillisecond, 10 * kSecond, 35 * kSecond}) {
        StartAt(0, 1, 40);
        engine.bCancelComms(false);
        device.Forget();
        CancelAfter(delay);
        const Microseconds begin = host.Now();
        EXPECT_EQ(Handshake(), 1);
        EXPECT_LT(host.Now() - begin, delay + 61 * kMillisecond + 3 * 51 * kMillisecond);
        for (const auto& heard : device.All())
            EXPECT_LT(heard.moment - begin, delay + 60 * kMillisecond) << "no poll begins later";
        EXPECT_EQ(lState, PASSTHRU_ST_START);
    }
}

TEST_F(DeviceHandshake, FinishesThePollInWhichItIsCancelled) {
    CancelAfter(75 * kMillisecond); // in the pause of the first poll
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(device.Bytes(), kEnq);
    ExpectError(1000011, kTimedOut);
    EXPECT_EQ(connection.lBaudRate(), 19200) << "after four changes";
}

TEST_F(DeviceHandshake, TakesAFrameThatWasUnderWayWhenItWasCancelled) {
    device.On("ENQ", {Saying(CrcFrame(kRequest), 2 * kMillisecond)});
    CancelAfter(102 * kMillisecond);
    EXPECT_EQ(Handshake(), 0) << "the engine looks at the cancel in the cycle, not here";
    EXPECT_EQ(strPacket, kRequest);
}

TEST_F(DeviceHandshake, CancelledInABrokenFrameReadsItToItsLimit) {
    AnswerAfter(0, kStx);
    CancelAfter(1 * kSecond);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    EXPECT_GT(host.Now() - begin, 6 * kSecond);
    ExpectError(1000011, kTimedOut);
}

TEST_F(DeviceHandshake, CancelFromAWindowEventIsSeenAtTheNextPoll) {
    int64_t nPumps = 0;
    host.OnPump([&] {
        if (++nPumps == 10)
            engine.bCancelComms(true);
    });
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(device.Count("ENQ"), 5) << "two pumps in each poll";
}

// ---- Midnight.

// Meant: a time limit beyond midnight is never reached, since the clock starts again.
TEST_F(DeviceHandshake, PollsPastMidnightUntilTheDeviceCalls) {
    StartAt(23, 59, 50);
    const Microseconds begin = host.Now();
    host.At(3600 * kSecond, [&] { device.Always("ENQ", CrcFrame(kRequest)); });
    EXPECT_EQ(Handshake(), 0);
    EXPECT_GT(host.Now() - begin, 3600 * kSecond);
    EXPECT_LT(host.Now() - begin, 3601 * kSecond);
    EXPECT_EQ(ports.rates.size(), 2u) << "one period, one rate";
}

TEST_F(DeviceHandshake, PollsPastMidnightUntilItIsCancelled) {
    StartAt(23, 59, 50);
    CancelAfter(600 * kSecond);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    EXPECT_GT(host.Now() - begin, 600 * kSecond);
    EXPECT_LT(host.Now() - begin, 601 * kSecond);
}

TEST_F(DeviceHandshake, EndsAPeriodJustBeforeMidnight) {
    // 86399 is reached; 86400 and more is not.
    StartAt(23, 59, 39);
    CancelAfter(3600 * kSecond);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Handshake(), 1);
    ASSERT_GE(ports.rates.size(), 3u);
    EXPECT_LT(ports.rates[2].moment - begin, 20 * kSecond + 61 * kMillisecond);
    ASSERT_EQ(ports.rates.size(), 6u);
    EXPECT_GT(ports.rates[3].moment - begin, 3600 * kSecond) << "the second period has no end";
}

TEST_F(DeviceHandshake, EndsAFrameBegunBeforeMidnightOnlyWithItsBytes) {
    StartAt(23, 59, 58);
    AnswerAfter(0, kStx);
    device.Say({CrcFrame(kRequest).substr(1), 900 * kSecond});
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(strPacket, kRequest);
}

} // namespace
} // namespace brennik::passthru
