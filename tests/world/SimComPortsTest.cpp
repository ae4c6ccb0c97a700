#include "tests/world/SimHost.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik::world {
namespace {

constexpr CommTimeouts kLimits{10, 0, 10, 0, 1000};
constexpr Microseconds kByteTime = 1042; // at 9600 bits per second, rounded up

class SimComPortsTest : public WorldTest {
  protected:
    SimComPorts& ports = host.comPorts;

    /// An open port with a peer behind it and time limits in force.
    int32_t Opened(const std::string& strPort = "COM1") {
        peer = &ports.AddPeer(strPort);
        return OpenAgain(strPort);
    }
    int32_t OpenAgain(const std::string& strPort = "COM1") {
        const int32_t hPort = ports.Open(strPort);
        EXPECT_GE(hPort, 0);
        EXPECT_TRUE(ports.SetTimeouts(hPort, kLimits));
        return hPort;
    }
    SimLine& Line() { return ports.Line("COM1"); }

    /// What a read delivers; "failed" with the number when it fails.
    std::string Read(int32_t hPort, int32_t lCount = 1) {
        std::string strBytes(static_cast<size_t>(lCount), '\0');
        int32_t lRead = 99;
        if (!ports.Read(hPort, strBytes.data(), lCount, lRead)) {
            EXPECT_EQ(lRead, 0);
            return "failed " + std::to_string(ports.LastError());
        }
        strBytes.resize(static_cast<size_t>(lRead));
        return strBytes;
    }
    /// How many bytes a write took; -1 when it fails.
    int32_t Write(int32_t hPort, std::string_view strBytes) {
        int32_t lWritten = 99;
        return ports.Write(hPort, strBytes, lWritten) ? lWritten : -1;
    }
    Microseconds TimeOf(const std::function<void()>& action) {
        const Microseconds start = host.Now();
        action();
        return host.Now() - start;
    }

    ScriptedPeer* peer = nullptr;
};

// Open and close.

TEST_F(SimComPortsTest, OpensALineByItsName) {
    SimLine& line = ports.AddLine("COM1");
    EXPECT_FALSE(line.IsOpen());
    EXPECT_EQ(ports.Open("COM1"), 0);
    EXPECT_TRUE(line.IsOpen());
    EXPECT_EQ(ports.nOpenPorts(), 1);
    EXPECT_TRUE(ports.Close(0));
    EXPECT_FALSE(line.IsOpen());
    EXPECT_EQ(ports.nOpenPorts(), 0);
    EXPECT_EQ(ports.Open("COM1"), 1); // a handle is never given again
    EXPECT_EQ(line.nOpenings(), 2);
    EXPECT_EQ(ports.LastError(), 0);
}

TEST_F(SimComPortsTest, ADeviceNameOpensTheSameLine) {
    SimLine& line = ports.AddLine("COM12");
    EXPECT_EQ(ports.Open("\\\\.\\COM12"), 0);
    EXPECT_TRUE(line.IsOpen());
}

TEST_F(SimComPortsTest, LinesStandBesideEachOther) {
    const int32_t hFirst = Opened("COM1");
    ScriptedPeer& first = *peer;
    const int32_t hSecond = Opened("COM2");
    EXPECT_NE(hFirst, hSecond);
    EXPECT_EQ(Write(hFirst, "a"), 1);
    EXPECT_EQ(Write(hSecond, "b"), 1);
    host.RunFor(2 * kByteTime);
    EXPECT_EQ(first.Received(), "a");
    EXPECT_EQ(peer->Received(), "b");
    EXPECT_EQ(ports.nOpenPorts(), 2);
}

TEST_F(SimComPortsTest, APortThatWasntAddedIsMissing) {
    EXPECT_EQ(ports.Open("COM1"), kNoComPort);
    EXPECT_EQ(ports.LastError(), comerror::kMissing);
}

TEST_F(SimComPortsTest, AnOpenPortIsBusy) {
    const int32_t hPort = Opened();
    EXPECT_EQ(ports.Open("COM1"), kNoComPort);
    EXPECT_EQ(ports.LastError(), comerror::kBusy);
    EXPECT_EQ(Write(hPort, "x"), 1);               // the first one works on
    EXPECT_EQ(ports.LastError(), comerror::kBusy); // a success clears nothing
    EXPECT_EQ(Line().nOpenings(), 1);
}

TEST_F(SimComPortsTest, AnOpeningMayBeRefused) {
    SimLine& line = ports.AddLine("COM1");
    host.FailNext(Op::ComOpen, {.lLastError = comerror::kNotPermitted});
    EXPECT_EQ(ports.Open("COM1"), kNoComPort);
    EXPECT_EQ(ports.LastError(), comerror::kNotPermitted);
    EXPECT_EQ(line.nOpenings(), 0);
    EXPECT_EQ(ports.Open("COM1"), 0);
}

TEST_F(SimComPortsTest, EachOpeningStartsFresh) {
    const int32_t hPort = Opened();
    DCB dcb;
    dcb.BaudRate = 300;
    EXPECT_TRUE(ports.SetState(hPort, dcb));
    Line().Feed("stale");
    EXPECT_TRUE(ports.Close(hPort));
    const int32_t hAgain = ports.Open("COM1");
    EXPECT_TRUE(ports.GetState(hAgain, dcb));
    EXPECT_EQ(dcb, DCB{});
    EXPECT_EQ(Line().Timeouts(), kTimeoutsAtOpening);
    EXPECT_TRUE(ports.SetTimeouts(hAgain, kLimits));
    EXPECT_EQ(Read(hAgain), "");
}

TEST_F(SimComPortsTest, ALineIsAddedOnce) {
    ports.AddLine("COM1");
    EXPECT_THROW(ports.AddLine("COM1"), std::logic_error);
    EXPECT_THROW(ports.AddPeer("COM1"), std::logic_error);
}

TEST_F(SimComPortsTest, AClosedHandleIsNoPort) {
    const int32_t hClosed = Opened();
    EXPECT_TRUE(ports.Close(hClosed));
    for (const int32_t hPort : {hClosed, kNoComPort, 77}) {
        DCB dcb;
        const std::vector<std::function<bool()>> calls = {
            [&] { return ports.Close(hPort); },
            [&] { return Read(hPort) != "failed 9"; },
            [&] { return Write(hPort, "x") != -1; },
            [&] { return ports.GetState(hPort, dcb); },
            [&] { return ports.SetState(hPort, dcb); },
            [&] { return ports.SetTimeouts(hPort, kLimits); },
        };
        for (size_t nCall = 0; nCall < calls.size(); ++nCall) {
            host.FailNext(Op::ComOpen, {.lLastError = 1});
            EXPECT_EQ(ports.Open("COM1"), kNoComPort);
            EXPECT_FALSE(calls[nCall]()) << hPort << ", call " << nCall;
            EXPECT_EQ(ports.LastError(), comerror::kNoHandle) << hPort << ", call " << nCall;
        }
        ports.Purge(hPort, 15);
    }
}

// Settings.

TEST_F(SimComPortsTest, KeepsTheControlBlock) {
    const int32_t hPort = Opened();
    DCB dcb;
    EXPECT_TRUE(ports.GetState(hPort, dcb));
    EXPECT_EQ(dcb, DCB{});
    dcb.BaudRate = 115200;
    dcb.XonLim = 50;
    dcb.XonChar = 'a';
    dcb.Flags = 0x1311;
    EXPECT_TRUE(ports.SetState(hPort, dcb));
    DCB found;
    EXPECT_TRUE(ports.GetState(hPort, found));
    EXPECT_EQ(found, dcb);
    EXPECT_EQ(Line().State(), dcb);
}

TEST_F(SimComPortsTest, RefusesWhatTheHostCantMakeAndKeepsWhatWas) {
    const int32_t hPort = Opened();
    DCB fourBits;
    fourBits.ByteSize = 4;
    DCB dsr;
    dsr.Flags |= 1 << dcbflag::kOutxDsrFlow;
    DCB stopBits;
    stopBits.StopBits = 1; // one and a half, behind eight
    for (const DCB& dcb : {fourBits, dsr, stopBits}) {
        EXPECT_FALSE(ports.SetState(hPort, dcb));
        EXPECT_EQ(ports.LastError(), comerror::kInvalid);
        EXPECT_EQ(Line().State(), DCB{});
    }
}

TEST_F(SimComPortsTest, EachOperationFailsInItsOwnWay) {
    const int32_t hPort = Opened();
    Line().Feed("x");
    DCB dcb;
    dcb.BaudRate = 300;
    host.FailNext(Op::ComGetState, {.lLastError = 101});
    EXPECT_FALSE(ports.GetState(hPort, dcb));
    EXPECT_EQ(dcb.BaudRate, 300); // left as it was
    EXPECT_EQ(ports.LastError(), 101);
    host.FailNext(Op::ComSetState, {.lLastError = 102});
    EXPECT_FALSE(ports.SetState(hPort, dcb));
    EXPECT_EQ(Line().State().BaudRate, 9600);
    EXPECT_EQ(ports.LastError(), 102);
    host.FailNext(Op::ComSetTimeouts, {.lLastError = 103});
    EXPECT_FALSE(ports.SetTimeouts(hPort, CommTimeouts{}));
    EXPECT_EQ(Line().Timeouts(), kLimits);
    EXPECT_EQ(ports.LastError(), 103);
    host.FailNext(Op::ComRead, {.lLastError = 104});
    EXPECT_EQ(Read(hPort), "failed 104");
    EXPECT_EQ(Read(hPort), "x"); // it waits still
    host.FailNext(Op::ComWrite, {.lLastError = 105});
    EXPECT_EQ(Write(hPort, "x"), -1);
    EXPECT_EQ(Line().nSentByProgram(), 0);
    EXPECT_EQ(ports.LastError(), 105);
    host.FailNext(Op::ComClose, {.lLastError = 106});
    EXPECT_FALSE(ports.Close(hPort));
    EXPECT_EQ(ports.LastError(), 106);
    EXPECT_TRUE(ports.Close(hPort)); // it had stayed open
}

// Reads.

TEST_F(SimComPortsTest, AReadTakesWhatIsAskedForAndLeavesTheRest) {
    const int32_t hPort = Opened();
    Line().Feed(std::string("ab\0d", 4));
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort, 3), std::string("ab\0", 3)); }), 1);
    EXPECT_EQ(Read(hPort, 1), "d");
}

TEST_F(SimComPortsTest, AReadEndsWithItsTimeLimit) {
    const int32_t hPort = Opened();
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort, 5), ""); }), 10 * kMillisecond + 1);
    Line().Feed("ab");
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort, 5), "ab"); }), 10 * kMillisecond + 1);
    EXPECT_TRUE(ports.SetTimeouts(hPort, {0, 2, 3, 0, 0}));
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort, 5), ""); }), 13 * kMillisecond + 1);
}

TEST_F(SimComPortsTest, AByteAtTheTimeLimitIsRead) {
    const int32_t hPort = Opened();
    const Microseconds limit = 10 * kMillisecond + 1; // the call itself
    peer->PushAt(limit - kByteTime, "x");
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort), "x"); }), limit);
    peer->PushAt(limit - kByteTime + 1, "y");
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort), ""); }), limit);
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort), "y"); }), 1);
}

TEST_F(SimComPortsTest, AReadWithoutLimitsWaitsForItsBytes) {
    const int32_t hPort = Opened();
    EXPECT_TRUE(ports.SetTimeouts(hPort, CommTimeouts{}));
    peer->PushAt(kSecond, "ab");
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort, 2), "ab"); }), kSecond + 2 * kByteTime);
}

// Writes.

TEST_F(SimComPortsTest, AWriteComesBackWhenTenMillisecondsAreLeft) {
    const int32_t hPort = Opened();
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, "123456789"), 9); }), 1);
    host.RunFor(kSecond);
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, "123456789A"), 10); }), 1 + kByteTime);
    host.RunFor(kSecond);
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, std::string(109, 'x')), 109); }),
              1 + 104'167); // a hundred bytes
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received().size(), 9U + 10U + 109U);
}

TEST_F(SimComPortsTest, AWriteThatStillMovesAtItsLimitCountsAsWritten) {
    const int32_t hPort = Opened();
    const std::string strBytes(2000, 'x'); // two seconds long
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, strBytes), 2000); }), kSecond + 1);
    host.RunFor(2 * kSecond);
    EXPECT_EQ(peer->Received(), strBytes);
}

TEST_F(SimComPortsTest, AWriteThatNothingMovesOfIsGivenUp) {
    const int32_t hPort = Opened();
    Line().HoldOutput(true);
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, "abc"), 0); }), kSecond + 1);
    Line().HoldOutput(false);
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), ""); // what was left is gone
    EXPECT_EQ(Write(hPort, "d"), 1);
    host.RunFor(kByteTime);
    EXPECT_EQ(peer->Received(), "d");
}

TEST_F(SimComPortsTest, AHeldWriteGoesOnWhenItIsLetGo) {
    const int32_t hPort = Opened();
    Line().HoldOutput(true);
    host.At(500 * kMillisecond, [&] { Line().HoldOutput(false); });
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, "abc"), 3); }), 500 * kMillisecond);
    host.RunFor(3 * kByteTime);
    EXPECT_EQ(peer->Received(), "abc");
}

TEST_F(SimComPortsTest, BytesThatMovedBeforeAHoldCountAsMoving) {
    const int32_t hPort = Opened();
    EXPECT_EQ(Write(hPort, "ab"), 2);
    Line().HoldOutput(true);
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, "cd"), 2); }), kSecond + 1);
    Line().HoldOutput(false);
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), "abcd");
}

TEST_F(SimComPortsTest, AWriteMayTakeLess) {
    const int32_t hPort = Opened();
    host.FailNext(Op::ComWrite, {.lResult = 2});
    EXPECT_EQ(Write(hPort, "abc"), 2);
    host.FailNext(Op::ComWrite, {.lResult = 0});
    EXPECT_EQ(Write(hPort, "abc"), 0);
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), "ab");
    EXPECT_EQ(Line().nSentByProgram(), 2);
}

TEST_F(SimComPortsTest, AWriteWithoutLimitsWaits) {
    const int32_t hPort = Opened();
    EXPECT_TRUE(ports.SetTimeouts(hPort, CommTimeouts{}));
    Line().HoldOutput(true);
    host.At(5 * kSecond, [&] { Line().HoldOutput(false); });
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, "abc"), 3); }), 5 * kSecond);
}

// Purges.

TEST_F(SimComPortsTest, APurgeOfTheInputLosesWhatWaits) {
    const int32_t hPort = Opened();
    Line().Feed("x");
    ports.Purge(hPort, purgeflag::kTxAbort | purgeflag::kTxClear | purgeflag::kRxAbort);
    EXPECT_EQ(Read(hPort), "x");
    Line().Feed("y");
    ports.Purge(hPort, purgeflag::kRxClear);
    EXPECT_EQ(Read(hPort), "");
}

TEST_F(SimComPortsTest, APurgeOfTheOutputLosesWhatHasNotLeft) {
    const int32_t hPort = Opened();
    EXPECT_EQ(Write(hPort, "abcd"), 4);
    ports.Purge(hPort, purgeflag::kRxAbort | purgeflag::kRxClear | purgeflag::kTxAbort);
    host.RunFor(2 * kByteTime);
    ports.Purge(hPort, purgeflag::kTxClear);
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), "ab");
}

// Hang-ups.

TEST_F(SimComPortsTest, AHangUpFailsReadsBehindTheirBytes) {
    const int32_t hPort = Opened();
    Line().Feed("ab");
    Line().HangUp();
    EXPECT_EQ(Read(hPort, 1), "a");
    EXPECT_EQ(Read(hPort, 1), "b");
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Read(hPort), "failed 5"); }),
              10 * kMillisecond + 2); // not at full load; and the question for the number
}

TEST_F(SimComPortsTest, AHangUpFailsWritesAndPutsNothingOnTheLine) {
    const int32_t hPort = Opened();
    Line().HangUp();
    EXPECT_EQ(Write(hPort, "x"), -1);
    EXPECT_EQ(ports.LastError(), comerror::kHungUp);
    EXPECT_EQ(Line().nSentByProgram(), 0);
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), "");
}

TEST_F(SimComPortsTest, AHangUpEndsAWriteThatWaits) {
    const int32_t hPort = Opened();
    host.At(50 * kMillisecond, [&] { Line().HangUp(); });
    EXPECT_EQ(TimeOf([&] { EXPECT_EQ(Write(hPort, std::string(500, 'x')), -1); }),
              50 * kMillisecond);
    EXPECT_EQ(ports.LastError(), comerror::kHungUp);
}

TEST_F(SimComPortsTest, AnOpenPortStaysDeadUntilItIsClosed) {
    const int32_t hPort = Opened();
    Line().HangUp();
    EXPECT_EQ(ports.Open("COM1"), kNoComPort);
    EXPECT_EQ(ports.LastError(), comerror::kMissing);
    Line().ComeBack();
    EXPECT_EQ(Read(hPort), "failed 5");
    EXPECT_EQ(Write(hPort, "x"), -1);
    EXPECT_EQ(ports.Open("COM1"), kNoComPort);
    EXPECT_EQ(ports.LastError(), comerror::kBusy);
    EXPECT_TRUE(ports.Close(hPort));
    const int32_t hAgain = OpenAgain();
    EXPECT_EQ(Write(hAgain, "x"), 1);
    host.RunFor(kByteTime);
    EXPECT_EQ(peer->Received(), "x");
}

TEST_F(SimComPortsTest, AClosedLineThatIsDownCantBeOpened) {
    ports.AddLine("COM1").HangUp();
    EXPECT_EQ(ports.Open("COM1"), kNoComPort);
    EXPECT_EQ(ports.LastError(), comerror::kMissing);
    Line().ComeBack();
    EXPECT_EQ(Read(OpenAgain()), ""); // and works
}

// Costs and records.

TEST_F(SimComPortsTest, EachCallCostsAMicrosecondAndCounts) {
    const int32_t hPort = Opened();
    Line().Feed("x");
    DCB dcb;
    const int64_t nBefore = host.nCalls();
    const int64_t nFailableBefore = host.nFailable();
    const Microseconds time = TimeOf([&] {
        EXPECT_EQ(Read(hPort), "x");
        EXPECT_EQ(Write(hPort, "x"), 1);
        EXPECT_TRUE(ports.GetState(hPort, dcb));
        EXPECT_TRUE(ports.SetState(hPort, dcb));
        EXPECT_TRUE(ports.SetTimeouts(hPort, kLimits));
        ports.Purge(hPort, 0);
        EXPECT_EQ(ports.LastError(), 0);
        EXPECT_TRUE(ports.Close(hPort));
        EXPECT_GE(ports.Open("COM1"), 0);
    });
    EXPECT_EQ(time, 9);
    EXPECT_EQ(host.nCalls() - nBefore, 9);
    EXPECT_EQ(host.nFailable() - nFailableBefore, 7); // all but the purge and the number
}

TEST_F(SimComPortsTest, KeepsTheOrderOfTheCallsAsText) {
    const int32_t hFirst = Opened();
    EXPECT_TRUE(ports.Close(hFirst));
    EXPECT_TRUE(ports.calls.empty()); // only when asked to
    host.RecordCalls();
    const int32_t hPort = ports.Open("COM1");
    DCB dcb;
    EXPECT_TRUE(ports.GetState(hPort, dcb));
    EXPECT_TRUE(ports.SetState(hPort, dcb));
    EXPECT_TRUE(ports.SetTimeouts(hPort, kLimits));
    EXPECT_EQ(Write(hPort, "ab"), 2);
    Sleep(5);
    host.FailNext(Op::ComRead);
    EXPECT_EQ(Read(hPort, 7), "failed 10054");
    ports.Purge(hPort, 10);
    EXPECT_TRUE(ports.Close(hPort));
    EXPECT_EQ(ports.Open("COM2"), kNoComPort);
    EXPECT_EQ(ports.calls,
              (std::vector<std::string>{"Open COM1", "GetState", "SetState", "SetTimeouts",
                                        "Write 2", "Read 7", "Purge 10", "Close", "Open COM2"}));
    EXPECT_EQ(ports.writes, std::vector<std::string>{"ab"});
    EXPECT_EQ(host.ledger.trace, (std::vector<std::string>{
                                     "Open COM1", "GetState", "SetState", "SetTimeouts", "Write 2",
                                     "Sleep 5", "Read 7", "Purge 10", "Close", "Open COM2"}));
}

TEST_F(SimComPortsTest, FailATestThatExpectsWhatALineDoesntDo) {
    const int32_t hPort = Opened();
    Line().HangUp();
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Write(hPort, "x"), 1), "Write(hPort");
}

} // namespace
} // namespace brennik::world
