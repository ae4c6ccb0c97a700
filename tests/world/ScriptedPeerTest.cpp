#include "tests/world/ScriptedPeer.h"

#include "tests/world/SimHost.h"

namespace brennik::world {
namespace {

class ScriptedPeerTest : public WorldTest {
  protected:
    ScriptedPeer& peer = host.network.AddPeer("10.0.0.1", 5000);

    int32_t Connected() {
        const int32_t lSocket = host.network.Socket();
        EXPECT_EQ(host.network.Connect(lSocket, host.network.InetAddr("10.0.0.1"),
                                       host.network.HostToNetworkPort(5000)),
                  0);
        return lSocket;
    }
    std::string Read(int32_t lSocket) {
        host.RunFor(kMillisecond);
        std::string strBytes(100, '\0');
        int32_t lBytes = 0;
        EXPECT_EQ(host.network.BytesWaiting(lSocket, lBytes), 0);
        if (lBytes == 0) {
            return {};
        }
        strBytes.resize(static_cast<size_t>(host.network.Receive(lSocket, strBytes.data(), 100)));
        return strBytes;
    }
};

TEST_F(ScriptedPeerTest, KeepsWhatIsPushedUntilAConnectionIsMade) {
    peer.Push("one ");
    peer.Push("two");
    EXPECT_EQ(Read(Connected()), "one two");
    EXPECT_EQ(peer.nConnections(), 1);
}

TEST_F(ScriptedPeerTest, PushesAtAMoment) {
    const int32_t lSocket = Connected();
    peer.PushAt(5000, "late");
    EXPECT_EQ(Read(lSocket), "");
    host.RunFor(5000);
    EXPECT_EQ(Read(lSocket), "late");
}

TEST_F(ScriptedPeerTest, AnswersFromItsCallback) {
    peer.OnBytes = [&](std::string_view strBytes) { peer.Push(strBytes == "?" ? "!" : "-"); };
    const int32_t lSocket = Connected();
    EXPECT_EQ(host.network.Send(lSocket, "?"), 1);
    EXPECT_EQ(Read(lSocket), "!");
    EXPECT_EQ(peer.Take(), "?");
    EXPECT_EQ(peer.Received(), "");
    EXPECT_TRUE(peer.Arrivals().empty());
}

TEST_F(ScriptedPeerTest, SpeaksOnEveryConnection) {
    peer.OnConnect = [&] { peer.Push("hi"); };
    for (int32_t nConnection = 1; nConnection <= 3; ++nConnection) {
        const int32_t lSocket = Connected();
        EXPECT_EQ(Read(lSocket), "hi");
        EXPECT_EQ(host.network.CloseSocket(lSocket), 0);
        host.RunFor(kMillisecond);
        EXPECT_EQ(peer.nConnections(), nConnection);
        EXPECT_EQ(peer.nDisconnected(), nConnection);
    }
    EXPECT_EQ(peer.LastDisconnect(), host.Now() - kMillisecond + 50);
}

TEST_F(ScriptedPeerTest, ACloseBeforeTheConnectionClosesItBehindWhatWasKept) {
    peer.Push("bye");
    peer.Close();
    const int32_t lSocket = Connected();
    EXPECT_EQ(Read(lSocket), "bye");
    char byte = 0;
    EXPECT_EQ(host.network.Receive(lSocket, &byte, 1), 0);
    EXPECT_FALSE(peer.IsConnected());
}

TEST_F(ScriptedPeerTest, WhatIsPushedAfterACloseWaitsForTheNextConnection) {
    const int32_t lFirst = Connected();
    peer.Close();
    peer.Push("next");
    EXPECT_EQ(Read(lFirst), "");
    EXPECT_EQ(Read(Connected()), "next");
}

} // namespace
} // namespace brennik::world
