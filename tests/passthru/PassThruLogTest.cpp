// Whole runs, as the log tells them: the one without a device, and every end of a key injection
// that the log says nothing of.
#include "tests/passthru/Golden.h"
#include "tests/passthru/PassThruWorld.h"

#include <algorithm>

namespace brennik::passthru {
namespace {

class PassThruLog : public PassThruTest {
  protected:
    PassThruLog() { host.clock.SetLocal(DateTime{2026, 11, 14, 12, 0, 0}); }
    Lines WholeLog() const { return host.files.Lines("/log/run.log"); }
};

TEST_F(PassThruLog, OfARunWithoutADevice) {
    host.SetBudget(50000000);
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(WholeLog(), Golden("dead-device.log"));
}

// The frames are logged too, so that it shows what was sent, and that the relay goes on.
class SilentInjection : public PassThruLog {
  protected:
    SilentInjection() {
        config.bInjectPublicKeyFile(true);
        config.strPublickeyLocation("C:\\keys");
        config.bLogProcessingPackets(true);
        host.files.Put("/keys/flkeyfile.txt", "[ENCRYPTION]\r\nRsaKey=KEY\r\nRsaKeyIndex=5\r\n"
                                              "RsaKeyExpiryDate=20301231\r\n");
        Ask(DeviceRequest("XDL", "F"));
        Serve(EditedRequest("XDL", "F"), {"S"});
    }
    /// The device answers the nth frame that it is sent so, and acknowledges all others.
    void AnswerFrame(int32_t nFrame, const std::string& strAnswer) {
        device.Always("[]", "");
        device.onHeard = [this, nFrame, strAnswer, n = 0](const std::string& strText) mutable {
            if (strText.front() == '[')
                device.Say(++n == nFrame ? strAnswer : std::string("\x06"));
        };
    }
    /// The log of the injection and of what follows.
    Lines Ending() {
        EXPECT_EQ(Run(), 0) << "no matter to the run";
        const Lines log = WholeLog();
        return {std::find_if(log.begin(), log.end(),
                             [](const std::string& strLine) {
                                 return strLine.find("Starting public") != std::string::npos;
                             }),
                log.end()};
    }
};

TEST_F(SilentInjection, BehindAGroupThatIsRefused) {
    AnswerFrame(1, "\x15");
    EXPECT_EQ(Ending(), Golden("key-group-refused.log"));
}

TEST_F(SilentInjection, BehindADirectoryThatIsRefused) {
    config.strPlatformName("P400PLUS");
    AnswerFrame(1, "\x15");
    EXPECT_EQ(Ending(), Golden("key-directory-refused.log"));
}

TEST_F(SilentInjection, BehindAGroupWithoutAnAnswer) {
    AnswerFrame(1, "");
    EXPECT_EQ(Ending(), Golden("key-group-silence.log"));
}

TEST_F(SilentInjection, BehindTheGroupsCloseWithoutAnAnswer) {
    AnswerFrame(2, "");
    EXPECT_EQ(Ending(), Golden("key-close-silence.log"));
}

TEST_F(SilentInjection, BehindDataWithoutAnAnswer) {
    AnswerFrame(4, "");
    EXPECT_EQ(Ending(), Golden("key-data-silence.log"));
}

TEST_F(SilentInjection, BehindMalformedDigits) {
    AnswerFrame(3, "\x02Rxyz\x03");
    EXPECT_EQ(Ending(), Golden("key-malformed-resume.log"));
}

TEST_F(SilentInjection, WithoutAHash) {
    host.FailNext(Op::OstRtl, {.lResult = 5});
    EXPECT_EQ(Ending(), Golden("key-no-hash.log"));
}

} // namespace
} // namespace brennik::passthru
