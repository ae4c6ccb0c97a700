#include "link/TSerial.h"

#include "platform/Host.h"
#include "tests/link/NotingComPorts.h"
#include "tests/link/TSerialFixture.h"
#include "tests/link/ThrowingComPorts.h"
#include "tests/world/AllocationLimit.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using world::kMillisecond;
using world::Microseconds;
using world::Op;
namespace comerror = world::comerror;

class TSerialTest : public TSerialFixture {};

// Initialise and Connect.

TEST_F(TSerialTest, StartsClosedWithoutTextAndNumber) {
    ExpectError(0, "");
    EXPECT_EQ(serial->Disconnect(), 1);
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialTest, InitialiseKeepsTheParametersAndCallsNothing) {
    EXPECT_EQ(serial->Initialise(info, true), 0);
    EXPECT_EQ(serial->Initialise(info, false), 0);
    EXPECT_TRUE(TakeCalls().empty());
    info.strComPort("COM2"); // kept by reference
    EXPECT_EQ(serial->Connect(), 1);
    EXPECT_EQ(TakeCalls(), Calls{"Open COM2"});
}

TEST_F(TSerialTest, ConnectOpensThePortAndNothingElse) {
    world::SimLine& line = host.comPorts.AddLine("COM1");
    EXPECT_EQ(serial->Initialise(info, true), 0);
    EXPECT_EQ(serial->Connect(), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Open COM1"});
    EXPECT_TRUE(line.IsOpen());
    ExpectError(0, "");
}

TEST_F(TSerialTest, ConnectWithoutParametersFails) {
    EXPECT_EQ(serial->Connect(), 1);
    ExpectError(0, "TSerialComms.Connect() Failed - Object not set");
    EXPECT_TRUE(TakeCalls().empty());
}

struct PortName {
    const char* strComPort;
    const char* strDevice;
};

TEST_F(TSerialTest, PortsAboveNineAreOpenedUnderTheirDeviceNames) {
    for (const PortName& name :
         {PortName{"COM1", "COM1"}, PortName{"COM9", "COM9"}, PortName{"COM10", "\\\\.\\COM10"},
          PortName{"COM256", "\\\\.\\COM256"}, PortName{"COM09", "COM09"},
          PortName{"COM010", "\\\\.\\COM010"}, PortName{"COM 10", "\\\\.\\COM 10"},
          PortName{"LPT12", "\\\\.\\LPT12"}, PortName{"com10", "\\\\.\\com10"},
          PortName{"COM-10", "COM-10"}, PortName{"COM10x", "COM10x"}, PortName{"COMX10", "COMX10"},
          PortName{"COM2147483648", "COM2147483648"}, PortName{"/dev/ttyS10", "/dev/ttyS10"},
          PortName{"COM", "COM"}, PortName{"CO", "CO"}, PortName{"12", "12"}, PortName{"", ""}}) {
        NotingComPorts ports;
        Host noting = world::Swapped(host.TheHost(), ports);
        const ScopedHost scoped(noting);
        TSerial port;
        info.strComPort(name.strComPort);
        EXPECT_EQ(port.Initialise(info, true), 0);
        EXPECT_EQ(TSerialTestAccess::GetDevicePortName(port), name.strDevice);
        EXPECT_EQ(port.Connect(), 0);
        EXPECT_EQ(ports.names, std::vector<std::string>{name.strDevice}) << name.strComPort;
    }
}

TEST_F(TSerialTest, AFailedOpenTellsThePortAndTheSystemsNumber) {
    info.strComPort("COM10");
    EXPECT_EQ(serial->Initialise(info, true), 0);
    EXPECT_EQ(serial->Connect(), 1);
    ExpectError(comerror::kMissing, "Failed opening COM Port COM10");
    EXPECT_EQ(TakeCalls(), Calls{"Open \\\\.\\COM10"});
}

TEST_F(TSerialTest, APortInUseIsAFailedOpen) {
    Open();
    TSerial other;
    EXPECT_EQ(other.Initialise(info, true), 0);
    EXPECT_EQ(other.Connect(), 1);
    EXPECT_EQ(other.lErrorCode(), comerror::kBusy);
    EXPECT_EQ(other.strErrorMessage(), "Failed opening COM Port COM1");
    EXPECT_EQ(serial->Disconnect(), 0);
    EXPECT_EQ(other.Connect(), 0);
}

TEST_F(TSerialTest, ASecondConnectFailsAndLeavesTheNumberAlone) {
    FailToOpenWith(comerror::kNotPermitted);
    Open();
    EXPECT_EQ(serial->Connect(), 1);
    ExpectError(comerror::kNotPermitted, "COM Port is already opened");
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_EQ(serial->Disconnect(), 0); // it is open still
}

TEST_F(TSerialTest, TextAndNumberOutliveASuccess) {
    FailToOpenWith(comerror::kNotPermitted);
    OpenAndConfigure();
    EXPECT_EQ(serial->WriteData("x", true, 1000, 10), 1);
    EXPECT_EQ(serial->ReadData(strData, 1), 0);
    EXPECT_EQ(serial->Disconnect(), 0);
    ExpectError(comerror::kNotPermitted, "Failed opening COM Port COM1");
}

TEST_F(TSerialTest, InitialiseWithAResetForgetsAnOpenPort) {
    Open();
    EXPECT_EQ(serial->Initialise(info, true), 0);
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_EQ(host.comPorts.nOpenPorts(), 1);
    EXPECT_EQ(serial->Disconnect(), 1);
    EXPECT_EQ(serial->Connect(), 1);
    ExpectError(comerror::kBusy, "Failed opening COM Port COM1");
}

TEST_F(TSerialTest, InitialiseWithoutAResetKeepsAnOpenPort) {
    OpenAndConfigure();
    TConnectionInfo other = info;
    other.lBaudRate(300);
    EXPECT_EQ(serial->Initialise(other, false), 0);
    EXPECT_EQ(Line().State().BaudRate, 9600); // until it is configured
    EXPECT_EQ(serial->Configure(), 0);
    EXPECT_EQ(Line().State().BaudRate, 300);
    EXPECT_EQ(serial->Disconnect(), 0);
}

// Disconnect.

TEST_F(TSerialTest, DisconnectClosesOnce) {
    Open();
    EXPECT_EQ(serial->Disconnect(), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Close"});
    EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
    EXPECT_EQ(serial->Disconnect(), 1);
    EXPECT_TRUE(TakeCalls().empty());
    ExpectError(0, "");
}

TEST_F(TSerialTest, DisconnectOnAClosedPortFailsWithoutAWord) {
    FailToOpenWith(comerror::kNotPermitted);
    EXPECT_EQ(serial->Disconnect(), 1);
    ExpectError(comerror::kNotPermitted, "Failed opening COM Port COM1");
}

TEST_F(TSerialTest, AFailedCloseKeepsThePort) {
    Open();
    host.FailNext(Op::ComClose, {.lLastError = comerror::kHungUp});
    EXPECT_EQ(serial->Disconnect(), 1);
    ExpectError(comerror::kHungUp, "Failed closing COM Port");
    EXPECT_EQ(serial->Disconnect(), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"Close", "Close"}));
}

TEST_F(TSerialTest, AClosedPortCanBeOpenedAgain) {
    Open();
    EXPECT_EQ(serial->Disconnect(), 0);
    EXPECT_EQ(serial->Connect(), 0);
    EXPECT_EQ(Line().nOpenings(), 2);
}

TEST_F(TSerialTest, TheDestructorClosesAnOpenPort) {
    Open();
    serial.reset();
    EXPECT_EQ(TakeCalls(), Calls{"Close"});
    EXPECT_FALSE(Line().IsOpen());
}

TEST_F(TSerialTest, TheDestructorLeavesAClosedPortAlone) {
    Open();
    EXPECT_EQ(serial->Disconnect(), 0);
    TakeCalls();
    serial.reset();
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialTest, TheDestructorTriesOnce) {
    Open();
    host.FailNext(Op::ComClose);
    serial.reset();
    EXPECT_EQ(TakeCalls(), Calls{"Close"});
}

// Reads.

TEST_F(TSerialTest, ReadsTheBytesAskedForAndLeavesTheRest) {
    OpenAndConfigure();
    Line().Feed("a\0\xFF"
                "d"s);
    EXPECT_EQ(serial->ReadData(strData, 3), 3);
    EXPECT_EQ(strData, "a\0\xFF"s);
    EXPECT_EQ(serial->ReadData(strData, 1), 1);
    EXPECT_EQ(strData, "d");
    EXPECT_EQ(TakeCalls(), (Calls{"Read 3", "Read 1"}));
    ExpectError(0, "");
}

TEST_F(TSerialTest, AReadOfWhatWaitsTakesNoTime) {
    OpenAndConfigure();
    Line().Feed("ab");
    const Microseconds start = host.Now();
    EXPECT_EQ(serial->ReadData(strData, 2), 2);
    EXPECT_EQ(host.Now() - start, 1);
}

TEST_F(TSerialTest, AReadOfMoreThanComesEndsAfterTenMilliseconds) {
    OpenAndConfigure();
    Line().Feed("ab");
    const Microseconds start = host.Now();
    EXPECT_EQ(serial->ReadData(strData, 5), 2);
    EXPECT_EQ(host.Now() - start, 10 * kMillisecond + 1);
    EXPECT_EQ(strData, "ab");
}

TEST_F(TSerialTest, AReadOfSilenceGivesNothingAfterTenMilliseconds) {
    OpenAndConfigure();
    const Microseconds start = host.Now();
    EXPECT_EQ(serial->ReadData(strData, 1), 0);
    EXPECT_EQ(host.Now() - start, 10 * kMillisecond + 1);
    EXPECT_EQ(strData, "");
    ExpectError(0, "");
}

TEST_F(TSerialTest, AReadEndsWithItsLastByte) {
    OpenAndConfigure();
    peer->Push("ab"); // 1041 2/3 us each
    const Microseconds start = host.Now();
    EXPECT_EQ(serial->ReadData(strData, 2), 2);
    EXPECT_EQ(host.Now() - start, 2084);
}

TEST_F(TSerialTest, AReadOnAClosedPortFails) {
    FailToOpenWith(comerror::kNotPermitted);
    for (const int32_t lCount : {1, 0, -1}) {
        EXPECT_EQ(serial->ReadData(strData, lCount), -1);
        ExpectError(comerror::kNotPermitted, "Port closed");
    }
    EXPECT_EQ(strData, "old");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialTest, AReadOfNoBytesFails) {
    FailToOpenWith(comerror::kNotPermitted);
    OpenAndConfigure();
    for (const int32_t lCount : {0, -1, INT32_MIN}) {
        EXPECT_EQ(serial->ReadData(strData, lCount), -1);
        ExpectError(comerror::kNotPermitted, "Number of bytes to read must be greater than 0");
    }
    EXPECT_EQ(strData, "old");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialTest, AFailedReadTellsTheSystemsNumber) {
    OpenAndConfigure();
    Line().Feed("x");
    host.FailNext(Op::ComRead, {.lLastError = 1167});
    EXPECT_EQ(serial->ReadData(strData, 1), -1);
    ExpectError(1167, "Failed reading data from the opened port");
    EXPECT_EQ(strData, "");
}

TEST_F(TSerialTest, AHangUpFailsBehindTheBytesThatCameBefore) {
    OpenAndConfigure();
    Line().Feed("ab");
    Line().HangUp();
    EXPECT_EQ(serial->ReadData(strData, 1), 1);
    EXPECT_EQ(strData, "a");
    EXPECT_EQ(serial->ReadData(strData, 1), 1);
    EXPECT_EQ(strData, "b");
    EXPECT_EQ(serial->ReadData(strData, 1), -1);
    ExpectError(comerror::kHungUp, "Failed reading data from the opened port");
}

TEST_F(TSerialTest, AReadThatFindsNoMemoryFails) {
    OpenAndConfigure();
    {
        const world::AllocationLimit limit(100000);
        EXPECT_EQ(serial->ReadData(strData, 100000), -1);
    }
    ExpectError(0, "TSerialComms.ReadData() Failed - Out of memory");
    EXPECT_EQ(strData, "");
}

// Buffers.

TEST_F(TSerialTest, ClearsItsBuffersByTheirFlags) {
    OpenAndConfigure();
    serial->ClearInputBuffer();
    EXPECT_EQ(TakeCalls(), Calls{"Purge 10"});
    serial->ClearOutputBuffer();
    EXPECT_EQ(TakeCalls(), Calls{"Purge 5"});
    ExpectError(0, "");
}

TEST_F(TSerialTest, ClearingTheInputLosesWhatWaits) {
    OpenAndConfigure();
    Line().Feed("stale");
    serial->ClearOutputBuffer();
    EXPECT_EQ(serial->ReadData(strData, 1), 1);
    serial->ClearInputBuffer();
    EXPECT_EQ(serial->ReadData(strData, 1), 0);
}

TEST_F(TSerialTest, ClearingTheOutputLosesWhatHasNotLeft) {
    OpenAndConfigure();
    EXPECT_EQ(serial->WriteData("abcd", true, 1000, 10), 4);
    host.RunFor(2 * 1042);
    serial->ClearInputBuffer();
    serial->ClearOutputBuffer();
    host.RunFor(20 * kMillisecond);
    EXPECT_EQ(peer->Received(), "ab");
}

TEST_F(TSerialTest, ClearsNothingOnAClosedPort) {
    serial->ClearInputBuffer();
    serial->ClearOutputBuffer();
    EXPECT_TRUE(TakeCalls().empty());
    ExpectError(0, "");
}

// What nobody calls, and what nobody expects.

TEST_F(TSerialTest, AByteArrayEndsAtItsFirstZero) {
    const auto conv = [&](const std::vector<uint8_t>& bytes) {
        return TSerialTestAccess::ConvNullTerminatedByteArray2String(*serial, bytes);
    };
    EXPECT_EQ(conv({'a', 'b', 0, 'c', 0}), "ab");
    EXPECT_EQ(conv({'a', 0xFF}), "a\xFF");
    EXPECT_EQ(conv({0, 'a'}), "");
    EXPECT_EQ(conv({}), "");
    ExpectError(0, "");
}

TEST_F(TSerialTest, AByteArrayThatFindsNoMemoryFails) {
    const std::vector<uint8_t> bytes(200000, 'x');
    const world::AllocationLimit limit(100000);
    EXPECT_EQ(TSerialTestAccess::ConvNullTerminatedByteArray2String(*serial, bytes), "");
    ExpectError(0, "TSerialComms.ConvNullTerminatedByteArray2String() Failed - Out of memory");
}

TEST_F(TSerialTest, EveryOperationEndsARunTimeFailureInItsOwnText) {
    FailToOpenWith(comerror::kNotPermitted);
    ThrowingComPorts throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const auto expectText = [&](const std::string& strOperation) {
        // The text alone: the number is that of the last failing call of the system.
        ExpectError(comerror::kNotPermitted,
                    "TSerialComms." + strOperation + "() Failed - Device I/O error");
    };
    {
        const ScopedHost scoped(bad);
        EXPECT_EQ(serial->Connect(), 1);
        expectText("Connect");
    }
    Open();
    {
        const ScopedHost scoped(bad);
        EXPECT_EQ(serial->Disconnect(), 1);
        expectText("Disconnect");
        EXPECT_EQ(serial->WriteData("x", true, 1000, 10), -1);
        expectText("WriteData");
        EXPECT_EQ(serial->ReadData(strData, 1), -1);
        expectText("ReadData");
        EXPECT_EQ(strData, "");
        EXPECT_EQ(serial->Configure(), 1);
        expectText("SetPortInfoSettings"); // where it went wrong
        EXPECT_EQ(TSerialTestAccess::SetSerialTimeouts(*serial), 1);
        expectText("SetSerialTimeouts");
        serial->SetBaudRate(300);
        expectText("SetPortInfoSettings");
        EXPECT_EQ(TSerialTestAccess::SetSerialTimeouts(*serial), 1);
        serial->ClearInputBuffer();
        serial->ClearOutputBuffer();
        expectText("SetSerialTimeouts"); // clearing tells nothing
    }
    EXPECT_EQ(serial->Disconnect(), 0); // the port was kept
}

TEST_F(TSerialTest, TheDestructorLetsNothingOut) {
    Open();
    ThrowingComPorts throwing;
    Host bad = world::Swapped(host.TheHost(), throwing);
    const ScopedHost scoped(bad);
    EXPECT_NO_THROW(serial.reset());
}

} // namespace
} // namespace brennik
