#include "tests/world/SimHost.h"

#include <algorithm>

namespace brennik::world {
namespace {

class SimNetworkTest : public WorldTest {
  protected:
    SimNetwork& network = host.network;

    int32_t MakeSocket(bool bNonBlocking = true) {
        const int32_t lSocket = network.Socket();
        EXPECT_GT(lSocket, 0);
        if (bNonBlocking) {
            EXPECT_EQ(network.SetNonBlocking(lSocket), 0);
        }
        return lSocket;
    }
    int32_t Connect(int32_t lSocket, const std::string& strAddress = "10.0.0.1",
                    uint16_t iPort = 5000) {
        return network.Connect(lSocket, network.InetAddr(strAddress),
                               network.HostToNetworkPort(iPort));
    }
    int32_t Connected() {
        const int32_t lSocket = MakeSocket();
        EXPECT_EQ(Connect(lSocket), -1);
        EXPECT_EQ(network.SelectWritable(lSocket, 5), 1);
        return lSocket;
    }
    int32_t Waiting(int32_t lSocket) {
        int32_t lBytes = -1;
        EXPECT_EQ(network.BytesWaiting(lSocket, lBytes), 0);
        return lBytes;
    }
    std::string Receive(int32_t lSocket, int32_t lLength) {
        std::string strBytes(static_cast<size_t>(lLength), '\0');
        const int32_t lReceived = network.Receive(lSocket, strBytes.data(), lLength);
        strBytes.resize(static_cast<size_t>(std::max(lReceived, 0)));
        return strBytes;
    }
};

TEST_F(SimNetworkTest, StartsAndCleansUp) {
    EXPECT_EQ(network.Startup(0x0101), 0);
    EXPECT_EQ(network.nStarted(), 1);
    network.Cleanup();
    EXPECT_EQ(network.nStarted(), 0);
}

TEST_F(SimNetworkTest, ANonBlockingConnectIsUnderWayAndThenMade) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = MakeSocket();
    EXPECT_EQ(Connect(lSocket), -1);
    EXPECT_EQ(network.LastError(), 10035);
    EXPECT_FALSE(peer.IsConnected());
    const Microseconds before = host.Now();
    EXPECT_EQ(network.SelectWritable(lSocket, 5), 1);
    EXPECT_LE(host.Now() - before, 101); // the connect delay, not the time limit
    EXPECT_TRUE(peer.IsConnected());
    EXPECT_EQ(network.LastError(), 10035); // a success clears nothing
}

TEST_F(SimNetworkTest, ABlockingConnectWaitsUntilItIsMade) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    network.SetConnectDelay(70 * kMillisecond);
    EXPECT_EQ(Connect(MakeSocket(false)), 0);
    EXPECT_TRUE(peer.IsConnected());
    EXPECT_GE(host.Now(), 70 * kMillisecond);
}

TEST_F(SimNetworkTest, AConnectMaySucceedAtOnce) {
    network.AddPeer("10.0.0.1", 5000);
    network.SetConnectsAtOnce(true);
    EXPECT_EQ(Connect(MakeSocket()), 0);
    network.SetConnectsAtOnce(false);
    host.FailNext(Op::Connect, {.lResult = 0});
    EXPECT_EQ(Connect(MakeSocket()), 0);
    EXPECT_EQ(Connect(MakeSocket()), -1);
}

struct RefusalCase {
    const char* strWhat;
    uint16_t iPort;
    int32_t lError;
};

TEST_F(SimNetworkTest, RefusalsTellTheirNumber) {
    network.Refuse("10.0.0.1", 1);
    network.MakeUnreachable("10.0.0.1", 2);
    network.RefuseWith("10.0.0.1", 3, 10051);
    for (const RefusalCase& refusal :
         {RefusalCase{"refused", 1, 10061}, RefusalCase{"unreachable", 2, 10065},
          RefusalCase{"by number", 3, 10051}, RefusalCase{"never named", 4, 10061}}) {
        const int32_t lSocket = MakeSocket();
        EXPECT_EQ(Connect(lSocket, "10.0.0.1", refusal.iPort), -1) << refusal.strWhat;
        EXPECT_EQ(network.LastError(), 10035) << refusal.strWhat;
        EXPECT_EQ(network.SelectWritable(lSocket, 5), -1) << refusal.strWhat;
        EXPECT_EQ(network.LastError(), refusal.lError) << refusal.strWhat;
        network.Shutdown(lSocket);
        EXPECT_EQ(network.CloseSocket(lSocket), 0);
        EXPECT_EQ(network.LastError(), refusal.lError) << refusal.strWhat; // left alone
        EXPECT_EQ(Connect(MakeSocket(false), "10.0.0.1", refusal.iPort), -1) << refusal.strWhat;
        EXPECT_EQ(network.LastError(), refusal.lError) << refusal.strWhat;
    }
}

TEST_F(SimNetworkTest, ABlackHoleLetsTheTimeLimitPass) {
    network.BlackHole("10.0.0.1", 5000);
    const int32_t lSocket = MakeSocket();
    EXPECT_EQ(Connect(lSocket), -1);
    const Microseconds before = host.Now();
    EXPECT_EQ(network.SelectWritable(lSocket, 7), 0);
    EXPECT_EQ(host.Now() - before, 7 * kSecond + 1);
    EXPECT_EQ(network.LastError(), 10035);
    EXPECT_EQ(Connect(MakeSocket(false)), -1);
    EXPECT_EQ(network.LastError(), 10060);
}

TEST_F(SimNetworkTest, AListenerReplacesARefusalAndTheOtherWayRound) {
    network.BlackHole("10.0.0.1", 5000);
    network.AddPeer("10.0.0.1", 5000);
    static_cast<void>(Connected());
    network.Refuse("10.0.0.1", 5000);
    const int32_t lSocket = MakeSocket();
    EXPECT_EQ(Connect(lSocket), -1);
    EXPECT_EQ(network.SelectWritable(lSocket, 1), -1);
}

TEST_F(SimNetworkTest, ASelectOnASocketThatNeverConnectsIsNotMade) {
    const int32_t lSocket = MakeSocket();
    EXPECT_EQ(network.SelectWritable(lSocket, 1), -1);
    host.FailNext(Op::Connect, {.lLastError = 10051});
    EXPECT_EQ(Connect(lSocket), -1);
    network.SetLastError(0);
    EXPECT_EQ(network.SelectWritable(lSocket, 1), -1);
    EXPECT_EQ(network.LastError(), 10051);
}

TEST_F(SimNetworkTest, BytesTakeTheirLatencyEachWay) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    network.SetLatency(300, 700);
    const int32_t lSocket = Connected();
    const Microseconds sent = host.Now() + 1; // the call itself
    EXPECT_EQ(network.Send(lSocket, std::string("a\0b", 3)), 3);
    host.RunFor(299);
    EXPECT_EQ(peer.Received(), "");
    host.RunFor(1);
    ASSERT_EQ(peer.Arrivals().size(), 1U);
    EXPECT_EQ(peer.Arrivals()[0].moment, sent + 300);
    EXPECT_EQ(peer.Received(), std::string("a\0b", 3));
    peer.Push("hello");
    host.RunFor(698);
    EXPECT_EQ(Waiting(lSocket), 0); // this call is the 699th microsecond
    EXPECT_EQ(Waiting(lSocket), 5);
}

TEST_F(SimNetworkTest, ReceiveTakesWhatIsAskedForAndLeavesTheRest) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    peer.Push("hello");
    host.RunFor(kMillisecond);
    EXPECT_EQ(Receive(lSocket, 1), "h");
    EXPECT_EQ(Waiting(lSocket), 4);
    EXPECT_EQ(Receive(lSocket, 100), "ello");
    char byte = 0;
    EXPECT_EQ(network.Receive(lSocket, &byte, 1), -1);
    EXPECT_EQ(network.LastError(), 10035);
}

TEST_F(SimNetworkTest, ABlockingReceiveWaitsForBytes) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = MakeSocket(false);
    ASSERT_EQ(Connect(lSocket), 0);
    peer.PushAt(kSecond, "late");
    EXPECT_EQ(Receive(lSocket, 10), "late");
    EXPECT_GE(host.Now(), kSecond);
}

TEST_F(SimNetworkTest, WaitReadableEndsWhenBytesArriveAndNotBefore) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    const Microseconds before = host.Now();
    peer.PushAt(3000, "x");
    network.WaitReadable(lSocket, 10);
    EXPECT_EQ(host.Now() - before, 3050);
    network.WaitReadable(lSocket, 10); // still unread
    EXPECT_EQ(host.Now() - before, 3051);
}

TEST_F(SimNetworkTest, WaitReadableLastsItsFullTimeWithoutBytes) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    const auto waited = [&] {
        const Microseconds before = host.Now();
        network.WaitReadable(lSocket, 10);
        return host.Now() - before;
    };
    EXPECT_EQ(waited(), 10001);
    peer.Close();
    EXPECT_EQ(waited(), 10001);
    EXPECT_EQ(waited(), 10001);
    network.LastConnection().Feed("x");
    EXPECT_EQ(waited(), 1);
}

TEST_F(SimNetworkTest, AnOrderlyCloseShowsNothingWaitingAndNoError) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    network.SetLastError(0);
    peer.Push("last");
    peer.Close();
    host.RunFor(kMillisecond);
    EXPECT_EQ(Waiting(lSocket), 4);
    EXPECT_EQ(Receive(lSocket, 10), "last");
    EXPECT_EQ(Waiting(lSocket), 0);
    char byte = 0;
    EXPECT_EQ(network.Receive(lSocket, &byte, 1), 0);
    EXPECT_EQ(network.LastError(), 0);
}

TEST_F(SimNetworkTest, AResetRaisesNoErrorInTheQueryButInReceiveAndSend) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    network.SetLastError(0);
    peer.Reset();
    host.RunFor(kMillisecond);
    EXPECT_EQ(Waiting(lSocket), 0);
    EXPECT_EQ(network.LastError(), 0);
    EXPECT_EQ(network.Send(lSocket, "x"), -1);
    EXPECT_EQ(network.LastError(), 10054);
    EXPECT_EQ(network.Send(lSocket, "x"), -1);
    EXPECT_EQ(network.LastError(), 10053); // the reset is told once
    char byte = 0;
    EXPECT_EQ(network.Receive(lSocket, &byte, 1), 0);
}

TEST_F(SimNetworkTest, AResetIsMetByReceiveToo) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    peer.Reset();
    host.RunFor(kMillisecond);
    char byte = 0;
    EXPECT_EQ(network.Receive(lSocket, &byte, 1), -1);
    EXPECT_EQ(network.LastError(), 10054);
}

TEST_F(SimNetworkTest, ASendToAClosedPeerIsTakenOnceAndThenAborted) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    peer.Close();
    host.RunFor(kMillisecond);
    EXPECT_EQ(network.Send(lSocket, "x"), 1);
    host.RunFor(kMillisecond);
    EXPECT_EQ(network.Send(lSocket, "x"), -1);
    EXPECT_EQ(network.LastError(), 10053);
    EXPECT_EQ(peer.Received(), "");
}

TEST_F(SimNetworkTest, ThePeerLearnsThatTheClientHasGoneBehindItsLastBytes) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    std::string strSeen;
    peer.OnBytes = [&](std::string_view strBytes) { strSeen += strBytes; };
    peer.OnDisconnect = [&] { strSeen += "|gone"; };
    const int32_t lSocket = Connected();
    EXPECT_EQ(network.Send(lSocket, "bye"), 3);
    network.Shutdown(lSocket);
    EXPECT_EQ(network.CloseSocket(lSocket), 0);
    EXPECT_TRUE(network.LastConnection().ClientClosed());
    host.RunFor(kMillisecond);
    EXPECT_EQ(strSeen, "bye|gone");
    EXPECT_EQ(peer.nDisconnected(), 1);
    EXPECT_FALSE(peer.IsConnected());
    EXPECT_EQ(network.nOpenSockets(), 0);
}

TEST_F(SimNetworkTest, AfterItsOwnShutdownNothingCanBeSent) {
    network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    network.Shutdown(lSocket);
    EXPECT_EQ(network.Send(lSocket, "x"), -1);
    EXPECT_EQ(network.LastError(), 10053);
}

TEST_F(SimNetworkTest, AClosedHandleIsNoSocketAndIsNeverGivenAgain) {
    network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    EXPECT_EQ(network.CloseSocket(lSocket), 0);
    network.SetLastError(0);
    EXPECT_EQ(network.CloseSocket(lSocket), -1);
    EXPECT_EQ(network.LastError(), 0); // closing leaves it alone
    EXPECT_EQ(network.Send(lSocket, "x"), -1);
    EXPECT_EQ(network.LastError(), 10038);
    int32_t lBytes = 7;
    EXPECT_EQ(network.BytesWaiting(-1, lBytes), -1);
    EXPECT_EQ(lBytes, 7); // left as it was
    EXPECT_NE(MakeSocket(), lSocket);
}

TEST_F(SimNetworkTest, EachOperationFailsInItsOwnWay) {
    network.AddPeer("10.0.0.1", 5000);
    host.FailNext(Op::Startup);
    EXPECT_EQ(network.Startup(257), 1);
    EXPECT_EQ(network.nStarted(), 0);
    host.FailNext(Op::Socket, {.lLastError = 10050});
    EXPECT_EQ(network.Socket(), -1);
    EXPECT_EQ(network.LastError(), 10050);
    host.FailNext(Op::Socket, {.lResult = 0});
    EXPECT_EQ(network.Socket(), 0);

    const int32_t lSocket = Connected();
    host.FailNext(Op::BytesWaiting, {.lLastError = 10052});
    int32_t lBytes = 7;
    EXPECT_EQ(network.BytesWaiting(lSocket, lBytes), -1);
    EXPECT_EQ(network.LastError(), 10052);
    host.FailNext(Op::BytesWaiting, {.lResult = 9});
    EXPECT_EQ(Waiting(lSocket), 9);
    host.FailNext(Op::Send, {.lResult = 0});
    EXPECT_EQ(network.Send(lSocket, "abc"), 0);
    host.FailNext(Op::Send, {.lLastError = 10051});
    EXPECT_EQ(network.Send(lSocket, "abc"), -1);
    EXPECT_EQ(network.LastError(), 10051);
    host.FailNext(Op::SelectWritable, {.lLastError = 10060});
    EXPECT_EQ(network.SelectWritable(lSocket, 3), -1);
    host.FailNext(Op::SelectWritable, {.lResult = 0});
    const Microseconds before = host.Now();
    EXPECT_EQ(network.SelectWritable(lSocket, 3), 0);
    EXPECT_EQ(host.Now() - before, 3 * kSecond + 1);
    host.FailNext(Op::CloseSocket);
    EXPECT_EQ(network.CloseSocket(lSocket), -1);
    EXPECT_EQ(network.CloseSocket(lSocket), 0); // it had stayed open
}

TEST_F(SimNetworkTest, SendAndReceiveMayTakeLess) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 5000);
    const int32_t lSocket = Connected();
    host.FailNext(Op::Send, {.lResult = 2});
    EXPECT_EQ(network.Send(lSocket, "abc"), 2);
    peer.Push("hello");
    host.RunFor(kMillisecond);
    EXPECT_EQ(peer.Received(), "ab");
    host.FailNext(Op::Receive, {.lResult = 3});
    EXPECT_EQ(Receive(lSocket, 5), "hel");
    EXPECT_EQ(Waiting(lSocket), 2);
}

TEST_F(SimNetworkTest, ResolvesByTheHostTable) {
    network.AddHostName("pos.example", {"10.0.0.1", "10.0.0.2"});
    EXPECT_EQ(network.GetHostByName("POS.example"),
              (std::vector<std::string>{{"\x0A\0\0\x01", 4}, {"\x0A\0\0\x02", 4}}));
    EXPECT_EQ(network.GetHostByName("192.168.1.255"),
              (std::vector<std::string>{{"\xC0\xA8\x01\xFF", 4}}));
    EXPECT_TRUE(network.GetHostByName("other.example").empty());
    host.FailNext(Op::GetHostByName);
    EXPECT_TRUE(network.GetHostByName("pos.example").empty());
}

TEST_F(SimNetworkTest, ConvertsDottedTextsAlone) {
    EXPECT_NE(network.InetAddr("1.2.3.4"), 0xFFFFFFFFU);
    for (const char* strText : {"", "1.2.3", "1.2.3.256", "1.2.3.4.5", "a.b.c.d", "1.2.3.-4"}) {
        EXPECT_EQ(network.InetAddr(strText), 0xFFFFFFFFU) << strText;
    }
}

TEST_F(SimNetworkTest, KeepsTheOrderOfTheCallsAsText) {
    ScriptedPeer& peer = network.AddPeer("10.0.0.1", 60000);
    network.RecordCalls(true);
    static_cast<void>(network.Startup(257));
    const int32_t lSocket = MakeSocket();
    EXPECT_EQ(Connect(lSocket, "10.0.0.1", 60000), -1);
    EXPECT_EQ(network.SelectWritable(lSocket, 10), 1);
    peer.Push("hello");
    network.WaitReadable(lSocket, 10);
    EXPECT_EQ(Waiting(lSocket), 5);
    EXPECT_EQ(Receive(lSocket, 5), "hello");
    EXPECT_EQ(network.Send(lSocket, "\x06"), 1);
    network.Shutdown(lSocket);
    EXPECT_EQ(network.CloseSocket(lSocket), 0);
    network.Cleanup();
    EXPECT_EQ(network.calls,
              (std::vector<std::string>{"Startup 257", "Socket", "SetNonBlocking",
                                        "Connect 10.0.0.1:60000", "SelectWritable 10",
                                        "WaitReadable 10", "BytesWaiting 5", "Receive 5", "Send 1",
                                        "Shutdown", "CloseSocket", "Cleanup"}));
    EXPECT_EQ(network.sends, (std::vector<std::string>{"\x06"}));
}

} // namespace
} // namespace brennik::world
