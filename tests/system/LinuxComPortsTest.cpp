#include "platform/LinuxComPorts.h"

#include "tests/system/ComPortsFixture.h"
#include "tests/system/SerialDriver.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace brennik {
namespace {

using namespace system_tests;

// Bits of the terminal interface.
constexpr uint32_t kIgnoresBreaks = 0000001;
constexpr uint32_t kStopsAtXoff = 0002000;
constexpr uint32_t kSendsXoff = 0010000;
constexpr uint32_t kTwoStops = 0000100;
constexpr uint32_t kReceiver = 0000200;
constexpr uint32_t kOdd = 0001000;
constexpr uint32_t kLocal = 0004000;
constexpr uint32_t kRateBits = 0010017;
constexpr uint32_t kRate9600 = 0000015;
constexpr uint32_t kRate115200 = 0010002;
constexpr uint32_t kOtherRate = 0010000;
constexpr uint32_t kMarkOrSpace = 010000000000;
constexpr uint32_t kHardwareFlow = 020000000000;

class LinuxComPortsTest : public ComPortsFixture {
  protected:
    /// How a program that knows nothing of this one fares when it opens the line.
    std::string OthersOpen() const {
        return ReportOfChild([&]() -> std::string {
            BecomeOrdinaryUser();
            const int nLine = ::open(terminal_.strPath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
            return nLine >= 0 ? "open" : "error " + std::to_string(errno);
        });
    }

    std::string OpenOf(const std::string& strPort) {
        const int32_t hPort = ports_.Open(strPort);
        return hPort >= 0 ? "handle " + std::to_string(hPort)
                          : "error " + std::to_string(ports_.LastError());
    }
};

TEST_F(LinuxComPortsTest, AnOpenPortStandsAtItsDefaults) {
    Open();
    EXPECT_EQ(hPort_, 0);
    EXPECT_EQ(State(), DCB{});
}

TEST_F(LinuxComPortsTest, AnOpenLineIsRawAndHeedsNoModemLines) {
    Open();
    const SeenSettings seen = terminal_.Settings();
    EXPECT_EQ(seen.lInputFlags, kIgnoresBreaks);
    EXPECT_EQ(seen.lOutputFlags, 0U);
    EXPECT_EQ(seen.lLocalFlags, 0U);
    EXPECT_EQ(seen.lControlFlags & (kLocal | kReceiver | kHardwareFlow), kLocal | kReceiver);
    std::string strAll;
    for (int i = 0; i < 256; ++i) {
        strAll += static_cast<char>(i);
    }
    terminal_.Send(strAll);
    LimitReads(10000);
    EXPECT_EQ(Read(256), strAll);
    EXPECT_EQ(Write(strAll), "256");
    EXPECT_EQ(terminal_.Receive(256), strAll) << "and nothing comes back by itself";
    EXPECT_EQ(terminal_.ReceiveAll(), "");
}

TEST_F(LinuxComPortsTest, OpeningLeavesTheRateAsItIs) {
    const SeenSettings before = terminal_.Settings();
    Open();
    EXPECT_EQ(terminal_.Settings().lBaudRate, before.lBaudRate);
    EXPECT_EQ(terminal_.Settings().lControlFlags & kRateBits, before.lControlFlags & kRateBits);
}

TEST_F(LinuxComPortsTest, OpeningLosesNothingThatHasArrived) {
    const int nLine = ::open(terminal_.strPath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    terminal_.Send("\x05knock\n");
    ASSERT_EQ(BytesThere(nLine), 7);
    Open();
    ::close(nLine);
    LimitReads(10000);
    EXPECT_EQ(Read(7), "\x05knock\n");
}

TEST_F(LinuxComPortsTest, RaisesItsModemLinesAndAsksForLowLatency) {
    SerialDriver driver;
    driver.nFlags = 0x10;
    driver.nBaudBase = 115200;
    Open();
    EXPECT_EQ(driver.strTold, "exclusive flags 8208 base 115200 raise 6 ");
}

TEST_F(LinuxComPortsTest, ADescriptorIsClosedOnExecAndNeverWaits) {
    Open();
    const int nLine = DescriptorFor(terminal_.strPath());
    ASSERT_GE(nLine, 0);
    EXPECT_EQ(::fcntl(nLine, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(nLine, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
}

TEST_F(LinuxComPortsTest, HandlesAreTheLowestNumbersThatAreFree) {
    const PseudoTerminal second;
    const PseudoTerminal third;
    LinuxComPorts ports(HostFile("[PORTS]\nCOM1=" + terminal_.strPath() + "\nCOM2=" +
                                 second.strPath() + "\nCOM30=" + third.strPath() + "\n"));
    EXPECT_EQ(ports.Open("COM1"), 0);
    EXPECT_EQ(ports.Open("com2"), 1);
    EXPECT_EQ(ports.Open("\\\\.\\COM30"), 2);
    EXPECT_TRUE(ports.Close(1));
    EXPECT_TRUE(ports.Close(0));
    EXPECT_EQ(ports.Open("COM2"), 0);
    EXPECT_EQ(ports.Open("COM1"), 1);
    EXPECT_EQ(ports.LastError(), 0);
}

// Ports that can't be opened.

TEST_F(LinuxComPortsTest, APortThatDoesNotExistIsNoneAndLeavesNothingOpen) {
    const TempFolder folder;
    WriteFile(folder / "file", "kept");
    LinuxComPorts ports(HostFile("[PORTS]\nCOM1=" + folder.strPath() +
                                 "/gone\nCOM2=\nCOM3=" + folder.strPath() +
                                 "/file\nCOM4=" + folder.strPath() + "\nCOM5=/dev/null\n"));
    const auto errorOf = [&](const std::string& strPort) {
        return ports.Open(strPort) == -1 ? ports.LastError() : 0;
    };
    EXPECT_EQ(errorOf("COM1"), ENOENT);
    EXPECT_EQ(errorOf("COM3"), ENOTTY);
    EXPECT_EQ(errorOf("COM2"), ENOENT);
    EXPECT_EQ(errorOf("COM4"), EISDIR);
    EXPECT_EQ(errorOf("LPT1"), ENOENT);
    EXPECT_EQ(errorOf("COM5"), ENOTTY);
    EXPECT_EQ(errorOf(""), ENOENT);
    EXPECT_EQ(ReadFile(folder / "file"), "kept");
    EXPECT_EQ(DescriptorFor(folder / "file"), -1);
}

TEST_F(LinuxComPortsTest, APortThatIsNotPermittedIsNone) {
    terminal_.Permit(0);
    EXPECT_EQ(ReportOfChild([&] {
                  BecomeOrdinaryUser();
                  return OpenOf("COM1");
              }),
              "error 13");
}

TEST_F(LinuxComPortsTest, APortIsOpenedOnlyOnceInOneProcess) {
    Open();
    EXPECT_EQ(OpenOf("COM1"), "error 16");
    EXPECT_EQ(OpenOf("\\\\.\\COM1"), "error 16");
    LimitReads(10000);
    terminal_.Send("x");
    EXPECT_EQ(Read(1), "x") << "the open one works on";
}

TEST_F(LinuxComPortsTest, APortThatAnotherProcessOfThisProgramHasOpenIsInUse) {
    Open();
    terminal_.Permit(0666);
    EXPECT_EQ(ReportOfChild([&] { return OpenOf("COM1"); }), "error 16");
    EXPECT_EQ(ReportOfChild([&] {
                  BecomeOrdinaryUser();
                  return OpenOf("COM1");
              }),
              "error 16");
}

TEST_F(LinuxComPortsTest, AnOpenPortIsClosedToOtherProgramsUntilItIsClosed) {
    terminal_.Permit(0666);
    EXPECT_EQ(OthersOpen(), "open");
    Open();
    EXPECT_EQ(OthersOpen(), "error 16");
    EXPECT_TRUE(ports_.Close(hPort_));
    EXPECT_EQ(OthersOpen(), "open");
}

TEST_F(LinuxComPortsTest, ALineThatAnotherProgramHasLockedIsLeftAlone) {
    terminal_.Permit(0666);
    const SeenSettings before = terminal_.Settings();
    const int nLine = ::open(terminal_.strPath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_EQ(::flock(nLine, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(OpenOf("COM1"), "error 16");
    EXPECT_EQ(terminal_.Settings(), before);
    EXPECT_EQ(OthersOpen(), "open");
    ::close(nLine);
    EXPECT_EQ(OpenOf("COM1"), "handle 0");
}

// Closing.

TEST_F(LinuxComPortsTest, AClosedPortIsOpenedAgainAtOnceByAnOrdinaryUser) {
    terminal_.Permit(0666);
    EXPECT_EQ(ReportOfChild([&] {
                  BecomeOrdinaryUser();
                  std::string strReport;
                  for (int i = 0; i < 3; ++i) {
                      strReport += OpenOf("COM1");
                      strReport += ports_.Close(0) ? " closed, " : " not closed, ";
                  }
                  return strReport;
              }),
              "handle 0 closed, handle 0 closed, handle 0 closed, ");
}

TEST_F(LinuxComPortsTest, PortsAreClosedWithTheirOwner) {
    terminal_.Permit(0666);
    {
        LinuxComPorts ports(HostFile("[PORTS]\nCOM1=" + terminal_.strPath() + "\n"));
        ASSERT_EQ(ports.Open("COM1"), 0);
        ASSERT_EQ(OthersOpen(), "error 16");
    }
    EXPECT_EQ(DescriptorFor(terminal_.strPath()), -1);
    EXPECT_EQ(OthersOpen(), "open");
}

TEST_F(LinuxComPortsTest, TheLastByteBeforeACloseIsNotLost) {
    for (int i = 0; i < 20; ++i) {
        Open();
        ASSERT_EQ(Write("\x06"), "1");
        ASSERT_TRUE(ports_.Close(hPort_));
        ASSERT_EQ(terminal_.Receive(1), "\x06");
    }
}

TEST_F(LinuxComPortsTest, WhatWasNotReadIsGoneAfterAClose) {
    Open();
    terminal_.Send("old");
    LimitReads(10000);
    ASSERT_EQ(Read(1), "o");
    terminal_.Send("news");
    ASSERT_TRUE(ports_.Close(hPort_));
    Open();
    terminal_.Send("!");
    LimitReads(10000);
    EXPECT_EQ(Read(1), "!");
}

TEST_F(LinuxComPortsTest, ACloseLetsTheDriverFinish) {
    Open();
    SerialDriver driver;
    driver.held = {3, 2, 1, 0};
    EXPECT_TRUE(ports_.Close(hPort_));
    EXPECT_EQ(driver.strTold, "discard input shared ");
}

TEST_F(LinuxComPortsTest, ACloseGivesUpAfterTwentyMillisecondsOnWhatDoesNotLeave) {
    Open();
    SerialDriver driver;
    driver.held = {5};
    const long long lLasted = Lasts([&] { EXPECT_TRUE(ports_.Close(hPort_)); });
    EXPECT_GE(lLasted, 20);
    EXPECT_LT(lLasted, kHangs);
    EXPECT_EQ(driver.strTold, "discard output discard input shared ");
    EXPECT_LE(driver.nLooks, 30) << "with a pause between the looks";
}

TEST_F(LinuxComPortsTest, ALineThatHungUpIsClosed) {
    Open();
    terminal_.HangUp();
    EXPECT_TRUE(ports_.Close(hPort_));
    EXPECT_FALSE(ports_.Close(hPort_));
    EXPECT_EQ(ports_.LastError(), EBADF);
}

TEST_F(LinuxComPortsTest, CallsOnNoPortFail) {
    Open();
    ASSERT_TRUE(ports_.Close(hPort_));
    char byte = 'x';
    int32_t lCount = 5;
    DCB dcb;
    dcb.BaudRate = 77;
    for (const int32_t hNone : {0, -1, 1, 1000000, -2147483647 - 1}) {
        const auto fails = [&](bool bDone) {
            const bool bAsExpected = !bDone && ports_.LastError() == EBADF;
            SpoilLastError();
            return bAsExpected;
        };
        EXPECT_TRUE(fails(ports_.Close(hNone)));
        EXPECT_TRUE(fails(ports_.Read(hNone, &byte, 1, lCount)));
        EXPECT_TRUE(fails(ports_.Write(hNone, "x", lCount)));
        EXPECT_TRUE(fails(ports_.GetState(hNone, dcb)));
        EXPECT_TRUE(fails(ports_.SetState(hNone, DCB{})));
        EXPECT_TRUE(fails(ports_.SetTimeouts(hNone, CommTimeouts{})));
        ports_.Purge(hNone, 15);
        EXPECT_EQ(ports_.LastError(), ENOENT) << "nobody looks at the outcome of a purge";
    }
    EXPECT_EQ(dcb.BaudRate, 77);
    EXPECT_EQ(byte, 'x');
}

TEST_F(LinuxComPortsTest, NoSuccessClearsTheLastError) {
    EXPECT_EQ(ports_.LastError(), 0);
    SpoilLastError();
    Open();
    EXPECT_EQ(Write("x"), "1");
    EXPECT_EQ(Read(1), "");
    EXPECT_EQ(SetState(State()), "set");
    ports_.Purge(hPort_, 15);
    EXPECT_TRUE(ports_.Close(hPort_));
    EXPECT_EQ(ports_.LastError(), ENOENT);
}

// Settings.

TEST_F(LinuxComPortsTest, SetsTheLineAsAWhole) {
    Open();
    DCB dcb;
    dcb.BaudRate = 115200;
    dcb.ByteSize = 8;
    dcb.Parity = 3;
    dcb.StopBits = 2;
    dcb.Flags = 0x3305 & ~0x1000; // CTS flow, XON and XOFF both ways, handshake of RTS
    dcb.XonChar = '\x14';
    dcb.XoffChar = '\x15';
    ASSERT_EQ(SetState(dcb), "set");
    EXPECT_EQ(State(), dcb);
    const SeenSettings seen = terminal_.Settings();
    const uint32_t lShown = kTwoStops | kOdd | kMarkOrSpace | kHardwareFlow | kLocal | kReceiver;
    EXPECT_EQ(seen.lControlFlags & (lShown | kRateBits), lShown | kRate115200);
    EXPECT_EQ(seen.lInputFlags, kIgnoresBreaks | kStopsAtXoff | kSendsXoff);
    EXPECT_EQ(seen.lBaudRate, 115200U);
    EXPECT_EQ(seen.cXon, 0x14);
    EXPECT_EQ(seen.cXoff, 0x15);
    ASSERT_EQ(SetState(DCB{}), "set");
    const SeenSettings plain = terminal_.Settings();
    EXPECT_EQ(plain.lControlFlags & (lShown | kRateBits), kLocal | kReceiver | kRate9600);
    EXPECT_EQ(plain.lInputFlags, kIgnoresBreaks);
    EXPECT_EQ(plain.lBaudRate, 9600U);
    EXPECT_EQ(plain.lOutputFlags, 0U);
    EXPECT_EQ(plain.lLocalFlags, 0U);
}

TEST_F(LinuxComPortsTest, SetsRatesThatHaveNoName) {
    Open();
    for (const int32_t lRate : {250000, 12345, 1}) {
        DCB dcb;
        dcb.BaudRate = lRate;
        ASSERT_EQ(SetState(dcb), "set");
        EXPECT_EQ(terminal_.Settings().lBaudRate, static_cast<uint32_t>(lRate));
        EXPECT_EQ(terminal_.Settings().lControlFlags & kRateBits, kOtherRate);
    }
}

TEST_F(LinuxComPortsTest, EveryNamedRateIsTheOneThatItsNameSays) {
    Open();
    for (const int32_t lRate :
         {50,     75,     110,     134,     150,     200,     300,     600,     1200,    1800,
          2400,   4800,   9600,    19200,   38400,   57600,   115200,  230400,  460800,  500000,
          576000, 921600, 1000000, 1152000, 1500000, 2000000, 2500000, 3000000, 3500000, 4000000}) {
        DCB dcb;
        dcb.BaudRate = lRate;
        ASSERT_EQ(SetState(dcb), "set") << lRate;
        EXPECT_EQ(terminal_.Settings().lBaudRate, static_cast<uint32_t>(lRate));
        EXPECT_NE(terminal_.Settings().lControlFlags & kRateBits, kOtherRate) << lRate;
    }
}

TEST_F(LinuxComPortsTest, TheModemLinesFollowTheControlBlock) {
    Open();
    SerialDriver driver;
    DCB dcb;
    ASSERT_EQ(SetState(dcb), "set");
    EXPECT_EQ(driver.strTold, "raise 2 raise 4 ");
    driver.strTold.clear();
    dcb.Flags = 0x1001;
    ASSERT_EQ(SetState(dcb), "set");
    EXPECT_EQ(driver.strTold, "drop 2 raise 4 ");
    driver.strTold.clear();
    dcb.Flags = 0x0011;
    ASSERT_EQ(SetState(dcb), "set");
    EXPECT_EQ(driver.strTold, "raise 2 drop 4 ");
}

TEST_F(LinuxComPortsTest, SettingsThatCannotBeMadeLeaveTheLineAsItWas) {
    Open();
    DCB good;
    good.BaudRate = 2400;
    ASSERT_EQ(SetState(good), "set");
    const SeenSettings before = terminal_.Settings();
    for (const auto& spoil : std::vector<std::function<void(DCB&)>>{
             [](DCB& dcb) { dcb.ByteSize = 4; }, [](DCB& dcb) { dcb.Flags |= 8; },
             [](DCB& dcb) { dcb.StopBits = 1; }, [](DCB& dcb) { dcb.BaudRate = 0; },
             [](DCB& dcb) { dcb.Flags = 0x1021; }}) {
        DCB dcb;
        spoil(dcb);
        SpoilLastError();
        EXPECT_EQ(SetState(dcb), "error 22");
        EXPECT_EQ(State(), good);
        EXPECT_EQ(terminal_.Settings(), before);
    }
}

TEST_F(LinuxComPortsTest, SettingsThatTheDriverDoesNotTakeAreTakenBack) {
    Open();
    DCB good;
    good.BaudRate = 2400;
    ASSERT_EQ(SetState(good), "set");
    const SeenSettings before = terminal_.Settings();
    DCB dcb;
    dcb.Flags = 0x3315 & ~0x1000;
    const auto refuses = [&](const SerialDriver& driver) {
        EXPECT_EQ(driver.strTold, "") << "no modem line moves";
        EXPECT_EQ(State(), good);
        EXPECT_EQ(terminal_.Settings(), before);
    };
    {
        SerialDriver driver;
        driver.lRefusedControlFlags = kHardwareFlow;
        EXPECT_EQ(SetState(dcb), "error 22");
        driver.lRefusedControlFlags = 0;
        refuses(driver);
    }
    for (const uint32_t lFlag : {kStopsAtXoff, kSendsXoff}) {
        SerialDriver driver;
        driver.lRefusedInputFlags = lFlag;
        EXPECT_EQ(SetState(dcb), "error 22");
        driver.lRefusedInputFlags = 0;
        refuses(driver);
    }
}

TEST_F(LinuxComPortsTest, ADriverMayRoundARateALittle) {
    Open();
    DCB dcb;
    dcb.BaudRate = 10000;
    SerialDriver driver;
    driver.lOnlyBaudRate = 10300;
    EXPECT_EQ(SetState(dcb), "set");
    driver.lOnlyBaudRate = 9699;
    EXPECT_EQ(SetState(dcb), "error 22");
}

TEST_F(LinuxComPortsTest, APseudoTerminalHasItsOwnFrame) {
    Open();
    DCB dcb;
    dcb.ByteSize = 7;
    dcb.Parity = 2;
    ASSERT_EQ(SetState(dcb), "set");
    EXPECT_EQ(State(), dcb);
}

TEST_F(LinuxComPortsTest, ALineThatHungUpCannotBeSet) {
    Open();
    terminal_.HangUp();
    DCB dcb;
    dcb.BaudRate = 300;
    EXPECT_EQ(SetState(dcb), "error 5");
    EXPECT_EQ(State(), DCB{});
}

TEST_F(LinuxComPortsTest, TimeLimitsBelowNothingAreNone) {
    Open();
    for (int i = 0; i < 5; ++i) {
        int32_t lLimits[] = {0, 0, 0, 0, 0};
        lLimits[i] = -1;
        SpoilLastError();
        EXPECT_FALSE(ports_.SetTimeouts(
            hPort_, {lLimits[0], lLimits[1], lLimits[2], lLimits[3], lLimits[4]}));
        EXPECT_EQ(ports_.LastError(), EINVAL);
    }
    EXPECT_EQ(Read(1), "") << "the former ones stand";
}

} // namespace
} // namespace brennik
