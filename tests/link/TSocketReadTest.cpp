// The reads of the socket wrapper: all that waits, a few bytes, a block within a time.
#include "link/TSocket.h"
#include "tests/link/TSocketFixture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;

constexpr const char* kReadLost =
    "Failed reading from socket - WSA Error Code=10054 WSA Error Message=";

class TSocketReadTest : public TSocketFixture {};

// Read.

TEST_F(TSocketReadTest, ReadTakesAllThatIsWaiting) {
    Connect();
    Feed("ab\0\xFF"s);
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "ab\0\xFF"s);
    EXPECT_EQ(lBytesRead, 4);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 4", "Receive 4"}));
}

TEST_F(TSocketReadTest, ReadWithNothingWaitingPausesAndSucceeds) {
    Connect();
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 0", "WaitReadable 10"}));
    EXPECT_GE(host.Now() - start, 10 * kMillisecond);
    EXPECT_LT(host.Now() - start, 11 * kMillisecond);
}

TEST_F(TSocketReadTest, ThePauseEndsWhenBytesArriveAndTheNextReadTakesThem) {
    Connect();
    peer->PushAt(3 * kMillisecond, "x");
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_LT(host.Now() - start, 4 * kMillisecond);
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "x");
}

TEST_F(TSocketReadTest, AClosedPeerLooksLikeSilence) {
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

TEST_F(TSocketReadTest, AResetPeerLooksLikeSilence) {
    Connect();
    peer->Reset();
    host.RunFor(kMillisecond);
    for (const bool bAll : {true, false}) {
        const Microseconds start = host.Now();
        EXPECT_EQ(bAll ? socket.Read(strData, lBytesRead, lSocket)
                       : socket.ReadnBytes(strData, 1, lBytesRead, lSocket),
                  0);
        EXPECT_EQ(strData, "");
        EXPECT_EQ(lBytesRead, 0);
        EXPECT_GE(host.Now() - start, 10 * kMillisecond);
    }
    EXPECT_EQ(TakeCalls(),
              (Calls{"BytesWaiting 0", "WaitReadable 10", "BytesWaiting 0", "WaitReadable 10"}));
    ExpectError(0, "");
}

TEST_F(TSocketReadTest, AStaleErrorOfALostConnectionFailsAnEmptyRead) {
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

TEST_F(TSocketReadTest, NumbersFrom10050To10054AreALostConnection) {
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

TEST_F(TSocketReadTest, AFailedQueryOfALostConnectionFailsWithAText) {
    Connect();
    host.FailNext(Op::BytesWaiting, {.lLastError = 10054});
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting -1", "WaitReadable 10"}));
}

TEST_F(TSocketReadTest, AFailedQueryOfAnotherKindFailsWithoutAText) {
    Connect();
    Feed("x");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(0, "");
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
}

TEST_F(TSocketReadTest, BytesThatAReceiveDoesNotGiveAreZeroBytes) {
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

TEST_F(TSocketReadTest, AnErrorNumberBeyondSixteenBitsFailsAReadAfterItsPause) {
    Connect();
    host.network.SetLastError(40000);
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.Read(strData, lBytesRead, lSocket), 1);
    ExpectError(1000000, "TSocket.Read() Failed - Overflow");
    EXPECT_GE(host.Now() - start, 10 * kMillisecond);
}

// ReadnBytes.

TEST_F(TSocketReadTest, ReadnBytesTakesAtMostTheNumberAskedFor) {
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

TEST_F(TSocketReadTest, ReadnBytesWithNothingWaitingPausesAndSucceeds) {
    Connect();
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(lBytesRead, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 0", "WaitReadable 10"}));
}

TEST_F(TSocketReadTest, ReadnBytesTellsALostConnectionLikeRead) {
    Connect();
    host.network.SetLastError(10054);
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 0", "WaitReadable 10"}));
}

TEST_F(TSocketReadTest, ReadnBytesDoesNotLookAtAFailedQueryItself) {
    Connect();
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 0);
    EXPECT_EQ(lBytesRead, 0);
    ExpectError(0, "");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10054});
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, lSocket), 1);
    ExpectError(1000006, kReadLost);
}

TEST_F(TSocketReadTest, ReadnBytesFillsWhatAReceiveDoesNotGiveWithZeroBytes) {
    Connect();
    Feed("abcd");
    host.FailNext(Op::Receive, {.lResult = 1});
    EXPECT_EQ(socket.ReadnBytes(strData, 3, lBytesRead, lSocket), 0);
    EXPECT_EQ(strData, "a\0\0"s);
    EXPECT_EQ(lBytesRead, 3);
}

TEST_F(TSocketReadTest, ReadnBytesOfNoBytesTakesNoneAndOfLessFails) {
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

TEST_F(TSocketReadTest, TheTimedReadTakesABlockThatIsThere) {
    Connect();
    Feed("abc\0"s);
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), 0);
    EXPECT_EQ(strData, "abc\0"s);
    EXPECT_EQ(TakeCalls(), (Calls{"BytesWaiting 4", "Receive 4"}));
    EXPECT_EQ(host.nPumps(), 0);
}

TEST_F(TSocketReadTest, TheTimedReadLeavesWhatLiesBehindTheBlock) {
    Connect();
    Feed("abcdef");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(host.network.LastConnection().nWaiting(), 2u);
}

TEST_F(TSocketReadTest, TheTimedReadDropsAShortReceiveAndWaitsOn) {
    Connect();
    Feed("ab");
    peer->PushAt(30 * kMillisecond, "cd");
    peer->PushAt(60 * kMillisecond, "wxyz");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 5, 4, lSocket), 0);
    EXPECT_EQ(strData, "wxyz");
}

TEST_F(TSocketReadTest, TheTimedReadKeepsNothingOfAShortReceiveWhenTheTimeRunsOut) {
    Connect();
    Feed("ab");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 1, 4, lSocket), -1);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(host.network.LastConnection().nWaiting(), 0u);
    ExpectError(0, "");
}

TEST_F(TSocketReadTest, TheTimedReadPumpsOnEveryPassThatFoundNothing) {
    Connect();
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 1, 4, lSocket), -1);
    EXPECT_EQ(strData, "");
    ExpectError(0, "");
    EXPECT_GE(host.nPumps(), 95);
    EXPECT_LE(host.nPumps(), 101);
}

TEST_F(TSocketReadTest, TheTimedReadWaitsUntilTheClockExceedsTheLimit) {
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

TEST_F(TSocketReadTest, TheTimedReadNotesALostConnectionAndWaitsOn) {
    Connect();
    host.network.SetLastError(10052);
    const Microseconds start = host.Now();
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, 4, lSocket), 1);
    ExpectError(1000008,
                "Failed reading n bytes from socket - WSA Error Code=10052 WSA Error Message=");
    EXPECT_GE(host.Now() - start, 2 * kSecond);
    // No spin: a turn takes its 10 ms, and pumps.
    EXPECT_GE(host.nPumps(), 190);
    EXPECT_LE(host.nPumps(), 201);
}

TEST_F(TSocketReadTest, TheTimedReadMayStillGetItsBlockAfterALostConnection) {
    Connect();
    host.network.SetLastError(10054);
    host.At(500 * kMillisecond, [this] { Feed("abcd"); });
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, 4, lSocket), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(socket.lErrorCode(), 1000008);
}

TEST_F(TSocketReadTest, TheTimedReadTakesAFailedQueryForNothingWaiting) {
    Connect();
    Feed("abcd");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, 4, lSocket), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(host.nPumps(), 1);
}

TEST_F(TSocketReadTest, TheTimedReadOfANegativeNumberFails) {
    Connect();
    Feed("abcd");
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 2, -4, lSocket), 1);
    ExpectError(1000000, "TSocket.ReadNumBytesTimed() Failed - Invalid procedure call");
}

} // namespace
} // namespace brennik
