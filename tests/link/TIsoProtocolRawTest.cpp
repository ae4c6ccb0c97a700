// Raw passages past the framing: bytes as they are, one reply, the wait for an ENQ.
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

// SendArbitraryData.

class TIsoProtocolRawSend : public IsoFixture {};

TEST_F(TIsoProtocolRawSend, SendsTheBytesAsTheyAreAndLogsThem) {
    EXPECT_EQ(link.SendArbitraryData("W\x00\x03"s), 0);
    EXPECT_EQ(channel.writes, Lines{"W\x00\x03"s});
    EXPECT_EQ(Logged(), Lines{"CLIENT OUT : W<NUL><ETX>"});
    EXPECT_EQ(channel.nCharacters, 0);
}

TEST_F(TIsoProtocolRawSend, AFailureCopiesTheChannelsErrorAndLogsNothing) {
    channel.lWriteStatus = 1;
    EXPECT_EQ(link.SendArbitraryData("x"), 1);
    ExpectError(4711, "the line is cut");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolRawSend, TheBytesAreNoControlPacketAndCarryTheSide) {
    Use({.bServerSide = true});
    StartLog(true, false);
    EXPECT_EQ(link.SendArbitraryData("x"), 0);
    EXPECT_TRUE(Logged().empty());
    StartLog(false, true);
    EXPECT_EQ(link.SendArbitraryData("x"), 0);
    EXPECT_EQ(Logged(), Lines{"SERVER OUT : x"});
}

TEST_F(TIsoProtocolRawSend, ASuccessLeavesTheLastErrorAlone) {
    MarkError();
    EXPECT_EQ(link.SendArbitraryData("x"), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolRawSend, ThePrefixOfItsCatchAllIsMisspelt) {
    channel.writeThrows = FailureKind::DeviceIoError;
    EXPECT_EQ(link.SendArbitraryData("x"), 1);
    ExpectError(1000000, "TIsoProtocol.SendABitraryData() Failed - Device I/O error");
}

// ReadArbitraryData.

class TIsoProtocolRawRead : public IsoReadFixture {};

TEST_F(TIsoProtocolRawRead, AnyCharacterIsTheReplyWhenAnyIsAskedFor) {
    for (const std::string& strReply : {"x"s, "\0"s, kNak, "\x02"s}) {
        channel.characters = {{""}, {strReply}};
        EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 0);
        EXPECT_EQ(strData, strReply);
    }
    EXPECT_EQ(channel.nReads, 0);
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : x", "CLIENT IN  : <NUL>", "CLIENT IN  : <NAK>",
                               "CLIENT IN  : <STX>"}));
}

TEST_F(TIsoProtocolRawRead, OtherwiseOnlyAckAndNakAreRepliesAlone) {
    channel.characters = {{"x"}, {kEnq}, {"\x03"}, {kAck}, {"y"}, {kNak}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, kAck);
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, kNak);
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : <ACK>", "CLIENT IN  : <NAK>"}));
}

TEST_F(TIsoProtocolRawRead, AnStxTakesWhateverOneReadDelivers) {
    channel.characters = {{"\x02"}};
    channel.reads = {{"part of a fr"}, {"ame"}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, "\x02part of a fr");
    EXPECT_EQ(channel.nReads, 1);
    EXPECT_EQ(Logged(), Lines{"CLIENT IN  : <STX>part of a fr"});
}

TEST_F(TIsoProtocolRawRead, AnStxAloneIsAReplyToo) {
    channel.characters = {{"\x02"}, {"\x02"}};
    channel.reads = {{""}, {"", 1}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, "\x02");
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, "\x02");
}

TEST_F(TIsoProtocolRawRead, WhatAFailedReadDeliversBehindAnStxIsPartOfTheReply) {
    channel.characters = {{"\x02"}};
    channel.reads = {{"rest", 1}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, "\x02rest");
    ExpectError(0, "");
}

TEST_F(TIsoProtocolRawRead, TheReplyIsNoControlPacketAndCarriesTheSide) {
    Use({.bServerSide = true});
    channel.characters = {{"x"}, {"x"}};
    StartLog(true, false);
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 0);
    EXPECT_TRUE(Logged().empty());
    StartLog(false, true);
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 0);
    EXPECT_EQ(Logged(), Lines{"SERVER IN  : x"});
}

TEST_F(TIsoProtocolRawRead, ASuccessLeavesTheLastErrorAlone) {
    MarkError();
    channel.characters = {{"x"}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolRawRead, AWaitThatCrossesMidnightDoesNotEndByTime) {
    StartAt(86395);
    channel.characters = {
        {.timeOfDay = 86399 * kSecond}, {.timeOfDay = 0}, {.timeOfDay = 7200 * kSecond}, {kAck}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 10, false), 0);
    EXPECT_EQ(strData, kAck);
}

TEST_F(TIsoProtocolRawRead, AReplyIsForgottenWhenTheReadFailsBehindIt) {
    channel.characters = {{"x"}};
    host.OnPump([] { throw RuntimeFailure(FailureKind::TypeMismatch); });
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 1);
    ExpectError(1000000, "TIsoProtocol.ReadArbitraryData() Failed - Type mismatch");
    EXPECT_EQ(strData, "");
}

TEST_F(TIsoProtocolRawRead, TheStxIsTheFixedOneWhateverTheStartCharacter) {
    Use({.iStartChar = '#'});
    channel.characters = {{"#"}, {"\x02"}};
    channel.reads = {{"rest"}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(strData, "\x02rest");
}

TEST_F(TIsoProtocolRawRead, ATimeoutOfZeroLooksOnceWithoutPumping) {
    EXPECT_EQ(link.ReadArbitraryData(strData, 0, true), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(channel.nCharacters, 1);
    EXPECT_EQ(host.nPumps(), 0);
    channel.characters = {{"x"}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 0, true), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_EQ(host.nPumps(), 0);
}

TEST_F(TIsoProtocolRawRead, EveryPassEndsWithPumpingTheLastOneToo) {
    channel.characters = {{""}, {"x"}, {kAck}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, false), 0);
    EXPECT_EQ(host.nPumps(), 3);
}

TEST_F(TIsoProtocolRawRead, AFailedReadStopsWithTheChannelsError) {
    channel.characters = {{""}, {"", 1}, {kAck}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 1);
    ExpectError(4711, "the line is cut");
    EXPECT_EQ(strData, "");
    EXPECT_EQ(channel.nCharacters, 2);
    EXPECT_EQ(host.nPumps(), 1);
    channel.characters = {{"", 1}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 0, true), 1);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolRawRead, TheEndTimeIsRoundedToAWholeSecondTiesToEven) {
    struct Row {
        Microseconds start; // plus 3 seconds
        Microseconds end;
    };
    for (const Row& row :
         {Row{100 * kSecond, 103 * kSecond}, Row{100 * kSecond + 400 * kMillisecond, 103 * kSecond},
          Row{100 * kSecond + 500 * kMillisecond, 104 * kSecond},
          Row{101 * kSecond + 500 * kMillisecond, 104 * kSecond},
          Row{101 * kSecond + 600 * kMillisecond, 105 * kSecond}}) {
        struct Look {
            Microseconds moment;
            int32_t lStatus;
        };
        for (const Look& look : {Look{row.end - 10, 0}, Look{row.end, 0}, Look{row.end + 10, 1}}) {
            StartAt(0, row.start);
            channel.characters = {{.timeOfDay = look.moment}, {"x"}};
            EXPECT_EQ(link.ReadArbitraryData(strData, 3, true), look.lStatus)
                << row.start << " at " << look.moment;
        }
    }
}

TEST_F(TIsoProtocolRawRead, ANegativeTimeoutMakesNoPass) {
    channel.characters = {{"x"}};
    EXPECT_EQ(link.ReadArbitraryData(strData, -2, true), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(channel.nCharacters, 0);
    EXPECT_EQ(strData, "");
}

TEST_F(TIsoProtocolRawRead, SilenceEndsWithATimeOutAndNoLogLine) {
    EXPECT_EQ(link.ReadArbitraryData(strData, 2, false), 1);
    ExpectError(1000011, kTimedOutText);
    EXPECT_EQ(strData, "");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TIsoProtocolRawRead, AnInternalFailureEndsInTheCatchAll) {
    channel.characters = {{.thrown = FailureKind::Overflow}};
    EXPECT_EQ(link.ReadArbitraryData(strData, 5, true), 1);
    ExpectError(1000000, "TIsoProtocol.ReadArbitraryData() Failed - Overflow");
}

// WaitForEnq.

class TIsoProtocolEnq : public IsoFixture {};

TEST_F(TIsoProtocolEnq, AnEnqAnywhereInADeliveryEndsTheWait) {
    for (const std::string& strDelivery :
         {kEnq, "noise" + kEnq, kEnq + "noise", "a" + kEnq + "b"}) {
        channel.reads = {{""}, {strDelivery}};
        EXPECT_EQ(link.WaitForEnq(), 0);
        EXPECT_TRUE(channel.reads.empty());
    }
}

TEST_F(TIsoProtocolEnq, OtherBytesAreLoggedAndDropped) {
    channel.reads = {{"noise"}, {""}, {"\x04"}, {kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
    EXPECT_EQ(Logged(), (Lines{"CLIENT IN  : noise", "CLIENT IN  : <EOT>", "CLIENT IN  : <ENQ>"}));
}

TEST_F(TIsoProtocolEnq, DeliveriesAreControlPackets) {
    StartLog(false, true);
    channel.reads = {{kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
    EXPECT_TRUE(Logged().empty());
    StartLog(true, false);
    channel.reads = {{kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
    EXPECT_EQ(Logged(), Lines{"CLIENT IN  : <ENQ>"});
}

TEST_F(TIsoProtocolEnq, DeliveriesCarryTheSide) {
    Use({.bServerSide = true});
    channel.reads = {{kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
    EXPECT_EQ(Logged(), Lines{"SERVER IN  : <ENQ>"});
}

TEST_F(TIsoProtocolEnq, ASuccessLeavesTheLastErrorAlone) {
    MarkError();
    channel.reads = {{kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolEnq, WhatAnEventBringsIsReadInTheSamePass) {
    host.OnPump([this] { channel.reads = {{kEnq}}; });
    EXPECT_EQ(link.WaitForEnq(), 0);
    EXPECT_EQ(channel.nReads, 1);
}

TEST_F(TIsoProtocolEnq, TheLimitIsTenSecondsWhateverThePacketTimeout) {
    struct Row {
        Microseconds timeOfDay;
        int32_t lStatus;
    };
    for (const int32_t lPacketTimeout : {1, 60}) {
        link.lPacketTimeout(lPacketTimeout);
        for (const Row& row :
             {Row{110 * kSecond - 10, 0}, Row{110 * kSecond, 0}, Row{110 * kSecond + 10, 1}}) {
            StartAt(100);
            channel.reads = {{.timeOfDay = row.timeOfDay}, {kEnq}};
            EXPECT_EQ(link.WaitForEnq(), row.lStatus) << row.timeOfDay;
        }
    }
    ExpectError(1000012, "Failed reading ENQ character");
}

TEST_F(TIsoProtocolEnq, PumpsBeforeEachRead) {
    channel.reads = {{""}, {"x"}, {kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
    EXPECT_EQ(host.nPumps(), 3);
}

TEST_F(TIsoProtocolEnq, AFailedReadStopsWithTheChannelsError) {
    channel.reads = {{""}, {kEnq, 1}};
    EXPECT_EQ(link.WaitForEnq(), 1);
    ExpectError(4711, "the line is cut");
}

TEST_F(TIsoProtocolEnq, AnInternalFailureEndsInTheCatchAll) {
    channel.reads = {{.thrown = FailureKind::DeviceIoError}};
    EXPECT_EQ(link.WaitForEnq(), 1);
    ExpectError(1000000, "TIsoProtocol.WaitForEnq() Failed - Device I/O error");
}

TEST_F(TIsoProtocolEnq, AWaitThatCrossesMidnightDoesNotEndByTime) {
    StartAt(86395);
    channel.reads = {
        {.timeOfDay = 86399 * kSecond}, {.timeOfDay = 0}, {.timeOfDay = 7200 * kSecond}, {kEnq}};
    EXPECT_EQ(link.WaitForEnq(), 0);
}

} // namespace
} // namespace brennik
