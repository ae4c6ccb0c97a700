// The writes of the port wrapper: blocks, pauses, and what a block that wasn't taken does.
#include "link/TSerial.h"
#include "tests/link/TSerialFixture.h"

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

class TSerialWriteTest : public TSerialFixture {
  protected:
    TSerialWriteTest() { info.lBaudRate(115200); }

    int32_t Write(std::string_view strBytes) { return serial->WriteData(strBytes, true, 1000, 10); }
};

/// So many bytes, no two neighbouring blocks alike.
std::string Bytes(size_t nBytes) {
    std::string strBytes;
    for (size_t nByte = 0; nByte < nBytes; ++nByte) {
        strBytes += static_cast<char>(nByte % 251);
    }
    return strBytes;
}

TEST_F(TSerialWriteTest, WritesBlocksWithPausesBetweenThem) {
    OpenAndConfigure();
    Line().SetFarRate(115200);
    EXPECT_EQ(Write(Bytes(2500)), 2500);
    EXPECT_EQ(TakeCalls(),
              (Calls{"Write 1000", "Sleep 10", "Write 1000", "Sleep 10", "Write 500"}));
    host.RunFor(kSecond);
    EXPECT_EQ(peer->Received(), Bytes(2500));
    ExpectError(0, "");
}

TEST_F(TSerialWriteTest, APauseStandsBetweenBlocksAlone) {
    OpenAndConfigure();
    EXPECT_EQ(Write(Bytes(1)), 1);
    EXPECT_EQ(TakeCalls(), Calls{"Write 1"});
    EXPECT_EQ(Write(Bytes(1000)), 1000);
    EXPECT_EQ(TakeCalls(), Calls{"Write 1000"});
    EXPECT_EQ(Write(Bytes(1001)), 1001);
    EXPECT_EQ(TakeCalls(), (Calls{"Write 1000", "Sleep 10", "Write 1"}));
    EXPECT_EQ(Write(Bytes(2000)), 2000);
    EXPECT_EQ(TakeCalls(), (Calls{"Write 1000", "Sleep 10", "Write 1000"}));
}

TEST_F(TSerialWriteTest, BlockSizeAndPauseAreThoseGiven) {
    OpenAndConfigure();
    EXPECT_EQ(serial->WriteData("abcde", true, 2, 7), 5);
    EXPECT_EQ(TakeCalls(), (Calls{"Write 2", "Sleep 7", "Write 2", "Sleep 7", "Write 1"}));
    EXPECT_EQ(host.comPorts.writes, (Calls{"ab", "cd", "e"}));
}

TEST_F(TSerialWriteTest, WithoutASplitAllGoesOutInOne) {
    OpenAndConfigure();
    EXPECT_EQ(serial->WriteData(Bytes(2500), false, 1000, 10), 2500);
    EXPECT_EQ(TakeCalls(), Calls{"Write 2500"});
}

TEST_F(TSerialWriteTest, WithoutASplitTheBlockSizeMeansNothing) {
    OpenAndConfigure();
    EXPECT_EQ(serial->WriteData("abc", false, 0, 10), 3);
    ExpectError(0, "");
}

// A write comes back when what is left of it takes ten milliseconds, so the line never falls still.
TEST_F(TSerialWriteTest, ThePausesCostTheLineNothing) {
    OpenAndConfigure();
    Line().SetFarRate(115200);
    const Microseconds start = host.Now() + 1; // the call
    EXPECT_EQ(Write(Bytes(2500)), 2500);
    host.RunFor(kSecond);
    ASSERT_FALSE(peer->Arrivals().empty());
    EXPECT_EQ(peer->Arrivals().back().moment - start, 217'013); // 2500 times 86.805 us
}

TEST_F(TSerialWriteTest, SplitsIntoBlocksAndARest) {
    using Blocks = std::vector<std::string_view>;
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("abcdef", 2), (Blocks{"ab", "cd", "ef"}));
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("abcde", 2), (Blocks{"ab", "cd", "e"}));
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("ab", 2), Blocks{"ab"});
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("a", 2), Blocks{"a"});
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("abc", 1), (Blocks{"a", "b", "c"}));
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("abc", INT32_MAX), Blocks{"abc"});
    EXPECT_EQ(TSerialTestAccess::SplitIntoBlocks("", 2), Blocks{""});
}

TEST_F(TSerialWriteTest, BlocksOfNoBytesAreRefused) {
    OpenAndConfigure();
    for (const int32_t lBlockSize : {0, -1}) {
        EXPECT_EQ(serial->WriteData("abc", true, lBlockSize, 10), -1);
        ExpectError(0, "TSerialComms.WriteData() Failed - Invalid procedure call");
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialWriteTest, NothingToWriteIsToldAndIsNoFailure) {
    FailToOpenWith(comerror::kNotPermitted);
    OpenAndConfigure();
    for (const bool bSplit : {true, false}) {
        EXPECT_EQ(serial->ReadData(strData, 0), -1); // another text before
        EXPECT_EQ(serial->WriteData("", bSplit, 1000, 10), 0);
        ExpectError(comerror::kNotPermitted, "Empty buffer passed. No data to write");
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialWriteTest, AClosedPortTakesNothing) {
    FailToOpenWith(comerror::kNotPermitted);
    EXPECT_EQ(Write("x"), -1);
    ExpectError(comerror::kNotPermitted, "Port closed");
    EXPECT_EQ(Write(""), -1);
    ExpectError(comerror::kNotPermitted, "Port closed");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(TSerialWriteTest, AFailedBlockFailsTheWrite) {
    OpenAndConfigure();
    host.FailNext(Op::ComWrite, {.lLastError = 1167});
    EXPECT_EQ(Write(Bytes(2500)), -1);
    ExpectError(1167, "Failed writing data to the opened port");
    EXPECT_EQ(TakeCalls(), Calls{"Write 1000"});
}

TEST_F(TSerialWriteTest, AFailedSecondBlockFailsTheWriteToo) {
    OpenAndConfigure();
    host.FailNext(Op::ComWrite, {.lLastError = 1167}, 1, 1);
    EXPECT_EQ(Write(Bytes(2500)), -1); // whatever the first one took
    ExpectError(1167, "Failed writing data to the opened port");
    EXPECT_EQ(TakeCalls(), (Calls{"Write 1000", "Sleep 10", "Write 1000"}));
    EXPECT_EQ(Line().nSentByProgram(), 1000);
}

TEST_F(TSerialWriteTest, AShortBlockEndsTheWriteWithItsNumber) {
    OpenAndConfigure();
    host.FailNext(Op::ComWrite, {.lResult = 999});
    EXPECT_EQ(Write(Bytes(2500)), 999);
    EXPECT_EQ(TakeCalls(), Calls{"Write 1000"});
    host.FailNext(Op::ComWrite, {.lResult = 0});
    EXPECT_EQ(Write(Bytes(2500)), 0);
    EXPECT_EQ(TakeCalls(), Calls{"Write 1000"});
    ExpectError(0, ""); // no failure of this class
}

TEST_F(TSerialWriteTest, AShortSecondBlockAddsToTheFirst) {
    OpenAndConfigure();
    host.FailNext(Op::ComWrite, {.lResult = 2}, 1, 1);
    EXPECT_EQ(Write(Bytes(2500)), 1002);
    EXPECT_EQ(TakeCalls(), (Calls{"Write 1000", "Sleep 10", "Write 1000"}));
}

TEST_F(TSerialWriteTest, AShortLastBlockEndsIt) {
    OpenAndConfigure();
    host.FailNext(Op::ComWrite, {.lResult = 499}, 1, 2);
    EXPECT_EQ(Write(Bytes(2500)), 2499);
}

TEST_F(TSerialWriteTest, ALineThatDoesntMoveTakesNothingWithinASecond) {
    OpenAndConfigure();
    Line().HoldOutput(true);
    const Microseconds start = host.Now();
    EXPECT_EQ(Write(Bytes(2500)), 0);
    EXPECT_EQ(host.Now() - start, kSecond + 1);
    EXPECT_EQ(TakeCalls(), Calls{"Write 1000"});
}

TEST_F(TSerialWriteTest, ASlowLineCostsASecondForEachBlock) {
    info.lBaudRate(300); // 30 bytes a second
    OpenAndConfigure();
    Line().SetFarRate(300);
    const Microseconds start = host.Now();
    EXPECT_EQ(Write(Bytes(2500)), 2500);
    EXPECT_EQ(host.Now() - start, 3 * kSecond + 2 * 10 * kMillisecond + 5); // five calls
    EXPECT_EQ(TakeCalls(),
              (Calls{"Write 1000", "Sleep 10", "Write 1000", "Sleep 10", "Write 500"}));
    host.RunFor(100 * kSecond);
    EXPECT_EQ(peer->Received(), Bytes(2500)) << "what was still moving has arrived";
}

TEST_F(TSerialWriteTest, AHungUpLineFailsTheWrite) {
    OpenAndConfigure();
    Line().HangUp();
    EXPECT_EQ(Write("x"), -1);
    ExpectError(comerror::kHungUp, "Failed writing data to the opened port");
}

} // namespace
} // namespace brennik
