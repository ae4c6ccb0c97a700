// Sending frames, setting a link up, control sequences, and the flush.
#include "link/TIsoProtocol.h"

#include "tests/link/Bitwise.h"
#include "tests/link/IsoFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;

class TIsoProtocolSend : public IsoFixture {};

// Frames.

TEST_F(TIsoProtocolSend, PlainFrameHasTheCrcHighByteFirstByDefault) {
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(channel.writes, Lines{kFrameS});
}

TEST_F(TIsoProtocolSend, ChecksumTypePicksTheBlockCheckOfAPlainFrame) {
    struct Row {
        int32_t lChecksumType;
        std::string strFrame;
    };
    for (const Row& row : {Row{0, "\x02S\x03\x50"}, Row{1, "\x02S\x03\x0F\x6A"}, Row{2, kFrameS},
                           Row{3, kFrameS}, Row{-1, kFrameS}}) {
        channel.writes.clear();
        channel.characters = {{kAck}};
        link.lChecksumType(row.lChecksumType);
        EXPECT_EQ(link.SendPacket("S"), 0);
        EXPECT_EQ(channel.writes, Lines{row.strFrame}) << row.lChecksumType;
    }
}

TEST_F(TIsoProtocolSend, AnEmptyPayloadIsAPlainFrame) {
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket(""), 0);
    EXPECT_EQ(channel.writes, Lines{"\x02\x03\x00\x0A"s});
}

TEST_F(TIsoProtocolSend, WriteDataFrameHasNoEtxAndTheCrcHighByteFirstWhateverTheType) {
    // Header and data "abc" have the CRC 0xFF24.
    for (const int32_t lChecksumType : {0, 1, 2}) {
        channel.writes.clear();
        channel.characters = {{kAck}};
        link.lChecksumType(lChecksumType);
        EXPECT_EQ(link.SendPacket("W\x00\x03\x01\x02\x03\x04"s + "abc"), 0);
        EXPECT_EQ(channel.writes, Lines{"\x02W\x00\x03\x01\x02\x03\x04"s + "abc\xFF\x24"})
            << lChecksumType;
    }
}

TEST_F(TIsoProtocolSend, OnlyAPayloadThatBeginsWithWIsWriteData) {
    channel.characters = {{kAck}, {kAck}, {kAck}};
    EXPECT_EQ(link.SendPacket("w"), 0);
    EXPECT_EQ(link.SendPacket("DW"), 0);
    EXPECT_EQ(link.SendPacket("W"), 0);
    EXPECT_EQ(channel.writes,
              (Lines{"\x02w\x03" + HighByteFirst(BitwiseCrc16("w\x03")),
                     "\x02" + "DW\x03"s + HighByteFirst(BitwiseCrc16("DW\x03")), "\x02W\x81\xF1"}));
}

TEST_F(TIsoProtocolSend, NothingIsEscaped) {
    channel.characters = {{kAck}};
    const std::string strPayload = "D\x02\x03\x10\x00\xFF"s;
    EXPECT_EQ(link.SendPacket(strPayload), 0);
    EXPECT_EQ(channel.writes, Lines{"\x02" + strPayload + "\x03" +
                                    HighByteFirst(BitwiseCrc16(strPayload + "\x03"))});
}

TEST_F(TIsoProtocolSend, TheStartCharacterIsTheConfiguredOne) {
    Use({.iStartChar = 255});
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(channel.writes, Lines{"\xFFS\x03\x6A\x0F"});
}

TEST_F(TIsoProtocolSend, AStartCharacterThatIsNoByteFailsTheSend) {
    for (const int16_t iStartChar : {int16_t{-1}, int16_t{256}}) {
        Use({.iStartChar = iStartChar});
        EXPECT_EQ(link.SendPacket("S"), 1);
        ExpectError(1000000, "TIsoProtocol.SendPacket() Failed - Invalid procedure call");
        EXPECT_TRUE(channel.writes.empty());
    }
}

// Acknowledgement.

TEST_F(TIsoProtocolSend, WithoutAcknowledgementNothingIsRead) {
    link.bAckPackets(false);
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(channel.nCharacters, 0);
    EXPECT_EQ(channel.nReads, 0);
    EXPECT_EQ(Logged(), Lines{"CLIENT OUT : <STX>S<ETX>j<ASCII 15>"});
}

TEST_F(TIsoProtocolSend, ResendsTheSameFrameAfterNak) {
    channel.characters = {{kNak}, {kNak}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(channel.writes, (Lines{kFrameS, kFrameS, kFrameS}));
    EXPECT_EQ(Logged(), (Lines{"CLIENT OUT : <STX>S<ETX>j<ASCII 15>", "CLIENT IN  : <NAK>",
                               "CLIENT OUT : <STX>S<ETX>j<ASCII 15>", "CLIENT IN  : <NAK>",
                               "CLIENT OUT : <STX>S<ETX>j<ASCII 15>", "CLIENT IN  : <ACK>"}));
}

TEST_F(TIsoProtocolSend, AttemptsUsedUpByNaksFailWithoutAText) {
    channel.characters = {{kNak}, {kNak}, {kNak}};
    EXPECT_EQ(link.SendPacket("S"), 1);
    EXPECT_EQ(channel.writes.size(), 3u);
    ExpectError(0, "");
}

TEST_F(TIsoProtocolSend, AttemptsUsedUpByNaksKeepAnOlderText) {
    MarkError();
    channel.characters = {{kNak}, {kNak}, {kNak}};
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolSend, NoAttemptsAllowedWritesNothingAndFailsWithoutAText) {
    for (const int32_t lSendAttempts : {0, -1}) {
        Use({.lSendAttempts = lSendAttempts});
        EXPECT_EQ(link.SendPacket("S"), 1);
        EXPECT_TRUE(channel.writes.empty());
        ExpectError(0, "");
    }
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolSend, OtherBytesAreLoggedAndIgnored) {
    channel.characters = {{"x"}, {""}, {kEnq}, {"\x02"}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(channel.writes.size(), 1u);
    EXPECT_EQ(Logged(), (Lines{"CLIENT OUT : <STX>S<ETX>j<ASCII 15>", "CLIENT IN  : x",
                               "CLIENT IN  : <ENQ>", "CLIENT IN  : <STX>", "CLIENT IN  : <ACK>"}));
}

TEST_F(TIsoProtocolSend, ASuccessLeavesTheLastErrorAlone) {
    MarkError();
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolSend, AFailedWriteCopiesTheChannelsErrorAndLogsNothing) {
    channel.lWriteStatus = 1;
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(4711, "the line is cut");
    EXPECT_EQ(channel.writes.size(), 1u);
    EXPECT_EQ(channel.nCharacters, 0);
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolSend, AFailedWriteAfterANakCopiesTheChannelsError) {
    channel.OnWrite = [this](std::string_view) {
        channel.lWriteStatus = channel.writes.size() > 1;
    };
    channel.characters = {{kNak}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(4711, "the line is cut");
    EXPECT_EQ(channel.writes, Lines(2, kFrameS));
    EXPECT_EQ(Logged(), (Lines{"CLIENT OUT : <STX>S<ETX>j<ASCII 15>", "CLIENT IN  : <NAK>"}));
}

TEST_F(TIsoProtocolSend, AnyNonZeroStatusOfTheChannelIsAFailure) {
    channel.lWriteStatus = -1;
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolSend, AFailedReadOfTheAckIsToldAsATimeOutAtOnce) {
    channel.characters = {{"", 1}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(channel.writes.size(), 1u);
    EXPECT_EQ(channel.nCharacters, 1);
}

TEST_F(TIsoProtocolSend, SilenceEndsAtTheAckTimeoutAndSendsNothingAgain) {
    StartAt(100);
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(channel.writes.size(), 1u);
    EXPECT_GT(host.clock.PeekMicrosecondOfDay(), 110 * kSecond);
    EXPECT_LT(host.clock.PeekMicrosecondOfDay(), 110 * kSecond + 20 * kMillisecond);
}

TEST_F(TIsoProtocolSend, OtherBytesWithoutEndDoNotProlongTheWait) {
    StartAt(100);
    for (int iByte = 1; iByte <= 2000; ++iByte) {
        channel.characters.push_back(
            {.strData = "x", .timeOfDay = 100 * kSecond + iByte * 10 * kMillisecond});
    }
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(channel.writes.size(), 1u);
    EXPECT_GE(channel.nCharacters, 1000);
    EXPECT_LE(channel.nCharacters, 1001);
}

TEST_F(TIsoProtocolSend, AnAckIsAwaitedUntilTheClockExceedsTheLimit) {
    struct Row {
        Microseconds timeOfDay;
        int32_t lStatus;
    };
    for (const Row& row :
         {Row{110 * kSecond - 10, 0}, Row{110 * kSecond, 0}, Row{110 * kSecond + 10, 1}}) {
        StartAt(100);
        channel.characters = {{.timeOfDay = row.timeOfDay}, {kAck}};
        EXPECT_EQ(link.SendPacket("S"), row.lStatus) << row.timeOfDay;
    }
}

TEST_F(TIsoProtocolSend, TheTimeLimitStartsAgainWithEachFrame) {
    StartAt(100);
    channel.characters = {
        {.strData = kNak, .timeOfDay = 109 * kSecond}, {.timeOfDay = 118 * kSecond}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(channel.writes.size(), 2u);
}

TEST_F(TIsoProtocolSend, AnAckTimeoutOfZeroReadsAtLeastOnceWhileTheClockStands) {
    Use({.lAckTimeout = 0});
    StartAt(100);
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    StartAt(100);
    channel.characters = {{.timeOfDay = 100 * kSecond + 10}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(1000011, kTimedOutText);
}

TEST_F(TIsoProtocolSend, AWaitThatCrossesMidnightDoesNotEndByTime) {
    StartAt(86395);
    channel.characters = {{.timeOfDay = 86399 * kSecond},
                          {.timeOfDay = 0},
                          {.timeOfDay = 3600 * kSecond},
                          {.timeOfDay = 80000 * kSecond},
                          {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
}

TEST_F(TIsoProtocolSend, DoesNotPumpEventsItself) {
    channel.characters = {{""}, {""}, {kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(host.nPumps(), 0);
}

TEST_F(TIsoProtocolSend, AnInternalFailureEndsInTheCatchAll) {
    channel.writeThrows = FailureKind::DeviceIoError;
    EXPECT_EQ(link.SendPacket("S"), 1);
    ExpectError(1000000, "TIsoProtocol.SendPacket() Failed - Device I/O error");
}

TEST_F(TIsoProtocolSend, BServerSideLabelsTheLines) {
    Use({.bServerSide = true});
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_EQ(Logged(), (Lines{"SERVER OUT : <STX>S<ETX>j<ASCII 15>", "SERVER IN  : <ACK>"}));
}

TEST_F(TIsoProtocolSend, FramesAndAnswersAreNotControlPackets) {
    StartLog(true, false);
    channel.characters = {{kAck}};
    EXPECT_EQ(link.SendPacket("S"), 0);
    EXPECT_TRUE(Logged().empty());
}

// Setting up.

class TIsoProtocolSetup : public IsoFixture {};

TEST_F(TIsoProtocolSetup, PropertiesHoldWhatTheLinkWasSetUpWithAndWhatIsSet) {
    Use({.lChecksumType = 7, .lPacketTimeout = 8, .lReadAttempts = 9, .bAckPackets = false});
    EXPECT_EQ(link.lChecksumType(), 7);
    EXPECT_EQ(link.lPacketTimeout(), 8);
    EXPECT_EQ(link.lPacketReadAttempts(), 9);
    EXPECT_FALSE(link.bAckPackets());
    link.lChecksumType(0);
    link.lPacketTimeout(3);
    link.lPacketReadAttempts(1);
    link.bAckPackets(true);
    EXPECT_EQ(link.lChecksumType(), 0);
    EXPECT_EQ(link.lPacketTimeout(), 3);
    EXPECT_EQ(link.lPacketReadAttempts(), 1);
    EXPECT_TRUE(link.bAckPackets());
    ExpectError(0, "");
}

TEST_F(TIsoProtocolSetup, ALinkWithoutAChannelFailsEachOperation) {
    TIsoProtocol bare;
    std::string strData;
    EXPECT_EQ(bare.SendArbitraryData("x"), 1);
    EXPECT_EQ(bare.strErrorMessage(), "TIsoProtocol.SendABitraryData() Failed - Object not set");
    EXPECT_EQ(bare.lErrorCode(), 1000000);
    EXPECT_EQ(bare.ReadArbitraryData(strData, 0, true), 1);
    EXPECT_EQ(bare.strErrorMessage(), "TIsoProtocol.ReadArbitraryData() Failed - Object not set");
    EXPECT_EQ(bare.WaitForEnq(), 1);
    EXPECT_EQ(bare.strErrorMessage(), "TIsoProtocol.WaitForEnq() Failed - Object not set");
    EXPECT_EQ(bare.ReadPacket(strData, ""), 1);
    EXPECT_EQ(bare.strErrorMessage(), "TIsoProtocol.InternalReadPacket() Failed - Object not set");
    EXPECT_EQ(bare.SendPacket("S"), 1);
    EXPECT_EQ(bare.strErrorMessage(), "TIsoProtocol.SendPacket() Failed - Object not set");
    EXPECT_EQ(bare.FlushBuffer(), 0);
}

// Control sequences.

class TIsoProtocolControl : public IsoFixture {};

TEST_F(TIsoProtocolControl, EachSequenceIsOneWrite) {
    TIsoProtocolTestAccess::SendAck(link);
    TIsoProtocolTestAccess::SendNak(link);
    TIsoProtocolTestAccess::SendEot(link);
    TIsoProtocolTestAccess::SendEnq(link);
    EXPECT_EQ(channel.writes, (Lines{kAck, kNak, "\x10\x04", kEnq}));
}

TEST_F(TIsoProtocolControl, AllButTheEnqAreLoggedAsOrdinaryOutgoingPackets) {
    StartLog(false, true);
    TIsoProtocolTestAccess::SendAck(link);
    TIsoProtocolTestAccess::SendNak(link);
    TIsoProtocolTestAccess::SendEot(link);
    TIsoProtocolTestAccess::SendEnq(link);
    EXPECT_EQ(Logged(),
              (Lines{"CLIENT OUT : <ACK>", "CLIENT OUT : <NAK>", "CLIENT OUT : <DLE><EOT>"}));
}

TEST_F(TIsoProtocolControl, AFailedWriteIsIgnoredAndLoggedAllTheSame) {
    channel.lWriteStatus = 1;
    TIsoProtocolTestAccess::SendAck(link);
    TIsoProtocolTestAccess::SendEnq(link);
    ExpectError(0, "");
    EXPECT_EQ(Logged(), Lines{"CLIENT OUT : <ACK>"});
}

// FlushBuffer.

class TIsoProtocolFlush : public IsoFixture {};

TEST_F(TIsoProtocolFlush, ReadsOnceAndLogsWhatItThrewAway) {
    channel.reads = {{"ab\x03"}, {"cd"}};
    EXPECT_EQ(link.FlushBuffer(), 0);
    EXPECT_EQ(channel.nReads, 1);
    EXPECT_EQ(Logged(), Lines{"INFO   : Flushed Buffer: strData=ab<ETX>"});
}

TEST_F(TIsoProtocolFlush, NothingWaitingLogsNothing) {
    EXPECT_EQ(link.FlushBuffer(), 0);
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolFlush, AFailedReadIsIgnored) {
    channel.reads = {{"", 1}, {.thrown = FailureKind::DeviceIoError}, {"ab", 1}};
    EXPECT_EQ(link.FlushBuffer(), 0);
    EXPECT_EQ(link.FlushBuffer(), 0);
    EXPECT_TRUE(Logged().empty());
    EXPECT_EQ(link.FlushBuffer(), 0);
    EXPECT_EQ(Logged(), Lines{"INFO   : Flushed Buffer: strData=ab"});
    ExpectError(0, "");
}

} // namespace
} // namespace brennik
