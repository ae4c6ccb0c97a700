// Reading frames: what makes one whole, and what its check decides.
#include "link/TIsoProtocol.h"
#include "tests/link/Bitwise.h"
#include "tests/link/IsoFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kSecond;

/// Seven header bytes with the length 3, the data "abc", and their CRC 0xFF24.
const std::string kPayloadW = "W\x00\x03\x01\x02\x03\x04"s + "abc";
const std::string kFrameW = "\x02" + kPayloadW + "\xFF\x24";

class TIsoProtocolRead : public IsoReadFixture {};

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
        for (const char cByte : strFrame) {
            channel.reads.push_back({std::string(1, cByte)});
        }
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

} // namespace
} // namespace brennik
