// Reading frames: what is read again, for how long, and what runs in between.
#include "link/TIsoProtocol.h"
#include "tests/link/IsoFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;

class TIsoProtocolAttempts : public IsoReadFixture {};

// Checks and attempts.

TEST_F(TIsoProtocolAttempts, ABadCheckIsRefusedAndReadAgain) {
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.writes, (Lines{kNak, kAck}));
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : <STX>S<ETX>j<ASCII 14>", "CLIENT OUT : <NAK>",
                               "CLIENT IN  : <STX>S<ETX>j<ASCII 15>", "CLIENT OUT : <ACK>"}));
}

TEST_F(TIsoProtocolAttempts, NAttemptsAllowNPlusOneReadsAndTheLastBadFrameGetsNoNak) {
    for (const int32_t lAttempts : {0, 1, 3}) {
        link.lPacketReadAttempts(lAttempts);
        channel.writes.clear();
        channel.nReads = 0;
        channel.reads.assign(10, {kBadFrameS});
        EXPECT_EQ(link.ReadPacket(strData, ""), 1);
        ExpectError(1000011, kTimedOutText);
        EXPECT_EQ(channel.nReads, lAttempts + 1);
        EXPECT_EQ(channel.writes, Lines(static_cast<size_t>(lAttempts), kNak));
    }
}

TEST_F(TIsoProtocolAttempts, NegativeAttemptsReadOnce) {
    link.lPacketReadAttempts(-4);
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(channel.nReads, 1);
}

TEST_F(TIsoProtocolAttempts, TheLastAttemptMaySucceed) {
    link.lPacketReadAttempts(1);
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
}

TEST_F(TIsoProtocolAttempts, WithoutAcknowledgementABadFrameIsASuccess) {
    link.bAckPackets(false);
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.nReads, 1);
    EXPECT_TRUE(channel.writes.empty());
}

TEST_F(TIsoProtocolAttempts, WithoutAcknowledgementAGoodFrameGetsNoAck) {
    link.bAckPackets(false);
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_TRUE(channel.writes.empty());
}

TEST_F(TIsoProtocolAttempts, TimeOutsAreReadAgainWithoutANak) {
    StartAt(100);
    link.lPacketReadAttempts(2);
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_TRUE(channel.writes.empty());
    EXPECT_GT(host.clock.PeekMicrosecondOfDay(), 115 * kSecond);
    EXPECT_LT(host.clock.PeekMicrosecondOfDay(), 115 * kSecond + 60 * kMillisecond);
}

TEST_F(TIsoProtocolAttempts, TimeOutsAndBadChecksShareOneCount) {
    link.lPacketReadAttempts(2);
    link.lPacketTimeout(-1);
    // Every read is over before it has begun.
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(channel.nReads, 0);
    link.lPacketTimeout(5);
    channel.reads = {{kBadFrameS}, {"", 1}, {kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(channel.writes, Lines{kNak});
    EXPECT_EQ(channel.reads.size(), 1u);
}

TEST_F(TIsoProtocolAttempts, AFailingChannelIsReadAgainAndFinallyToldAsATimeOut) {
    link.lPacketReadAttempts(2);
    channel.reads.assign(10, {"", 1});
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(channel.nReads, 3);
    EXPECT_TRUE(channel.writes.empty());
}

TEST_F(TIsoProtocolAttempts, AFailingChannelEndsOneReadWithItsErrorCopied) {
    channel.reads = {{"\x02S"}, {"\x03\x6A\x0F", 1}, {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    ExpectError(4711, "the line is cut");
    EXPECT_EQ(strData, "\x02S");
    EXPECT_EQ(channel.nReads, 2);
    EXPECT_EQ(Logged(), Lines{"CLIENT IN  : <STX>S"});
}

TEST_F(TIsoProtocolAttempts, WhatAFailedReadDeliversIsDropped) {
    channel.reads = {{kFrameS, 1}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, "");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolAttempts, ARecoveringChannelLeavesItsErrorBehind) {
    channel.reads = {{"", 1}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolAttempts, AnInternalFailureIsNotReadAgain) {
    channel.reads = {{.thrown = FailureKind::DeviceIoError}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000000, "TIsoProtocol.InternalReadPacket() Failed - Device I/O error");
    EXPECT_EQ(channel.nReads, 1);
    channel.reads = {{.thrown = FailureKind::DeviceIoError}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadFailed);
}

TEST_F(TIsoProtocolAttempts, AFailureWhileAnsweringEndsInTheCatchAll) {
    channel.reads = {{kFrameS}};
    channel.writeThrows = FailureKind::DeviceIoError;
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000000, "TIsoProtocol.ReadPacket() Failed - Device I/O error");
}

TEST_F(TIsoProtocolAttempts, AnAckThatCanNotBeWrittenIsNoFailure) {
    channel.lWriteStatus = 1;
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    ExpectError(0, "");
}

TEST_F(TIsoProtocolAttempts, ASuccessLeavesTheLastErrorAlone) {
    MarkError();
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolAttempts, APartialFrameOfAnAttemptDoesNotJoinTheNext) {
    link.lPacketReadAttempts(1);
    StartAt(100);
    channel.reads = {{"\x02T"}, {.timeOfDay = 106 * kSecond}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.writes, Lines{kAck});
    StartAt(100);
    channel.reads = {{"\x02S"}, {.timeOfDay = 106 * kSecond}, {"\x03\x6A\x0F"}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(strData, "\x03\x6A\x0F");
}

// Attempts that could not wait.

TEST_F(TIsoProtocolAttempts, AChannelThatFailsAtOnceIsReadAHundredTimesASecondAndNoMore) {
    StartAt(100);
    link.lPacketReadAttempts(2000000000);
    host.SetBudget(100000);
    channel.lStatusWhenEmpty = 1;
    host.At(60 * kSecond, [this] { channel.reads = {{kFrameS}}; });
    const Microseconds start = host.Now();
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_GE(host.Now() - start, 60 * kSecond);
    EXPECT_GE(channel.nReads, 5900);
    EXPECT_LE(channel.nReads, 6001);
    // Once ahead of each read, and once in each pause.
    EXPECT_EQ(host.nPumps(), 2 * channel.nReads - 1);
}

TEST_F(TIsoProtocolAttempts, ALimitThatIsOverAtOnceStillLetsEventsRun) {
    StartAt(100);
    link.lPacketReadAttempts(2000000000);
    link.lPacketTimeout(-1);
    host.SetBudget(100000);
    const Microseconds end = host.Now() + 60 * kSecond;
    host.OnPump([&] {
        if (host.Now() >= end) {
            throw RuntimeFailure(FailureKind::TypeMismatch);
        }
    });
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000000, "TIsoProtocol.ReadPacket() Failed - Type mismatch");
    EXPECT_EQ(channel.nReads, 0);
    EXPECT_GE(host.nPumps(), 5900);
    EXPECT_LE(host.nPumps(), 6001);
}

TEST_F(TIsoProtocolAttempts, ThePauseStandsBetweenAttemptsAlone) {
    StartAt(100);
    link.lPacketReadAttempts(2);
    link.lPacketTimeout(-1);
    host.RecordCalls();
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(host.ledger.trace, Lines(2, "Sleep 10"));
    EXPECT_EQ(host.nPumps(), 2);
    host.ledger.trace.clear();
    link.lPacketTimeout(5);
    channel.reads.assign(3, {"", 1});
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(host.ledger.trace, Lines(2, "Sleep 10"));
    EXPECT_EQ(host.nPumps(), 2 + 3 + 2);
}

TEST_F(TIsoProtocolAttempts, AnAttemptThatWaitedOrGotAFrameIsFollowedByNoPause) {
    StartAt(100);
    link.lPacketReadAttempts(3);
    host.RecordCalls();
    channel.reads = {{"x"}, {.timeOfDay = 106 * kSecond}, {kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_TRUE(host.ledger.trace.empty());
    // One that waited and then failed counts as failed.
    channel.reads = {{""}, {"", 1}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(host.ledger.trace, Lines{"Sleep 10"});
}

// Time, events and size.

TEST_F(TIsoProtocolAttempts, AFrameIsAwaitedUntilTheClockExceedsTheLimit) {
    struct Row {
        Microseconds timeOfDay;
        IsoReadResult result;
    };
    for (const Row& row : {Row{105 * kSecond - 10, IsoReadResult::IsoReadGood},
                           Row{105 * kSecond, IsoReadResult::IsoReadGood},
                           Row{105 * kSecond + 10, IsoReadResult::IsoReadTimedOut}}) {
        StartAt(100);
        channel.reads = {{.timeOfDay = row.timeOfDay}, {kFrameS}};
        EXPECT_EQ(ReadOnce(), row.result) << row.timeOfDay;
    }
}

TEST_F(TIsoProtocolAttempts, AFrameThatCompletesInTheLastPassIsGoodHoweverLongThatTook) {
    StartAt(100);
    channel.reads = {{.strData = kFrameS, .timeOfDay = 500 * kSecond}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
}

TEST_F(TIsoProtocolAttempts, EachAttemptHasItsOwnTimeLimit) {
    StartAt(100);
    channel.reads = {{.strData = kBadFrameS, .timeOfDay = 104 * kSecond},
                     {.timeOfDay = 108 * kSecond},
                     {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
}

TEST_F(TIsoProtocolAttempts, AReadThatCrossesMidnightDoesNotEndByTime) {
    StartAt(86398);
    channel.reads = {{.timeOfDay = 86399 * kSecond},
                     {.timeOfDay = 1},
                     {.timeOfDay = 43200 * kSecond},
                     {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
}

TEST_F(TIsoProtocolAttempts, PumpsBeforeEachRead) {
    channel.reads = {{""}, {"\x02S"}, {"\x03\x6A\x0F"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(host.nPumps(), 3);
}

TEST_F(TIsoProtocolAttempts, WhatAnEventBringsIsReadInTheSamePass) {
    host.OnPump([this] { channel.reads = {{kFrameS}}; });
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(channel.nReads, 1);
}

TEST_F(TIsoProtocolAttempts, SilenceIsNotLogged) {
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, "");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolAttempts, FramesAreNotControlPacketsAndCarryTheSide) {
    Use({.bServerSide = true});
    StartLog(false, true);
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(Logged(), (Lines{"SERVER IN  : <STX>S<ETX>j<ASCII 15>", "SERVER OUT : <ACK>"}));
    StartLog(true, false);
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(Logged().size(), 2u);
}

TEST_F(TIsoProtocolAttempts, WhatAReadGathersIsBoundedAtSixteenMebibytes) {
    StartAt(100);
    constexpr size_t kMebibyte = 1024 * 1024;
    for (int iPiece = 0; iPiece < 15; ++iPiece) {
        channel.reads.push_back({std::string(kMebibyte, 'x')});
    }
    channel.reads.push_back({std::string(kMebibyte - 2, 'y')});
    channel.reads.push_back({"12345"});
    channel.reads.push_back({kFrameS});
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData.size(), 16 * kMebibyte);
    EXPECT_EQ(strData.substr(strData.size() - 3), "y12");
    EXPECT_TRUE(channel.reads.empty());
    // A first delivery beyond the bound is cut as well.
    channel.reads = {{std::string(16 * kMebibyte + 9, 'z')}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData.size(), 16 * kMebibyte);
}

TEST_F(TIsoProtocolAttempts, InitialBytesBeyondTheBoundStayAndNothingJoinsThem) {
    StartAt(100);
    const std::string strInitial(size_t{16} * 1024 * 1024 + 9, 'z');
    channel.reads = {{kFrameS}, {"x"}};
    EXPECT_EQ(ReadOnce(strInitial), IsoReadResult::IsoReadTimedOut);
    EXPECT_TRUE(strData == strInitial);
    EXPECT_TRUE(channel.reads.empty());
}

} // namespace
} // namespace brennik
