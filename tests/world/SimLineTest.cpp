#include "tests/world/SimLine.h"

#include "tests/world/SimLineFixture.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace brennik::world {
namespace {

class SimLineTest : public SimLineFixture {};

std::string NoisyText(std::string_view strBytes) {
    std::string strNoise;
    for (const char cByte : strBytes) {
        strNoise += NoiseOf(cByte);
    }
    return strNoise;
}

// Pace.

struct PaceCase {
    const char* strWhat;
    DCB settings;
    Microseconds byte;  ///< of the first byte, rounded up
    Microseconds third; ///< of the first three, rounded up once
};

DCB Settings(int32_t lBaudRate, int8_t iByteSize, int8_t iParity, int8_t iStopBits) {
    DCB dcb;
    dcb.BaudRate = lBaudRate;
    dcb.ByteSize = iByteSize;
    dcb.Parity = iParity;
    dcb.StopBits = iStopBits;
    return dcb;
}

TEST_F(SimLineTest, BytesTakeTheTimeOfTheirBits) {
    OpenWithPeer();
    for (const PaceCase& pace : {PaceCase{"9600 8N1", Settings(9600, 8, 0, 0), 1042, 3125},
                                 PaceCase{"115200 8N1", Settings(115200, 8, 0, 0), 87, 261},
                                 PaceCase{"300 8N1", Settings(300, 8, 0, 0), 33334, 100000},
                                 PaceCase{"9600 7E1", Settings(9600, 7, 2, 0), 1042, 3125},
                                 PaceCase{"9600 8O1", Settings(9600, 8, 1, 0), 1146, 3438},
                                 PaceCase{"9600 8N2", Settings(9600, 8, 0, 2), 1146, 3438},
                                 PaceCase{"9600 5N1.5", Settings(9600, 5, 0, 1), 782, 2344}}) {
        Set(pace.settings);
        Line().SetFarSettings(pace.settings);
        peer->Take();
        const Microseconds start = host.Now() + 1; // the call itself
        Write("\x01\x02\x03");
        host.RunFor(200 * kMillisecond);
        ASSERT_EQ(peer->Arrivals().size(), 3U) << pace.strWhat;
        EXPECT_EQ(peer->Arrivals()[0].moment - start, pace.byte) << pace.strWhat;
        EXPECT_EQ(peer->Arrivals()[2].moment - start, pace.third) << pace.strWhat;
        EXPECT_EQ(peer->Received(), "\x01\x02\x03") << pace.strWhat;

        // The other direction, at the pace of the far end.
        std::string strBytes(3, '\0');
        int32_t lRead = 0;
        ASSERT_TRUE(host.comPorts.SetTimeouts(hPort, CommTimeouts{}));
        const Microseconds pushed = host.Now();
        peer->Push("\x04\x05\x06");
        EXPECT_TRUE(host.comPorts.Read(hPort, strBytes.data(), 3, lRead));
        EXPECT_EQ(host.Now() - pushed, pace.third) << pace.strWhat;
        EXPECT_EQ(strBytes, "\x04\x05\x06") << pace.strWhat;
    }
}

TEST_F(SimLineTest, RoundingDoesntAddUp) {
    OpenWithPeer();
    SetRate(115200);
    Line().SetFarRate(115200);
    const Microseconds start = host.Now() + 1;
    Write(std::string(1000, 'x'));
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Arrivals().back().moment - start, 86'805);
}

TEST_F(SimLineTest, BytesLeaveOneBehindTheOther) {
    OpenWithPeer();
    const Microseconds start = host.Now() + 1;
    Write("a");
    Write("b"); // its call falls into the time of the first one
    host.RunFor(5 * kByteTime);
    const Microseconds later = host.Now() + 1;
    Write("c"); // on a line at rest
    host.RunFor(5 * kByteTime);
    ASSERT_EQ(peer->Arrivals().size(), 3U);
    EXPECT_EQ(peer->Arrivals()[0].moment, start + 1042);
    EXPECT_EQ(peer->Arrivals()[1].moment, start + 2084);
    EXPECT_EQ(peer->Arrivals()[2].moment, later + 1042);
}

TEST_F(SimLineTest, BothDirectionsRunAtOnce) {
    OpenWithPeer();
    peer->Push("abc");
    Write("xyz");
    host.RunFor(3 * kByteTime);
    EXPECT_EQ(Read(), "abc");
    EXPECT_EQ(peer->Received(), "xyz");
    EXPECT_EQ(Line().nSentByProgram(), 3);
    EXPECT_EQ(Line().nSentByFarEnd(), 3);
}

// Noise.

TEST_F(SimLineTest, NoiseIsNeverAControlCharacter) {
    for (int iByte = 0; iByte < 256; ++iByte) {
        EXPECT_GE(static_cast<unsigned char>(NoiseOf(static_cast<char>(iByte))), 0x80);
    }
    EXPECT_NE(NoiseOf('a'), NoiseOf('b'));
}

TEST_F(SimLineTest, AtAnotherRateBothEndsHearNoise) {
    OpenWithPeer();
    Line().SetFarRate(19200);
    Write("\x05hello");
    peer->Push("\x06world");
    EXPECT_EQ(Read(), NoisyText("\x06world"));
    EXPECT_EQ(peer->Received(), NoisyText("\x05hello"));
    SetRate(19200);
    peer->Take();
    Write("\x05");
    peer->Push("\x06");
    EXPECT_EQ(Read(), "\x06");
    EXPECT_EQ(peer->Received(), "\x05");
}

TEST_F(SimLineTest, RatesWithinThreePercentAgree) {
    OpenWithPeer();
    Line().SetFarRate(10000);
    for (const int32_t lBaudRate : {10000, 10300, 9700}) {
        SetRate(lBaudRate);
        peer->Push("x");
        EXPECT_EQ(Read(), "x") << lBaudRate;
    }
    for (const int32_t lBaudRate : {10301, 9699}) {
        SetRate(lBaudRate);
        peer->Push("x");
        EXPECT_EQ(Read(), NoisyText("x")) << lBaudRate;
    }
}

TEST_F(SimLineTest, AnotherSizeOrParityIsNoiseAndOtherStopBitsArent) {
    OpenWithPeer();
    Line().SetFarSettings(Settings(9600, 7, 2, 0));
    for (const DCB& dcb : {Settings(9600, 8, 2, 0), Settings(9600, 7, 1, 0),
                           Settings(9600, 7, 0, 0), Settings(9600, 8, 0, 0)}) {
        Set(dcb);
        peer->Push("x");
        EXPECT_EQ(Read(), NoisyText("x"));
        peer->Take();
        Write("y");
        host.RunFor(2 * kByteTime);
        EXPECT_EQ(peer->Received(), NoisyText("y"));
    }
    Set(Settings(9600, 7, 2, 2));
    peer->Push("x");
    EXPECT_EQ(Read(), "x");
}

TEST_F(SimLineTest, AByteUnderWayWhileTheRateChangesIsNoise) {
    OpenWithPeer();
    Write("ab");
    host.RunFor(kByteTime);
    SetRate(300);
    host.RunFor(kByteTime);
    EXPECT_EQ(peer->Received(), "a" + NoisyText("b"));
    peer->Take();
    Write("c"); // left at the wrong rate: noise, though the rate is right when it arrives
    SetRate(9600);
    host.RunFor(40 * kMillisecond);
    EXPECT_EQ(peer->Received(), NoisyText("c"));
}

TEST_F(SimLineTest, ALineOfSevenBitsCarriesSeven) {
    OpenWithPeer();
    const DCB settings = Settings(9600, 7, 2, 0);
    Line().SetFarSettings(settings);
    Set(settings);
    Write("a\xE1\xFF");
    peer->Push("\x81z");
    EXPECT_EQ(Read(), "\x01z");
    EXPECT_EQ(peer->Received(), "aa\x7F");
}

// Holding, dropping and mangling.

TEST_F(SimLineTest, HeldBytesLeaveAtTheirPaceWhenLetGo) {
    OpenWithPeer();
    Line().HoldOutput(true);
    host.At(100 * kMillisecond, [&] { Line().HoldOutput(false); });
    const Microseconds released = host.Now() + 100 * kMillisecond;
    Write("ab");
    host.RunFor(10 * kByteTime);
    ASSERT_EQ(peer->Arrivals().size(), 2U);
    EXPECT_EQ(peer->Arrivals()[0].moment, released + 1042);
    EXPECT_EQ(peer->Arrivals()[1].moment, released + 2084);
}

TEST_F(SimLineTest, BytesThatWerePurgedHoldUpNothing) {
    OpenWithPeer();
    SetRate(1200);
    Write("a"); // would take 8 ms
    host.comPorts.Purge(hPort, purgeflag::kTxClear);
    SetRate(9600);
    const Microseconds start = host.Now() + 1;
    Write("b");
    host.RunFor(50 * kMillisecond);
    ASSERT_EQ(peer->Arrivals().size(), 1U);
    EXPECT_EQ(peer->Arrivals()[0].moment, start + 1042);
    EXPECT_EQ(peer->Received(), "b");
}

TEST_F(SimLineTest, AManglerSplitsDelaysDoublesAndDrops) {
    OpenWithPeer();
    Line().SetMangler(std::make_unique<FunctionMangler>(
        [](Direction direction, std::string_view strBytes, Outlet& outlet) {
            if (direction == Direction::ToClient) {
                outlet.Put("~");
                outlet.Put(strBytes);
            } else if (strBytes != "drop") {
                outlet.Put(strBytes, 3000);
                outlet.Put(strBytes);
            }
        }));
    Write("drop");
    const Microseconds start = host.Now() + 1;
    Write("a");
    host.RunFor(20 * kByteTime);
    EXPECT_EQ(peer->Received(), "aa");
    ASSERT_EQ(peer->Arrivals().size(), 2U);
    EXPECT_EQ(peer->Arrivals()[0].moment, start + 3000 + 1042);
    EXPECT_EQ(peer->Arrivals()[1].moment, start + 3000 + 2084); // behind, though not delayed
    EXPECT_EQ(Line().nSentByProgram(), 5);
    peer->Push("b");
    EXPECT_EQ(Read(), "~b");
    Line().SetMangler(nullptr);
    peer->Push("c");
    EXPECT_EQ(Read(), "c");
}

TEST_F(SimLineTest, AMangledByteAtTheWrongRateIsNoiseAllTheSame) {
    OpenWithPeer();
    Line().SetFarRate(300);
    Line().SetMangler(std::make_unique<FunctionMangler>(
        [](Direction, std::string_view, Outlet& outlet) { outlet.Put("z"); }));
    Write("a");
    host.RunFor(kByteTime);
    EXPECT_EQ(peer->Received(), NoisyText("z"));
}

TEST_F(SimLineTest, FailsATestThatExpectsClearBytesAtTheWrongRate) {
    OpenWithPeer();
    Line().SetFarRate(300);
    Write("a");
    host.RunFor(kByteTime);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(peer->Received(), "a"), "peer->Received()");
}

} // namespace
} // namespace brennik::world
