// The reads of the TCP channel, which repeat and pump, and what ends them.
#include "link/TSocketComms.h"
#include "tests/link/TSocketCommsFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;

class TSocketCommsReadTest : public TSocketCommsFixture {};

// ReadData.

TEST_F(TSocketCommsReadTest, ReadDataTakesAllThatIsWaiting) {
    ConnectToPeer();
    Feed("ab\0\xFF"s);
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "ab\0\xFF"s);
    EXPECT_EQ(TakeCalls(), (Lines{"BytesWaiting 4", "Receive 4"}));
    EXPECT_EQ(host.nPumps(), 1);
}

TEST_F(TSocketCommsReadTest, ReadDataWithNothingWaitingSucceedsAfterTenMilliseconds) {
    ConnectToPeer();
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "");
    EXPECT_GE(host.Now() - start, 10 * kMillisecond);
    EXPECT_LT(host.Now() - start, 11 * kMillisecond);
    EXPECT_EQ(host.nPumps(), 1);
    ExpectError(0, "");
}

TEST_F(TSocketCommsReadTest, ReadDataPumpsBeforeItTouchesTheSocket) {
    ConnectToPeer();
    host.OnPump([this] { Feed("x"); });
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "x");
}

TEST_F(TSocketCommsReadTest, AClosedPeerIsSilenceToReadData) {
    ConnectToPeer();
    peer->Close();
    host.RunFor(kMillisecond);
    for (int iTurn = 0; iTurn < 3; ++iTurn) {
        const Microseconds start = host.Now();
        EXPECT_EQ(comms->ReadData(strData), 0);
        EXPECT_EQ(strData, "");
        EXPECT_GE(host.Now() - start, 10 * kMillisecond);
    }
}

TEST_F(TSocketCommsReadTest, AResetPeerIsSilenceToReadData) {
    ConnectToPeer();
    peer->Reset();
    host.RunFor(kMillisecond);
    for (int iTurn = 0; iTurn < 3; ++iTurn) {
        const Microseconds start = host.Now();
        EXPECT_EQ(comms->ReadData(strData), 0);
        EXPECT_EQ(strData, "");
        EXPECT_GE(host.Now() - start, 10 * kMillisecond);
    }
    ExpectError(0, "");
}

TEST_F(TSocketCommsReadTest, ReadDataRepeatsOnALostConnectionUntilAReadSucceeds) {
    ConnectToPeer();
    host.network.SetLastError(10054);
    host.At(60 * kSecond, [this] { Feed("late"); });
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "late");
    EXPECT_GE(host.Now() - start, 60 * kSecond);
    ExpectError(1000006, "Failed reading from socket - WSA Error Code=10054 WSA Error Message=");
    // Idle: a hundred turns a second, each of them pumping.
    EXPECT_GE(host.nPumps(), 5900);
    EXPECT_LE(host.nPumps(), 6001);
}

TEST_F(TSocketCommsReadTest, ReadDataRepeatsOnAFailedQueryWithoutATextOfItsOwn) {
    ConnectToPeer();
    Feed("x");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022}, 3);
    EXPECT_EQ(comms->ReadData(strData), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_EQ(host.nPumps(), 4);
    ExpectError(0, "");
}

TEST_F(TSocketCommsReadTest, ReadDataHasNoEndOnALineThatStaysLost) {
    ConnectToPeer();
    host.network.SetLastError(10050);
    host.SetBudget(20000);
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadData(strData), 1);
    EXPECT_TRUE(host.BudgetExceeded());
    host.ForgiveOverrun();
    // It took the whole budget, and idled: fewer than 500 calls a second.
    EXPECT_GT(host.Now() - start, 40 * kSecond);
}

// ReadCharacter.

TEST_F(TSocketCommsReadTest, ReadCharacterTakesOneByte) {
    ConnectToPeer();
    Feed("\0b"s);
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "\0"s);
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "b");
    EXPECT_EQ(host.nPumps(), 2);
    ExpectError(0, "");
}

TEST_F(TSocketCommsReadTest, ReadCharacterWaitsForAByteHoweverLongItTakes) {
    ConnectToPeer();
    peer->PushAt(3600 * kSecond, "x");
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_GE(host.Now() - start, 3600 * kSecond);
    // The text of the turns that found nothing stays.
    ExpectError(1000010, "Failed reading 1 byte from socket");
    EXPECT_GE(host.nPumps(), 359000);
    EXPECT_LE(host.nPumps(), 360001);
}

TEST_F(TSocketCommsReadTest, AByteCutsThePauseOfReadCharacterShort) {
    ConnectToPeer();
    peer->PushAt(3 * kMillisecond, "x");
    const Microseconds start = host.Now();
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_LT(host.Now() - start, 4 * kMillisecond);
}

TEST_F(TSocketCommsReadTest, ReadCharacterPumpsBeforeItTouchesTheSocket) {
    ConnectToPeer();
    host.OnPump([this] { Feed("x"); });
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_EQ(host.nPumps(), 1);
    EXPECT_EQ(TakeCalls(), (Lines{"BytesWaiting 1", "Receive 1"}));
    ExpectError(0, "");
}

TEST_F(TSocketCommsReadTest, ReadCharacterWaitsOnAtAClosedOrResetPeer) {
    for (const bool bReset : {false, true}) {
        ConnectToPeer();
        bReset ? peer->Reset() : peer->Close();
        host.RunFor(kMillisecond);
        host.At(kSecond, [this] { Feed("x"); });
        const int64_t nBefore = host.nPumps();
        EXPECT_EQ(comms->ReadCharacter(strData), 0);
        EXPECT_EQ(strData, "x");
        ExpectError(1000010, "Failed reading 1 byte from socket");
        // Idle meanwhile: each turn takes its 10 ms.
        EXPECT_GE(host.nPumps() - nBefore, 99);
        EXPECT_LE(host.nPumps() - nBefore, 101);
        comms = std::make_unique<TSocketComms>();
    }
}

TEST_F(TSocketCommsReadTest, ReadCharacterRepeatsOnALostConnection) {
    ConnectToPeer();
    host.network.SetLastError(10053);
    host.At(kSecond, [this] { Feed("x"); });
    EXPECT_EQ(comms->ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "x");
    ExpectError(1000006, "Failed reading from socket - WSA Error Code=10053 WSA Error Message=");
    EXPECT_GE(host.nPumps(), 99);
    EXPECT_LE(host.nPumps(), 101);
}

// Catch-alls.

TEST_F(TSocketCommsReadTest, AChannelThatWasNeverConnectedFailsToReadAndWrite) {
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(1000000, "TSocketComms.WriteData() Failed - Object not set");
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSocketComms.ReadData() Failed - Object not set");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(1000000, "TSocketComms.ReadCharacter() Failed - Object not set");
}

TEST_F(TSocketCommsReadTest, ADisconnectedChannelFailsToReadAndWrite) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(1000000, "TSocketComms.WriteData() Failed - Object not set");
}

TEST_F(TSocketCommsReadTest, AnEventThatDisconnectsEndsTheRead) {
    bool bDisconnect = false;
    host.OnPump([&] {
        if (bDisconnect) {
            static_cast<void>(comms->Disconnect()); // the second time there is nothing to close
        }
    });
    ConnectToPeer();
    bDisconnect = true;
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSocketComms.ReadData() Failed - Object not set");
    bDisconnect = false;
    host.RunFor(kMillisecond);
    ASSERT_EQ(Connect(), 0);
    bDisconnect = true;
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(1000000, "TSocketComms.ReadCharacter() Failed - Object not set");
}

TEST_F(TSocketCommsReadTest, AFailureInAnEventEndsTheReadInItsCatchAll) {
    ConnectToPeer();
    host.OnPump([] { throw RuntimeFailure(FailureKind::TypeMismatch); });
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(1000000, "TSocketComms.ReadData() Failed - Type mismatch");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(1000000, "TSocketComms.ReadCharacter() Failed - Type mismatch");
}

} // namespace
} // namespace brennik
