// Reading frames: what makes one whole, what its check decides, and what is read again.
#include "link/TIsoProtocol.h"
#include "tests/link/Bitwise.h"
#include "tests/link/IsoFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;

const std::string kAck = "\x06";
const std::string kNak = "\x15";

/// Worked out by hand: "S" ETX has the CRC 0x6A0F and the XOR 0x50.
const std::string kFrameS = "\x02S\x03\x6A\x0F";
const std::string kBadFrameS = "\x02S\x03\x6A\x0E";

/// Seven header bytes with the length 3, the data "abc", and their CRC 0xFF24.
const std::string kPayloadW = "W\x00\x03\x01\x02\x03\x04"s + "abc";
const std::string kFrameW = "\x02" + kPayloadW + "\xFF\x24";

class TIsoProtocolRead : public IsoFixture {
  protected:
    IsoReadResult ReadOnce(const std::string& strInitial = "") {
        return TIsoProtocolTestAccess::InternalReadPacket(link, strData, strInitial);
    }

    std::string strData = "old";
};

// Whole frames.

TEST_F(TIsoProtocolRead, APlainFrameGivesItsPayloadAndIsAcknowledged) {
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.writes, Lines{kAck});
    EXPECT_EQ(channel.nReads, 1);
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : <STX>S<ETX>j<ASCII 15>", "CLIENT OUT : <ACK>"}));
}

TEST_F(TIsoProtocolRead, ChecksumTypePicksTheCheckOfAPlainFrame) {
    struct Row {
        int32_t lChecksumType;
        std::string strFrame;
    };
    for (const Row& row : {Row{0, "\x02S\x03\x50"}, Row{1, "\x02S\x03\x0F\x6A"}, Row{2, kFrameS},
                           Row{3, kFrameS}, Row{-1, kFrameS}}) {
        link.lChecksumType(row.lChecksumType);
        channel.reads = {{row.strFrame}};
        EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood) << row.lChecksumType;
        EXPECT_EQ(strData, "S");
    }
}

TEST_F(TIsoProtocolRead, ReadResultsHaveTheirValues) {
    EXPECT_EQ(static_cast<int32_t>(IsoReadResult::IsoReadTimedOut), 0);
    EXPECT_EQ(static_cast<int32_t>(IsoReadResult::IsoReadGood), 2);
    EXPECT_EQ(static_cast<int32_t>(IsoReadResult::IsoReadBadCheck), 4);
    EXPECT_EQ(static_cast<int32_t>(IsoReadResult::IsoReadFailed), 5);
}

TEST_F(TIsoProtocolRead, AnEmptyPayloadIsAFrame) {
    channel.reads = {{"\x02\x03\x00\x0A"s}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, "");
}

TEST_F(TIsoProtocolRead, AFrameMayComeByteByByte) {
    for (const std::string& strFrame : {kFrameS, kFrameW}) {
        for (const char cByte : strFrame)
            channel.reads.push_back({std::string(1, cByte)});
        EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
        EXPECT_TRUE(channel.reads.empty());
    }
    EXPECT_EQ(strData, kPayloadW);
}

TEST_F(TIsoProtocolRead, AFrameMayBeCutAnywhere) {
    for (const std::string& strFrame : {kFrameS, kFrameW}) {
        for (size_t nCut = 0; nCut < strFrame.size(); ++nCut) {
            channel.reads = {{strFrame.substr(0, nCut)}, {""}, {strFrame.substr(nCut)}};
            EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood) << nCut;
            EXPECT_EQ(strData, strFrame.substr(1, strFrame.size() - (strFrame == kFrameS ? 4 : 3)));
        }
    }
}

TEST_F(TIsoProtocolRead, BytesAheadOfTheStartCharacterAreDroppedFromAGoodFrame) {
    for (const std::string& strFrame : {"noise" + kFrameS, "noise" + kFrameW}) {
        channel.reads = {{strFrame}};
        EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    }
    EXPECT_EQ(strData, kPayloadW);
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : noise<STX>S<ETX>j<ASCII 15>",
                               "CLIENT IN  : <STX>W<NUL><ETX><SOH><STX><ETX><EOT>abc"}));
}

TEST_F(TIsoProtocolRead, BytesBehindThePlainFrameAreDropped) {
    channel.reads = {{kFrameS + "more"}, {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.reads.size(), 1u);
    EXPECT_EQ(Logged(), Lines{"CLIENT IN  : <STX>S<ETX>j<ASCII 15>more"});
}

TEST_F(TIsoProtocolRead, TheFirstStartCharacterCounts) {
    const std::string strInner = "a\x02"
                                 "b";
    channel.reads = {{"\x02" + strInner + "\x03" + HighByteFirst(BitwiseCrc16(strInner + "\x03"))}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, strInner);
}

TEST_F(TIsoProtocolRead, APayloadWithAnEtxIsCutThereAndFailsItsCheck) {
    const std::string strPayload = "ab\x03"
                                   "cd";
    channel.reads = {
        {"\x02" + strPayload + "\x03" + HighByteFirst(BitwiseCrc16(strPayload + "\x03"))}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadBadCheck);
    EXPECT_EQ(strData, "ab");
}

TEST_F(TIsoProtocolRead, CheckBytesMayBeControlCharacters) {
    // "\x01" ETX has the XOR 2, and a check that equals the start character is a check.
    link.lChecksumType(0);
    channel.reads = {{"\x02\x01\x03"}, {"\x02"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, "\x01");
}

TEST_F(TIsoProtocolRead, TheStartCharacterIsTheConfiguredOne) {
    Use({.iStartChar = 200});
    channel.reads = {{"\x02\xC8S\x03\x6A\x0F"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, "S");
}

TEST_F(TIsoProtocolRead, OneCheckByteIsNotEnoughForACrcButForAnXor) {
    channel.reads = {{"\x02S\x03\x6A"}, {"\x0F"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(channel.nReads, 2);
    link.lChecksumType(0);
    channel.reads = {{"\x02S\x03"}, {"\x50"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(channel.nReads, 4);
}

TEST_F(TIsoProtocolRead, AnEtxAheadOfTheStartCharacterBlocksTheReadUntilItsTimeLimit) {
    const std::string strNoise = "\x03" + kFrameS;
    channel.reads = {{strNoise}, {kFrameS}};
    StartAt(100);
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, strNoise + kFrameS);
    EXPECT_GT(host.clock.PeekMicrosecondOfDay(), 105 * kSecond);
    // Also when the two came apart.
    channel.reads = {{"x\x03"}, {"y"}, {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
}

TEST_F(TIsoProtocolRead, AnEtxAheadOfTheStartCharacterDoesNotMatterToAWriteDataFrame) {
    channel.reads = {{"\x03" + kFrameW}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, kPayloadW);
}

TEST_F(TIsoProtocolRead, AStartCharacterThatIsTheEtxNeverFindsAPlainFrame) {
    Use({.iStartChar = 3});
    channel.reads = {{"\x03S\x03\x6A\x0F"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
}

TEST_F(TIsoProtocolRead, AStartCharacterThatIsNoByteIsAnInternalFailure) {
    for (const int16_t iStartChar : {int16_t{-1}, int16_t{256}}) {
        Use({.iStartChar = iStartChar});
        channel.reads = {{kFrameS}};
        EXPECT_EQ(link.ReadPacket(strData, ""), 1);
        ExpectError(1000000, "TIsoProtocol.InternalReadPacket() Failed - Invalid procedure call");
    }
}

// Write-data frames.

TEST_F(TIsoProtocolRead, AWriteDataFrameGivesHeaderAndData) {
    channel.reads = {{kFrameW}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, kPayloadW);
    EXPECT_EQ(channel.writes, Lines{kAck});
    // Shown with the start character and without its check.
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : <STX>W<NUL><ETX><SOH><STX><ETX><EOT>abc",
                               "CLIENT OUT : <ACK>"}));
}

TEST_F(TIsoProtocolRead, AWriteDataFrameWithoutDataHasTenBytes) {
    const std::string strFrame = "\x02W\x00\x00\x00\x00\x00\x00\xD2\x73"s;
    ASSERT_EQ(strFrame.size(), 10u);
    channel.reads = {{strFrame}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(strData, "W\x00\x00\x00\x00\x00\x00"s);
}

TEST_F(TIsoProtocolRead, TheLengthOfAWriteDataFrameIsUnsignedWithTheHighByteFirst) {
    for (const size_t nData : {256u, 32768u, 65535u}) {
        std::string strPayload = "W"s + HighByteFirst(static_cast<uint16_t>(nData)) + "ABCD";
        strPayload.append(nData, '\x03');
        const std::string strCheck = HighByteFirst(BitwiseCrc16(strPayload));
        channel.reads = {{"\x02" + strPayload}, {strCheck}};
        EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood) << nData;
        EXPECT_EQ(strData, strPayload);
    }
}

TEST_F(TIsoProtocolRead, AWriteDataFrameMustFitExactly) {
    channel.reads = {{kFrameW.substr(0, kFrameW.size() - 1)}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, kFrameW.substr(0, kFrameW.size() - 1));
    channel.reads = {{kFrameW + "x"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, kFrameW + "x");
    // One byte too many stays one too many, also with a further whole frame behind it.
    channel.reads = {{kFrameW + "x"}, {kFrameW}, {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
}

TEST_F(TIsoProtocolRead, AnUnfinishedWriteDataFrameIsLoggedAsItCame) {
    link.lPacketReadAttempts(0);
    channel.reads = {{"n" + kFrameW + "x"}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(Logged(),
              Lines{"CLIENT IN  : n<STX>W<NUL><ETX><SOH><STX><ETX><EOT>abc<ASCII 255>$x"});
}

TEST_F(TIsoProtocolRead, APlainFrameBehindAWriteDataStartIsNotSeen) {
    channel.reads = {{"\x02W\x03\x6A\x0F" + kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
}

TEST_F(TIsoProtocolRead, AWriteDataFrameNeverVerifiesWithAnXor) {
    link.lChecksumType(0);
    channel.reads = {{kFrameW}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadBadCheck);
    EXPECT_EQ(strData, kPayloadW);
    // Its XOR is 0x30; still one byte against two.
    channel.reads = {{"\x02" + kPayloadW + "\x30\x30"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadBadCheck);
}

TEST_F(TIsoProtocolRead, AWriteDataFrameIsVerifiedLowByteFirstWithTypeOne) {
    link.lChecksumType(1);
    channel.reads = {{kFrameW}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadBadCheck);
    channel.reads = {{"\x02" + kPayloadW + "\x24\xFF"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
}

TEST_F(TIsoProtocolRead, AWriteDataFrameVerifiesWithAnyOtherType) {
    for (const int32_t lChecksumType : {2, 3, -1}) {
        link.lChecksumType(lChecksumType);
        channel.reads = {{kFrameW}};
        EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood) << lChecksumType;
    }
}

// Initial bytes.

TEST_F(TIsoProtocolRead, InitialBytesThatHoldAFrameNeedOneReadAndNoMore) {
    for (const std::string& strFrame : {kFrameS, kFrameW}) {
        channel.nReads = 0;
        EXPECT_EQ(link.ReadPacket(strData, strFrame), 0);
        EXPECT_EQ(channel.nReads, 1);
    }
    EXPECT_EQ(strData, kPayloadW);
}

TEST_F(TIsoProtocolRead, WhatIsReadGoesBehindTheInitialBytes) {
    channel.reads = {{kFrameS.substr(2)}};
    EXPECT_EQ(link.ReadPacket(strData, kFrameS.substr(0, 2)), 0);
    EXPECT_EQ(strData, "S");
}

TEST_F(TIsoProtocolRead, EveryAttemptStartsAgainFromTheInitialBytes) {
    channel.reads = {{"T\x03\x6A\x0F"}, {"S\x03\x6A\x0F"}};
    EXPECT_EQ(link.ReadPacket(strData, "\x02"), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.writes, (Lines{kNak, kAck}));
}

TEST_F(TIsoProtocolRead, TheSameStringMayBeInitialAndResult) {
    strData = kFrameS;
    EXPECT_EQ(link.ReadPacket(strData, strData), 0);
    EXPECT_EQ(strData, "S");
}

// Checks and attempts.

TEST_F(TIsoProtocolRead, ABadCheckIsRefusedAndReadAgain) {
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.writes, (Lines{kNak, kAck}));
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : <STX>S<ETX>j<ASCII 14>", "CLIENT OUT : <NAK>",
                               "CLIENT IN  : <STX>S<ETX>j<ASCII 15>", "CLIENT OUT : <ACK>"}));
}

TEST_F(TIsoProtocolRead, NAttemptsAllowNPlusOneReadsAndTheLastBadFrameGetsNoNak) {
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

TEST_F(TIsoProtocolRead, NegativeAttemptsReadOnce) {
    link.lPacketReadAttempts(-4);
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    EXPECT_EQ(channel.nReads, 1);
}

TEST_F(TIsoProtocolRead, TheLastAttemptMaySucceed) {
    link.lPacketReadAttempts(1);
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
}

TEST_F(TIsoProtocolRead, WithoutAcknowledgementABadFrameIsASuccess) {
    link.bAckPackets(false);
    channel.reads = {{kBadFrameS}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_EQ(strData, "S");
    EXPECT_EQ(channel.nReads, 1);
    EXPECT_TRUE(channel.writes.empty());
}

TEST_F(TIsoProtocolRead, WithoutAcknowledgementAGoodFrameGetsNoAck) {
    link.bAckPackets(false);
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    EXPECT_TRUE(channel.writes.empty());
}

TEST_F(TIsoProtocolRead, TimeOutsAreReadAgainWithoutANak) {
    StartAt(100);
    link.lPacketReadAttempts(2);
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_TRUE(channel.writes.empty());
    EXPECT_GT(host.clock.PeekMicrosecondOfDay(), 115 * kSecond);
    EXPECT_LT(host.clock.PeekMicrosecondOfDay(), 115 * kSecond + 60 * kMillisecond);
}

TEST_F(TIsoProtocolRead, TimeOutsAndBadChecksShareOneCount) {
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

TEST_F(TIsoProtocolRead, AFailingChannelIsReadAgainAndFinallyToldAsATimeOut) {
    link.lPacketReadAttempts(2);
    channel.reads.assign(10, {"", 1});
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(channel.nReads, 3);
    EXPECT_TRUE(channel.writes.empty());
}

TEST_F(TIsoProtocolRead, AFailingChannelEndsOneReadWithItsErrorCopied) {
    channel.reads = {{"\x02S"}, {"\x03\x6A\x0F", 1}, {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    ExpectError(4711, "the line is cut");
    EXPECT_EQ(strData, "\x02S");
    EXPECT_EQ(channel.nReads, 2);
    EXPECT_EQ(Logged(), Lines{"CLIENT IN  : <STX>S"});
}

TEST_F(TIsoProtocolRead, WhatAFailedReadDeliversIsDropped) {
    channel.reads = {{kFrameS, 1}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, "");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolRead, ARecoveringChannelLeavesItsErrorBehind) {
    channel.reads = {{"", 1}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolRead, AnInternalFailureIsNotReadAgain) {
    channel.reads = {{.thrown = FailureKind::DeviceIoError}, {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000000, "TIsoProtocol.InternalReadPacket() Failed - Device I/O error");
    EXPECT_EQ(channel.nReads, 1);
    channel.reads = {{.thrown = FailureKind::DeviceIoError}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadFailed);
}

TEST_F(TIsoProtocolRead, AFailureWhileAnsweringEndsInTheCatchAll) {
    channel.reads = {{kFrameS}};
    channel.writeThrows = FailureKind::DeviceIoError;
    EXPECT_EQ(link.ReadPacket(strData, ""), 1);
    ExpectError(1000000, "TIsoProtocol.ReadPacket() Failed - Device I/O error");
}

TEST_F(TIsoProtocolRead, AnAckThatCanNotBeWrittenIsNoFailure) {
    channel.lWriteStatus = 1;
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    ExpectError(0, "");
}

TEST_F(TIsoProtocolRead, ASuccessLeavesTheLastErrorAlone) {
    MarkError();
    channel.reads = {{kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
    ExpectError(4711, "the line is cut");
}

// Time and events.

TEST_F(TIsoProtocolRead, AFrameIsAwaitedUntilTheClockExceedsTheLimit) {
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

TEST_F(TIsoProtocolRead, AFrameThatCompletesInTheLastPassIsGoodHoweverLongThatTook) {
    StartAt(100);
    channel.reads = {{.strData = kFrameS, .timeOfDay = 500 * kSecond}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
}

TEST_F(TIsoProtocolRead, EachAttemptHasItsOwnTimeLimit) {
    StartAt(100);
    channel.reads = {{.strData = kBadFrameS, .timeOfDay = 104 * kSecond},
                     {.timeOfDay = 108 * kSecond},
                     {kFrameS}};
    EXPECT_EQ(link.ReadPacket(strData, ""), 0);
}

TEST_F(TIsoProtocolRead, AReadThatCrossesMidnightDoesNotEndByTime) {
    StartAt(86398);
    channel.reads = {{.timeOfDay = 86399 * kSecond},
                     {.timeOfDay = 1},
                     {.timeOfDay = 43200 * kSecond},
                     {kFrameS}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
}

TEST_F(TIsoProtocolRead, PumpsBeforeEachRead) {
    channel.reads = {{""}, {"\x02S"}, {"\x03\x6A\x0F"}};
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadGood);
    EXPECT_EQ(host.nPumps(), 3);
}

TEST_F(TIsoProtocolRead, SilenceIsNotLogged) {
    EXPECT_EQ(ReadOnce(), IsoReadResult::IsoReadTimedOut);
    EXPECT_EQ(strData, "");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolRead, FramesAreNotControlPacketsAndCarryTheSide) {
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

TEST_F(TIsoProtocolRead, WhatAReadGathersIsBoundedAtSixteenMebibytes) {
    StartAt(100);
    constexpr size_t kMebibyte = 1024 * 1024;
    for (int iPiece = 0; iPiece < 15; ++iPiece)
        channel.reads.push_back({std::string(kMebibyte, 'x')});
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

// The reader against a plain model that searches the whole buffer again after every delivery.

struct Outcome {
    IsoReadResult result = IsoReadResult::IsoReadTimedOut;
    std::string strData;
    size_t nDeliveries = 0;
};

std::string ModelCheck(const std::string& strData, int32_t lChecksumType) {
    if (lChecksumType == 0)
        return XorOfBytes(strData);
    const uint16_t iCrc = BitwiseCrc16(strData);
    return lChecksumType == 1 ? LowByteFirst(iCrc) : HighByteFirst(iCrc);
}

/// Positions count from 1 and 0 is none, as the rules are told.
Outcome Model(const Lines& deliveries, const std::string& strInitial, int32_t lChecksumType) {
    Outcome outcome{.strData = strInitial};
    std::string& strBuffer = outcome.strData;
    const auto at = [&](size_t nPosition) {
        return static_cast<unsigned char>(strBuffer[nPosition - 1]);
    };
    bool bWrite = false;
    for (const std::string& strDelivery : deliveries) {
        ++outcome.nDeliveries;
        strBuffer += strDelivery;
        const size_t nStart = strBuffer.find('\x02') + 1;
        const size_t nEtx = strBuffer.find('\x03') + 1;
        std::string strCheck;
        if (nStart != 0 && nStart < strBuffer.size() && at(nStart + 1) == 'W') {
            bWrite = true;
            if (strBuffer.size() >= nStart + 7) {
                const size_t nLength = at(nStart + 2) * 256u + at(nStart + 3);
                if (strBuffer.size() - (nStart + 7) + 1 == nLength + 3) {
                    strCheck = strBuffer.substr(nStart + 8 + nLength - 1, 2);
                    strBuffer = strBuffer.substr(nStart, nLength + 7);
                    outcome.result = strCheck == ModelCheck(strBuffer, lChecksumType)
                                         ? IsoReadResult::IsoReadGood
                                         : IsoReadResult::IsoReadBadCheck;
                    return outcome;
                }
            }
        }
        if (bWrite || nStart == 0 || nEtx == 0 || nEtx < nStart)
            continue;
        const size_t nCheck = lChecksumType == 0 ? 1 : 2;
        if (strBuffer.size() < nEtx + nCheck)
            continue;
        strCheck = strBuffer.substr(nEtx, nCheck);
        strBuffer = strBuffer.substr(nStart, nEtx - nStart - 1);
        outcome.result = strCheck == ModelCheck(strBuffer + "\x03", lChecksumType)
                             ? IsoReadResult::IsoReadGood
                             : IsoReadResult::IsoReadBadCheck;
        return outcome;
    }
    return outcome;
}

TEST_F(TIsoProtocolRead, AgreesWithAPlainModelOnAnyBytesInAnyCutting) {
    StartAt(0);
    Use({.lPacketTimeout = 1});
    std::array<int, 6> seen{};
    for (uint32_t lSeed = 1; lSeed <= 12000; ++lSeed) {
        std::mt19937 random(lSeed);
        const auto below = [&](uint32_t n) { return random() % n; };
        const int32_t lChecksumType = static_cast<int32_t>(below(3));
        std::string strStream;
        while (below(4) != 0 || strStream.empty()) {
            std::string strPayload(below(12), '\0');
            for (char& cByte : strPayload)
                cByte = "\x02\x03WDS\x00\x01\xFF"[below(8)];
            switch (below(6)) {
            case 0:
                strStream += strPayload;
                break;
            case 1:
                strStream += "noise";
                break;
            case 2: {
                strPayload = "W" + HighByteFirst(static_cast<uint16_t>(strPayload.size())) +
                             "hdr." + strPayload;
                strStream += "\x02" + strPayload + ModelCheck(strPayload, lChecksumType);
                break;
            }
            default:
                std::erase(strPayload, '\x03');
                strStream +=
                    "\x02" + strPayload + "\x03" + ModelCheck(strPayload + "\x03", lChecksumType);
            }
        }
        if (below(4) == 0)
            strStream[below(static_cast<uint32_t>(strStream.size()))] ^= 1;
        const std::string strInitial = strStream.substr(0, below(5) == 0 ? below(8) : 0);
        Lines deliveries;
        for (size_t nFrom = strInitial.size(); nFrom < strStream.size();) {
            const size_t nPiece = below(3) == 0 ? below(4) : below(40);
            deliveries.push_back(strStream.substr(nFrom, nPiece));
            nFrom += nPiece;
        }
        if (deliveries.empty())
            deliveries.emplace_back();

        const Outcome expected = Model(deliveries, strInitial, lChecksumType);
        channel.reads.clear();
        for (const std::string& strDelivery : deliveries)
            channel.reads.push_back({strDelivery});
        host.clock.SetTimeOfDay(100 * kSecond);
        link.lChecksumType(lChecksumType);
        ASSERT_EQ(ReadOnce(strInitial), expected.result) << "seed " << lSeed;
        ASSERT_EQ(strData, expected.strData) << "seed " << lSeed;
        ASSERT_EQ(deliveries.size() - channel.reads.size(), expected.nDeliveries)
            << "seed " << lSeed;
        ++seen.at(static_cast<size_t>(expected.result));
    }
    // The streams are worth their while only if they end in each of the ways.
    EXPECT_GT(seen[0], 500);
    EXPECT_GT(seen[2], 500);
    EXPECT_GT(seen[4], 500);
}

} // namespace
} // namespace brennik
