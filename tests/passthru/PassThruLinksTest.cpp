// The two sides of a run as they are set up: a device on TCP, the time limits of both links, and
// what the server says beside its ENQ and its verdict.
#include "tests/passthru/PassThruWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// ---- A device on TCP, in every mode but that of the serial line.

class DeviceOnTcp : public PassThruTest {
  protected:
    DeviceOnTcp() {
        config.lOperatingMode(3);
        config.strClientIPAddress1("10.0.0.2");
        config.lClientPort1(6000);
        config.lClientConnectTimeout(5);
    }
};

TEST_F(DeviceOnTcp, IsRefusedByItsTypeInAnyMode) {
    world::ScriptedPeer& peer = host.network.AddPeer("10.0.0.2", 6000);
    for (const int32_t lMode : {3, 4, -1}) {
        config.lOperatingMode(lMode);
        host.files.Remove("/log/run.log");
        EXPECT_EQ(Run(), 1);
        ExpectError(1000000, "TBrennikProtocol.DoBrennikPassThruProtocol() Failed - Type mismatch");
        EXPECT_THAT(
            LogWith("10.0.0.2"),
            ElementsAre("Attempting connection to 10.0.0.2, Port 6000, Connection attempt 1",
                        StartsWith("Connected to 10.0.0.2, Port 6000, Socket ")))
            << lMode;
        EXPECT_THAT(LogWith("ERROR"), IsEmpty());
        EXPECT_THAT(LogWith("State="), IsEmpty());
        ExpectNothingOpen();
    }
    EXPECT_EQ(peer.Received(), "");
    EXPECT_EQ(nServerConnections, 0);
    EXPECT_EQ(device.Bytes(), "");
}

TEST_F(DeviceOnTcp, ACancelAheadOfTheHandOverEndsTheRunInOrder) {
    world::ScriptedPeer& peer = host.network.AddPeer("10.0.0.2", 6000);
    peer.OnConnect = [this] { engine->bCancelComms(true); };
    EXPECT_EQ(Run(), 1);
    ExpectError(1000031, "Communications aborted by user");
    EXPECT_EQ(peer.nConnections(), 1);
    EXPECT_EQ(Log().back(), "Connection Closed, Socket 4 Destroyed");
    EXPECT_THAT(LogWith("ERROR"), IsEmpty());
    ExpectNothingOpen();
}

TEST_F(DeviceOnTcp, OneThatCantBeOpenedIsTriedInThirteenCycles) {
    config.lConnectAttempts(0);
    EXPECT_EQ(Run(), 1);
    ExpectError(1000010, "Connection Attempts configuration value is invalid");
    Lines waits;
    for (int32_t lTries = 1; lTries <= 13; ++lTries)
        waits.push_back("[C] State=PASSTHRU_ST_START, lTries=" + std::to_string(lTries) +
                        ", Waiting for terminal to reboot...");
    EXPECT_EQ(LogWith("State="), waits);
    EXPECT_EQ(LogWith("Delaying for 20 secs").size(), 13u);
    EXPECT_EQ(LogWith("ERROR").size(), 1u) << "of the run; the hand-over is never reached";
    EXPECT_EQ(nServerConnections, 0);
    ExpectNothingOpen();
}

// ---- An acknowledgement is waited for as long as a character, and not as long as a packet.

class PassThruLinks : public PassThruTest {
  protected:
    PassThruLinks() {
        config.lCharTimeout(9);
        config.lReadPacketTimeout(3);
    }
    /// When it was heard for the first time.
    Microseconds MomentOf(const Device& end, const std::string& strWhat) const {
        const auto heard = std::ranges::find(end.All(), strWhat, &Device::Heard::strWhat);
        return heard == end.All().end() ? 0 : heard->moment;
    }
    /// The server says that, which isn't asked for, as soon as its ENQ has been read.
    void SayBehindTheEnq(const std::string& strBytes) {
        host.OnPump([this, strBytes] {
            if (bSaid_ || nServerConnections == 0)
                return;
            world::SimConnection& connection = host.network.LastConnection();
            bSaid_ = bEnqWaits_ && connection.nWaiting() == 0;
            bEnqWaits_ = connection.nWaiting() > 0;
            if (bSaid_)
                connection.Feed(strBytes);
        });
    }

  private:
    bool bEnqWaits_ = false;
    bool bSaid_ = false;
};

TEST_F(PassThruLinks, TheDeviceHasTheTimeOfACharacterForItsAck) {
    Enquire(kAccepted);
    Microseconds second = 0;
    device.onHeard = [&, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "[" + kAccepted + "]")
            second = host.Now();
    };
    EXPECT_EQ(Run(), 1);
    ASSERT_EQ(device.Count("[" + kAccepted + "]"), 2);
    const Microseconds wait = second - MomentOf(device, "[" + kAccepted + "]");
    EXPECT_GE(wait, 9 * kSecond);
    EXPECT_LT(wait, 10 * kSecond);
}

TEST_F(PassThruLinks, TheServerHasTheTimeOfACharacterForItsAck) {
    device.On("ENQ", {CrcFrame(kEnquiry)});
    server.onHeard = [this, note = server.onHeard](const std::string& strText) {
        note(strText);
        // Noise, since a silent connection is waited for without end.
        for (int32_t n = 1; n <= 200; ++n)
            server.Say(Saying("x", n * 100 * kMillisecond));
    };
    EXPECT_EQ(Run(), 1);
    ExpectError(1000011, "Timed out reading ISO packet");
    // The cycles that follow wait for nothing.
    const Microseconds wait = host.Now() - MomentOf(server, "[" + kEditedEnquiry + "]");
    EXPECT_GE(wait, 9 * kSecond);
    EXPECT_LT(wait, 10 * kSecond);
}

// ---- What the server says behind its ENQ is thrown away; its verdict may be anything.

TEST_F(PassThruLinks, WhatTheServerSaysBehindItsEnqIsNotItsVerdict) {
    Download("XDL", "P");
    SayBehindTheEnq("\x15");
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(LogWith("Flushed"), ElementsAre("Flushed Buffer: strData=<NAK>"));
    EXPECT_EQ(device.Count("NAK"), 0);
}

TEST_F(PassThruLinks, WhatTheServerSaysBehindItsEnqDoesNotAnswerAnEnquiry) {
    Enquire(kAccepted);
    device.Always("[]", "\x06");
    SayBehindTheEnq("\x15");
    host.SetBudget(50000000);
    EXPECT_EQ(Run(), 1);
    EXPECT_THAT(LogWith("Flushed"), ElementsAre("Flushed Buffer: strData=<NAK>"));
    EXPECT_EQ(server.Count("[" + kEditedEnquiry + "]"), 1);
    EXPECT_EQ(device.Count("[" + kAccepted + "]"), 1);
}

TEST_F(PassThruLinks, AVerdictThatIsNoneReachesTheDeviceToo) {
    Ask(DeviceRequest("XDL", "P"));
    server.On("[" + EditedRequest("XDL", "P") + "]", {Saying("Z" + CrcFrame("S"))});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(device.Bytes(), "\x05Z" + CrcFrame("S"));
    EXPECT_EQ(wires.back(), "S:ACK") << "and the relay goes on";
}

} // namespace
} // namespace brennik::passthru
