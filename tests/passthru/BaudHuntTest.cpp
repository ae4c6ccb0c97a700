// The hunt for the rate at which a device calls. A device at another rate hears noise, and so is
// what it says heard.

#include "tests/passthru/DeviceWorld.h"
#include "tests/passthru/Golden.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;

const std::string kRequest = Request("XDL", "P");

class BaudHunt : public DeviceTest {
  protected:
    /// A hunt from that rate for a device at that one, which answers every ENQ that it
    /// understands; bChatty has it say something to what it doesn't.
    int32_t Hunt(int32_t lFrom, bool bAutoBaud, int32_t lDevice, bool bChatty = false) {
        Line().SetFarRate(lDevice);
        config.lClientBaudRate(lFrom);
        config.bAutoBaud(bAutoBaud);
        device.Always("ENQ", CrcFrame(kRequest));
        device.Always("noise", bChatty ? kNak : "");
        host.files.Remove(kLogFile);
        StartAt(12, 0, 0);
        Connect();
        begin = host.Now();
        const int32_t lStatus = Handshake();
        lasted = host.Now() - begin;
        lines = RateLines();
        host.RunFor(kSecond);
        EXPECT_EQ(channel->Disconnect(), 0);
        return lStatus;
    }

    Microseconds begin = 0;
    Microseconds lasted = 0;
    Lines lines;
};

TEST_F(BaudHunt, AlternatesBetweenTwoRatesWhateverItStartedFrom) {
    const auto next = TBrennikProtocolTestAccess::NextAutoBaudRate;
    EXPECT_EQ(next(true, 19200), 115200);
    for (const int32_t lOther : {115200, 9600, 300, 57600, 0, -1, 19201, 2147483647})
        EXPECT_EQ(next(true, lOther), 19200) << lOther;
    for (const int32_t lAny : {19200, 115200, 9600, 0, -1})
        EXPECT_EQ(next(false, lAny), lAny);
}

TEST_F(BaudHunt, FindsASilentDevicePeriodByPeriod) {
    struct {
        int32_t lFrom;
        bool bAutoBaud;
        int32_t lDevice;
        int32_t lPeriods; ///< that pass before it is found
        Lines lines;
    } const cases[] = {
        {9600, true, 9600, 0, {"open 9600", "BaudRate set @ 9600"}},
        {9600, true, 19200, 1, {"open 9600", "BaudRate set @ 9600", "BaudRate set @ 19200"}},
        {9600,
         true,
         115200,
         2,
         {"open 9600", "BaudRate set @ 9600", "BaudRate set @ 19200", "BaudRate set @ 115200"}},
        {19200, true, 19200, 0, {"open 19200", "BaudRate set @ 19200"}},
        {19200, true, 115200, 1, {"open 19200", "BaudRate set @ 19200", "BaudRate set @ 115200"}},
        {115200, true, 115200, 0, {"open 115200", "BaudRate set @ 115200"}},
        {115200, true, 19200, 1, {"open 115200", "BaudRate set @ 115200", "BaudRate set @ 19200"}},
        {300,
         true,
         115200,
         2,
         {"open 300", "BaudRate set @ 300", "BaudRate set @ 19200", "BaudRate set @ 115200"}},
        {57600, true, 19200, 1, {"open 57600", "BaudRate set @ 57600", "BaudRate set @ 19200"}},
        {9600, false, 9600, 0, {"open 9600", "BaudRate set @ 9600"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.lFrom) + " to " + std::to_string(c.lDevice));
        EXPECT_EQ(Hunt(c.lFrom, c.bAutoBaud, c.lDevice), 0);
        EXPECT_EQ(lines, c.lines);
        EXPECT_EQ(strPacket, kRequest);
        EXPECT_GE(lasted, c.lPeriods * 20 * kSecond);
        EXPECT_LT(lasted, c.lPeriods * 20 * kSecond + 600 * kMillisecond);
        EXPECT_EQ(Ini(), "[PROFILE_7]\r\nProfileName=Shop\r\nClientBaudRate=" +
                             std::to_string(c.lDevice) + "\r\n");
        EXPECT_EQ(connection.lBaudRate(), c.lDevice);
        EXPECT_EQ(config.lClientBaudRate(), c.lFrom);
    }
}

TEST_F(BaudHunt, NeverReturnsToARateThatIsNeither) {
    // This device wakes up when the rate at which it would be heard has just been left.
    host.At(21 * kSecond, [&] { Line().SetFarRate(9600); });
    EXPECT_EQ(Hunt(9600, true, 4800), 1);
    EXPECT_THAT(lines, ElementsAre("open 9600", "BaudRate set @ 9600", "BaudRate set @ 19200",
                                   "BaudRate set @ 115200", "BaudRate set @ 19200",
                                   "BaudRate set @ 115200"));
    EXPECT_EQ(connection.lBaudRate(), 115200);
    EXPECT_GT(lasted, 80 * kSecond);
    EXPECT_LT(lasted, 80 * kSecond + 61 * kMillisecond);
    EXPECT_EQ(Ini(), "[PROFILE_7]\r\nProfileName=Shop\r\n");
}

TEST_F(BaudHunt, StaysAtItsRateWithoutAutoBaud) {
    EXPECT_EQ(Hunt(9600, false, 19200), 1);
    EXPECT_EQ(lines, (Lines{"open 9600", "BaudRate set @ 9600", "BaudRate set @ 9600",
                            "BaudRate set @ 9600", "BaudRate set @ 9600", "BaudRate set @ 9600"}));
    EXPECT_EQ(connection.lBaudRate(), 9600);
}

TEST_F(BaudHunt, FindsATalkingDeviceByItsNoise) {
    struct {
        int32_t lFrom;
        int32_t lDevice;
        Lines lines;
    } const cases[] = {
        // The line is taken down and up, and no rate is told.
        {19200, 115200, {"open 19200", "BaudRate set @ 19200", "close", "open 115200"}},
        {115200, 19200, {"open 115200", "BaudRate set @ 115200", "close", "open 19200"}},
        {9600, 19200, {"open 9600", "BaudRate set @ 9600", "close", "open 19200"}},
        {9600,
         115200,
         {"open 9600", "BaudRate set @ 9600", "close", "open 19200", "close", "open 115200"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.lFrom) + " to " + std::to_string(c.lDevice));
        EXPECT_EQ(Hunt(c.lFrom, true, c.lDevice, true), 0);
        EXPECT_EQ(lines, c.lines);
        EXPECT_LT(lasted, 800 * kMillisecond);
        EXPECT_EQ(strPacket, kRequest);
        EXPECT_EQ(Ini(), "[PROFILE_7]\r\nProfileName=Shop\r\nClientBaudRate=" +
                             std::to_string(c.lDevice) + "\r\n");
    }
}

TEST_F(BaudHunt, TakesTheLineDownAndUpAtTheSameRateWithoutAutoBaud) {
    device.On("ENQ", {"x", "y"});
    EXPECT_EQ(Hunt(19200, false, 19200), 0);
    EXPECT_THAT(lines, ElementsAre("open 19200", "BaudRate set @ 19200", "close", "open 19200",
                                   "close", "open 19200"));
}

TEST_F(BaudHunt, TakesTheLineDownAndUpStepByStep) {
    Connect();
    device.On("ENQ", {"x"});
    // Found no more: the device stays at its rate. A cancel ends the attempt.
    host.At(150 * kMillisecond, [&] { engine.bCancelComms(true); });
    RecordSteps();
    EXPECT_EQ(Handshake(), 1);
    const Lines steps = Steps();
    const Lines expected = {
        "Sleep 50",
        "Write 1",
        "Read 1", // the stray byte
        "Close",
        "log Connection Closed",
        "Open COM2",
        "log Connected to Port=COM2, BaudRate=115200, Parity=None ,Databits=8 ,Stopbit=1 "
        ",Flowcontrol=None ,Connection Attempt=1",
        "GetState",
        "SetState 115200",
        "SetTimeouts",
        "Read 1", // the flush
        "pump",
        "Sleep 50", // the next poll
    };
    ASSERT_GT(steps.size(), 5 + expected.size());
    EXPECT_EQ(Lines(steps.begin() + 5, steps.begin() + 5 + std::ssize(expected)), expected);
    EXPECT_EQ(connection.lBaudRate(), 115200 + 0) << "and on, by the ends of four attempts";
}

TEST_F(BaudHunt, TakesEveryByteButStxAndSynForNoise) {
    config.bAutoBaud(false);
    for (int32_t lByte = 0; lByte < 256; ++lByte) {
        const char cByte = static_cast<char>(lByte);
        if (cByte == kStx[0] || cByte == kSyn[0])
            continue;
        host.files.Remove(kLogFile);
        Connect();
        device.On("ENQ", {std::string(1, cByte), CrcFrame(kRequest)});
        EXPECT_EQ(Handshake(), 0) << lByte;
        EXPECT_THAT(RateLines(),
                    ElementsAre("open 19200", "BaudRate set @ 19200", "close", "open 19200"))
            << lByte;
        ASSERT_EQ(channel->Disconnect(), 0);
    }
}

TEST_F(BaudHunt, FlushesWhatComesBehindTheStrayByte) {
    Connect();
    config.bAutoBaud(false);
    // An STX there must not be taken for a frame.
    device.On("ENQ", {"x", "", CrcFrame(kRequest)});
    device.onHeard = [&](const std::string&) {
        device.Say({kStx + "yz", 3 * kMillisecond});
        device.onHeard = nullptr;
    };
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(strPacket, kRequest);
    EXPECT_EQ(Log().back(), "Flushed Buffer: strData=<STX>yz");
}

TEST_F(BaudHunt, PollsALineThatDoesntOpenAgainUntilItsTimeIsOver) {
    Connect();
    device.On("ENQ", {"x"});
    host.FailNext(Op::ComOpen, {.lLastError = world::comerror::kMissing});
    const Microseconds start = host.Now();
    const int64_t nCallsBefore = host.nCalls();
    EXPECT_EQ(Handshake(), 1);
    ExpectError(world::comerror::kNoHandle, "Port closed"); // the number of the failed setting
    EXPECT_GT(host.Now() - start, 80 * kSecond);
    EXPECT_LT(host.Now() - start, 80 * kSecond + 51 * kMillisecond);
    EXPECT_LT(host.nCalls() - nCallsBefore, 20000);
    const Lines told = Log();
    EXPECT_THAT(Lines(told.begin() + 2, told.begin() + 4),
                ElementsAre("Connection Closed",
                            "ERROR  : Error Code=1000018, Error Message=Failed "
                            "opening COM Port COM2"));
    EXPECT_EQ(told.back(), "BaudRate set @ 115200") << "told, though there is no line to set";
}

TEST_F(BaudHunt, OpensTheLineAgainAsOftenAsTheProfileSays) {
    config.lConnectAttempts(3);
    Connect();
    config.bAutoBaud(false);
    device.On("ENQ", {"x", CrcFrame(kRequest)});
    host.FailNext(Op::ComOpen, {.lLastError = world::comerror::kBusy}, 2);
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(Log().back().substr(Log().back().size() - 22), " ,Connection Attempt=3");
}

TEST_F(BaudHunt, GoesOnAtTheOldRateOnALineThatCantBeClosed) {
    Connect();
    device.On("ENQ", {"x", CrcFrame(kRequest)});
    host.FailNext(Op::ComClose, {.lLastError = 5});
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(Log().back(), "ERROR  : Error Code=1000013, Error Message=Failed closing COM Port");
    EXPECT_EQ(Line().nOpenings(), 1);
    EXPECT_EQ(Line().State().BaudRate, 19200);
    EXPECT_EQ(connection.lBaudRate(), 115200);
    EXPECT_NE(Ini().find("ClientBaudRate=115200"), std::string::npos)
        << "the rate that was asked for, not the one of the line";
}

// ---- Whole hunts, as the log tells them.

TEST_F(BaudHunt, LeavesThisLog) {
    // A device at 115200. It starts to talk 45 seconds into the hunt, when the line is at 115200:
    // SYN first, then a byte of another speed while it changes to 19200, where it calls.
    Line().SetFarRate(115200);
    config.lClientBaudRate(9600);
    Connect();
    host.At(45 * kSecond, [&] { device.Always("ENQ", kSyn); });
    host.At(50 * kSecond, [&] {
        Line().SetFarRate(19200);
        device.Say("\x7F");
        device.Always("ENQ", CrcFrame(kRequest));
    });
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(channel->Disconnect(), 0);
    EXPECT_EQ(WholeLog(), Golden("hunt.log"));
}

TEST_F(BaudHunt, LeavesThisLogWhenNobodyCalls) {
    config.lClientBaudRate(9600);
    StartAt(23, 58, 30);
    Connect();
    EXPECT_EQ(Handshake(), 1);
    EXPECT_EQ(channel->Disconnect(), 0);
    EXPECT_EQ(WholeLog(), Golden("silence.log"));
}

TEST_F(BaudHunt, LogsItsPacketsWhereTheProfileWantsThem) {
    log.InitialiseLogging("/log", "device.log", true, true, true);
    Connect();
    device.On("ENQ", {"", kSyn, "\x7F"});
    Line().SetFarRate(19200);
    host.At(400 * kMillisecond, [&] {
        Line().SetFarRate(115200);
        device.Always("ENQ", CrcFrame("VFI,D,XDL,P"));
    });
    EXPECT_EQ(Handshake(), 0);
    EXPECT_EQ(Log(), Golden("packets.log"));
}

} // namespace
} // namespace brennik::passthru
