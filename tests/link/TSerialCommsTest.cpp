#include "link/TSerialComms.h"

#include "platform/Host.h"
#include "tests/link/TSerialCommsFixture.h"
#include "tests/link/ThrowingComPorts.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;
namespace comerror = world::comerror;

constexpr const char* kNotOpened =
    "ERROR  : Error Code=1000018, Error Message=Failed opening COM Port COM1";
constexpr const char* kConnected =
    "INFO   : Connected to Port=COM1, BaudRate=9600, Parity=None ,Databits=8 ,Stopbit=1 "
    ",Flowcontrol=None ,Connection Attempt=";

class TSerialCommsTest : public TSerialCommsFixture {
  protected:
    /// What a connect tells the log, without its attempt.
    std::string Described() {
        TSerialComms channel;
        static_cast<void>(channel.Connect(info, log)); // some of these lines can't be set
        const std::string strLine = Logged().back();
        host.files.Remove(kLogFile);
        return strLine.substr(0, strLine.rfind(" ,Connection"));
    }
};

// Connect.

TEST_F(TSerialCommsTest, ConnectOpensThePortTellsTheLogAndSetsTheLine) {
    host.comPorts.AddLine("COM1");
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(TakeCalls(), (Lines{"Open COM1", "log", "GetState", "SetState", "SetTimeouts"}));
    EXPECT_EQ(Logged(), Lines{kConnected + "1"s});
    EXPECT_EQ(Line().Timeouts(), (CommTimeouts{10, 0, 10, 0, 1000}));
    EXPECT_EQ(host.nPumps(), 0);
    ExpectError(0, "");
}

TEST_F(TSerialCommsTest, NothingDescribesThePeer) {
    EXPECT_EQ(comms->strConnectionData(), "");
    ConnectToPeer();
    EXPECT_EQ(comms->strConnectionData(), "");
}

TEST_F(TSerialCommsTest, TheLineIsThatOfTheParameters) {
    host.comPorts.AddLine("COM12");
    info.strComPort("COM12");
    info.lBaudRate(19200);
    info.lParity(0);
    info.lDatabits(3);
    info.lStopbit(2);
    info.lFlowControl(1);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(TakeCalls().front(), "Open \\\\.\\COM12");
    const DCB& line = host.comPorts.Line("COM12").State();
    EXPECT_EQ(line.BaudRate, 19200);
    EXPECT_EQ(line.Parity, 2);
    EXPECT_EQ(line.ByteSize, 7);
    EXPECT_EQ(line.StopBits, 2);
    EXPECT_EQ(line.Flags, 0x2015);
    EXPECT_EQ(Logged(),
              Lines{"INFO   : Connected to Port=COM12, BaudRate=19200, Parity=Even ,Databits=7 "
                    ",Stopbit=2 ,Flowcontrol=RtsCts ,Connection Attempt=1"});
}

TEST_F(TSerialCommsTest, TheLogNamesEachSettingAndNothingForOthers) {
    host.comPorts.AddLine("COM1");
    const std::string strHead = "INFO   : Connected to Port=COM1, BaudRate=9600, Parity=";
    const auto expectAll = [&](auto set, const std::vector<const char*>& labels,
                               const std::string& strBefore, const std::string& strBehind) {
        for (size_t nLabel = 0; nLabel < labels.size(); ++nLabel) {
            set(static_cast<int32_t>(nLabel));
            EXPECT_EQ(Described(), strHead + strBefore + labels[nLabel] + strBehind);
        }
        for (const int32_t lOther :
             {-1, static_cast<int32_t>(labels.size()), INT32_MAX, INT32_MIN}) {
            set(lOther);
            EXPECT_EQ(Described(), strHead + strBefore + strBehind) << lOther;
        }
        set(0);
    };
    info.lParity(0);
    info.lDatabits(0);
    info.lStopbit(0);
    info.lFlowControl(0);
    expectAll([&](int32_t lValue) { info.lParity(lValue); },
              {"Even", "Odd", "None", "Space", "Mark"}, "",
              " ,Databits=4 ,Stopbit=1 ,Flowcontrol=None");
    expectAll([&](int32_t lValue) { info.lDatabits(lValue); }, {"4", "5", "6", "7", "8"},
              "Even ,Databits=", " ,Stopbit=1 ,Flowcontrol=None");
    expectAll([&](int32_t lValue) { info.lStopbit(lValue); }, {"1", "1.5", "2"},
              "Even ,Databits=4 ,Stopbit=", " ,Flowcontrol=None");
    expectAll([&](int32_t lValue) { info.lFlowControl(lValue); },
              {"None", "RtsCts", "DtrDsr", "XonXoff"},
              "Even ,Databits=4 ,Stopbit=1 ,Flowcontrol=", "");
}

TEST_F(TSerialCommsTest, TheLogTellsPortAndRateAsTheyStand) {
    host.comPorts.AddLine("com 1");
    info.strComPort("com 1");
    info.lBaudRate(-5);
    EXPECT_EQ(Described(), "INFO   : Connected to Port=com 1, BaudRate=-5, Parity=None "
                           ",Databits=8 ,Stopbit=1 ,Flowcontrol=None");
}

TEST_F(TSerialCommsTest, ASecondConnectDoesNothing) {
    ConnectToPeer();
    info.lConnectionAttempts(0);
    info.lBaudRate(300);
    host.files.MakeFolder("/other");
    TFLClientLog other;
    other.InitialiseLogging("/other\\", "other.log", true, true, true);
    EXPECT_EQ(comms->Connect(info, other), 0);
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(Logged().empty());
    EXPECT_EQ(Line().State().BaudRate, 9600);
    EXPECT_EQ(comms->Disconnect(), 0); // the log is the first one still
    EXPECT_EQ(Logged(), Lines{"INFO   : Connection Closed"});
}

TEST_F(TSerialCommsTest, FewerThanOneAttemptIsInvalid) {
    host.comPorts.AddLine("COM1");
    for (const int32_t lAttempts : {0, -1, INT32_MIN}) {
        info.lConnectionAttempts(lAttempts);
        EXPECT_EQ(Connect(), 1);
        ExpectError(1000010, "Connection Attempts configuration value is invalid");
    }
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TSerialCommsTest, APortThatDoesntOpenIsTriedAgainWithPauses) {
    info.lConnectionAttempts(3);
    const Microseconds start = host.Now();
    EXPECT_EQ(Connect(), 1);
    EXPECT_GE(host.Now() - start, 750 * kMillisecond);
    EXPECT_LT(host.Now() - start, 751 * kMillisecond);
    // The last attempt is followed by its pause too, and nothing is pumped meanwhile.
    EXPECT_EQ(TakeCalls(), (Lines{"Open COM1", "log", "Sleep 250", "Open COM1", "log", "Sleep 250",
                                  "Open COM1", "log", "Sleep 250"}));
    EXPECT_EQ(host.nPumps(), 0);
    EXPECT_EQ(Logged(), Lines(3, kNotOpened));
    ExpectError(1000018, "Failed opening COM Port COM1"); // not the number of the system
}

TEST_F(TSerialCommsTest, ALaterAttemptMayOpenThePort) {
    host.comPorts.AddLine("COM1");
    info.lConnectionAttempts(3);
    host.FailNext(Op::ComOpen, {.lLastError = comerror::kBusy});
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(TakeCalls(), (Lines{"Open COM1", "log", "Sleep 250", "Open COM1", "log", "GetState",
                                  "SetState", "SetTimeouts"}));
    EXPECT_EQ(Logged(), (Lines{kNotOpened, kConnected + "2"s}));
    ExpectError(1000018, "Failed opening COM Port COM1"); // of the first attempt
}

TEST_F(TSerialCommsTest, APortThatComesInTimeIsOpened) {
    info.lConnectionAttempts(5);
    host.At(600 * kMillisecond, [&] { host.comPorts.AddLine("COM1"); });
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(Logged().back(), kConnected + "4"s);
}

TEST_F(TSerialCommsTest, AChannelThatFailedMayConnectLater) {
    EXPECT_EQ(Connect(), 1);
    ConnectToPeer();
    EXPECT_EQ(comms->WriteData("x"), 0);
}

struct SettingFailure {
    Op op;
    const char* strText;
};

TEST_F(TSerialCommsTest, ALineThatCantBeSetFailsAndStaysConnected) {
    host.comPorts.AddLine("COM1");
    for (const SettingFailure& failure :
         {SettingFailure{Op::ComGetState, "Failed retrieving DCB settings for opened port"},
          SettingFailure{Op::ComSetState, "Failed setting opened port with DCB settings"},
          SettingFailure{Op::ComSetTimeouts, "Failed setting serial timeout values"}}) {
        info.lConnectionAttempts(3);
        host.FailNext(failure.op, {.lLastError = 31});
        EXPECT_EQ(Connect(), 1);
        ExpectError(1000018, failure.strText);
        EXPECT_EQ(Logged(), Lines{kConnected + "1"s}); // no further attempt, no line of the failure
        EXPECT_EQ(host.comPorts.nOpenPorts(), 1);
        Forget();
        EXPECT_EQ(Connect(), 0); // as on any connected channel
        EXPECT_TRUE(TakeCalls().empty());
        EXPECT_EQ(comms->Disconnect(), 0);
        EXPECT_EQ(Logged(), Lines{"INFO   : Connection Closed"});
        EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
        Forget();
    }
}

TEST_F(TSerialCommsTest, DtrDsrCantBeSetHere) {
    host.comPorts.AddLine("COM1");
    info.lFlowControl(2);
    EXPECT_EQ(Connect(), 1);
    ExpectError(1000018, "Failed setting opened port with DCB settings");
    EXPECT_TRUE(Line().IsOpen());
}

// Disconnect.

TEST_F(TSerialCommsTest, DisconnectClosesThePortAndTellsTheLog) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(TakeCalls(), (Lines{"Close", "log"}));
    EXPECT_EQ(Logged(), Lines{"INFO   : Connection Closed"});
    EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
    ExpectError(0, "");
}

TEST_F(TSerialCommsTest, DisconnectWithoutAConnectionIsASuccess) {
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(Connect(), 1);
    Forget();
    EXPECT_EQ(comms->Disconnect(), 0);
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    Forget();
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TSerialCommsTest, AFailedCloseChangesNothing) {
    ConnectToPeer();
    host.FailNext(Op::ComClose, {.lLastError = comerror::kHungUp});
    EXPECT_EQ(comms->Disconnect(), 1);
    ExpectError(1000013, "Failed closing COM Port");
    EXPECT_EQ(Logged(),
              Lines{"ERROR  : Error Code=1000013, Error Message=Failed closing COM Port"});
    EXPECT_EQ(Connect(), 0); // connected still
    EXPECT_EQ(TakeCalls(), (Lines{"Close", "log"}));
    EXPECT_EQ(comms->WriteData("x"), 0);
    EXPECT_EQ(comms->Disconnect(), 0);
    EXPECT_EQ(TakeCalls(), (Lines{"Write 1", "Close", "log"}));
    EXPECT_EQ(Logged().back(), "INFO   : Connection Closed");
    EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
    ExpectError(1000013, "Failed closing COM Port"); // a success clears nothing
}

TEST_F(TSerialCommsTest, AClosedChannelConnectsAgainWithANewPort) {
    host.FailNext(Op::ComOpen, {.lLastError = comerror::kNotPermitted});
    info.lConnectionAttempts(2);
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    info.lBaudRate(19200);
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(Line().nOpenings(), 2);
    EXPECT_EQ(Line().State().BaudRate, 19200);
    // A port that has had no failure yet: its number isn't that of the old one.
    ThrowingComPorts throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const ScopedHost scoped(bad);
    EXPECT_EQ(comms->WriteData("x"), 1);
    EXPECT_EQ(comms->lErrorCode(), 0);
}

// The end of the object.

TEST_F(TSerialCommsTest, TheDestructorClosesAConnectedPort) {
    ConnectToPeer();
    comms.reset();
    EXPECT_EQ(TakeCalls(), Lines{"Close"}); // and tells the log nothing
    EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
}

TEST_F(TSerialCommsTest, TheDestructorClosesAPortThatCouldntBeSet) {
    ConnectUnconfigured();
    comms.reset();
    EXPECT_EQ(TakeCalls(), Lines{"Close"});
}

TEST_F(TSerialCommsTest, TheDestructorsTryTwiceToClose) {
    ConnectToPeer();
    host.FailNext(Op::ComClose);
    comms.reset(); // the channel once, and the port that it owns
    EXPECT_EQ(TakeCalls(), (Lines{"Close", "Close"}));
    EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
}

TEST_F(TSerialCommsTest, TheDestructorLeavesAClosedPortAlone) {
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    Forget();
    comms.reset();
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialCommsTest, TheDestructorLetsNothingOut) {
    ConnectToPeer();
    ThrowingComPorts throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const ScopedHost scoped(bad);
    EXPECT_NO_THROW(comms.reset());
}

// New settings on a running link.

TEST_F(TSerialCommsTest, ConfigureComPortSetsTheOpenLineAnew) {
    ConnectToPeer();
    TConnectionInfo device = info;
    device.strComPort("COM2"); // plays no part: the port is open
    device.lBaudRate(115200);
    device.lParity(1);
    device.lDatabits(3);
    comms->ConfigureComPort(device);
    EXPECT_EQ(TakeCalls(), (Lines{"GetState", "SetState", "SetTimeouts"}));
    EXPECT_EQ(Line().State().BaudRate, 115200);
    EXPECT_EQ(Line().State().Parity, 1);
    EXPECT_EQ(Line().State().ByteSize, 7);
    EXPECT_TRUE(Logged().empty());
    EXPECT_EQ(comms->Disconnect(), 0); // the same port all along
    EXPECT_EQ(Line().nOpenings(), 1);
}

TEST_F(TSerialCommsTest, SetBaudRateAppliesTheChangedParametersOfTheChannel) {
    ConnectToPeer();
    info.lBaudRate(57600);
    comms->SetBaudRate(info);
    EXPECT_EQ(TakeCalls(), (Lines{"GetState", "SetState"}));
    EXPECT_EQ(Line().State().BaudRate, 57600);
}

TEST_F(TSerialCommsTest, SetBaudRateWithOtherParametersChangesNothing) {
    ConnectToPeer();
    TConnectionInfo other = info;
    other.lBaudRate(300);
    comms->SetBaudRate(other);
    EXPECT_EQ(Line().State().BaudRate, 9600);
    // From here on the others are those of the channel.
    comms->ConfigureComPort(other);
    EXPECT_EQ(Line().State().BaudRate, 300);
    info.lBaudRate(57600);
    comms->SetBaudRate(info);
    EXPECT_EQ(Line().State().BaudRate, 300);
    other.lBaudRate(1200);
    comms->SetBaudRate(other);
    EXPECT_EQ(Line().State().BaudRate, 1200);
}

TEST_F(TSerialCommsTest, NewSettingsOnAChannelWithoutAPortDoNothing) {
    const auto both = [&] {
        comms->ConfigureComPort(info);
        comms->SetBaudRate(info);
    };
    both();
    ExpectError(0, "");
    ConnectToPeer();
    EXPECT_EQ(comms->Disconnect(), 0);
    Forget();
    both();
    ExpectError(0, "");
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(Logged().empty());
}

TEST_F(TSerialCommsTest, NewSettingsThatFailAreDropped) {
    ConnectToPeer();
    host.FailNext(Op::ComSetState, {}, 2);
    comms->ConfigureComPort(info);
    comms->SetBaudRate(info);
    {
        ThrowingComPorts throwing;
        Host bad = world::Swapped(host.TheHost(), throwing);
        const ScopedHost scoped(bad);
        EXPECT_NO_THROW(comms->ConfigureComPort(info));
        EXPECT_NO_THROW(comms->SetBaudRate(info));
    }
    ExpectError(0, "");
    EXPECT_TRUE(Logged().empty());
    EXPECT_EQ(comms->WriteData("x"), 0);
}

// What nobody expects.

/// A clock that can't pause.
class ClockWithoutPause final : public Clock {
  public:
    explicit ClockWithoutPause(Clock& clock) : clock_(clock) {}

    float SecondsSinceMidnight() override { return clock_.SecondsSinceMidnight(); }
    DateTime LocalNow() override { return clock_.LocalNow(); }
    int32_t LocalOffsetSeconds() override { return clock_.LocalOffsetSeconds(); }
    std::string MonthName(int32_t iMonth) override { return clock_.MonthName(iMonth); }
    void Sleep(int32_t) override { throw RuntimeFailure(FailureKind::DeviceIoError); }

  private:
    Clock& clock_;
};

TEST_F(TSerialCommsTest, ConnectEndsARunTimeFailureInItsOwnText) {
    ClockWithoutPause clock(host.clock);
    Host bad = world::Swapped(host.TheHost(), clock);
    const ScopedHost scoped(bad);
    info.lConnectionAttempts(3);
    EXPECT_EQ(Connect(), 1);
    ExpectError(1000000, "TSerialComms.Connect() Failed - Device I/O error");
    EXPECT_EQ(TakeCalls(), (Lines{"Open COM1", "log"}));
}

TEST_F(TSerialCommsTest, RunTimeFailuresOfThePortComeInItsTexts) {
    ThrowingComPorts throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    {
        const ScopedHost scoped(bad);
        EXPECT_EQ(Connect(), 1);
        ExpectError(1000018, "TSerialComms.Connect() Failed - Device I/O error");
    }
    ConnectToPeer();
    const ScopedHost scoped(bad);
    EXPECT_EQ(comms->Disconnect(), 1);
    ExpectError(1000013, "TSerialComms.Disconnect() Failed - Device I/O error");
    // These three pass the number on, which such a failure doesn't set.
    EXPECT_EQ(comms->WriteData("x"), 1);
    ExpectError(0, "TSerialComms.WriteData() Failed - Device I/O error");
    EXPECT_EQ(comms->ReadData(strData), 1);
    ExpectError(0, "TSerialComms.ReadData() Failed - Device I/O error");
    EXPECT_EQ(comms->ReadCharacter(strData), 1);
    ExpectError(0, "TSerialComms.ReadData() Failed - Device I/O error");
}

} // namespace
} // namespace brennik
