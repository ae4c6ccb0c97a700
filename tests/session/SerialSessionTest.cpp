#include "platform/RuntimeFailure.h"
#include "tests/session/SessionWorld.h"

#include <gmock/gmock.h>

#include <numeric>

namespace brennik::session {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using world::kMillisecond;
using world::kSecond;
using world::Microseconds;
using world::Op;

constexpr const char* kConnected =
    "INFO   : Connected to Port=COM3, BaudRate=115200, Parity=None ,Databits=8 ,Stopbit=1 "
    ",Flowcontrol=None ,Connection Attempt=1";

class SerialSession : public SessionTest {
  protected:
    SerialSession() : SessionTest(Over::SerialLine) {}

    world::SimLine& Line() { return host.comPorts.Line(kComPort); }

    /// Nothing of the run is left: no port, no file.
    void ExpectNothingOpen() const {
        EXPECT_EQ(host.comPorts.nOpenPorts(), 0);
        EXPECT_EQ(host.files.nOpenStreams(), 0);
    }
};

TEST_F(SerialSession, StoresFilesAsOverTcp) {
    Say({"LA\x1C"s + "1", Open("a.txt", 8), Write("one "), Write("two ", 4), "C", "S"});
    ASSERT_EQ(Run(), 0) << engine->strErrorMessage();
    EXPECT_EQ(File("/srv/pos/I/1/a.txt"), "one two ");
    EXPECT_EQ(File("/srv/pos/I/1/config.sys"), "A=1\r\n");
    EXPECT_EQ(engine->lNumFilesDownloaded(), 1);
    EXPECT_EQ(host.network.nConnections(), 0u);
    ExpectNothingOpen();
}

TEST_F(SerialSession, KeepsEveryByteOfAFile) {
    std::string strAll(256, '\0');
    std::iota(strAll.begin(), strAll.end(), '\0');
    Say({Open("a.bin", 256), Write(strAll), "C", "S"});
    ASSERT_EQ(Run(), 0) << engine->strErrorMessage();
    EXPECT_EQ(File("/srv/pos/I/1/a.bin"), strAll);
}

TEST_F(SerialSession, AsksWithoutTheTwoTitles) {
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    EXPECT_EQ(peer.Received(), Frame("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1") + kAck);
}

class TcpSession : public SessionTest {};

/// The log of one and the same session.
const std::vector<std::string> kPayloads{"LA\x1C"s + "1", Open("a.txt", 4), Write("one "), "C",
                                         "S"};

TEST_F(SerialSession, LogsTheChannelsOwnLines) {
    Say(kPayloads);
    ASSERT_EQ(Run(), 0);
    EXPECT_THAT(Log(), ElementsAre("INFO   : Brennik Client v1.3.2", "INFO   : Brennik Profile=7",
                                   "INFO   : Brennik Application=APP",
                                   "INFO   : Brennik Terminal Id=T1", kConnected,
                                   "INFO   : Downloaded file=/srv/pos\\I\\1\\a.txt, filesize=4",
                                   "INFO   : Connection Closed"));
}

TEST_F(TcpSession, LogsTheSameButForTheChannelsLines) {
    Say(kPayloads);
    ASSERT_EQ(Run(), 0);
    const auto lines = Log();
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(lines[3], "INFO   : Brennik Terminal Id=T1");
    EXPECT_EQ(lines[6], "INFO   : Downloaded file=/srv/pos\\a.txt, filesize=4");
}

TEST_F(SerialSession, TakesTheLineFromTheServerGroupOfTheProfile) {
    config.lServerBaudRate(19200);
    config.strServerParity("even");
    config.iServerDatabits(7);
    config.dServerStopBit(2);
    config.iServerFlowControl(1);
    config.iClientComPort(9);
    config.lClientBaudRate(300);
    DCB far;
    far.BaudRate = 19200;
    far.ByteSize = 7;
    far.Parity = 2;
    far.StopBits = 2;
    Line().SetFarSettings(far);
    Say({"S"});
    ASSERT_EQ(Run(), 0);
    far.Flags = 0x1311; // binary, DTR and RTS on, XON/XOFF both ways
    far.XonLim = 50;
    EXPECT_EQ(Line().State(), far);
    EXPECT_EQ(Line().Timeouts(), (CommTimeouts{10, 0, 10, 0, 1000}));
    EXPECT_EQ(Log()[4], "INFO   : Connected to Port=COM3, BaudRate=19200, Parity=Even ,Databits=7 "
                        ",Stopbit=2 ,Flowcontrol=XonXoff ,Connection Attempt=1");
}

// Each frame costs its bytes on the line, the 10 ms that end the delivery, and its ACK.
TEST_F(SerialSession, CostsItsBytesAndTenMillisecondsForEachFrame) {
    config.bLoggingEnabled(false);
    const auto timeOf = [&](size_t nBlocks) {
        std::vector<std::string> payloads{Open("a.bin", 1024)};
        payloads.insert(payloads.end(), nBlocks, Write(std::string(1024, 'x')));
        payloads.insert(payloads.end(), {"C", "S"});
        Say(std::move(payloads));
        const Microseconds begin = host.Now();
        EXPECT_EQ(Run(), 0);
        return host.Now() - begin;
    };
    const Microseconds first = timeOf(1);
    // 1034 bytes of frame and 1 of ACK at 11520 bytes a second are 89,843.75 us. Three calls of
    // this host at a microsecond each stand behind the last byte: the pump, the empty read, the
    // write. Bytes arrive on whole microseconds, which adds 26 us over the hundred frames.
    EXPECT_EQ(timeOf(101) - first, 8'984'375 + 100 * (10'000 + 3) + 26);
}

// ---- Ports that don't open.

TEST_F(SerialSession, TriesAMissingPortAsOftenAsTheProfileSays) {
    config.iServerComPort(4);
    config.lConnectAttempts(3);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    EXPECT_GE(host.Now() - begin, 750 * kMillisecond);
    EXPECT_LT(host.Now() - begin, 760 * kMillisecond);
    EXPECT_EQ(engine->lErrorCode(), 1000018);
    EXPECT_EQ(engine->strErrorMessage(), "Failed opening COM Port COM4");
    // One line for each attempt and one for the run; no close.
    EXPECT_EQ(Errors(), std::vector<std::string>(
                            4, "Error Code=1000018, Error Message=Failed opening COM Port COM4"));
    EXPECT_EQ(Log().size(), 8u);
}

TEST_F(SerialSession, OpensAPortThatBecomesFreeInTime) {
    config.lConnectAttempts(3);
    host.FailNext(Op::ComOpen, {.lLastError = world::comerror::kBusy}, 2);
    Say({"S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(Log()[6].substr(Log()[6].size() - 22), " ,Connection Attempt=3");
}

TEST_F(SerialSession, FailsWithoutAttempts) {
    config.lConnectAttempts(0);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000010, "Connection Attempts configuration value is invalid");
    EXPECT_EQ(Line().nOpenings(), 0);
}

TEST_F(SerialSession, FailsOnALineThatCantBeSetAndLeavesThePortFree) {
    config.iServerDatabits(4);
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000018, "Failed setting opened port with DCB settings");
    EXPECT_EQ(Log()[4].substr(0, 40), "INFO   : Connected to Port=COM3, BaudRat");
    EXPECT_EQ(Log().size(), 6u) << "nothing tells of a close";
    ExpectNothingOpen();
}

// ---- Lines that carry nothing useful.

TEST_F(SerialSession, HearsOnlyNoiseAtAWrongRate) {
    config.lServerBaudRate(9600);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000012, "Failed reading ENQ character");
    EXPECT_GE(host.Now() - begin, 10 * kSecond);
    EXPECT_LT(host.Now() - begin, 10 * kSecond + 50 * kMillisecond);
    ExpectNothingOpen();
}

TEST_F(SerialSession, GivesASilentLineTenSecondsForItsEnq) {
    peer.OnConnect = nullptr;
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000012, "Failed reading ENQ character");
    EXPECT_GE(host.Now() - begin, 10 * kSecond);
    EXPECT_LT(host.Now() - begin, 10 * kSecond + 50 * kMillisecond);
}

TEST_F(SerialSession, EndsByItsTimeLimitWhenTheAnswerToTheRequestIsMissing) {
    peer.OnBytes = nullptr;
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, "Timed out reading ISO packet");
    EXPECT_GE(host.Now() - begin, 2 * kSecond) << "the character time-out";
    EXPECT_LT(host.Now() - begin, 2 * kSecond + 100 * kMillisecond);
}

TEST_F(SerialSession, FailsOnALineThatTakesNothing) {
    Line().HoldOutput(true);
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000014, "Failed writing packet to com port. Only 0 written");
    EXPECT_GE(host.Now() - begin, 1 * kSecond);
    EXPECT_LT(host.Now() - begin, 1 * kSecond + 50 * kMillisecond);
    ExpectNothingOpen();
}

TEST_F(SerialSession, TellsHowMuchALineTookOfTheRequest) {
    host.FailNext(Op::ComWrite, {.lResult = 12});
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000014, "Failed writing packet to com port. Only 12 written");
}

// ---- A line that is unplugged.

TEST_F(SerialSession, EndsWithinItsTimeLimitsWhenTheLineHangsUpInAFile) {
    Say({Open("a.txt", 8), Write("one "), Write("two ", 4), "C", "S"});
    Microseconds hungUp = 0;
    onPayload = [&](size_t nPayload) {
        if (nPayload == 2) {
            host.At(100, [&] {
                hungUp = host.Now();
                Line().HangUp();
            });
        }
    };
    const int64_t nCallsBefore = host.nCalls();
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000011, "Timed out reading ISO packet");
    // A failing read ends its attempt at once, so two attempts take next to no time.
    EXPECT_LT(host.Now() - hungUp, 100 * kMillisecond);
    EXPECT_LT(host.nCalls() - nCallsBefore, 3000);
    EXPECT_EQ(File("/srv/pos/I/1/a.txt"), "one ") << "the part that came stays";
    EXPECT_EQ(engine->lNumFilesDownloaded(), 0);
    EXPECT_EQ(Log().back(), "ERROR  : Error Code=1000011, Error Message=Timed out reading ISO "
                            "packet");
    ExpectNothingOpen();
}

TEST_F(SerialSession, RunsAnewOnALineThatHasComeBack) {
    Say({Open("a.txt", 4), Write("one "), "C", "S"});
    onPayload = [&](size_t nPayload) {
        if (nPayload == 1)
            Line().HangUp();
    };
    EXPECT_EQ(Run(), 1);
    Line().ComeBack();
    onPayload = nullptr;
    Say({Open("a.txt", 4), Write("one "), "C", "S"});
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(File("/srv/pos/I/1/a.txt"), "one ");
}

TEST_F(SerialSession, LogsAnErrorWhenThePortCantBeClosedAndStillSucceeds) {
    Say({"S"});
    host.FailNext(Op::ComClose, {.lLastError = 5});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Errors(), ElementsAre("Error Code=1000013, Error Message=Failed closing COM Port"));
    ExpectNothingOpen();
}

TEST_F(SerialSession, EndsAtOnceOnARunTimeFailureAndLeavesThePortFree) {
    Say({"MHi", "S"});
    // The first events behind a packet are pumped by the session itself.
    host.OnPump([&] {
        if (engine->lCurrentState() == BrennikState::ProcessingMessage)
            throw RuntimeFailure(FailureKind::SubscriptOutOfRange);
    });
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(engine->lErrorCode(), 1000000);
    EXPECT_EQ(engine->strErrorMessage(),
              "TBrennikProtocol.DoBrennikProtocol() Failed - Subscript out of range");
    EXPECT_EQ(Log().back(), kConnected) << "nothing tells of a close";
    ExpectNothingOpen();
}

// ---- Cancel.

TEST_F(SerialSession, ACancelBetweenTwoAttemptsToOpenDoesNotHideTheirFailure) {
    config.iServerComPort(4);
    config.lConnectAttempts(3);
    host.At(300 * kMillisecond, [&] { engine->bCancelComms(true); });
    const Microseconds begin = host.Now();
    EXPECT_EQ(Run(), 1);
    EXPECT_TRUE(engine->bCancelComms());
    EXPECT_EQ(engine->lErrorCode(), 1000018);
    EXPECT_EQ(Errors().size(), 4u);
    EXPECT_GE(host.Now() - begin, 750 * kMillisecond) << "the pauses pump no events";
}

TEST_F(SerialSession, ACancelAheadOfTheEnqLetsItAskAndReadsNothing) {
    Say({"S"});
    onEngine = [&] { engine->bCancelComms(true); };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(peer.Received(), Frame("VFI,VX520,XDL,F,APP,T1,EPROM,1024,4096,PT1"));
    ExpectNothingOpen();
}

TEST_F(SerialSession, StopsBetweenTwoPacketsWhenCancelled) {
    Say({Open("a.txt", 8), Write("one "), Write("two ", 4), "C", "S"});
    onPayload = [&](size_t nPayload) {
        if (nPayload == 2)
            engine->bCancelComms(true);
    };
    EXPECT_EQ(Run(), 1);
    ExpectFailure(1000031, "Communications aborted by user");
    EXPECT_EQ(Log()[Log().size() - 2], "INFO   : Connection Closed");
    ExpectNothingOpen();
}

} // namespace
} // namespace brennik::session
