// What the serial channel does with bytes: blocks and pauses of a write, and reads byte by byte.
#include "link/TSerialComms.h"
#include "platform/RuntimeFailure.h"
#include "tests/link/TSerialCommsFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;
namespace comerror = world::comerror;

constexpr Microseconds kByteTime = 1042; // at 9600 bits per second, rounded up

class TSerialCommsTransferTest : public TSerialCommsFixture {};

/// So many bytes, no two neighbouring blocks alike.
std::string Bytes(size_t nBytes) {
    std::string strBytes;
    for (size_t nByte = 0; nByte < nBytes; ++nByte) {
        strBytes += static_cast<char>(nByte % 251);
    }
    return strBytes;
}

// Writes.

TEST_F(TSerialCommsTransferTest, WritesBlocksOfAThousandBytesWithPauses) {
    ConnectToPeer();
    EXPECT_EQ(comms->WriteData(Bytes(2500)), 0);
    EXPECT_EQ(TakeCalls(),
              (Lines{"Write 1000", "Sleep 10", "Write 1000", "Sleep 10", "Write 500"}));
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), Bytes(2500));
    EXPECT_EQ(host.nPumps(), 0);
    ExpectError(0, "");
}

TEST_F(TSerialCommsTransferTest, AThousandBytesAreOneBlockWithoutAPause) {
    ConnectToPeer();
    EXPECT_EQ(comms->WriteData(Bytes(1000)), 0);
    EXPECT_EQ(TakeCalls(), Lines{"Write 1000"});
    EXPECT_EQ(comms->WriteData(Bytes(1001)), 0);
    EXPECT_EQ(TakeCalls(), (Lines{"Write 1000", "Sleep 10", "Write 1"}));
}

TEST_F(TSerialCommsTransferTest, ZeroBytesAreBytes) {
    ConnectToPeer();
    EXPECT_EQ(comms->WriteData("\0\x02\0"s), 0);
    host.RunFor(5 * kByteTime);
    EXPECT_EQ(peer->Received(), "\0\x02\0"s);
}

TEST_F(TSerialCommsTransferTest, NothingToWriteIsASuccess) {
    ConnectToPeer();
    EXPECT_EQ(comms->WriteData(""), 0);
    EXPECT_TRUE(TakeCalls().empty());
    ExpectError(0, "");
}

TEST_F(TSerialCommsTransferTest, AFailedWritePassesTextAndNumberOn) {
    ConnectToPeer();
    host.FailNext(Op::ComWrite, {.lLastError = 1167});
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(1167, "Failed writing data to the opened port");
    EXPECT_EQ(comms->WriteData("x"), 0);
    ExpectError(1167, "Failed writing data to the opened port"); // a success clears nothing
}

TEST_F(TSerialCommsTransferTest, AFailedSecondBlockIsAFailedWrite) {
    ConnectToPeer();
    host.FailNext(Op::ComWrite, {.lLastError = 1167}, 1, 1);
    EXPECT_EQ(comms->WriteData(Bytes(2500)), 1);
    ExpectError(1167, "Failed writing data to the opened port");
}

TEST_F(TSerialCommsTransferTest, AShortWriteTellsHowMuchWasTaken) {
    ConnectToPeer();
    host.FailNext(Op::ComWrite, {.lResult = 3});
    EXPECT_EQ(comms->WriteData("abcd"), 1);
    ExpectError(1000014, "Failed writing packet to com port. Only 3 written");
    host.FailNext(Op::ComWrite, {.lResult = 2}, 1, 1);
    EXPECT_EQ(comms->WriteData(Bytes(2500)), 1);
    ExpectError(1000014, "Failed writing packet to com port. Only 1002 written");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TSerialCommsTransferTest, AStuckLineIsAShortWriteAfterASecond) {
    ConnectToPeer();
    Line().HoldOutput(true);
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->WriteData("abcd"), 1);
    EXPECT_EQ(host.Now() - start, kSecond + 1);
    ExpectError(1000014, "Failed writing packet to com port. Only 0 written");
}

TEST_F(TSerialCommsTransferTest, AHungUpLineIsAFailedWrite) {
    ConnectToPeer();
    Line().HangUp();
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(comerror::kHungUp, "Failed writing data to the opened port");
}

// Reads.

TEST_F(TSerialCommsTransferTest, ReadDataDrainsThePortByteByByte) {
    ConnectToPeer();
    Line().Feed("a\0\x03"s);
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "a\0\x03"s);
    EXPECT_EQ(TakeCalls(), (Lines{"Read 1", "Read 1", "Read 1", "Read 1"}));
    EXPECT_EQ(host.nPumps(), 4); // before each
    // Eight calls of a microsecond, and the empty read at the end.
    EXPECT_EQ(host.Now() - start, 8 + 10 * kMillisecond);
    ExpectError(0, "");
}

TEST_F(TSerialCommsTransferTest, ReadDataWithNothingWaitingIsAnEmptySuccess) {
    ConnectToPeer();
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(TakeCalls(), Lines{"Read 1"});
    EXPECT_EQ(host.nPumps(), 1);
    EXPECT_EQ(host.Now() - start, 2 + 10 * kMillisecond);
}

TEST_F(TSerialCommsTransferTest, AByteThatArrivesMeanwhileLengthensTheDelivery) {
    ConnectToPeer();
    peer->PushAt(0, "ab");
    peer->PushAt(9 * kMillisecond, "c"); // its last bit is there 10 ms and 42 us from now
    peer->PushAt(25 * kMillisecond, "late");
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "abc");
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "late");
}

TEST_F(TSerialCommsTransferTest, ALineThatNeverPausesIsDeliveredInParts) {
    ConnectToPeer();
    host.RecordCalls(false);
    Line().Feed(std::string(128 * 1024, 'x') + "rest");
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, std::string(128 * 1024, 'x'));
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "rest");
}

TEST_F(TSerialCommsTransferTest, EventsRunBeforeEachByte) {
    ConnectToPeer();
    std::string strNext = "abcd";
    host.OnPump([&] {
        Line().Feed(strNext.substr(0, 1));
        strNext.erase(0, 1);
    });
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "abcd");
    EXPECT_EQ(host.nPumps(), 5);
}

TEST_F(TSerialCommsTransferTest, AFailureBeforeTheFirstByteFailsTheRead) {
    ConnectToPeer();
    Line().Feed("ab");
    host.FailNext(Op::ComRead, {.lLastError = 1167});
    EXPECT_EQ(comms->ReadData(strData), 1);
    EXPECT_EQ(strData, "");
    ExpectError(1167, "Failed reading data from the opened port");
    EXPECT_EQ(TakeCalls(), Lines{"Read 1"});
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "ab");
    ExpectError(1167, "Failed reading data from the opened port"); // a success clears nothing
}

TEST_F(TSerialCommsTransferTest, AFailureBehindAByteDeliversWhatCameBefore) {
    ConnectToPeer();
    Line().Feed("ab");
    Line().HangUp();
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "ab");
    ExpectError(comerror::kHungUp, "Failed reading data from the opened port"); // yet a success
    EXPECT_EQ(TakeCalls(), (Lines{"Read 1", "Read 1", "Read 1"}));
    EXPECT_EQ(comms->ReadData(strData), 1);
    EXPECT_EQ(strData, "");
}

TEST_F(TSerialCommsTransferTest, ReadCharacterTakesOneByteAndLeavesTheRest) {
    ConnectToPeer();
    Line().Feed("\0b"s);
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "\0"s);
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "b");
    EXPECT_EQ(TakeCalls(), (Lines{"Read 1", "Read 1"}));
    EXPECT_EQ(host.nPumps(), 2);
    ExpectError(0, "");
}

TEST_F(TSerialCommsTransferTest, ReadCharacterWithNothingWaitingIsAnEmptySuccess) {
    ConnectToPeer();
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(host.Now() - start, 2 + 10 * kMillisecond);
    EXPECT_EQ(TakeCalls(), Lines{"Read 1"});
    EXPECT_EQ(host.nPumps(), 1);
}

TEST_F(TSerialCommsTransferTest, ReadCharacterEndsWithItsByte) {
    ConnectToPeer();
    peer->Push("x");
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_EQ(host.Now() - start, kByteTime);
}

TEST_F(TSerialCommsTransferTest, ReadCharacterRunsEventsBeforeItsByte) {
    ConnectToPeer();
    host.OnPump([&] { Line().Feed("x"); });
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "x");
}

TEST_F(TSerialCommsTransferTest, ReadCharacterPassesTextAndNumberOn) {
    ConnectToPeer();
    host.FailNext(Op::ComRead, {.lLastError = 1167});
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    EXPECT_EQ(strData, "");
    ExpectError(1167, "Failed reading data from the opened port");
}

// Without a port.

TEST_F(TSerialCommsTransferTest, AChannelThatNeverConnectedFails) {
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(1000000, "TSerialComms.SendPacket() Failed - Object not set"); // its old name
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadData() Failed - Object not set");
    EXPECT_EQ(strData, "");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadCharacter() Failed - Object not set");
}

TEST_F(TSerialCommsTransferTest, AClosedChannelFails) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(1000000, "TSerialComms.SendPacket() Failed - Object not set");
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadData() Failed - Object not set");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadCharacter() Failed - Object not set");
}

TEST_F(TSerialCommsTransferTest, AChannelWhoseConnectFailedHasAClosedPort) {
    EXPECT_EQ(Connect(), 1);
    // The number is that of the failed opening: a closed port sets its text alone.
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(comerror::kMissing, "Port closed");
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(comerror::kMissing, "Port closed");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(comerror::kMissing, "Port closed");
}

TEST_F(TSerialCommsTransferTest, AChannelThatCouldntBeSetWritesAllTheSame) {
    ConnectUnconfigured();
    EXPECT_EQ(comms->WriteData("x"), 0);
    host.RunFor(kByteTime);
    EXPECT_EQ(peer->Received(), "x");
}

// What nobody expects.

TEST_F(TSerialCommsTransferTest, ReadsEndARunTimeFailureInTheirOwnTexts) {
    ConnectToPeer();
    host.OnPump([] { throw RuntimeFailure(FailureKind::Overflow); });
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadData() Failed - Overflow");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadCharacter() Failed - Overflow");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialCommsTransferTest, ARunTimeFailureBehindAByteIsAFailureToo) {
    ConnectToPeer();
    Line().Feed("ab");
    host.OnPump([&] {
        if (host.nPumps() == 2) {
            throw RuntimeFailure(FailureKind::Overflow);
        }
    });
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSerialComms.ReadData() Failed - Overflow");
}

// As the link sees it.

TEST_F(TSerialCommsTransferTest, ServesThroughTheContractOfTheChannels) {
    peer = &host.comPorts.AddPeer("COM1");
    peer->OnBytes = [&](std::string_view) { peer->Push("\x06"); };
    TCommsChannel& channel = *comms;
    EXPECT_EQ(channel.Connect(info, log), 0);
    EXPECT_EQ(channel.WriteData("\x05"), 0);
    EXPECT_EQ(channel.ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "\x06");
    EXPECT_EQ(channel.ReadData(strData), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(channel.strConnectionData(), "");
    EXPECT_EQ(channel.lErrorCode(), 0);
    EXPECT_EQ(channel.strErrorMessage(), "");
    EXPECT_EQ(channel.Disconnect(), 0);
}

} // namespace
} // namespace brennik
