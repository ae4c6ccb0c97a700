#include "link/TSocketComms.h"

#include "platform/Host.h"
#include "tests/link/TSocketCommsFixture.h"
#include "tests/link/ThrowingSockets.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;

constexpr const char* kNotConnected = "Timed out waiting for connection to remote machine";

class TSocketCommsTest : public TSocketCommsFixture {};

// Connect.

TEST_F(TSocketCommsTest, ConnectTellsItsCourseToTheLog) {
    host.network.AddPeer("10.0.0.1", 5001);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(comms->strConnectionData(), "10.0.0.1");
    EXPECT_EQ(Logged(),
              (Lines{"INFO   : Attempting connection to 10.0.0.1, Port 5001, Connection attempt 1",
                     "INFO   : Connected to 10.0.0.1, Port 5001, Socket 4"}));
    EXPECT_EQ(TakeCalls(), (Lines{"Startup 257", "Socket", "SetNonBlocking",
                                  "Connect 10.0.0.1:5001", "SelectWritable 10"}));
    ExpectError(0, "");
}

TEST_F(TSocketCommsTest, ABlockingConnectIsMadeWhenAskedFor) {
    host.network.AddPeer("10.0.0.1", 5001);
    info.bBlockedSocket(true);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(TakeCalls(), (Lines{"Startup 257", "Socket", "Connect 10.0.0.1:5001"}));
}

TEST_F(TSocketCommsTest, TheConnectTimeoutLimitsTheWait) {
    host.network.BlackHole("10.0.0.1", 5001);
    info.lConnectTimeout(3);
    const Microseconds start = host.Now();
    EXPECT_EQ(Connect(), 1);
    EXPECT_GE(host.Now() - start, 3 * kSecond);
    EXPECT_LT(host.Now() - start, 3 * kSecond + kMillisecond);
}

TEST_F(TSocketCommsTest, ASecondConnectDoesNothingAndWritesNothingToTheLog) {
    ConnectToPeer();
    info.lConnectionAttempts(0);
    EXPECT_EQ(Connect(), 0);
    EXPECT_TRUE(Logged().empty());
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSocketCommsTest, FewerThanOneAttemptIsInvalid) {
    for (const int32_t lAttempts : {0, -1}) {
        info.lConnectionAttempts(lAttempts);
        EXPECT_EQ(Connect(), 1);
        ExpectError(1000010, "Connection Attempts configuration value is invalid");
    }
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(Logged().empty());
    // Not even the empty addresses were filled in.
    EXPECT_EQ(info.strIPAddress2(), "");
}

TEST_F(TSocketCommsTest, EmptyAddressesBecomeTheFirstOneForGood) {
    host.network.AddPeer("10.0.0.1", 5001);
    info.lIPPortNo2(5002);
    info.lIPPortNo3(5003);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(info.strIPAddress2(), "10.0.0.1");
    EXPECT_EQ(info.lIPPortNo2(), 5001);
    EXPECT_EQ(info.strIPAddress3(), "10.0.0.1");
    EXPECT_EQ(info.lIPPortNo3(), 5001);
}

TEST_F(TSocketCommsTest, GivenAddressesKeepTheirPorts) {
    host.network.AddPeer("10.0.0.1", 5001);
    info.strIPAddress2("10.0.0.2");
    info.lIPPortNo2(5002);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(info.strIPAddress2(), "10.0.0.2");
    EXPECT_EQ(info.lIPPortNo2(), 5002);
    EXPECT_EQ(info.strIPAddress3(), "10.0.0.1");
    EXPECT_EQ(info.lIPPortNo3(), 5001);
}

TEST_F(TSocketCommsTest, TheFirstAddressAloneIsTriedEachTime) {
    info.lConnectionAttempts(3);
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(Connects(), Lines(3, "Connect 10.0.0.1:5001"));
}

TEST_F(TSocketCommsTest, AddressesTakeTurns) {
    info.strIPAddress2("10.0.0.2");
    info.lIPPortNo2(5002);
    info.strIPAddress3("10.0.0.3");
    info.lIPPortNo3(5003);
    info.lConnectionAttempts(5);
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(Connects(),
              (Lines{"Connect 10.0.0.1:5001", "Connect 10.0.0.2:5002", "Connect 10.0.0.3:5003",
                     "Connect 10.0.0.1:5001", "Connect 10.0.0.2:5002"}));
    const std::string strError = "ERROR  : Error Code=1000004, Error Message="s + kNotConnected +
                                 " - WSA Error Code=10061 WSA Error Message=";
    const std::string strAttempt = "INFO   : Attempting connection to ";
    EXPECT_EQ(Logged(),
              (Lines{strAttempt + "10.0.0.1, Port 5001, Connection attempt 1", strError,
                     strAttempt + "10.0.0.2, Port 5002, Connection attempt 2", strError,
                     strAttempt + "10.0.0.3, Port 5003, Connection attempt 3", strError,
                     strAttempt + "10.0.0.1, Port 5001, Connection attempt 4", strError,
                     strAttempt + "10.0.0.2, Port 5002, Connection attempt 5", strError}));
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
}

TEST_F(TSocketCommsTest, WithTwoAttemptsTheThirdAddressIsNeverTried) {
    info.strIPAddress2("10.0.0.2");
    info.lIPPortNo2(5002);
    info.strIPAddress3("10.0.0.3");
    info.lIPPortNo3(5003);
    info.lConnectionAttempts(2);
    host.network.AddPeer("10.0.0.3", 5003);
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(Connects(), (Lines{"Connect 10.0.0.1:5001", "Connect 10.0.0.2:5002"}));
}

TEST_F(TSocketCommsTest, TheSecondAddressMayConnect) {
    info.strIPAddress2("10.0.0.2");
    info.lIPPortNo2(5002);
    info.lConnectionAttempts(3);
    host.network.AddPeer("10.0.0.2", 5002);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(comms->strConnectionData(), "10.0.0.2");
    EXPECT_EQ(Logged().back(), "INFO   : Connected to 10.0.0.2, Port 5002, Socket 5");
    // The failure of the first attempt stays.
    ExpectError(1000004, kNotConnected + " - WSA Error Code=10061 WSA Error Message="s);
}

TEST_F(TSocketCommsTest, ThereIsNoPauseBetweenAttempts) {
    info.lConnectionAttempts(20);
    host.network.SetConnectDelay(100);
    const Microseconds start = host.Now();
    EXPECT_EQ(Connect(), 1);
    EXPECT_LT(host.Now() - start, 10 * kMillisecond);
}

TEST_F(TSocketCommsTest, FailedAttemptsLeaveNoSocketOpen) {
    info.lConnectionAttempts(20);
    EXPECT_EQ(Connect(), 1);
    info.bBlockedSocket(true);
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

TEST_F(TSocketCommsTest, AHostNameIsResolvedAndKeptAsItWasGiven) {
    host.network.AddPeer("10.0.0.7", 5001);
    host.network.AddHostName("pos.example", {"10.0.0.7"});
    info.strIPAddress1("pos.example");
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(Connects(), Lines{"Connect 10.0.0.7:5001"});
    EXPECT_EQ(comms->strConnectionData(), "pos.example");
    EXPECT_EQ(
        Logged(),
        (Lines{"INFO   : Attempting connection to pos.example, Port 5001, Connection attempt 1",
               "INFO   : Connected to pos.example, Port 5001, Socket 4"}));
}

TEST_F(TSocketCommsTest, ANameThatCanNotBeResolvedUsesUpAnAttemptWithoutASocket) {
    info.strIPAddress1("no.such.host");
    info.strIPAddress2("10.0.0.2");
    info.lIPPortNo2(5002);
    info.lConnectionAttempts(2);
    host.network.AddPeer("10.0.0.2", 5002);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(
        Logged(),
        (Lines{"INFO   : Attempting connection to no.such.host, Port 5001, Connection attempt 1",
               "ERROR  : Error Code=1000009, Error Message=Unable to resolve host name - "
               "no.such.host",
               "INFO   : Attempting connection to 10.0.0.2, Port 5002, Connection attempt 2",
               "INFO   : Connected to 10.0.0.2, Port 5002, Socket 4"}));
    info.lConnectionAttempts(1);
    TSocketComms other;
    TakeCalls();
    EXPECT_EQ(other.Connect(info, log), 1);
    EXPECT_EQ(other.lErrorCode(), 1000009);
    EXPECT_EQ(other.strErrorMessage(), "Unable to resolve host name - no.such.host");
    EXPECT_EQ(TakeCalls(), (Lines{"Startup 257", "GetHostByName no.such.host"}));
}

TEST_F(TSocketCommsTest, AnAddressIsUsedAsItStands) {
    info.strIPAddress1("999.1.1.1");
    EXPECT_EQ(Connect(), 1);
    for (const std::string& strCall : TakeCalls()) {
        EXPECT_FALSE(strCall.starts_with("GetHostByName")) << strCall;
    }
}

TEST_F(TSocketCommsTest, APortBeyondItsRangeIsAnOverflow) {
    info.lConnectionAttempts(3);
    for (const int32_t lPort : {65536, -1, INT32_MAX}) {
        host.files.Remove(kLogFile);
        info.lIPPortNo1(lPort);
        EXPECT_EQ(Connect(), 1);
        ExpectError(1000000, "TSocketComms.Connect() Failed - Overflow");
        // It ends the whole operation, behind the line that announces the attempt.
        EXPECT_EQ(Logged(), Lines{"INFO   : Attempting connection to 10.0.0.1, Port " +
                                  std::to_string(lPort) + ", Connection attempt 1"});
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSocketCommsTest, TheEdgesOfThePortRange) {
    host.network.AddPeer("10.0.0.1", 65535);
    info.lIPPortNo1(0);
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(comms->lErrorCode(), 1000004);
    info.lIPPortNo1(65535);
    EXPECT_EQ(Connect(), 0);
}

TEST_F(TSocketCommsTest, AFailedChannelCanConnectLater) {
    EXPECT_EQ(Connect(), 1);
    host.network.AddPeer("10.0.0.1", 5001);
    EXPECT_EQ(Connect(), 0);
}

TEST_F(TSocketCommsTest, TheLogIsThatOfTheLatestConnect) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    host.RunFor(kMillisecond);
    host.files.Remove(kLogFile);
    TFLClientLog other;
    other.InitialiseLogging("/log\\", "other.log", true, true, true);
    EXPECT_EQ(comms->Connect(info, other), 0);
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_TRUE(Logged().empty());
    EXPECT_EQ(host.files.Lines("/log/other.log").size(), 3u);
}

TEST_F(TSocketCommsTest, AConnectThatDoesNothingDoesNotTakeTheLogEither) {
    ConnectToPeer();
    TFLClientLog other;
    other.InitialiseLogging("/log\\", "other.log", true, true, true);
    EXPECT_EQ(comms->Connect(info, other), 0);
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(Logged(), Lines{"INFO   : Connection Closed, Socket 4 Destroyed"});
    EXPECT_TRUE(host.files.Lines("/log/other.log").empty());
}

TEST_F(TSocketCommsTest, EveryConnectMakesASocketObjectWithoutAPast) {
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(comms->lErrorCode(), 1000004);
    ConnectToPeer();
    Feed("x");
    host.FailNext(Op::BytesWaiting, {.lLastError = 10022});
    EXPECT_EQ(comms->ReadData(strData), 0);
    // A read that fails without a text has none of an older failure to show.
    ExpectError(0, "");
}

// Disconnect.

TEST_F(TSocketCommsTest, DisconnectOfAChannelThatIsNotOpenIsASuccess) {
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(Connect(), 1);
    TakeCalls();
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSocketCommsTest, DisconnectClosesTheSocketAndTellsTheLog) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(Logged(), Lines{"INFO   : Connection Closed, Socket 4 Destroyed"});
    EXPECT_EQ(TakeCalls(), (Lines{"Shutdown", "CloseSocket", "Cleanup"}));
    EXPECT_EQ(host.network.nOpenSockets(), 0);
    EXPECT_EQ(host.network.nStarted(), 0);
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_TRUE(TakeCalls().empty());
    // What was connected stays told.
    EXPECT_EQ(comms->strConnectionData(), "10.0.0.1");
}

TEST_F(TSocketCommsTest, AFailedDisconnectLeavesTheStateAsItWas) {
    ConnectToPeer();
    host.FailNext(Op::CloseSocket);
    EXPECT_EQ(comms->Disconnect(), 1);
    ExpectError(1000005, "Failed closing socket");
    EXPECT_EQ(Logged(), Lines{"ERROR  : Error Code=1000005, Error Message=Failed closing socket"});
    TakeCalls();
    EXPECT_EQ(Connect(), 0);
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_EQ(comms->Disconnect(), 0);
}

TEST_F(TSocketCommsTest, AClosedChannelConnectsAgain) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    host.RunFor(kMillisecond);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(comms->WriteData("x"), 0);
    host.RunFor(kMillisecond);
    EXPECT_EQ(peer->Received(), "x");
    EXPECT_EQ(peer->nConnections(), 2);
}

TEST_F(TSocketCommsTest, AChannelThatIsDestroyedClosesItsSocket) {
    ConnectToPeer();
    comms.reset();
    EXPECT_EQ(TakeCalls(), (Lines{"Shutdown", "CloseSocket", "Cleanup"}));
    EXPECT_EQ(host.network.nOpenSockets(), 0);
}

// WriteData.

TEST_F(TSocketCommsTest, WriteDataIsOneSend) {
    ConnectToPeer();
    EXPECT_EQ(comms->WriteData("ab\0c"s), 0);
    EXPECT_EQ(TakeCalls(), Lines{"Send 4"});
    host.RunFor(kMillisecond);
    EXPECT_EQ(peer->Received(), "ab\0c"s);
    EXPECT_EQ(host.nPumps(), 0);
}

TEST_F(TSocketCommsTest, AFailedWriteShowsTheBytesAndTheResultOfTheCall) {
    ConnectToPeer();
    host.FailNext(Op::Send, {.lLastError = 10054});
    EXPECT_EQ(comms->WriteData("a\0b"s), 1);
    ExpectError(-1, "Failed sending data to socket Data=a\0b"s);
    host.FailNext(Op::Send, {.lResult = 0});
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(0, "Failed sending data to socket Data=x");
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TSocketCommsTest, APartialWriteIsASuccess) {
    ConnectToPeer();
    host.FailNext(Op::Send, {.lResult = 1});
    EXPECT_EQ(comms->WriteData("abc"), 0);
}

TEST_F(TSocketCommsTest, AWriteShowsItsBytesBehindARunTimeFailureToo) {
    ConnectToPeer();
    ThrowingSockets throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const ScopedHost scoped(bad);
    EXPECT_EQ(comms->WriteData("x\0y"s), 1);
    ExpectError(1000000, "TSocket.Send() Failed - Device I/O error Data=x\0y"s);
}

TEST_F(TSocketCommsTest, AChannelWhoseConnectFailedFailsToWrite) {
    EXPECT_EQ(Connect(), 1);
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(-1, "Failed sending data to socket Data=x");
}

TEST_F(TSocketCommsTest, ARunTimeFailureOfTheSocketUsesUpAnAttempt) {
    ThrowingSockets throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const ScopedHost scoped(bad);
    info.lConnectionAttempts(2);
    EXPECT_EQ(Connect(), 1);
    ExpectError(1000000, "TSocket.OpenSocket() Failed - Device I/O error");
    EXPECT_EQ(Logged().size(), 4u);
}

} // namespace
} // namespace brennik
