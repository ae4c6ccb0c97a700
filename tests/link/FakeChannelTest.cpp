// The scripted channel itself: what it plays, how long it takes, and that its failures show.
#include "tests/link/FakeChannel.h"

#include "tests/link/IsoFixture.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>

namespace brennik {
namespace {

using world::kMillisecond;
using world::kSecond;
using world::Microseconds;

class FakeChannelTest : public IsoFixture {
  protected:
    std::string strData = "old";
};

TEST_F(FakeChannelTest, PlaysWhatIsLaidOutInItsOrder) {
    channel.reads = {{"a"}, {.strData = "b", .timeOfDay = 7 * kSecond}, {"c", 5}};
    channel.characters = {{"x"}};
    EXPECT_EQ(channel.ReadData(strData), 0);
    EXPECT_EQ(strData, "a");
    EXPECT_EQ(channel.ReadCharacter(strData), 0);
    EXPECT_EQ(strData, "x");
    EXPECT_EQ(channel.ReadData(strData), 0);
    EXPECT_EQ(strData, "b");
    EXPECT_EQ(host.clock.PeekMicrosecondOfDay(), 7 * kSecond);
    EXPECT_EQ(channel.ReadData(strData), 5);
    EXPECT_EQ(strData, "c");
    EXPECT_EQ(channel.nReads, 3);
    EXPECT_EQ(channel.nCharacters, 1);
}

TEST_F(FakeChannelTest, SilenceTakesTenMillisecondsAndAFailureNone) {
    const Microseconds start = host.Now();
    EXPECT_EQ(channel.ReadData(strData), 0);
    EXPECT_EQ(strData, "");
    EXPECT_EQ(host.Now() - start, 10 * kMillisecond);
    channel.lStatusWhenEmpty = 1;
    EXPECT_EQ(channel.ReadCharacter(strData), 1);
    EXPECT_EQ(host.Now() - start, 10 * kMillisecond);
}

TEST_F(FakeChannelTest, ThrowsWhatIsLaidOut) {
    channel.reads = {{.strData = "a", .thrown = FailureKind::DeviceIoError}};
    EXPECT_THROW(static_cast<void>(channel.ReadData(strData)), RuntimeFailure);
    EXPECT_EQ(strData, "");
    channel.writeThrows = FailureKind::DeviceIoError;
    EXPECT_THROW(static_cast<void>(channel.WriteData("x")), RuntimeFailure);
    EXPECT_EQ(channel.writes, Lines{"x"});
}

TEST_F(FakeChannelTest, AFailureLaidOutFailsATestThatExpectsASuccess) {
    channel.reads = {{"", 1}};
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(link.WaitForEnq(), 0), "link.WaitForEnq()");
}

} // namespace
} // namespace brennik
