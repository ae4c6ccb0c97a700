#include "link/TSocket.h"

#include "platform/Host.h"
#include "tests/link/TSocketFixture.h"
#include "tests/link/ThrowingSockets.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;

constexpr const char* kNotConnected = "Timed out waiting for connection to remote machine";

class TSocketTest : public TSocketFixture {};

// OpenSocket.

TEST_F(TSocketTest, ABlockingConnectSleepsFiftyMillisecondsAfterwards) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    const Microseconds start = host.Now();
    EXPECT_EQ(Open(), 0);
    EXPECT_GT(lSocket, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket", "Connect 10.0.0.1:5000"}));
    EXPECT_GE(host.Now() - start, 50 * kMillisecond);
    EXPECT_LT(host.Now() - start, 51 * kMillisecond);
    EXPECT_EQ(host.network.nStarted(), 1);
    EXPECT_EQ(host.network.nOpenSockets(), 1);
    ExpectError(0, "");
}

TEST_F(TSocketTest, AFailedBlockingConnectSleepsTooAndTellsTheErrorNumber) {
    host.network.Refuse(kPeerAddress, kPeerPort);
    const Microseconds start = host.Now();
    EXPECT_EQ(Open(), 1);
    EXPECT_GE(host.Now() - start, 50 * kMillisecond);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
    EXPECT_EQ(lSocket, -1);
}

TEST_F(TSocketTest, ANonBlockingConnectWaitsForTheConnection) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    host.network.SetConnectDelay(3 * kSecond);
    EXPECT_EQ(Open(false, 10), 0);
    EXPECT_GT(lSocket, 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket", "SetNonBlocking",
                                  "Connect 10.0.0.1:5000", "SelectWritable 10"}));
    EXPECT_EQ(host.network.nOpenSockets(), 1);
}

TEST_F(TSocketTest, ANonBlockingConnectThatIsRefusedTellsItsOwnNumberAndClosesTheSocket) {
    for (const int32_t lError : {10061, 10065, 10051}) {
        host.network.RefuseWith(kPeerAddress, kPeerPort, lError);
        EXPECT_EQ(Open(false), 1);
        ExpectError(1000004, kNotConnected + " - WSA Error Code="s + std::to_string(lError) +
                                 " WSA Error Message=");
        EXPECT_EQ(TakeCalls(),
                  (Calls{"Startup 257", "Socket", "SetNonBlocking", "Connect 10.0.0.1:5000",
                         "SelectWritable 10", "Shutdown", "CloseSocket", "Cleanup"}));
    }
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    EXPECT_EQ(host.network.nStarted(), 0);
    EXPECT_EQ(lSocket, -1);
}

TEST_F(TSocketTest, ANonBlockingConnectRunsOutOfTime) {
    host.network.BlackHole(kPeerAddress, kPeerPort);
    const Microseconds start = host.Now();
    EXPECT_EQ(Open(false, 7), 1);
    EXPECT_GE(host.Now() - start, 7 * kSecond);
    EXPECT_LT(host.Now() - start, 7 * kSecond + kMillisecond);
    // The last error is that of the connect, which is under way.
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10035 WSA Error Message="s);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, TheTimeLimitIsRoundedToWholeSecondsTiesToEven) {
    struct Row {
        double dTimeout;
        const char* strCall;
    };
    host.network.AddPeer(kPeerAddress, kPeerPort);
    for (const Row& row :
         {Row{0, "SelectWritable 0"}, Row{0.5, "SelectWritable 0"}, Row{0.6, "SelectWritable 1"},
          Row{1.5, "SelectWritable 2"}, Row{2.5, "SelectWritable 2"}, Row{3.49, "SelectWritable 3"},
          Row{-3, "SelectWritable 0"}}) {
        static_cast<void>(Open(false, row.dTimeout));
        EXPECT_EQ(TakeCalls().at(4), row.strCall) << row.dTimeout;
        if (lSocket > 0) {
            static_cast<void>(socket.CloseSocket(lSocket));
        }
        TakeCalls();
    }
}

TEST_F(TSocketTest, ATimeLimitThatDoesNotFitFailsInTheCatchAllWithoutALeak) {
    for (const double dTimeout : {3e9, -3e9, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(Open(false, dTimeout), 1);
        ExpectError(1000000, "TSocket.OpenSocket() Failed - Overflow");
        EXPECT_EQ(lSocket, -1);
    }
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, ANonBlockingConnectThatSucceedsAtOnceCountsAsNotMade) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    host.network.SetConnectsAtOnce(true);
    EXPECT_EQ(Open(false), 1);
    // No call has failed, so there is no number and no suffix.
    ExpectError(1000004, kNotConnected);
    EXPECT_EQ(lSocket, -1);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, AStaleErrorNumberShowsInTheSuffixAndANumberBelowOneDoesNot) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    host.network.SetConnectsAtOnce(true);
    host.network.SetLastError(1);
    EXPECT_EQ(Open(false), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=1 WSA Error Message="s);
    for (const int32_t lError : {0, -5}) {
        host.network.SetLastError(lError);
        EXPECT_EQ(Open(false), 1);
        ExpectError(1000004, kNotConnected);
    }
}

TEST_F(TSocketTest, AnErrorNumberBeyondSixteenBitsIsAnOverflow) {
    host.network.RefuseWith(kPeerAddress, kPeerPort, 32767);
    EXPECT_EQ(Open(), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=32767 WSA Error Message="s);
    host.network.RefuseWith(kPeerAddress, kPeerPort, 32768);
    EXPECT_EQ(Open(), 1);
    ExpectError(1000000, "TSocket.OpenSocket() Failed - Overflow");
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, PortZeroIsToldAsAConnectionNotMade) {
    for (const bool bBlocking : {true, false}) {
        EXPECT_EQ(Open(bBlocking, 10, 0), 1);
        ExpectError(1000004, kNotConnected);
        EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket", "CloseSocket"}));
    }
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, PortZeroShowsAStaleErrorNumberInItsSuffix) {
    host.network.SetLastError(10061);
    EXPECT_EQ(Open(true, 10, 0), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
}

TEST_F(TSocketTest, TheHighestPortConnects) {
    host.network.AddPeer(kPeerAddress, 65535);
    EXPECT_EQ(Open(true, 10, 65535), 0);
    EXPECT_EQ(TakeCalls().back(), "Connect 10.0.0.1:65535");
}

TEST_F(TSocketTest, AnAddressThatIsNoneIsTriedAllTheSame) {
    EXPECT_EQ(socket.OpenSocket("", "999.1.1.1", kPeerPort, 10, lSocket, true, true), 1);
    EXPECT_EQ(TakeCalls().back(), "CloseSocket");
    EXPECT_EQ(socket.lErrorCode(), 1000004);
}

TEST_F(TSocketTest, ASocketThatCanNotBeMadeStops) {
    host.FailNext(Op::Socket, {.lLastError = 10024});
    EXPECT_EQ(Open(), 1);
    ExpectError(1000002, "Failed to create socket");
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "Socket"}));
    EXPECT_EQ(lSocket, -1);
    host.FailNext(Op::Socket, {.lLastError = 10024, .lResult = 0});
    EXPECT_EQ(Open(), 1);
    ExpectError(1000002, "Failed to create socket");
    EXPECT_EQ(lSocket, -1);
}

TEST_F(TSocketTest, AFailedStartGoesOnAndLeavesItsText) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    host.FailNext(Op::Startup);
    EXPECT_EQ(Open(), 0);
    ExpectError(1000001, "Windows sockets failed to start (WSAStartUp() Failed)");
}

TEST_F(TSocketTest, AFailedStartIsReplacedByWhatFailsNext) {
    host.FailNext(Op::Startup);
    host.FailNext(Op::Socket);
    EXPECT_EQ(Open(), 1);
    ExpectError(1000002, "Failed to create socket");
}

TEST_F(TSocketTest, WinsockIsStartedOnlyWhenAskedFor) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    EXPECT_EQ(socket.OpenSocket("", kPeerAddress, kPeerPort, 10, lSocket, true, false), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Socket", "Connect 10.0.0.1:5000"}));
}

TEST_F(TSocketTest, TheHostNamePlaysNoPart) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    EXPECT_EQ(socket.OpenSocket("no.such.host", kPeerAddress, kPeerPort, 10, lSocket, true, true),
              0);
}

TEST_F(TSocketTest, ASocketThatStaysBlockingIsConnectedAndCountsAsNotMade) {
    host.network.AddPeer(kPeerAddress, kPeerPort);
    host.FailNext(Op::SetNonBlocking, {.lLastError = 10022});
    EXPECT_EQ(Open(false), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10022 WSA Error Message="s);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketTest, AFailedCloseDoesNotReplaceTheTextOfAFailedConnect) {
    host.network.Refuse(kPeerAddress, kPeerPort);
    host.FailNext(Op::CloseSocket);
    EXPECT_EQ(Open(false), 1);
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
}

TEST_F(TSocketTest, ASuccessLeavesTheLastErrorAlone) {
    EXPECT_EQ(Open(), 1);
    host.network.AddPeer(kPeerAddress, kPeerPort);
    EXPECT_EQ(Open(), 0);
    EXPECT_EQ(socket.lErrorCode(), 1000004);
}

// CloseSocket.

TEST_F(TSocketTest, CloseShutsDownClosesAndCleansUp) {
    Connect();
    EXPECT_EQ(socket.CloseSocket(lSocket), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Shutdown", "CloseSocket", "Cleanup"}));
    EXPECT_EQ(host.network.nStarted(), 0);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    ExpectError(0, "");
}

TEST_F(TSocketTest, AFailedCloseCleansUpToo) {
    Connect();
    host.FailNext(Op::CloseSocket);
    EXPECT_EQ(socket.CloseSocket(lSocket), 1);
    ExpectError(1000005, "Failed closing socket");
    EXPECT_EQ(TakeCalls(), (Calls{"Shutdown", "CloseSocket", "Cleanup"}));
}

// Send.

TEST_F(TSocketTest, SendIsOneCallWithAllBytes) {
    Connect();
    EXPECT_EQ(socket.Send("ab\0c"s, lSocket), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Send 4"});
    host.RunFor(kMillisecond);
    EXPECT_EQ(peer->Received(), "ab\0c"s);
}

TEST_F(TSocketTest, APartialSendIsASuccess) {
    Connect();
    host.FailNext(Op::Send, {.lResult = 1});
    EXPECT_EQ(socket.Send("abc", lSocket), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Send 3"});
}

TEST_F(TSocketTest, AFailedSendHasTheResultOfTheCallAsItsCode) {
    Connect();
    host.FailNext(Op::Send, {.lLastError = 10054});
    EXPECT_EQ(socket.Send("abc", lSocket), 1);
    ExpectError(-1, "Failed sending data to socket");
    host.FailNext(Op::Send, {.lResult = 0});
    EXPECT_EQ(socket.Send("abc", lSocket), 1);
    ExpectError(0, "Failed sending data to socket");
}

TEST_F(TSocketTest, SendingNothingIsAFailure) {
    Connect();
    EXPECT_EQ(socket.Send("", lSocket), 1);
    ExpectError(0, "Failed sending data to socket");
}

// Addresses.

TEST_F(TSocketTest, IsIPAddressWantsFourNumbersWithDotsBetween) {
    for (const char* strAddress :
         {"1.2.3.4", "999.1.1.1", "0.0.0.0", "255.255.255.255", "1.2.3.4.5", "1.2.3.4.", "1.2.3..5",
          " 1. 2 .3 .4 ", "-1.+2.3.4", "00001.2.3.4", "123456789012345678901234567890.1.1.1"}) {
        EXPECT_TRUE(socket.IsIPAddress(strAddress)) << strAddress;
    }
    for (const char* strAddress : {"",
                                   ".",
                                   "...",
                                   "1",
                                   "1.2",
                                   "1.2.3",
                                   "1.2.3.",
                                   ".1.2.3",
                                   "1..2.3",
                                   "1.2..3",
                                   "a.b.c.d",
                                   "1.2.3.x",
                                   "x.2.3.4",
                                   "1.x.3.4",
                                   "1.2.x.4",
                                   "1.2.3.4.5.6",
                                   "pos.example.com.au",
                                   "1.2.3.4x",
                                   "1e1.2.3.4",
                                   "0x1.2.3.4",
                                   "1,5.2.3.4",
                                   "--1.2.3.4",
                                   "+-1.2.3.4",
                                   "1 1.2.3.4",
                                   " .2.3.4",
                                   "\t1.2.3.4",
                                   "1.2.3.inf",
                                   "nan.2.3.4",
                                   "1.2.3.-",
                                   "1.2.3.4e5",
                                   "1.2.3.4\n"}) {
        EXPECT_FALSE(socket.IsIPAddress(strAddress)) << strAddress;
    }
    EXPECT_FALSE(socket.IsIPAddress("1.2.3.4\0"s));
}

TEST_F(TSocketTest, GetIPAddressGivesTheFirstAddress) {
    host.network.AddHostName("pos.example", {"10.255.0.128", "10.0.0.2"});
    std::string strAddress = "old";
    EXPECT_EQ(socket.GetIPAddress("pos.example", strAddress), 0);
    EXPECT_EQ(strAddress, "10.255.0.128");
    EXPECT_EQ(TakeCalls(), (Calls{"Startup 257", "GetHostByName pos.example"}));
    // No clean-up answers this start.
    EXPECT_EQ(host.network.nStarted(), 1);
}

TEST_F(TSocketTest, GetIPAddressOfAnUnknownNameTellsTheName) {
    std::string strAddress = "old";
    EXPECT_EQ(socket.GetIPAddress("no.such.host", strAddress), 1);
    ExpectError(1000009, "Unable to resolve host name - no.such.host");
    EXPECT_EQ(strAddress, "");
}

TEST_F(TSocketTest, GetIPAddressStopsAtAFailedStart) {
    std::string strAddress = "old";
    host.FailNext(Op::Startup);
    EXPECT_EQ(socket.GetIPAddress("pos.example", strAddress), 1);
    ExpectError(1000001, "Windows sockets failed to start (WSAStartUp() Failed)");
    EXPECT_EQ(TakeCalls(), Calls{"Startup 257"});
    EXPECT_EQ(strAddress, "");
}

// Catch-alls.

TEST_F(TSocketTest, EveryOperationEndsARunTimeFailureInItsOwnText) {
    ThrowingSockets throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const ScopedHost scoped(bad);
    const std::string strWhy = "() Failed - Device I/O error";
    EXPECT_EQ(Open(), 1);
    ExpectError(1000000, "TSocket.OpenSocket" + strWhy);
    EXPECT_EQ(lSocket, -1);
    EXPECT_EQ(socket.CloseSocket(5), 1);
    ExpectError(1000000, "TSocket.CloseSocket" + strWhy);
    EXPECT_EQ(socket.ReadNumBytesTimed(strData, 1, 1, 5), 1);
    ExpectError(1000000, "TSocket.ReadNumBytesTimed" + strWhy);
    EXPECT_EQ(socket.Read(strData, lBytesRead, 5), 1);
    ExpectError(1000000, "TSocket.Read" + strWhy);
    EXPECT_EQ(socket.ReadnBytes(strData, 1, lBytesRead, 5), 1);
    ExpectError(1000000, "TSocket.ReadnBytes" + strWhy);
    EXPECT_EQ(socket.Send("x", 5), 1);
    ExpectError(1000000, "TSocket.Send" + strWhy);
    EXPECT_EQ(socket.GetIPAddress("x", strData), 1);
    ExpectError(1000000, "TSocket.GetIPAddress" + strWhy);
}

} // namespace
} // namespace brennik
