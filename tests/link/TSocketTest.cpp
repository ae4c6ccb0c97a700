#include "link/TSocket.h"

#include "platform/Host.h"
#include "tests/link/ThrowingSockets.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;

using Calls = std::vector<std::string>;

constexpr const char* kAddress = "10.0.0.1";
constexpr uint16_t kPort = 5000;
constexpr const char* kNotConnected = "Timed out waiting for connection to remote machine";
constexpr const char* kReadLost =
    "Failed reading from socket - WSA Error Code=10054 WSA Error Message=";

class TSocketTest : public world::WorldTest {
  protected:
    TSocketTest() {
        host.clock.SetTimeOfDay(100 * kSecond);
        host.network.RecordCalls(true);
    }

    int32_t Open(bool bBlocking = true, double dTimeout = 10, uint16_t iPort = kPort) {
        return socket.OpenSocket("", kAddress, iPort, dTimeout, lSocket, bBlocking, true);
    }

    /// Opens a connection to a scripted peer and forgets the calls that it took.
    void Connect() {
        peer = &host.network.AddPeer(kAddress, kPort);
        ASSERT_EQ(Open(), 0);
        host.RunFor(kMillisecond);
        host.network.calls.clear();
    }

    void Feed(std::string_view strBytes) { host.network.LastConnection().Feed(strBytes); }

    void ExpectError(int32_t lErrorCode, const std::string& strErrorMessage) const {
        EXPECT_EQ(socket.lErrorCode(), lErrorCode);
        EXPECT_EQ(socket.strErrorMessage(), strErrorMessage);
    }

    Calls TakeCalls() { return std::exchange(host.network.calls, {}); }

    TSocket socket;
    int32_t lSocket = 77;
    std::string strData = "old";
    int32_t lBytesRead = 99;
    world::ScriptedPeer* peer = nullptr;
};

// OpenSocket.

TEST_F(TSocketTest, ABlockingConnectSleepsFiftyMillisecondsAfterwards) {
    host.network.AddPeer(kAddress, kPort);
    const Microseconds start = host.Now();
    EXPECT_EQ(Open(), 0);
    EXPECT_GT(lSocket, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket", "Connect 10.0.0.1:5000"}));
    EXPECT_GE(host.Now() - start, 50 * kMillisecond);
    EXPECT_LT(host.Now() - start, 51 * kMillisecond);
    EXPECT_EQ(host.network.nStarted(), 1);
    EXPECT_EQ(host.network.nOpenSockets(), 1);
    ExpectError(0, "");
}

TEST_F(TSocketTest, AFailedBlockingConnectSleepsTooAndTellsTheErrorNumber) {
    host.network.Refuse(kAddress, kPort);
    const Microseconds start = host.Now();
    EXPECT_EQ(Open(), 1);
    EXPECT_GE(host.Now() - start, 50 * kMillisecond);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
    EXPECT_EQ(lSocket, -1);
}

TEST_F(TSocketTest, ANonBlockingConnectWaitsForTheConnection) {
    host.network.AddPeer(kAddress, kPort);
    host.network.SetConnectDelay(3 * kSecond);
    EXPECT_EQ(Open(false, 10), 0);
    EXPECT_GT(lSocket, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket", "SetNonBlocking",
                                  "Connect 10.0.0.1:5000", "SelectWritable 10"}));
    EXPECT_EQ(host.network.nOpenSockets(), 1);
}

TEST_F(TSocketTest, ANonBlockingConnectThatIsRefusedTellsItsOwnNumberAndClosesTheSocket) {
    for (const int32_t lError : {10061, 10065, 10051}) {
        host.network.RefuseWith(kAddress, kPort, lError);
        EXPECT_EQ(Open(false), 1);
        ExpectError(1000004, kNotConnected + " - WSA Error Code="s + std::to_string(lError) +
                                 " WSA Error Message=");
        EXPECT_EQ(TakeCalls(),
                  (Calls{"Startup 257", "Socket", "SetNonBlocking", "Connect 10.0.0.1:5000",
                         "SelectWritable 10", "Shutdown", "CloseSocket", "Cleanup"}));
    }
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    EXPECT_EQ(host.network.nStarted(), 0);
    EXPECT_EQ(lSocket, -1);
}

TEST_F(TSocketTest, ANonBlockingConnectRunsOutOfTime) {
    host.network.BlackHole(kAddress, kPort);
    const Microseconds start = host.Now();
    EXPECT_EQ(Open(false, 7), 1);
    EXPECT_GE(host.Now() - start, 7 * kSecond);
    EXPECT_LT(host.Now() - start, 7 * kSecond + kMillisecond);
    // The last error is that of the connect, which is under way.
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10035 WSA Error Message="s);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, TheTimeLimitIsRoundedToWholeSecondsTiesToEven) {
    struct Row {
        double dTimeout;
        const char* strCall;
    };
    host.network.AddPeer(kAddress, kPort);
    for (const Row& row :
         {Row{0, "SelectWritable 0"}, Row{0.5, "SelectWritable 0"}, Row{0.6, "SelectWritable 1"},
          Row{1.5, "SelectWritable 2"}, Row{2.5, "SelectWritable 2"}, Row{3.49, "SelectWritable 3"},
          Row{-3, "SelectWritable 0"}}) {
        static_cast<void>(Open(false, row.dTimeout));
        EXPECT_EQ(TakeCalls().at(4), row.strCall) << row.dTimeout;
        if (lSocket > 0)
            static_cast<void>(socket.CloseSocket(lSocket));
        TakeCalls();
    }
}

TEST_F(TSocketTest, ATimeLimitThatDoesNotFitFailsInTheCatchAllWithoutALeak) {
    for (const double dTimeout : {3e9, -3e9, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(Open(false, dTimeout), 1);
        ExpectError(1000000, "TSocket.OpenSocket() Failed - Overflow");
        EXPECT_EQ(lSocket, -1);
    }
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, ANonBlockingConnectThatSucceedsAtOnceCountsAsNotMade) {
    host.network.AddPeer(kAddress, kPort);
    host.network.SetConnectsAtOnce(true);
    EXPECT_EQ(Open(false), 1);
    // No call has failed, so there is no number and no suffix.
    ExpectError(1000004, kNotConnected);
    EXPECT_EQ(lSocket, -1);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, AStaleErrorNumberShowsInTheSuffixAndANumberBelowOneDoesNot) {
    host.network.AddPeer(kAddress, kPort);
    host.network.SetConnectsAtOnce(true);
    host.network.SetLastError(1);
    EXPECT_EQ(Open(false), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=1 WSA Error Message="s);
    for (const int32_t lError : {0, -5}) {
        host.network.SetLastError(lError);
        EXPECT_EQ(Open(false), 1);
        ExpectError(1000004, kNotConnected);
    }
}

TEST_F(TSocketTest, AnErrorNumberBeyondSixteenBitsIsAnOverflow) {
    host.network.RefuseWith(kAddress, kPort, 32767);
    EXPECT_EQ(Open(), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=32767 WSA Error Message="s);
    host.network.RefuseWith(kAddress, kPort, 32768);
    EXPECT_EQ(Open(), 1);
    ExpectError(1000000, "TSocket.OpenSocket() Failed - Overflow");
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, PortZeroIsToldAsAConnectionNotMade) {
    for (const bool bBlocking : {true, false}) {
        EXPECT_EQ(Open(bBlocking, 10, 0), 1);
        ExpectError(1000004, kNotConnected);
        EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket", "CloseSocket"}));
    }
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, TheHighestPortConnects) {
    host.network.AddPeer(kAddress, 65535);
    EXPECT_EQ(Open(true, 10, 65535), 0);
    EXPECT_EQ(TakeCalls().back(), "Connect 10.0.0.1:65535");
}

TEST_F(TSocketTest, AnAddressThatIsNoneIsTriedAllTheSame) {
    EXPECT_EQ(socket.OpenSocket("", "999.1.1.1", kPort, 10, lSocket, true, true), 1);
    EXPECT_EQ(TakeCalls().back(), "CloseSocket");
    EXPECT_EQ(socket.lErrorCode(), 1000004);
}

TEST_F(TSocketTest, ASocketThatCanNotBeMadeStops) {
    host.FailNext(Op::Socket, {.lLastError = 10024});
    EXPECT_EQ(Open(), 1);
    ExpectError(1000002, "Failed to create socket");
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket"}));
    EXPECT_EQ(lSocket, -1);
    host.FailNext(Op::Socket, {.lLastError = 10024, .lResult = 0});
    EXPECT_EQ(Open(), 1);
    ExpectError(1000002, "Failed to create socket");
    EXPECT_EQ(lSocket, -1);
}

TEST_F(TSocketTest, AFailedStartGoesOnAndLeavesItsText) {
    host.network.AddPeer(kAddress, kPort);
    host.FailNext(Op::Startup);
    EXPECT_EQ(Open(), 0);
    ExpectError(1000001, "Windows sockets failed to start (WSAStartUp() Failed)");
}

TEST_F(TSocketTest, AFailedStartIsReplacedByWhatFailsNext) {
    host.FailNext(Op::Startup);
    host.FailNext(Op::Socket);
    EXPECT_EQ(Open(), 1);
    ExpectError(1000002, "Failed to create socket");
}

TEST_F(TSocketTest, WinsockIsStartedOnlyWhenAskedFor) {
    host.network.AddPeer(kAddress, kPort);
    EXPECT_EQ(socket.OpenSocket("", kAddress, kPort, 10, lSocket, true, false), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Socket", "Connect 10.0.0.1:5000"}));
}

TEST_F(TSocketTest, TheHostNamePlaysNoPart) {
    host.network.AddPeer(kAddress, kPort);
    EXPECT_EQ(socket.OpenSocket("no.such.host", kAddress, kPort, 10, lSocket, true, true), 0);
}

TEST_F(TSocketTest, ASocketThatStaysBlockingIsConnectedAndCountsAsNotMade) {
    host.network.AddPeer(kAddress, kPort);
    host.FailNext(Op::SetNonBlocking, {.lLastError = 10022});
    EXPECT_EQ(Open(false), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10022 WSA Error Message="s);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, AFailedCloseDoesNotReplaceTheTextOfAFailedConnect) {
    host.network.Refuse(kAddress, kPort);
    host.FailNext(Op::CloseSocket);
    EXPECT_EQ(Open(false), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
}

TEST_F(TSocketTest, ASuccessLeavesTheLastErrorAlone) {
    EXPECT_EQ(Open(), 1);
    host.network.AddPeer(kAddress, kPort);
    EXPECT_EQ(Open(), 0);
    EXPECT_EQ(socket.lErrorCode(), 1000004);
}

// CloseSocket.

TEST_F(TSocketTest, CloseShutsDownClosesAndCleansUp) {
    Connect();
    EXPECT_EQ(socket.CloseSocket(lSocket), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Shutdown", "CloseSocket", "Cleanup"}));
    EXPECT_EQ(host.network.nStarted(), 0);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    ExpectError(0, "");
}

TEST_F(TSocketTest, AFailedCloseCleansUpToo) {
    Connect();
    host.FailNext(Op::CloseSocket);
    EXPECT_EQ(socket.CloseSocket(lSocket), 1);
    ExpectError(1000005, "Failed closing socket");
    EXPECT_EQ(TakeCalls(), (Calls{"Shutdown", "CloseSocket", "Cleanup"}));
}

// Read.

TEST_F(TSocketTest, ReadTakesAllThatIsWaiting) {
    Connect();
    Feed("ab\0\xFF"s);
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "ab\0\xFF"s);
    EXPECT_EQ(lBytesRead, 4);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 4", "Receive 4"}));
}

TEST_F(TSocketTest, ReadWithNothingWaitingPausesAndSucceeds) {
    Connect();
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 0", "WaitReadable 10"}));
    EXPECT_GE(host.Now() - start, 10 * kMillisecond);
    EXPECT_LT(host.Now() - start, 11 * kMillisecond);
}

TEST_F(TSocketTest, ThePauseEndsWhenBytesArriveAndTheNextReadTakesThem) {
    Connect();
    peer->PushAt(3 * kMillisecond, "x");
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_LT(host.Now() - start, 4 * kMillisecond);
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "x");
}

TEST_F(TSocketTest, AClosedOrResetPeerLooksLikeSilence) {
    Connect();
    peer->Push("end");
    peer->Close();
    host.RunFor(kMillisecond);
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "end");
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_GE(host.Now() - start, 10 * kMillisecond);
}

TEST_F(TSocketTest, AStaleErrorOfALostConnectionFailsAnEmptyRead) {
    Connect();
    host.network.SetLastError(10054);
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
    EXPECT_EQ(strData, "");
    // Nothing clears the number, but bytes that are there are read.
    Feed("x");
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
}

TEST_F(TSocketTest, NumbersFrom10050To10054AreALostConnection) {
    struct Row {
        int32_t lLastError;
        bool bLost;
    };
    Connect();
    for (const Row& row : {Row{0, false}, Row{10035, false}, Row{10049, false}, Row{10050, true},
                           Row{10051, true}, Row{10052, true}, Row{10053, true}, Row{10054, true},
                           Row{10055, false}, Row{10061, false}}) {
        TSocket fresh;
        host.network.SetLastError(row.lLastError);
        const Microseconds start = host.Now();
        EXPECT_EQ(fresh.Read(strData, lBytesRead, lSocket), row.bLost ? 1 : 0) << row.lLastError;
        // Each turn lasts its 10 ms, so that a caller that repeats never spins.
        EXPECT_GE(host.Now() - start, 10 * kMillisecond) << row.lLastError;
        EXPECT_EQ(fresh.lErrorCode(), row.bLost ? 1000006 : 0);
        EXPECT_EQ(fresh.strErrorMessage(),
                  row.bLost ? "Failed reading from socket - WSA Error Code=" +
                                  std::to_string(row.lLastError) + " WSA Error Message="
                            : "");
    }
}

TEST_F(TSocketTest, AFailedQueryOfALostConnectionFailsWithAText) {
    Connect();
    host.FailNext(Op::BytesWaiting, {.lLastError = 10054});
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting -1", "WaitReadable 10"}));
}

TEST_F(TSocketTest, AFailedQueryOfAnotherKindFailsWithoutAText) {
    Connect();
    Feed("x");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(0, "");
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
}

TEST_F(TSocketTest, BytesThatAReceiveDoesNotGiveAreZeroBytes) {
    Connect();
    Feed("abcd");
    host.FailNext(Op::Receive, {.lResult = 2});
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "ab\0\0"s);
    EXPECT_EQ(lBytesRead, 4);
    host.FailNext(Op::Receive, {.lLastError = 10054});
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "\0\0"s);
    ExpectError(0, "");
}

TEST_F(TSocketTest, AnErrorNumberBeyondSixteenBitsFailsAReadAfterItsPause) {
    Connect();
    host.network.SetLastError(40000);
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(1000000, "TSocket.Read() Failed - Overflow");
    EXPECT_GE(host.Now() - start, 10 * kMillisecond);
}

// ReadnBytes.

TEST_F(TSocketTest, ReadnBytesTakesAtMostTheNumberAskedFor) {
    Connect();
    Feed("abcde");
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "a");
    EXPECT_EQ(lBytesRead, 1);
    EXPECT_EQ(host.network.LastConnection().nWaiting(), 4u);
    EXPECT_EQ(socket.ReadnBytes(strData, 9, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "bcde");
    EXPECT_EQ(lBytesRead, 4);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 5", "Receive 1", "BytesWaiting 4", "Receive 4"}));
}

TEST_F(TSocketTest, ReadnBytesWithNothingWaitingPausesAndSucceeds) {
    Connect();
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 0", "WaitReadable 10"}));
}

TEST_F(TSocketTest, ReadnBytesTellsALostConnectionLikeRead) {
    Connect();
    host.network.SetLastError(10054);
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 0", "WaitReadable 10"}));
}

TEST_F(TSocketTest, ReadnBytesDoesNotLookAtAFailedQueryItself) {
    Connect();
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 0);
    EXPECT_EQ(lBytesRead, 0);
    ExpectError(0, "");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10054});
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
}

TEST_F(TSocketTest, ReadnBytesFillsWhatAReceiveDoesNotGiveWithZeroBytes) {
    Connect();
    Feed("abcd");
    host.FailNext(Op::Receive, {.lResult = 1});
    EXPECT_EQ(socket.ReadnBytes(strData, 3, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "a\0\0"s);
    EXPECT_EQ(lBytesRead, 3);
}

TEST_F(TSocketTest, ReadnBytesOfNoBytesTakesNoneAndOfLessFails) {
    Connect();
    Feed("ab");
    EXPECT_EQ(socket.ReadnBytes(strData, 0, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
    EXPECT_EQ(socket.ReadnBytes(strData, -1, lBytesRead, lSocket), 1);
    ExpectError(1000000, "TSocket.ReadnBytes() Failed - Invalid procedure call");
    EXPECT_EQ(host.network.LastConnection().nWaiting(), 2u);
}

// ReadNumBytesTimed.

TEST_F(TSocketTest, TheTimedReadTakesABlockThatIsThere) {
    Connect();
    Feed("abc\0"s);
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), 0);
    EXPECT_EQ(strData, "abc\0"s);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 4", "Receive 4"}));
    EXPECT_EQ(host.nPumps(), 0);
}

TEST_F(TSocketTest, TheTimedReadLeavesWhatLiesBehindTheBlock) {
    Connect();
    Feed("abcdef");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(host.network.LastConnection().nWaiting(), 2u);
}

TEST_F(TSocketTest, TheTimedReadDropsAShortReceiveAndWaitsOn) {
    Connect();
    Feed("ab");
    peer->PushAt(30 * kMillisecond, "cd");
    peer->PushAt(60 * kMillisecond, "wxyz");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), 0);
    EXPECT_EQ(strData, "wxyz");
}

TEST_F(TSocketTest, TheTimedReadPumpsOnEveryPassThatFoundNothing) {
    Connect();
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 1, 4, lSocket), -1);
    EXPECT_EQ(strData, "");
    ExpectError(0, "");
    EXPECT_GE(host.nPumps(), 95);
    EXPECT_LE(host.nPumps(), 101);
}

TEST_F(TSocketTest, TheTimedReadWaitsUntilTheClockExceedsTheLimit) {
    struct Row {
        Microseconds timeOfDay;
        int32_t lResult;
    };
    Connect();
    std::optional<Microseconds> moveTo;
    host.OnPump([&] {
        if (moveTo) {
            host.clock.SetTimeOfDay(*moveTo);
            Feed("abcd");
        }
        moveTo.reset();
    });
    for (const Row& row :
         {Row{105 * kSecond - 10, 0}, Row{105 * kSecond, 0}, Row{105 * kSecond + 10, -1}}) {
        host.clock.SetTimeOfDay(100 * kSecond);
        moveTo = row.timeOfDay;
        EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), row.lResult) << row.timeOfDay;
    }
}

TEST_F(TSocketTest, TheTimedReadNotesALostConnectionAndWaitsOn) {
    Connect();
    host.network.SetLastError(10052);
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, 4, lSocket), 1);
    ExpectError(1000008,
                "Failed reading n bytes from socket - WSA Error Code=10052 WSA Error Message=");
    EXPECT_GE(host.Now() - start, 2 * kSecond);
    // No spin: a turn takes its 10 ms.
    EXPECT_LE(host.nPumps(), 201);
}

TEST_F(TSocketTest, TheTimedReadMayStillGetItsBlockAfterALostConnection) {
    Connect();
    host.network.SetLastError(10054);
    host.At(500 * kMillisecond, [this] { Feed("abcd"); });
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, 4, lSocket), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(socket.lErrorCode(), 1000008);
}

TEST_F(TSocketTest, TheTimedReadTakesAFailedQueryForNothingWaiting) {
    Connect();
    Feed("abcd");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, 4, lSocket), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(host.nPumps(), 1);
}

TEST_F(TSocketTest, TheTimedReadOfANegativeNumberFails) {
    Connect();
    Feed("abcd");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, -4, lSocket), 1);
    ExpectError(1000000, "TSocket.ReadNumBytesTimed() Failed - Invalid procedure call");
}

// Send.

TEST_F(TSocketTest, SendIsOneCallWithAllBytes) {
    Connect();
    EXPECT_EQ(socket.Send("ab\0c"s, lSocket), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Send 4"});
    host.RunFor(kMillisecond);
    EXPECT_EQ(peer->Received(), "ab\0c"s);
}

TEST_F(TSocketTest, APartialSendIsASuccess) {
    Connect();
    host.FailNext(Op::Send, {.lResult = 1});
    EXPECT_EQ(socket.Send("abc", lSocket), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Send 3"});
}

TEST_F(TSocketTest, AFailedSendHasTheResultOfTheCallAsItsCode) {
    Connect();
    host.FailNext(Op::Send, {.lLastError = 10054});
    EXPECT_EQ(socket.Send("abc", lSocket), 1);
    ExpectError(-1, "Failed sending data to socket");
    host.FailNext(Op::Send, {.lResult = 0});
    EXPECT_EQ(socket.Send("abc", lSocket), 1);
    ExpectError(0, "Failed sending data to socket");
}

TEST_F(TSocketTest, SendingNothingIsAFailure) {
    Connect();
    EXPECT_EQ(socket.Send("", lSocket), 1);
    ExpectError(0, "Failed sending data to socket");
}

// Addresses.

TEST_F(TSocketTest, IsIPAddressWantsFourNumbersWithDotsBetween) {
    for (const char* strAddress :
         {"1.2.3.4", "999.1.1.1", "0.0.0.0", "255.255.255.255", "1.2.3.4.5", "1.2.3.4.", "1.2.3..5",
          " 1. 2 .3 .4 ", "-1.+2.3.4", "00001.2.3.4", "123456789012345678901234567890.1.1.1"})
        EXPECT_TRUE(socket.IsIPAddress(strAddress)) << strAddress;
    for (const char* strAddress : {"",
                                   ".",
                                   "...",
                                   "1",
                                   "1.2",
                                   "1.2.3",
                                   "1.2.3.",
                                   ".1.2.3",
                                   "1..2.3",
                                   "1.2..3",
                                   "a.b.c.d",
                                   "1.2.3.x",
                                   "x.2.3.4",
                                   "1.x.3.4",
                                   "1.2.x.4",
                                   "1.2.3.4.5.6",
                                   "pos.example.com.au",
                                   "1.2.3.4x",
                                   "1e1.2.3.4",
                                   "0x1.2.3.4",
                                   "1,5.2.3.4",
                                   "--1.2.3.4",
                                   "+-1.2.3.4",
                                   "1 1.2.3.4",
                                   " .2.3.4",
                                   "\t1.2.3.4",
                                   "1.2.3.inf",
                                   "nan.2.3.4",
                                   "1.2.3.-",
                                   "1.2.3.4e5",
                                   "1.2.3.4\n"})
        EXPECT_FALSE(socket.IsIPAddress(strAddress)) << strAddress;
    EXPECT_FALSE(socket.IsIPAddress("1.2.3.4\0"s));
}

TEST_F(TSocketTest, GetIPAddressGivesTheFirstAddress) {
    host.network.AddHostName("pos.example", {"10.255.0.128", "10.0.0.2"});
    std::string strAddress = "old";
    EXPECT_EQ(socket.GetIPAddress("pos.example", strAddress), 0);
    EXPECT_EQ(strAddress, "10.255.0.128");
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "GetHostByName pos.example"}));
    // No clean-up answers this start.
    EXPECT_EQ(host.network.nStarted(), 1);
}

TEST_F(TSocketTest, GetIPAddressOfAnUnknownNameTellsTheName) {
    std::string strAddress = "old";
    EXPECT_EQ(socket.GetIPAddress("no.such.host", strAddress), 1);
    ExpectError(1000009, "Unable to resolve host name - no.such.host");
    EXPECT_EQ(strAddress, "");
}

TEST_F(TSocketTest, GetIPAddressStopsAtAFailedStart) {
    std::string strAddress = "old";
    host.FailNext(Op::Startup);
    EXPECT_EQ(socket.GetIPAddress("pos.example", strAddress), 1);
    ExpectError(1000001, "Windows sockets failed to start (WSAStartUp() Failed)");
    EXPECT_EQ(TakeCalls(), Calls{"Startup 257"});
    EXPECT_EQ(strAddress, "");
}

// Catch-alls.

TEST_F(TSocketTest, EveryOperationEndsARunTimeFailureInItsOwnText) {
    ThrowingSockets throwing;
    Host bad{host.clock, throwing, host.files, host.profileStrings, host.processes};
    const ScopedHost scoped(bad);
    const std::string strWhy = "() Failed - Device I/O error";
    EXPECT_EQ(Open(), 1);
    ExpectError(1000000, "TSocket.OpenSocket" + strWhy);
    EXPECT_EQ(lSocket, -1);
    EXPECT_EQ(socket.CloseSocket(5), 1);
    ExpectError(1000000, "TSocket.CloseSocket" + strWhy);
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 1, 1, 5), 1);
    ExpectError(1000000, "TSocket.ReadNumBytesTimed" + strWhy);
    EXPECT_EQ(socket.Read(strData, lBytesRead, 5), 1);
    ExpectError(1000000, "TSocket.Read" + strWhy);
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, 5), 1);
    ExpectError(1000000, "TSocket.ReadnBytes" + strWhy);
    EXPECT_EQ(socket.Send("x", 5), 1);
    ExpectError(1000000, "TSocket.Send" + strWhy);
    EXPECT_EQ(socket.GetIPAddress("x", strData), 1);
    ExpectError(1000000, "TSocket.GetIPAddress" + strWhy);
}

} // namespace
} // namespace brennik
