// How the port wrapper sets its line: the control block from the parameters, and the time limits.
#include "link/TSerial.h"
#include "platform/Host.h"
#include "tests/link/NotingComPorts.h"
#include "tests/link/TSerialFixture.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace brennik {
namespace {

using world::Op;
namespace comerror = world::comerror;

/// On the lines in memory, which refuse what this host can't make.
class TSerialConfigureTest : public TSerialFixture {};

/// On a port that takes anything and shows the control block that it was offered.
class TSerialBlockTest : public world::WorldTest {
  protected:
    TSerialBlockTest() {
        info.strComPort("COM1");
        EXPECT_EQ(serial.Initialise(info, true), 0);
        EXPECT_EQ(serial.Connect(), 0);
    }

    const DCB& Configured() {
        EXPECT_EQ(serial.Configure(), 0);
        return ports.state;
    }
    int32_t FlagsFrom(int32_t lFlags, int32_t lFlowControl) {
        ports.state.Flags = lFlags;
        info.lFlowControl(lFlowControl);
        return Configured().Flags;
    }

    NotingComPorts ports;
    Host noting = world::Swapped(host.TheHost(), ports);
    ScopedHost scoped{noting};
    TConnectionInfo info;
    TSerial serial;
};

// Configure.

TEST_F(TSerialConfigureTest, SetsTheLineAndThenTheTimeLimits) {
    Open();
    EXPECT_EQ(serial->Configure(), 0);
    EXPECT_EQ(TakeCalls(), (Calls{"GetState", "SetState", "SetTimeouts"}));
    EXPECT_EQ(Line().State(), DCB{}); // 9600 8N1 without flow control is how a port starts
    EXPECT_EQ(Line().Timeouts().ReadIntervalTimeout, 10);
    EXPECT_EQ(Line().Timeouts().ReadTotalTimeoutMultiplier, 0);
    EXPECT_EQ(Line().Timeouts().ReadTotalTimeoutConstant, 10);
    EXPECT_EQ(Line().Timeouts().WriteTotalTimeoutMultiplier, 0);
    EXPECT_EQ(Line().Timeouts().WriteTotalTimeoutConstant, 1000);
    ExpectError(0, "");
}

TEST_F(TSerialConfigureTest, AStateThatCantBeReadEndsIt) {
    Open();
    host.FailNext(Op::ComGetState, {.lLastError = 31});
    EXPECT_EQ(serial->Configure(), 1);
    ExpectError(31, "Failed retrieving DCB settings for opened port");
    EXPECT_EQ(TakeCalls(), Calls{"GetState"});
}

TEST_F(TSerialConfigureTest, AStateThatCantBeSetEndsIt) {
    Open();
    host.FailNext(Op::ComSetState, {.lLastError = 87});
    EXPECT_EQ(serial->Configure(), 1);
    ExpectError(87, "Failed setting opened port with DCB settings");
    EXPECT_EQ(TakeCalls(), (Calls{"GetState", "SetState"}));
}

TEST_F(TSerialConfigureTest, TimeLimitsThatCantBeSetAreAFailure) {
    Open();
    info.lBaudRate(1200);
    host.FailNext(Op::ComSetTimeouts, {.lLastError = 5});
    EXPECT_EQ(serial->Configure(), 1);
    ExpectError(5, "Failed setting serial timeout values");
    EXPECT_EQ(TakeCalls(), (Calls{"GetState", "SetState", "SetTimeouts"}));
    EXPECT_EQ(Line().State().BaudRate, 1200); // already in force
}

TEST_F(TSerialConfigureTest, AClosedPortHasNoState) {
    EXPECT_EQ(serial->Initialise(info, true), 0);
    EXPECT_EQ(serial->Configure(), 1);
    ExpectError(comerror::kNoHandle, "Failed retrieving DCB settings for opened port");
    EXPECT_EQ(TSerialTestAccess::SetSerialTimeouts(*serial), 1);
    ExpectError(comerror::kNoHandle, "Failed setting serial timeout values");
}

TEST_F(TSerialConfigureTest, ASettingThatTheHostCantMakeLeavesTheLineAsItWas) {
    OpenAndConfigure();
    const DCB before = Line().State();
    info.lBaudRate(300);
    info.lFlowControl(2);
    EXPECT_EQ(serial->Configure(), 1);
    ExpectError(comerror::kInvalid, "Failed setting opened port with DCB settings");
    EXPECT_EQ(Line().State(), before);
    info.lFlowControl(0); // nothing of the refused block is left
    EXPECT_EQ(serial->Configure(), 0);
    EXPECT_EQ(Line().State().Flags, before.Flags);
    EXPECT_EQ(Line().State().BaudRate, 300);
}

// The control block.

TEST_F(TSerialBlockTest, TheRateIsThatOfTheParameters) {
    for (const int32_t lBaudRate : {110, 9600, 115200, 12345, 0, -1, INT32_MAX}) {
        info.lBaudRate(lBaudRate);
        EXPECT_EQ(Configured().BaudRate, lBaudRate);
    }
}

TEST_F(TSerialBlockTest, DataBitsByTheirPosition) {
    for (const auto& [lDatabits, iByteSize] : {std::pair{0, 4},
                                               {1, 5},
                                               {2, 6},
                                               {3, 7},
                                               {4, 8},
                                               {5, 8},
                                               {8, 8},
                                               {-1, 8},
                                               {INT32_MAX, 8},
                                               {INT32_MIN, 8}}) {
        info.lDatabits(lDatabits);
        EXPECT_EQ(Configured().ByteSize, iByteSize) << lDatabits;
    }
}

TEST_F(TSerialBlockTest, ParityByItsPosition) {
    for (const auto& [lParity, iParity] : {std::pair{0, 2},
                                           {1, 1},
                                           {2, 0},
                                           {3, 4},
                                           {4, 3},
                                           {5, 4},
                                           {-1, 4},
                                           {INT32_MAX, 4},
                                           {INT32_MIN, 4}}) {
        info.lParity(lParity);
        EXPECT_EQ(Configured().Parity, iParity) << lParity;
    }
}

TEST_F(TSerialBlockTest, StopBitsByTheirPosition) {
    for (const auto& [lStopbit, iStopBits] :
         {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 2}, {-1, 2}, {INT32_MAX, 2}, {INT32_MIN, 2}}) {
        info.lStopbit(lStopbit);
        EXPECT_EQ(Configured().StopBits, iStopBits) << lStopbit;
    }
}

struct FlowCase {
    int32_t lFlowControl;
    int32_t lFromNone; ///< the flags, all clear before
    int32_t lFromAll;  ///< all set before
};

// fOutxCtsFlow is 0x4, fOutxDsrFlow 0x8, fDtrControl 0x30, fOutX 0x100, fInX 0x200, fRtsControl
// 0x3000.
TEST_F(TSerialBlockTest, FlowControlSetsAndClearsItsFlagsAndNoOther) {
    for (const FlowCase& flow :
         {FlowCase{0, 0, 0x7FFFFCF3}, FlowCase{1, 0x2004, 0x7FFFECF7},
          FlowCase{3, 0x300, 0x7FFFFFF3}, FlowCase{2, 0x28, 0x7FFFFCEB},
          FlowCase{4, 0x28, 0x7FFFFCEB}, FlowCase{-1, 0x28, 0x7FFFFCEB},
          FlowCase{INT32_MAX, 0x28, 0x7FFFFCEB}, FlowCase{INT32_MIN, 0x28, 0x7FFFFCEB}}) {
        EXPECT_EQ(FlagsFrom(0, flow.lFlowControl), flow.lFromNone) << flow.lFlowControl;
        EXPECT_EQ(FlagsFrom(0x7FFFFFFF, flow.lFlowControl), flow.lFromAll) << flow.lFlowControl;
    }
}

TEST_F(TSerialBlockTest, TheTopmostFlagIsLost) {
    EXPECT_EQ(FlagsFrom(-1, 0), 0x7FFFFCF3);
    EXPECT_EQ(FlagsFrom(INT32_MIN, 0), 0);
}

struct FlowChange {
    int32_t lFrom;
    int32_t lTo;
    int32_t lFlags;
};

TEST_F(TSerialBlockTest, DtrAndRtsControlOutliveAChangeOfFlowControl) {
    for (const FlowChange& change : {FlowChange{0, 0, 0x1011},
                                     {0, 1, 0x2015},
                                     {0, 2, 0x1029},
                                     {0, 3, 0x1311},
                                     FlowChange{1, 0, 0x2011},
                                     {1, 1, 0x2015},
                                     {1, 2, 0x2029},
                                     {1, 3, 0x2311},
                                     FlowChange{2, 0, 0x1021},
                                     {2, 1, 0x2025},
                                     {2, 2, 0x1029},
                                     {2, 3, 0x1321},
                                     FlowChange{3, 0, 0x1011},
                                     {3, 1, 0x2015},
                                     {3, 2, 0x1029},
                                     {3, 3, 0x1311}}) {
        static_cast<void>(FlagsFrom(DCB{}.Flags, change.lFrom));
        EXPECT_EQ(FlagsFrom(ports.state.Flags, change.lTo), change.lFlags)
            << change.lFrom << " to " << change.lTo;
    }
}

TEST_F(TSerialBlockTest, XonXoffAloneSetsItsLimitAndCharacters) {
    ports.state.XonLim = 7;
    ports.state.XoffLim = 8;
    ports.state.XonChar = 'a';
    ports.state.XoffChar = 'b';
    for (const int32_t lFlowControl : {0, 1, 2, 4, 3}) {
        const bool bXonXoff = lFlowControl == 3;
        info.lFlowControl(lFlowControl);
        EXPECT_EQ(Configured().XonLim, bXonXoff ? 50 : 7) << lFlowControl;
        EXPECT_EQ(Configured().XoffLim, 8) << lFlowControl; // never set
        EXPECT_EQ(Configured().XonChar, bXonXoff ? 17 : 'a') << lFlowControl;
        EXPECT_EQ(Configured().XoffChar, bXonXoff ? 19 : 'b') << lFlowControl;
    }
}

TEST_F(TSerialBlockTest, TheLimitAndCharactersOfXonXoffOutliveIt) {
    ports.state.XonChar = 'a';
    ports.state.XoffChar = 'b';
    EXPECT_EQ(FlagsFrom(0, 3), 0x300);
    for (const int32_t lFlowControl : {0, 1, 2}) {
        info.lFlowControl(lFlowControl);
        EXPECT_EQ(Configured().Flags & 0x300, 0) << lFlowControl;
        EXPECT_EQ(Configured().XonLim, 50) << lFlowControl;
        EXPECT_EQ(Configured().XonChar, 17) << lFlowControl;
        EXPECT_EQ(Configured().XoffChar, 19) << lFlowControl;
    }
}

TEST_F(TSerialBlockTest, EachConfigurationBeginsWithTheStateOfThePort) {
    EXPECT_EQ(FlagsFrom(0, 0), 0);
    EXPECT_EQ(FlagsFrom(0x40000000, 0), 0x40000000);
}

// Flags.

int32_t WithField(int32_t lFlags, int32_t lField, int32_t lValue) {
    TSerialTestAccess::SetDcbFlag(lFlags, lField, lValue);
    return lFlags;
}

TEST(TSerialFlags, AFieldOfOneBitIsSetByOneAlone) {
    for (const int32_t lField : {2, 3, 8, 9, 0, 5, 13, 30}) {
        const int32_t lBit = 1 << lField;
        EXPECT_EQ(WithField(0, lField, 1), lBit) << lField;
        EXPECT_EQ(WithField(0x7FFFFFFF, lField, 1), 0x7FFFFFFF) << lField;
        for (const int32_t lValue : {0, 2, 3, -1}) {
            EXPECT_EQ(WithField(0, lField, lValue), 0) << lField;
            EXPECT_EQ(WithField(0x7FFFFFFF, lField, lValue), 0x7FFFFFFF - lBit) << lField;
        }
    }
}

TEST(TSerialFlags, DtrControlIsTwoBitsWideWithoutAThirdValue) {
    for (const auto& [lValue, lBits] :
         {std::pair{0, 0}, {1, 0x10}, {2, 0x20}, {3, 0}, {4, 0}, {-1, 0}}) {
        EXPECT_EQ(WithField(0, 4, lValue), lBits) << lValue;
        EXPECT_EQ(WithField(0x7FFFFFFF, 4, lValue), 0x7FFFFFCF + lBits) << lValue;
    }
}

TEST(TSerialFlags, RtsControlIsTwoBitsWideWithAThirdValue) {
    for (const auto& [lValue, lBits] :
         {std::pair{0, 0}, {1, 0x1000}, {2, 0x2000}, {3, 0x3000}, {4, 0}, {-1, 0}}) {
        EXPECT_EQ(WithField(0, 12, lValue), lBits) << lValue;
        EXPECT_EQ(WithField(0x7FFFFFFF, 12, lValue), 0x7FFFCFFF + lBits) << lValue;
    }
}

TEST(TSerialFlags, TheTopmostBitPassesThroughNoWord) {
    EXPECT_EQ(WithField(INT32_MIN, 2, 1), 4);
    EXPECT_EQ(WithField(0, 31, 1), 0);
}

// SetBaudRate.

TEST_F(TSerialConfigureTest, TheRateOfTheParametersWinsOverTheOneGiven) {
    OpenAndConfigure();
    serial->SetBaudRate(300);
    EXPECT_EQ(Line().State().BaudRate, 9600);
    info.lBaudRate(19200);
    serial->SetBaudRate(19200);
    EXPECT_EQ(Line().State().BaudRate, 19200);
    serial->SetBaudRate(9600);
    EXPECT_EQ(Line().State().BaudRate, 19200);
    ExpectError(0, "");
}

TEST_F(TSerialConfigureTest, SetBaudRateSetsTheLineAndNoTimeLimits) {
    OpenAndConfigure();
    serial->SetBaudRate(9600);
    EXPECT_EQ(TakeCalls(), (Calls{"GetState", "SetState"}));
}

TEST_F(TSerialConfigureTest, SetBaudRateBringsTheOtherParametersIntoForceToo) {
    OpenAndConfigure();
    info.lDatabits(3);
    info.lParity(0);
    serial->SetBaudRate(9600);
    EXPECT_EQ(Line().State().ByteSize, 7);
    EXPECT_EQ(Line().State().Parity, 2);
}

TEST_F(TSerialConfigureTest, AFailureOfSetBaudRateShowsInTextAndNumber) {
    OpenAndConfigure();
    host.FailNext(Op::ComSetState, {.lLastError = 87});
    serial->SetBaudRate(9600);
    ExpectError(87, "Failed setting opened port with DCB settings");
    host.FailNext(Op::ComGetState, {.lLastError = 31});
    serial->SetBaudRate(9600);
    ExpectError(31, "Failed retrieving DCB settings for opened port");
}

TEST_F(TSerialConfigureTest, SetBaudRateOnAClosedPortFailsInItsText) {
    serial->SetBaudRate(9600);
    ExpectError(comerror::kNoHandle, "Failed retrieving DCB settings for opened port");
    EXPECT_EQ(TakeCalls(), Calls{"GetState"});
}

} // namespace
} // namespace brennik
