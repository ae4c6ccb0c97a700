// A key injection in detail: how the values of the key file are read, what the first packet bears,
// and the ends that nobody foresaw.
#include "tests/passthru/KeyInjectionWorld.h"
#include "tests/world/AllocationLimit.h"

#include <gmock/gmock.h>

namespace brennik::passthru {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr size_t kMegabyte = size_t{1024} * 1024;

class KeyInjectionDetails : public KeyInjection {
  protected:
    void ExpectInjected(const std::string& strRecord) {
        EXPECT_EQ(Run(), 0);
        EXPECT_EQ(Injected().at(3), WritePacket(strRecord));
        EXPECT_THAT(Outcome(), ElementsAre(kStarting, kDone));
    }
};

// ---- The values. Each hash was worked out apart.

TEST_F(KeyInjectionDetails, TheIndexLosesItsLeadingZeros) {
    PutKey("KEY", "007", "20301231");
    ExpectInjected("KEY,7,20301231,86df3e37865c620d602d557a0205c72c00042db3");
}

TEST_F(KeyInjectionDetails, TheIndexLosesItsSign) {
    PutKey("KEY", "+5", "20301231");
    ExpectInjected(kRecord);
}

TEST_F(KeyInjectionDetails, TheLeastIndexIsOne) {
    PutKey("KEY", "1", "20301231");
    ExpectInjected("KEY,1,20301231,35615ad47e1c836e087abb1d5351a333f8e24464");
}

TEST_F(KeyInjectionDetails, AKeyIsCutToTheBufferThatItIsReadInto) {
    PutKey(std::string(12000, 'K'), "5", "20301231");
    ExpectInjected(std::string(9999, 'K') + ",5,20301231,b66c53aebe37912ae89195dbb002174f4ea1d97a");
    EXPECT_EQ(Injected().at(2), OpenOf("flpkey.csv", "00002743")) << "10051 bytes, in one packet";
}

TEST_F(KeyInjectionDetails, AKeyThatFitsItsBufferStaysWhole) {
    PutKey(std::string(9998, 'K'), "5", "20301231");
    ExpectInjected(std::string(9998, 'K') + ",5,20301231,36b0d65b2b5763b52236499fb78d461a53341e79");
}

TEST_F(KeyInjectionDetails, TheGroupBearsTheTimeOfDayToo) {
    host.clock.SetLocal(DateTime{2026, 11, 14, 9, 8, 50});
    EXPECT_EQ(Run(), 0);
    // The pause ahead of the poll is over and no second more.
    EXPECT_EQ(device.Payloads().at(0).substr(18, 14), "20261114090850");
}

// ---- Ends that nobody foresaw: without a word, and what the device said stays for the relay.

TEST_F(KeyInjectionDetails, AFailureAheadOfItsFirstLineIsSilent) {
    config.strPublickeyLocation(std::string(3 * kMegabyte, 'x')); // copied once more to be read
    device.onHeard = [this, note = device.onHeard](const std::string& strText) {
        note(strText);
        if (strText == "ACK")
            device.Say("\x15"); // it lies there when the injection begins
    };
    server.On("NAK", {CrcFrame("S")});
    {
        const world::AllocationLimit limit(2 * kMegabyte);
        EXPECT_EQ(Run(), 0);
    }
    EXPECT_THAT(Outcome(), IsEmpty());
    EXPECT_THAT(Injected(), IsEmpty());
    EXPECT_THAT(LogWith("Flushed"), IsEmpty());
    EXPECT_EQ(server.Count("NAK"), 1) << "taken for the answer to the server's first frame";
    ExpectError(0, "");
}

TEST_F(KeyInjectionDetails, AFailureBetweenTwoExchangesIsSilent) {
    AnswerFrame(3, "\x02Rxyz\x03");
    device.onHeard = [this, answer = device.onHeard](const std::string& strText) {
        answer(strText);
        if (strText.starts_with("[O") && strText.ends_with("flpkey.csv]"))
            device.Say(Saying("\x15", 15 * kMillisecond)); // behind the reply, too late for it
    };
    server.On("NAK", {CrcFrame("S")});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(Outcome(), ElementsAre(kStarting));
    EXPECT_THAT(LogWith("Flushed"), IsEmpty());
    EXPECT_EQ(server.Count("NAK"), 1);
    ExpectError(0, "");
}

} // namespace
} // namespace brennik::passthru
