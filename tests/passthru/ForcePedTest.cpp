// A device taken through a whole enquiry in one call: told to call, and its enquiry passed to a
// server and back.

#include "link/TSocketComms.h"
#include "tests/passthru/DeviceWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;

constexpr const char* kCommand = "[3.9,2,U,Q,0,0,,,T,]";
constexpr const char* kAgreed = "3.9,1,T,Q,0,0,,,A";
constexpr const char* kNo = "3.9,1,T,Q,0,0,,,N";

class ForcePed : public DeviceTest {
  protected:
    ForcePed() : server(host.network.AddPeer("10.0.0.1", 5000)) {
        device.ExpectLrc(true);
        Connect();
        serverConnection.strIPAddress1("10.0.0.1");
        serverConnection.lIPPortNo1(5000);
        serverConnection.lConnectionAttempts(1);
        serverConnection.lConnectTimeout(5);
        EXPECT_EQ(serverLink.InitialiseObject(serverChannel, log, 2, 2, 3, 2, 2, 1, 3, true, false),
                  0);
        server.OnConnect = [this] { server.PushAt(kMillisecond, kEnq); };
        server.OnBytes = [this](std::string_view strBytes) {
            if (strBytes.front() == kStx[0])
                server.Push(strSaid);
        };
    }

    /// The device agrees, then sends that on its own.
    void AgreeThenSend(const std::string& strFirstPacket) {
        device.On(kCommand, {kAck + LrcFrame(kAgreed)});
        device.On("ACK", {CrcFrame(strFirstPacket)});
    }
    /// The device is sent the reply behind an ACK of its own, as file traffic, with a CRC.
    void TakeTheReplyWithACrc() {
        device.onHeard = [this](const std::string&) {
            if (device.Count("ACK") == 2)
                device.ExpectLrc(false);
        };
    }
    /// The server answers the enquiry with that.
    void ServerSays(const std::string& strBytes) { strSaid = strBytes; }

    int32_t Force() {
        const int32_t lStatus = access.ForcePedIntoTmsMode(config, link, serverLink, serverChannel,
                                                           serverConnection, log, strPacket);
        host.RunFor(10 * kMillisecond);
        return lStatus;
    }
    void ExpectServerClosed(int32_t nConnections = 1) const {
        EXPECT_EQ(server.nConnections(), nConnections);
        EXPECT_EQ(server.nDisconnected(), nConnections);
        EXPECT_EQ(host.network.nOpenSockets(), 0);
    }

    world::ScriptedPeer& server;
    TConnectionInfo serverConnection;
    TSocketComms serverChannel;
    TIsoProtocol serverLink;
    std::string strSaid = kAck + CrcFrame("reply");
};

TEST_F(ForcePed, PassesTheEnquiryOnAndTheReplyBack) {
    AgreeThenSend("enquiry");
    TakeTheReplyWithACrc();
    device.Always("[reply]", kAck);
    host.files.Remove(kLogFile);
    EXPECT_EQ(Force(), 0);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK", "ACK", "[reply]"));
    EXPECT_EQ(server.Received(), CrcFrame("enquiry") + kAck);
    EXPECT_EQ(strPacket, "reply");
    EXPECT_TRUE(link.bAckPackets()) << "meant to stay so";
    EXPECT_TRUE(serverLink.bAckPackets());
    EXPECT_EQ(link.lChecksumType(), 2);
    EXPECT_THAT(Log(), ElementsAre("Attempting connection to 10.0.0.1, Port 5000, Connection "
                                   "attempt 1",
                                   "Connected to 10.0.0.1, Port 5000, Socket 4",
                                   "Connection Closed, Socket 4 Destroyed"));
    ExpectServerClosed();
    ExpectError(0, "");
    EXPECT_FALSE(access.bTmsModeRequested()) << "which belongs to the step of the handshake alone";
    EXPECT_FALSE(access.bDeviceAnswered());
}

TEST_F(ForcePed, FlushesWhatStandsBehindTheServersEnq) {
    AgreeThenSend("enquiry");
    device.Always("[]", kAck);
    TakeTheReplyWithACrc();
    server.OnConnect = [this] {
        server.PushAt(kMillisecond, kEnq);
        server.PushAt(5 * kMillisecond, "behind");
    };
    EXPECT_EQ(Force(), 0);
    EXPECT_EQ(strPacket, "reply");
}

TEST_F(ForcePed, FailsOnADeviceThatDoesntTakeTheCommand) {
    EXPECT_EQ(Force(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_EQ(server.nConnections(), 0);
    EXPECT_FALSE(serverLink.bAckPackets());
    EXPECT_EQ(strPacket, "old packet");
}

TEST_F(ForcePed, FailsOnADeviceThatDoesntReply) {
    device.On(kCommand, {kAck});
    EXPECT_EQ(Force(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_EQ(server.nConnections(), 0);
}

TEST_F(ForcePed, FailsOnADeviceThatRefuses) {
    device.On(kCommand, {kAck + LrcFrame(kNo)});
    EXPECT_EQ(Force(), 1);
    ExpectError(1000032, kRefused);
    EXPECT_EQ(server.nConnections(), 0);
    EXPECT_FALSE(serverLink.bAckPackets());
    EXPECT_EQ(strPacket, kNo);
}

TEST_F(ForcePed, FailsOnADeviceThatAgreesAndStaysSilent) {
    device.On(kCommand, {kAck + LrcFrame(kAgreed)});
    EXPECT_EQ(Force(), 1);
    ExpectError(1000011, kTimedOut);
    ExpectLink(2, false); // given back by then
    EXPECT_EQ(strPacket, "");
    EXPECT_EQ(server.nConnections(), 0);
}

TEST_F(ForcePed, FailsWithoutAServerAndLeavesBothLinksAcknowledging) {
    AgreeThenSend("enquiry");
    host.FailNext(Op::Connect, {.lLastError = 10061});
    EXPECT_EQ(Force(), 1);
    EXPECT_EQ(engine.lErrorCode(), 1000004);
    EXPECT_EQ(engine.strErrorMessage(), serverChannel.strErrorMessage());
    EXPECT_EQ(engine.strErrorMessage().substr(0, 50),
              "Timed out waiting for connection to remote machine");
    ExpectLink(2, true);
    EXPECT_TRUE(serverLink.bAckPackets());
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK"));
    EXPECT_EQ(strPacket, "enquiry");
}

TEST_F(ForcePed, FailsOnAServerWithoutAnEnq) {
    AgreeThenSend("enquiry");
    server.OnConnect = nullptr;
    EXPECT_EQ(Force(), 1);
    ExpectError(1000012, "Failed reading ENQ character");
    EXPECT_EQ(server.Received(), "");
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK")) << "the device hears nothing of it";
    ExpectServerClosed();
}

TEST_F(ForcePed, FailsOnAServerThatDoesntTakeTheEnquiry) {
    AgreeThenSend("enquiry");
    ServerSays("");
    // A look for one byte waits for it, whatever the time: meant so over TCP.
    host.At(100 * kSecond, [&] { server.Push("x"); });
    EXPECT_EQ(Force(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_EQ(server.Received(), CrcFrame("enquiry"));
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK"));
    ExpectServerClosed();
}

TEST_F(ForcePed, FailsOnAServerThatDoesntReply) {
    AgreeThenSend("enquiry");
    ServerSays(kAck);
    EXPECT_EQ(Force(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK"));
    EXPECT_EQ(Log().back(), "Connection Closed, Socket 4 Destroyed");
    ExpectServerClosed();
}

TEST_F(ForcePed, TakesTheTextOfTheLinkThatFailed) {
    AgreeThenSend("enquiry");
    host.FailNext(Op::Send, {.lLastError = 10054});
    EXPECT_EQ(Force(), 1);
    EXPECT_EQ(engine.strErrorMessage(), serverLink.strErrorMessage());
    EXPECT_EQ(engine.strErrorMessage().substr(0, 29), "Failed sending data to socket");
    ExpectServerClosed();
}

TEST_F(ForcePed, FailsWhenTheAckDoesntReachTheLineOfTheDevice) {
    AgreeThenSend("enquiry");
    host.FailNext(Op::ComWrite, {.lLastError = 5}, 1, 2); // behind the command and its ACK
    EXPECT_EQ(Force(), 1);
    ExpectError(5, "Failed writing data to the opened port");
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK"));
    EXPECT_EQ(strPacket, "reply");
    ExpectServerClosed();
}

TEST_F(ForcePed, FailsOnADeviceThatDoesntTakeTheReply) {
    AgreeThenSend("enquiry");
    TakeTheReplyWithACrc();
    EXPECT_EQ(Force(), 1);
    ExpectError(1000011, kTimedOut);
    EXPECT_THAT(device.Texts(), ElementsAre(kCommand, "ACK", "ACK", "[reply]"));
    ExpectServerClosed();
}

TEST_F(ForcePed, SucceedsWhenTheServersConnectionCantBeClosed) {
    AgreeThenSend("enquiry");
    device.Always("[]", kAck);
    TakeTheReplyWithACrc();
    host.FailNext(Op::CloseSocket, {.lLastError = 5});
    EXPECT_EQ(Force(), 0);
    EXPECT_EQ(Log().back().substr(0, 27), "ERROR  : Error Code=1000005");
}

TEST_F(ForcePed, TellsAnUnforeseenFailureUnderItsOwnName) {
    config.strPlatformName(std::string(2000, 'V')); // the message needs that much memory
    int32_t lStatus = 0;
    {
        world::AllocationLimit limit(1000);
        lStatus = access.ForcePedIntoTmsMode(config, link, serverLink, serverChannel,
                                             serverConnection, log, strPacket);
    }
    EXPECT_EQ(lStatus, 1);
    ExpectError(1000000, "TBrennikProtocol.ForcePedIntoTmsMode() Failed - Out of memory");
}

} // namespace
} // namespace brennik::passthru
