// Bytes on a real port, both ways.
#include "tests/system/ComPortsFixture.h"
#include "tests/system/SerialDriver.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

constexpr const char kXon = '\x11';
constexpr const char kXoff = '\x13';

class LinuxComPortsTransferTest : public ComPortsFixture {
  protected:
    /// XON and XOFF both ways.
    void SetSoftwareFlow() {
        DCB dcb;
        dcb.Flags |= 0x300;
        ASSERT_EQ(SetState(dcb), "set");
    }

    /// The far end asks the line to stop, which the line has done when this returns.
    void FarEndStops() {
        terminal_.Send(std::string(1, kXoff));
        ASSERT_EQ(Read(1), "");
    }

    /// Fills the line until it takes no more; what it took.
    std::string Fill() {
        LimitWrites(20);
        std::string strAll;
        for (;;) {
            const std::string strPiece(1000, static_cast<char>('a' + strAll.size() / 1000 % 26));
            const std::string strWritten = Write(strPiece);
            strAll += strPiece.substr(0, static_cast<size_t>(std::atoi(strWritten.c_str())));
            if (strWritten == "0") {
                return strAll;
            }
        }
    }

    static double CpuSeconds() {
        timespec used{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
        return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
    }
};

/// Something that the far end does in its own thread once signals have interrupted this one.
class FarThread {
  public:
    explicit FarThread(const std::function<void()>& body)
        : thread_([body] {
              sigset_t alarms;
              sigemptyset(&alarms);
              sigaddset(&alarms, SIGALRM);
              pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
              Interruptions::Await(5);
              body();
          }) {}
    ~FarThread() { thread_.join(); }
    FarThread(const FarThread&) = delete;
    FarThread& operator=(const FarThread&) = delete;

  private:
    std::thread thread_;
};

// Reading.

TEST_F(LinuxComPortsTransferTest, AReadEndsWithAllItsBytes) {
    Open();
    LimitReads(10000);
    terminal_.Send("frame"s + '\0' + "\xFF");
    EXPECT_LT(Lasts([&] { EXPECT_EQ(Read(7), "frame"s + '\0' + "\xFF"); }), kHangs);
}

TEST_F(LinuxComPortsTransferTest, SingleBytesAreReadAheadAndKeepTheirOrder) {
    Open();
    LimitReads(10000);
    terminal_.Send("abcdef");
    EXPECT_EQ(Read(1), "a");
    const int nLine = DescriptorFor(terminal_.strPath());
    EXPECT_EQ(BytesThere(nLine), 0) << "one call has taken all";
    terminal_.Send("ghi");
    EXPECT_EQ(Read(1), "b");
    EXPECT_EQ(Read(3), "cde");
    EXPECT_EQ(BytesThere(nLine), 3) << "what was read ahead is used up first";
    EXPECT_EQ(Read(3), "fgh");
    EXPECT_EQ(Read(1), "i");
}

TEST_F(LinuxComPortsTransferTest, AReadGathersMoreThanTheSystemHandsOverAtOnce) {
    Open();
    LimitReads(10000);
    std::string strLong;
    for (int i = 0; i < 20000; ++i) {
        strLong += static_cast<char>(i % 251);
    }
    std::thread far([&] { terminal_.Send(strLong); });
    EXPECT_EQ(Read(1), strLong.substr(0, 1));
    EXPECT_EQ(Read(19999), strLong.substr(1));
    far.join();
}

TEST_F(LinuxComPortsTransferTest, AReadOfNothingLastsItsTime) {
    Open();
    long long lLasted = Lasts([&] { EXPECT_EQ(Read(1), ""); });
    EXPECT_GE(lLasted, 10);
    EXPECT_LT(lLasted, kHangs);
    LimitReads(30);
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(1), ""); }), 30);
    LimitReads(5, 10);
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(3), ""); }), 35);
    LimitReads(0, 10);
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(2), ""); }), 20);
}

TEST_F(LinuxComPortsTransferTest, AReadThatGetsFewerBytesLastsItsTime) {
    Open();
    LimitReads(30);
    terminal_.Send("ab");
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(5), "ab"); }), 30);
    terminal_.Send("cd");
    ASSERT_EQ(Read(1), "c");
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(5), "d"); }), 30) << "also behind one read ahead";
}

TEST_F(LinuxComPortsTransferTest, AGapBetweenBytesEndsARead) {
    Open();
    LimitReads(10000, 0, 20);
    terminal_.Send("ab");
    const long long lLasted = Lasts([&] { EXPECT_EQ(Read(5), "ab"); });
    EXPECT_GE(lLasted, 20);
    EXPECT_LT(lLasted, kHangs);
    LimitReads(20, 0, 10000);
    terminal_.Send("c");
    EXPECT_LT(Lasts([&] { EXPECT_EQ(Read(5), "c"); }), kHangs) << "the whole limit stands";
    LimitReads(30, 0, 1);
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(5), ""); }), 30) << "before the first there is no gap";
}

TEST_F(LinuxComPortsTransferTest, ALimitTooLongToCountIsNone) {
    Open();
    LimitReads(2147483647, 2147483647);
    terminal_.Send("0123456789");
    EXPECT_EQ(Read(10), "0123456789");
}

TEST_F(LinuxComPortsTransferTest, AReadOfNoBytesEndsAtOnce) {
    Open();
    LimitReads(10000);
    EXPECT_LT(Lasts([&] { EXPECT_EQ(Read(0), ""); }), kHangs);
    char byte = 'x';
    int32_t lRead = 5;
    EXPECT_FALSE(ports_.Read(hPort_, &byte, -1, lRead));
    EXPECT_EQ(ports_.LastError(), EINVAL);
    EXPECT_EQ(lRead, 0);
}

TEST_F(LinuxComPortsTransferTest, AReadWithoutALimitWaitsAndIsResumed) {
    Open();
    LimitReads(0);
    EXPECT_EQ(ReportOfChild([&] {
                  const Interruptions interruptions;
                  const FarThread far([&] { terminal_.Send("x"); });
                  const std::string strRead = Read(1);
                  return strRead + (Interruptions::Count() >= 5 ? " interrupted" : " quiet");
              }),
              "x interrupted");
}

TEST_F(LinuxComPortsTransferTest, InterruptedReadsLastTheRestOfTheirTime) {
    EXPECT_EQ(ReportOfChild([] {
                  // A line that nobody but this process holds.
                  PseudoTerminal terminal;
                  LinuxComPorts ports(HostFile("[PORTS]\nCOM1=" + terminal.strPath() + "\n"));
                  const int32_t hPort = ports.Open("COM1");
                  static_cast<void>(ports.SetTimeouts(hPort, {0, 0, 60, 0, 0}));
                  const Interruptions interruptions;
                  const auto read = [&] {
                      char byte = 0;
                      int32_t lRead = 0;
                      bool bDone = true;
                      const bool bWhole =
                          Lasts([&] { bDone = ports.Read(hPort, &byte, 1, lRead); }) >= 60;
                      return std::string(bWhole ? "whole " : "short ") + (bDone ? "" : "dead ");
                  };
                  const std::string strIdle = read();
                  terminal.HangUp();
                  const std::string strDead = read();
                  return strIdle + strDead +
                         (Interruptions::Count() > 10 ? "interrupted" : "quiet");
              }),
              "whole whole dead interrupted");
}

TEST_F(LinuxComPortsTransferTest, AnIdleReadUsesNoTimeOfTheProcessor) {
    Open();
    LimitReads(100);
    const double before = CpuSeconds();
    EXPECT_EQ(Read(1), "");
    EXPECT_LT(CpuSeconds() - before, 0.05);
}

// Lines that hang up.

TEST_F(LinuxComPortsTransferTest, ALineThatHasHungUpFailsEachReadAfterItsTime) {
    Open();
    terminal_.HangUp();
    for (int i = 0; i < 3; ++i) {
        SpoilLastError();
        EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(1), "error 5"); }), 10);
    }
    LimitReads(0);
    const long long lLasted = Lasts([&] { EXPECT_EQ(Read(1), "error 5"); });
    EXPECT_GE(lLasted, 10) << "without a limit too";
    EXPECT_LT(lLasted, kHangs);
}

TEST_F(LinuxComPortsTransferTest, ALineThatHangsUpWhileItIsReadFailsTheRead) {
    Open();
    LimitReads(50);
    std::thread far([&] { terminal_.HangUp(); });
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Read(1), "error 5"); }), 50);
    far.join();
}

TEST_F(LinuxComPortsTransferTest, AReadWithoutALimitEndsWhenTheLineHangsUp) {
    Open();
    LimitReads(0);
    std::thread far([&] { terminal_.HangUp(); });
    EXPECT_LT(Lasts([&] { EXPECT_EQ(Read(1), "error 5"); }), kHangs);
    far.join();
}

TEST_F(LinuxComPortsTransferTest, WhatWasReadAheadIsServedBeforeTheFailure) {
    Open();
    LimitReads(20);
    terminal_.Send("abcd");
    ASSERT_EQ(Read(1), "a");
    terminal_.HangUp();
    EXPECT_EQ(Read(1), "b");
    SpoilLastError();
    EXPECT_EQ(Read(5), "cd");
    EXPECT_EQ(ports_.LastError(), ENOENT);
    EXPECT_EQ(Read(1), "error 5");
}

TEST_F(LinuxComPortsTransferTest, ReadsOfADeadLineNeverRunAtFullLoad) {
    Open();
    terminal_.HangUp();
    const double before = CpuSeconds();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(Read(1), "error 5");
    }
    EXPECT_LT(CpuSeconds() - before, 0.05);
}

TEST_F(LinuxComPortsTransferTest, ALineThatHasHungUpFailsEachWrite) {
    Open();
    terminal_.HangUp();
    for (const std::string& strText : {"x"s, std::string(100000, 'x'), ""s}) {
        SpoilLastError();
        EXPECT_EQ(Write(strText), "error 5");
    }
}

TEST_F(LinuxComPortsTransferTest, ALineThatHangsUpWhileItIsWrittenFailsTheWrite) {
    Open();
    SetSoftwareFlow();
    FarEndStops();
    LimitWrites(10000);
    std::thread far([&] { terminal_.HangUp(); });
    EXPECT_LT(Lasts([&] { EXPECT_EQ(Write("x"), "error 5"); }), kHangs);
    far.join();
}

// Writing.

TEST_F(LinuxComPortsTransferTest, WritesWhatTheOtherEndReads) {
    Open();
    EXPECT_EQ(Write("frame"s + '\0' + "\n\r\x13\x03\xFF"), "11");
    EXPECT_EQ(terminal_.Receive(11), "frame"s + '\0' + "\n\r\x13\x03\xFF");
    EXPECT_EQ(Write(""), "0");
}

TEST_F(LinuxComPortsTransferTest, AWriteThatFindsNoRoomGoesOnWhenThereIsSome) {
    Open();
    LimitWrites(0);
    std::string strLong;
    for (int i = 0; i < 100000; ++i) {
        strLong += static_cast<char>(i % 253);
    }
    std::string strReceived;
    std::thread far([&] { strReceived = terminal_.Receive(100000); });
    EXPECT_EQ(Write(strLong), "100000");
    far.join();
    EXPECT_EQ(strReceived, strLong);
}

TEST_F(LinuxComPortsTransferTest, AWriteWithoutALimitWaitsAndIsResumed) {
    Open();
    SetSoftwareFlow();
    FarEndStops();
    LimitWrites(0);
    EXPECT_EQ(ReportOfChild([&] {
                  const Interruptions interruptions;
                  const FarThread far([&] { terminal_.Send(std::string(1, kXon)); });
                  const std::string strWritten = Write("abc");
                  return strWritten + (Interruptions::Count() >= 5 ? " interrupted" : " quiet");
              }),
              "3 interrupted");
    EXPECT_EQ(terminal_.Receive(3), "abc");
}

TEST_F(LinuxComPortsTransferTest, ALineThatTheOtherEndStoppedTakesNothingForTheWholeTime) {
    Open();
    SetSoftwareFlow();
    FarEndStops();
    LimitWrites(50);
    const long long lLasted = Lasts([&] { EXPECT_EQ(Write("abc"), "0"); });
    EXPECT_GE(lLasted, 50);
    EXPECT_LT(lLasted, kHangs);
    LimitWrites(5, 10);
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Write("abc"), "0"); }), 35);
    terminal_.Send(std::string(1, kXon));
    ASSERT_EQ(Read(1), "");
    EXPECT_EQ(Write("def"), "3");
    EXPECT_EQ(terminal_.Receive(3), "def");
    EXPECT_EQ(terminal_.ReceiveAll(), "") << "nothing of what was stuck comes later";
}

TEST_F(LinuxComPortsTransferTest, OfALineThatNobodyReadsOnlyWhatItTookCounts) {
    Open();
    const std::string strAll = Fill();
    ASSERT_FALSE(strAll.empty());
    LimitWrites(50);
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Write("more"), "0"); }), 50);
    EXPECT_EQ(terminal_.Receive(strAll.size()), strAll);
    EXPECT_EQ(Write("more"), "4");
    EXPECT_EQ(terminal_.Receive(4), "more");
    EXPECT_EQ(terminal_.ReceiveAll(), "");
}

TEST_F(LinuxComPortsTransferTest, AWriteWithoutRoomUsesNoTimeOfTheProcessor) {
    Open();
    SetSoftwareFlow();
    FarEndStops();
    LimitWrites(100);
    const double before = CpuSeconds();
    EXPECT_EQ(Write("abc"), "0");
    EXPECT_LT(CpuSeconds() - before, 0.05);
}

TEST_F(LinuxComPortsTransferTest, AStuckWriteUsesLittleTimeOfTheProcessor) {
    Open();
    SerialDriver driver;
    driver.held = {50};
    LimitWrites(100);
    const double before = CpuSeconds();
    EXPECT_EQ(Write(std::string(50, 'x')), "0");
    EXPECT_LT(CpuSeconds() - before, 0.05);
}

TEST_F(LinuxComPortsTransferTest, AWriteReturnsWhenTheRestTakesTenMilliseconds) {
    Open(); // 9600 bits a second: nine bytes take 9.4 ms, ten take 10.4 ms
    SerialDriver driver;
    driver.held = {12, 11, 10, 9, 8};
    EXPECT_EQ(Write("twelve bytes"), "12");
    EXPECT_EQ(driver.nLooks, 4);
    EXPECT_EQ(driver.strTold, "");
}

TEST_F(LinuxComPortsTransferTest, ADriverThatCountsWholeBuffersHoldsNoMoreThanItWasHanded) {
    Open();
    SerialDriver driver;
    driver.held = {0, 1280};
    EXPECT_EQ(Write("\x06"), "1");
    EXPECT_EQ(driver.nLooks, 2) << "one byte is out at once";
}

TEST_F(LinuxComPortsTransferTest, TheRestIsCountedAtTheRateOfTheLine) {
    Open();
    DCB dcb;
    dcb.BaudRate = 1200; // one byte takes 8.3 ms
    ASSERT_EQ(SetState(dcb), "set");
    SerialDriver driver;
    driver.held = {3, 2, 1, 0};
    EXPECT_EQ(Write("abc"), "3");
    EXPECT_EQ(driver.nLooks, 3);
}

TEST_F(LinuxComPortsTransferTest, WhatStillMovesWhenTheTimeIsOverCountsAsWritten) {
    Open();
    LimitWrites(150);
    SerialDriver driver;
    // The one byte leaves behind the first tenth of the time, in which the hardware takes some.
    driver.held = {100, 100, 100, 100, 100, 100, 100, 100, 99};
    EXPECT_GE(Lasts([&] { EXPECT_EQ(Write(std::string(100, 'x')), "100"); }), 150);
    EXPECT_EQ(driver.strTold, "");
}

TEST_F(LinuxComPortsTransferTest, WhatIsStuckInTheDriverIsThrownAway) {
    Open();
    LimitWrites(40);
    SerialDriver driver;
    driver.held = {84};
    const long long lLasted = Lasts([&] { EXPECT_EQ(Write(std::string(100, 'x')), "16"); });
    EXPECT_GE(lLasted, 40);
    EXPECT_LT(lLasted, kHangs);
    EXPECT_EQ(driver.strTold, "discard output ");
    EXPECT_LE(driver.nLooks, 45) << "with a pause between the looks";
}

TEST_F(LinuxComPortsTransferTest, ADriverThatTellsNothingOfItsBytesFailsTheWrite) {
    Open();
    SerialDriver driver;
    driver.nLookError = EIO;
    EXPECT_EQ(Write("x"), "error 5");
}

// Purging.

TEST_F(LinuxComPortsTransferTest, APurgeOfTheInputTakesWhatWasReadAheadAndWhatWasNot) {
    Open();
    LimitReads(10000);
    terminal_.Send("abc");
    ASSERT_EQ(Read(1), "a");
    terminal_.Send("def");
    ports_.Purge(hPort_, 0x0A);
    terminal_.Send("!");
    EXPECT_EQ(Read(1), "!");
    EXPECT_EQ(ports_.LastError(), 0);
}

TEST_F(LinuxComPortsTransferTest, APurgeOfTheOutputLeavesTheInputAlone) {
    Open();
    LimitReads(10000);
    terminal_.Send("abc");
    ASSERT_EQ(Read(1), "a");
    ASSERT_EQ(Write("out"), "3");
    ports_.Purge(hPort_, 0x05);
    EXPECT_EQ(Read(2), "bc");
    EXPECT_EQ(terminal_.Receive(3), "out") << "it was out already";
}

TEST_F(LinuxComPortsTransferTest, EachFlagOfAPurgeHasItsOwnQueue) {
    Open();
    SerialDriver driver;
    driver.held = {7};
    const auto told = [&](int32_t lFlags) {
        driver.strTold.clear();
        ports_.Purge(hPort_, lFlags);
        return driver.strTold;
    };
    EXPECT_EQ(told(0x0A), "discard input ");
    EXPECT_EQ(told(0x08), "discard input ");
    EXPECT_EQ(told(0x05), "discard output ");
    EXPECT_EQ(told(0x04), "discard output ");
    EXPECT_EQ(told(0x0F), "discard input discard output ");
    EXPECT_EQ(told(0x03), "") << "nothing is under way that could be aborted";
    EXPECT_EQ(told(0), "");
}

} // namespace
} // namespace brennik
