// The rig itself: a device that hears and says what it should, and steps that are told in order.

#include "tests/passthru/DeviceWorld.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;

class DeviceRig : public DeviceTest {
  protected:
    DeviceRig() { Connect(); }

    void Write(const std::string& strBytes) {
        ASSERT_EQ(channel->WriteData(strBytes), 0);
        host.RunFor(100 * kMillisecond);
    }
    std::string Read() {
        std::string strBytes;
        EXPECT_EQ(channel->ReadData(strBytes), 0);
        return strBytes;
    }
};

TEST_F(DeviceRig, HearsControlCharactersFramesAndNoise) {
    Write("\x05\x06\x15\x16x");
    Write("\x02S\x03\x6A\x0F"); // worked out by hand
    Write("\x02S\x03\x6A\x0E");
    Write("\x02W\x00\x05\x00\x00\x00\x00hello\x01\xE3"s);
    device.ExpectLrc(true);
    Write("\x02S\x03\x50");
    Write("\x02S\x03\x51");
    EXPECT_THAT(device.Texts(), ElementsAre("ENQ", "ACK", "NAK", "noise", "noise", "[S]", "bad[S]",
                                            "[W\x00\x05\x00\x00\x00\x00hello]"s, "[S]", "bad[S]"));
    EXPECT_EQ(device.Bytes().substr(0, 7), "\x05\x06\x15\x16x\x02S");
    EXPECT_THAT(device.Payloads(), ElementsAre("S", "W\x00\x05\x00\x00\x00\x00hello"s, "S"));
}

TEST_F(DeviceRig, MakesFrames) {
    EXPECT_EQ(CrcFrame("S"), "\x02S\x03\x6A\x0F");
    EXPECT_EQ(LrcFrame("S"), "\x02S\x03\x50");
    EXPECT_EQ(CrcFrame("W\x00\x05\x00\x00\x00\x00hello"s),
              "\x02W\x00\x05\x00\x00\x00\x00hello\x01\xE3"s);
}

TEST_F(DeviceRig, GivesUpAFrameBehindHalfASecondOfSilence) {
    ASSERT_EQ(channel->WriteData("\x02S"), 0);
    host.RunFor(499 * kMillisecond);
    EXPECT_THAT(device.Texts(), ElementsAre());
    host.RunFor(10 * kMillisecond);
    EXPECT_THAT(device.Texts(), ElementsAre("part"));
    Write("\x05");
    EXPECT_THAT(device.Texts(), ElementsAre("part", "ENQ"));
}

TEST_F(DeviceRig, SaysWhatWasLaidOutForWhatItHears) {
    device.On("ENQ", {"one", Saying("two", 50 * kMillisecond)});
    device.Always("ENQ", "more");
    device.Always("[]", "any");
    device.Always("[S]", "S");
    Write(kEnq);
    EXPECT_EQ(Read(), "one");
    ASSERT_EQ(channel->WriteData(kEnq), 0);
    EXPECT_EQ(Read(), "") << "not yet";
    host.RunFor(100 * kMillisecond);
    EXPECT_EQ(Read(), "two");
    Write(kEnq);
    Write(CrcFrame("x"));
    Write(CrcFrame("S"));
    EXPECT_EQ(Read(), "moreanyS");
}

TEST_F(DeviceRig, HearsNothingButNoiseAtAnotherRate) {
    Line().SetFarRate(9600);
    Write(kEnq + kAck);
    EXPECT_THAT(device.Texts(), ElementsAre("noise", "noise"));
    EXPECT_NE(device.Bytes(), kEnq + kAck);
}

TEST_F(DeviceRig, TellsStepsInTheirOrder) {
    log.Logit("before", false);
    RecordSteps();
    log.Logit("first", false);
    Sleep(5);
    EXPECT_EQ(Read(), "");
    channel->SetBaudRate(connection);
    log.Logit("second", true);
    EXPECT_THAT(Steps(), ElementsAre("log first", "Sleep 5", "Read 1", "GetState", "SetState 19200",
                                     "log ERROR  : second"));
}

} // namespace
} // namespace brennik::passthru
