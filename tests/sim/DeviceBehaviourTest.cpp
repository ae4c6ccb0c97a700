// How a device is polled, how its calls follow one another, and how long it waits.
#include "sim/DeviceBehaviour.h"

#include "tests/sim/DevicePlay.h"
#include "tests/sim/GoldenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using golden::kFailure;
using golden::kQuery;
using golden::kReady;
using golden::kSuccess;
using sim::BuildFrame;
using sim::DeviceOutcome;
using testing::Contains;
using testing::ElementsAre;

constexpr sim::Microseconds kMillisecond = 1000;
constexpr sim::Microseconds kSecond = 1'000'000;

constexpr std::string_view kRequest =
    "VFI,VX520,XDL,F,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG";
constexpr std::string_view kRequestFrame =
    "\x02VFI,VX520,XDL,F,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG\x03\x94\x25";

/// A request of one field, in its frame.
std::string Asked(const std::string& strText) {
    return BuildFrame(strText);
}

/// A script of calls that each ask for one word.
std::string Calls(const std::string& strFirst, int nCalls) {
    std::string strScript = strFirst;
    for (int n = 1; n <= nCalls; ++n) {
        strScript += "\ncall\nrequest-record \"call " + std::to_string(n) + "\"\n";
    }
    return strScript;
}

TEST(DeviceBehaviour, SaysNothingBeforeItIsPolled) {
    DevicePlay play;
    EXPECT_EQ(play.Pass(3600 * kSecond), "");
    EXPECT_EQ(play.Device().NextDeadline(), std::nullopt);
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::NotBegun);
}

TEST(DeviceBehaviour, PlaysAWholeDownloadWithoutAScript) {
    DevicePlay play;
    EXPECT_EQ(play.Enq(), kRequestFrame);
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Running);
    EXPECT_TRUE(play.Device().bInSession());
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Open("a.bin"), "\x06");
    EXPECT_EQ(play.Write(0, "hello"), "\x06");
    EXPECT_EQ(play.Write(5, "\0\x05\x03\x02"sv), "\x06");
    EXPECT_EQ(play.Frame("C"), "\x06");
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Files()["I/1/a.bin"], "hello\0\x05\x03\x02"s);
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
    EXPECT_EQ(play.Report().lRequests, 1);
    EXPECT_EQ(play.Report().lFrames, 5);
    EXPECT_EQ(play.Report().received.lFiles, 1);
    EXPECT_EQ(play.Report().received.lDataBytes, 9);
    EXPECT_THAT(play.Device().Requests(), ElementsAre(kRequest));
    EXPECT_TRUE(play.Device().bSeriesOver());
}

TEST(DeviceBehaviour, TellsWhatHappens) {
    DevicePlay play("reboot 5000\nat frame 1 nak\n");
    play.Say("x\x05");
    play.Ack();
    play.Frame("Mhi");
    play.Frame("Mhi");
    play.Say("\x02Mhi\x03\x01\x02");
    play.Say(std::string(kSuccess) + "xyz");
    play.Pass(5 * kSecond);
    EXPECT_THAT(play.Events(), ElementsAre("call 1 of 1", "ignored 1 byte", "ENQ",
                                           "sent request: " + std::string(kRequest), "ACK",
                                           "frame 1 refused by the script", "frame 1: M, 3 bytes",
                                           "frame 2: wrong block check: NAK", "frame 2: S, 1 byte",
                                           "call ended: successful", "reboots for 5000 ms",
                                           "deaf to 3 bytes", "has rebooted"));
}

// Polling.

TEST(DeviceBehaviour, AnswersPollsWithSynFirst) {
    DevicePlay play("enq syn 2\n");
    EXPECT_EQ(play.Enq(), "\x16");
    EXPECT_EQ(play.Enq(), "\x16");
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, AnswersPollsWithSynForATimeFromTheFirstOneOn) {
    DevicePlay play("enq syn for 2000\n");
    play.Pass(10 * kSecond);
    EXPECT_EQ(play.Enq(), "\x16");
    play.Pass(2 * kSecond - 1);
    EXPECT_EQ(play.Enq(), "\x16");
    play.Pass(1);
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, AnswersPollsOneWayAfterTheOther) {
    DevicePlay play("enq silence 2\nenq syn 1\nenq bytes 02\nenq bytes \"??\"\nenq syn 0\n");
    EXPECT_EQ(play.Enq(), "");
    EXPECT_EQ(play.Say("\x05\x05"), "\x16");
    EXPECT_EQ(play.Enq(), "\x02");
    EXPECT_EQ(play.Enq(), "??");
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, MayNeverAnswerPolls) {
    DevicePlay play("enq silence\n");
    for (int n = 0; n < 100; ++n) {
        EXPECT_EQ(play.Enq(), "");
    }
    EXPECT_EQ(play.Say(kQuery), kReady);
}

TEST(DeviceBehaviour, IgnoresPollsWhileItsRequestIsOut) {
    DevicePlay play;
    EXPECT_EQ(play.Say("\x05\x05\x05"), kRequestFrame);
    EXPECT_EQ(play.Enq(), "");
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Enq(), "");
    EXPECT_EQ(play.Say("\x05" + std::string(kSuccess)), "\x06") << "between frames too";
    EXPECT_EQ(play.Report().lRequests, 1);
}

TEST(DeviceBehaviour, HearsNothingInNoise) {
    DevicePlay play;
    EXPECT_EQ(play.Say("\xC4\xE9\x80\xFF"), "");
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, MayAnswerNoiseWhileItWaitsToBePolled) {
    DevicePlay play("noise NAK\n");
    EXPECT_EQ(play.Say("\xC4"), "\x15");
    EXPECT_EQ(play.Say("\xC4\xC4"), "\x15");
    EXPECT_EQ(play.Enq(), kRequestFrame);
    EXPECT_EQ(play.Say("\xC4"), "");
}

// The request and its answer.

TEST(DeviceBehaviour, SendsItsRequestAgainAfterEachNak) {
    DevicePlay play("resends 2\n");
    EXPECT_EQ(play.Enq(), kRequestFrame);
    EXPECT_EQ(play.Nak(), kRequestFrame);
    EXPECT_EQ(play.Nak(), kRequestFrame);
    EXPECT_EQ(play.Report().lRequests, 3);
    EXPECT_EQ(play.Report().lResends, 2);
    EXPECT_EQ(play.Nak(), "");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::TooManyNaks);
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Enq(), kRequestFrame) << "the call goes on with the next poll";
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Running);
    EXPECT_EQ(play.Nak(), kRequestFrame);
    play.Ack();
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
}

TEST(DeviceBehaviour, TakesTheFirstFrameForTheAnswerToItsRequest) {
    DevicePlay play;
    play.Enq();
    EXPECT_EQ(play.Open("a"), "\x06");
    EXPECT_EQ(play.Write(0, "x"), "\x06");
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_EQ(play.Files()["I/1/a"], "x");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
}

TEST(DeviceBehaviour, TakesAFirstFrameWithAWrongCheckForTheAnswerToo) {
    DevicePlay play;
    play.Enq();
    EXPECT_EQ(play.Say("\x02S\x03\x6A\x0E"), "\x15");
    EXPECT_EQ(play.Report().lRefused, 1);
    EXPECT_EQ(play.Nak(), "") << "the request is answered";
    EXPECT_EQ(play.Say(kSuccess), "\x06");
}

TEST(DeviceBehaviour, HearsAnAckAndTheFrameBehindIt) {
    DevicePlay play;
    play.Enq();
    EXPECT_EQ(play.Say("\x06" + std::string(kSuccess)), "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
}

TEST(DeviceBehaviour, WaitsAMinuteForTheAnswerToItsRequest) {
    DevicePlay play;
    play.Enq();
    play.Pass(60 * kSecond - 1);
    EXPECT_TRUE(play.Device().bInSession());
    play.Pass(1);
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::NoAnswer);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Say(kSuccess), "") << "nobody has asked for it";
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, WaitsAsLongAsTheScriptSays) {
    DevicePlay play("timeout answer 100\ntimeout frame 200\n");
    play.Enq();
    play.Pass(99 * kMillisecond);
    play.Ack();
    play.Pass(199 * kMillisecond);
    EXPECT_EQ(play.Frame("M"), "\x06");
    play.Pass(199 * kMillisecond);
    EXPECT_TRUE(play.Device().bInSession());
    play.Pass(1 * kMillisecond);
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::NoAnswer);
    play.Enq();
    play.Pass(100 * kMillisecond);
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, SendsItsRequestWithAWrongCheckAndLateByScript) {
    DevicePlay play("at request wrong-check 2\nat request pause 300\nat request bytes \"!\"\n");
    EXPECT_EQ(play.Enq(), "");
    EXPECT_EQ(play.Pass(300 * kMillisecond - 1), "");
    std::string strWrong = "!" + std::string(kRequestFrame);
    strWrong.back() = '\x70'; // 25 turned by 55
    EXPECT_EQ(play.Pass(1), strWrong);
    EXPECT_EQ(play.Nak(), strWrong.substr(1)) << "the second time at once";
    EXPECT_EQ(play.Nak(), kRequestFrame);
}

TEST(DeviceBehaviour, HearsNothingDuringAPause) {
    DevicePlay play("at request pause 300\n");
    EXPECT_EQ(play.Say("\x05\x05"), "");
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Pass(300 * kMillisecond), kRequestFrame);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_THAT(play.Events(), Contains("deaf to 1 byte").Times(2));
}

TEST(DeviceBehaviour, CountsTheWaitFromTheEndOfAPause) {
    DevicePlay play("at request pause 300\ntimeout answer 100\n");
    play.Enq();
    play.Pass(300 * kMillisecond);
    EXPECT_EQ(play.Pass(100 * kMillisecond - 1), "");
    EXPECT_TRUE(play.Device().bInSession());
    play.Pass(1);
    EXPECT_FALSE(play.Device().bInSession());
}

// The series of calls.

TEST(DeviceBehaviour, RebootsBetweenCallsAndHearsNothingMeanwhile) {
    DevicePlay play(Calls("", 2));
    EXPECT_EQ(play.Enq(), Asked("call 1"));
    play.Ack();
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_TRUE(play.Device().bRebooting());
    EXPECT_EQ(play.Device().nCall(), 1U);
    EXPECT_EQ(play.Enq(), "");
    EXPECT_EQ(play.Say(kQuery), "");
    EXPECT_EQ(play.Pass(25 * kSecond - 1), "");
    EXPECT_EQ(play.Say(std::string(kQuery.substr(0, 5))), "");
    play.Pass(1);
    EXPECT_FALSE(play.Device().bRebooting());
    EXPECT_EQ(play.Say(kQuery), kReady) << "what it did not hear is no part of a frame";
    play.Ack();
    EXPECT_EQ(play.Enq(), Asked("call 2"));
    EXPECT_EQ(play.Report(0).outcome, DeviceOutcome::Successful);
    EXPECT_EQ(play.Report(1).outcome, DeviceOutcome::Running);
    EXPECT_FALSE(play.Device().bSeriesOver());
}

TEST(DeviceBehaviour, RebootsAfterAFailedSessionToo) {
    DevicePlay play(Calls("", 2));
    play.Begin();
    EXPECT_EQ(play.Say(kFailure), "\x06");
    EXPECT_EQ(play.Report(0).outcome, DeviceOutcome::Unsuccessful);
    EXPECT_TRUE(play.Device().bRebooting());
    play.Pass(25 * kSecond);
    EXPECT_EQ(play.Enq(), Asked("call 2"));
}

TEST(DeviceBehaviour, RebootsAsLongAsTheScriptSays) {
    DevicePlay play("reboot 3000\ncall\ncall\nreboot 0\ncall\n");
    play.Begin();
    play.Say(kSuccess);
    play.Pass(3 * kSecond - 1);
    EXPECT_EQ(play.Enq(), "");
    play.Pass(1);
    play.Begin();
    play.Say(kSuccess);
    EXPECT_FALSE(play.Device().bRebooting());
    play.Begin();
}

TEST(DeviceBehaviour, GivesUpACallOnlyForTheTimeBeing) {
    DevicePlay play(Calls("timeout frame 1000\nenq syn 1", 2));
    EXPECT_EQ(play.Enq(), "\x16");
    play.Begin();
    EXPECT_EQ(play.Open("a"), "\x06");
    EXPECT_EQ(play.Write(0, "lost"), "\x06");
    play.Pass(1 * kSecond);
    EXPECT_EQ(play.Report(0).outcome, DeviceOutcome::NoAnswer);
    EXPECT_EQ(play.Device().nCall(), 0U);
    EXPECT_EQ(play.Enq(), Asked("call 1")) << "its first polls are over";
    play.Ack();
    EXPECT_EQ(play.Frame("Mhello"), "\x06");
    EXPECT_EQ(play.Write(4, "late"), "\x06");
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_EQ(play.Files()["I/1/a"], "lost") << "the file is closed, and stays";
    EXPECT_EQ(play.Report(0).outcome, DeviceOutcome::Successful);
    EXPECT_EQ(play.Report(0).received.lDataBytes, 0);
}

TEST(DeviceBehaviour, AnswersPollsWithSynAfterItsLastCall) {
    DevicePlay play("reboot 0\n");
    play.Begin();
    play.Say(kSuccess);
    for (int n = 0; n < 3; ++n) {
        EXPECT_EQ(play.Enq(), "\x16");
    }
    EXPECT_EQ(play.Say(kQuery), kReady);
    EXPECT_EQ(play.Say("\x06\x05"), "\x16");
}

TEST(DeviceBehaviour, MayBeSilentAfterItsLastCall) {
    DevicePlay play("reboot 0\nafter silence\n");
    play.Begin();
    play.Say(kSuccess);
    EXPECT_EQ(play.Enq(), "");
    EXPECT_EQ(play.Say(kQuery), kReady);
}

TEST(DeviceBehaviour, MayBeginItsCallsAnew) {
    DevicePlay play(Calls("repeat\nreboot 0\nenq syn 1", 2));
    for (int nRound = 0; nRound < 3; ++nRound) {
        for (const char* strCall : {"call 1", "call 2"}) {
            EXPECT_EQ(play.Enq(), "\x16");
            EXPECT_EQ(play.Enq(), Asked(strCall));
            play.Say(kSuccess);
        }
        EXPECT_EQ(play.Device().nCall(), 0U);
        EXPECT_FALSE(play.Device().bSeriesOver());
        EXPECT_EQ(play.Report(0).outcome, DeviceOutcome::NotBegun);
        EXPECT_EQ(play.Report(1).outcome, DeviceOutcome::Successful);
    }
}

// Robustness.

TEST(DeviceBehaviour, RefusesAFrameOfASessionThatBreaksOff) {
    DevicePlay play;
    play.Begin();
    EXPECT_EQ(play.Say(BuildFrame("Mhello").substr(0, 4)), "");
    EXPECT_EQ(play.Pass(kSecond - 1), "");
    EXPECT_EQ(play.Say("x"), "");
    EXPECT_EQ(play.Pass(kSecond - 1), "");
    EXPECT_EQ(play.Pass(1), "\x15");
    EXPECT_EQ(play.Report().lRefused, 1);
    EXPECT_EQ(play.Frame("Mhello"), "\x06");
    EXPECT_THAT(play.Device().Packets(), ElementsAre("Mhello"));
}

TEST(DeviceBehaviour, WaitsForTheRestOfAFrameAsLongAsTheScriptSays) {
    DevicePlay play("timeout rest 50\n");
    play.Begin();
    play.Say("\x02M");
    EXPECT_EQ(play.Pass(50 * kMillisecond - 1), "");
    EXPECT_EQ(play.Pass(1), "\x15");
}

TEST(DeviceBehaviour, ForgetsABrokenMessageWithoutAWord) {
    DevicePlay play;
    play.Say(kQuery.substr(0, 9));
    EXPECT_EQ(play.Pass(kSecond), "");
    EXPECT_EQ(play.Say(kQuery), kReady);
}

TEST(DeviceBehaviour, HearsAPollBehindABrokenMessage) {
    DevicePlay play;
    play.Say(kQuery.substr(0, 9));
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, GivesUpASessionInWhichAFrameNeverBecomesWhole) {
    DevicePlay play("timeout frame 5000\n");
    play.Begin();
    play.Say("\x02M");
    for (int n = 0; n < 50; ++n) { // a new run polls
        EXPECT_TRUE(play.Device().bInSession());
        EXPECT_EQ(play.Enq(), "");
        play.Pass(100 * kMillisecond);
    }
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Enq(), kRequestFrame);
}

TEST(DeviceBehaviour, ForgetsAFrameThatNeverEnds) {
    DevicePlay play;
    play.Begin();
    EXPECT_EQ(play.Say("\x02M" + std::string(200'000, 'x')), "");
    EXPECT_EQ(play.Frame("Mhello"), "\x06");
}

TEST(DeviceBehaviour, BoundsWhatItNotes) {
    DevicePlay play;
    play.Begin();
    const std::string strLong = "M" + std::string(100'000, 'x');
    for (int n = 0; n < 50; ++n) {
        EXPECT_EQ(play.Frame(strLong), "\x06");
    }
    EXPECT_EQ(play.Device().Packets().size(), 10U);
    EXPECT_EQ(play.Report().lFrames, 50);
}

TEST(DeviceBehaviour, GivesUpWhatIsUnderWayWhenItsLineIsGone) {
    sim::DeviceBehaviour device;
    NotingWire wire;
    device.Connected(wire, 0);
    device.Received(wire, 0, "\x05");
    device.Disconnected(1);
    EXPECT_EQ(device.Reports()[0].outcome, DeviceOutcome::NoAnswer);
    EXPECT_EQ(device.NextDeadline(), std::nullopt);
}

TEST(DeviceBehaviour, TakesFilesAndForgetsThemWithoutAStore) {
    sim::DeviceBehaviour device;
    NotingWire wire;
    device.Connected(wire, 0);
    const auto say = [&](const std::string& strBytes) { device.Received(wire, 0, strBytes); };
    say("\x05");
    say(BuildFrame(sim::OpenPacket('O', "a", 5, {2015, 5, 22, 11, 0, 0})));
    say(BuildFrame(sim::WritePacket(0, "hello")));
    say(BuildFrame("LA\x1C"
                   "B"));
    say(BuildFrame("C"));
    say(std::string(kSuccess));
    EXPECT_THAT(wire.TakeSends(),
                ElementsAre(kRequestFrame, "\x06", "\x06", "\x06", "\x06", "\x06"));
    EXPECT_EQ(device.Reports()[0].received.lDataBytes, 5);
}

// Whatever arrives, the device stands, answers with no more than it was asked, and in the end it
// can be polled again.
TEST(DeviceBehaviour, BearsAnyBytes) {
    std::mt19937 random(20150522); // NOLINT: the same each time
    const std::string_view strPieces[] = {"\x05",
                                          "\x06",
                                          "\x15",
                                          "\x02",
                                          "\x03",
                                          kSuccess,
                                          kQuery,
                                          "\x02W\x00\x03\x00\x00\x00\x00"
                                          "abc\x5F\x5C"sv,
                                          "5.8,",
                                          "\x02"
                                          "5.8,2,U,Q,0,0,,,T,\x03\x6E"};
    for (int nRound = 0; nRound < 200; ++nRound) {
        DevicePlay play("repeat\nreboot 10\ntimeout answer 500\ntimeout frame 500\nresends 1\n");
        for (int n = 0; n < 200; ++n) {
            const unsigned nWhat = random() % 16;
            if (nWhat < std::size(strPieces)) {
                play.Say(strPieces[nWhat]);
            } else if (nWhat < 14) {
                std::string strNoise(random() % 64, '\0');
                for (char& c : strNoise) {
                    c = static_cast<char>(random());
                }
                EXPECT_LE(play.Say(strNoise).size(), 200U);
            } else {
                play.Pass(random() % 300 * kMillisecond);
            }
        }
        play.Pass(2 * kSecond);
        EXPECT_EQ(play.Enq(), kRequestFrame);
    }
}

} // namespace
} // namespace brennik
