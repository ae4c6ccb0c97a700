// Enquiries of a device, and what it uploads.
#include "tests/sim/DevicePlay.h"
#include "tests/sim/GoldenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using golden::kFailure;
using golden::kShort;
using golden::kSuccess;
using sim::BuildFrame;
using sim::DeviceOutcome;
using sim::ServedTree;
using testing::ElementsAre;

constexpr sim::Microseconds kSecond = 1'000'000;

constexpr std::string_view kEnquiry = "TMS,1,Q,0,0,0,0,0,T0000001,0,APP1";
constexpr std::string_view kPartial =
    "VFI,VX520,XDL,P,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG";

// Enquiries.

TEST(DeviceEnquiry, TakesItsAnswerAndCallsAgainWithoutAReboot) {
    DevicePlay play("call\nenquiry\ncall\nrequest-record \"VFI\"\n");
    EXPECT_EQ(play.Enq(), BuildFrame(kEnquiry));
    EXPECT_EQ(play.Ack(), "");
    EXPECT_TRUE(play.Device().bInSession());
    EXPECT_EQ(play.Frame("TMS,1,A,ok"), "\x06");
    EXPECT_EQ(play.Report(0).outcome, DeviceOutcome::Answered);
    EXPECT_EQ(play.Report(0).lFrames, 1);
    EXPECT_THAT(play.Device().Packets(), ElementsAre("TMS,1,A,ok"));
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_FALSE(play.Device().bRebooting());
    EXPECT_EQ(play.Enq(), kShort);
}

TEST(DeviceEnquiry, FallsBackOnAPartialRequestWhenItIsRefused) {
    DevicePlay play("enquiry\n");
    play.Enq();
    // The ACK is the system's own, and the answer may come right behind it.
    EXPECT_EQ(play.Say("\x06" + BuildFrame("TMS,1,E,0,0,0,0,0,unknown")),
              "\x06" + BuildFrame(kPartial));
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Running);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Open("a"), "\x06");
    EXPECT_EQ(play.Write(0, "x"), "\x06");
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
    EXPECT_EQ(play.Report().lRequests, 2);
    EXPECT_THAT(play.Device().Requests(), ElementsAre(kEnquiry, kPartial));
    EXPECT_TRUE(play.Device().bRebooting());
    EXPECT_EQ(play.Files()["I/1/a"], "x");
}

TEST(DeviceEnquiry, FallsBackAsTheScriptSays) {
    DevicePlay play("enquiry \"TMS,X\"\nfallback \"VFI\"\n");
    EXPECT_EQ(play.Enq(), BuildFrame("TMS,X"));
    play.Ack();
    EXPECT_EQ(play.Frame(",,E"), "\x06" + std::string(kShort));
    EXPECT_EQ(play.Nak(), kShort);
    EXPECT_EQ(play.Frame("M2"), "\x06") << "a frame answers it too";
    EXPECT_EQ(play.Say(kFailure), "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Unsuccessful);
}

TEST(DeviceEnquiry, MayLeaveItAtARefusal) {
    DevicePlay play("enquiry\nfallback none\ncall\ncall\n");
    play.Enq();
    play.Ack();
    EXPECT_EQ(play.Frame(",,E"), "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Answered);
    EXPECT_EQ(play.Enq(), BuildFrame(kEnquiry));
}

TEST(DeviceEnquiry, TakesOnlyACapitalEForARefusal) {
    for (const char* strReply : {",,e", ",,EE", "E,E,", ",", "", "x,y,z,E"}) {
        DevicePlay play("enquiry\n");
        play.Enq();
        play.Ack();
        EXPECT_EQ(play.Frame(strReply), "\x06");
        EXPECT_EQ(play.Report().outcome, DeviceOutcome::Answered) << strReply;
    }
}

TEST(DeviceEnquiry, TakesAnAnswerInTheFormOfAManagementMessageForAnOrdinaryFrame) {
    DevicePlay play("enquiry\nfallback none\n");
    play.Enq();
    play.Ack();
    EXPECT_EQ(play.Say("\x02"
                       "5.8,\x03\x3A\x7D"),
              "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Answered);
    EXPECT_EQ(play.Message("5.8,0,LS,Q,0,0,,,").substr(0, 1), "\x06") << "and then no more";
}

TEST(DeviceEnquiry, RefusesItsAnswerByScriptAndForAWrongCheck) {
    DevicePlay play("enquiry\nat frame 1 nak\nat frame 2 nak\n");
    play.Enq();
    play.Ack();
    EXPECT_EQ(play.Say("\x02TMS\x03\x01\x02"), "\x15");
    EXPECT_EQ(play.Frame(",,E"), "\x15");
    EXPECT_EQ(play.Frame(",,E"), "\x06" + BuildFrame(kPartial));
    play.Ack();
    EXPECT_EQ(play.Say(kSuccess), "\x15") << "the numbers go on in the session that follows";
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_EQ(play.Report().lRefused, 3);
}

TEST(DeviceEnquiry, WaitsAMinuteForItsAnswer) {
    DevicePlay play("enquiry\n");
    play.Enq();
    play.Pass(30 * kSecond);
    play.Ack();
    play.Pass(60 * kSecond - 1);
    EXPECT_TRUE(play.Device().bInSession());
    play.Pass(1);
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::NoAnswer);
    EXPECT_EQ(play.Enq(), BuildFrame(kEnquiry));
}

TEST(DeviceEnquiry, RefusesAnAnswerThatBreaksOff) {
    DevicePlay play("enquiry\n");
    play.Enq();
    play.Ack();
    play.Say("\x02TM");
    EXPECT_EQ(play.Pass(kSecond), "\x15");
    EXPECT_EQ(play.Frame("TMS"), "\x06");
}

// Uploads.

std::shared_ptr<ServedTree> OneFile() {
    auto tree = std::make_shared<ServedTree>();
    tree->AddFile("", "", "log", "hello");
    return tree;
}

/// The frames of an upload of one file, by blocks of three bytes.
const std::string kOpenFrame = BuildFrame("OD000000050000000020150522110000XXXXXXXXlog");
constexpr std::string_view kFirstBlock = "\x02W\x00\x03\x00\x00\x00\x00hel\x4C\x2A"sv;
constexpr std::string_view kSecondBlock = "\x02W\x00\x02\x00\x00\x00\x03lo\x86\x5E"sv;
constexpr std::string_view kClose = "\x02"
                                    "C\x03\x8A\x0C";

/// Commands an upload and acknowledges up to the ACK of the request; the first frame.
std::string Upload(DevicePlay& play) {
    play.Message("3.9,3,U,Q,0,0,,,U,3");
    EXPECT_NE(play.Ack(), "");
    return play.Ack();
}

TEST(DeviceUpload, SendsItsFilesFrameByFrame) {
    DevicePlay play("field 7 3\n", OneFile());
    EXPECT_EQ(Upload(play), kOpenFrame);
    EXPECT_TRUE(play.Device().bInSession());
    EXPECT_EQ(play.Ack(), kFirstBlock);
    EXPECT_EQ(play.Say("x\x05"), "") << "neither is an answer";
    EXPECT_EQ(play.Ack(), kSecondBlock);
    EXPECT_EQ(play.Ack(), kClose);
    EXPECT_EQ(play.Ack(), kSuccess);
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Running);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
    EXPECT_EQ(play.Report().lFrames, 5);
    EXPECT_EQ(play.Report().lFilesSent, 1);
    EXPECT_EQ(play.Report().lDataBytesSent, 5);
    EXPECT_EQ(play.Report().lResends, 0);
    EXPECT_TRUE(play.Device().bRebooting());
}

TEST(DeviceUpload, TakesTheBlockSizeOfItsRequest) {
    const struct {
        const char* strField;
        size_t nBlock;
    } cases[] = {{"1", 1},       {"65535", 65535}, {"65536", 1024}, {"0", 1024},
                 {"\"\"", 1024}, {"12x", 1024},    {"-1", 1024}};
    for (const auto& row : cases) {
        const auto script = GoodDeviceScript("field 7 " + std::string(row.strField) + "\n");
        EXPECT_EQ(script.Calls()[0].nBlock(), row.nBlock) << row.strField;
    }
}

TEST(DeviceUpload, SendsAgainAfterEachNak) {
    DevicePlay play("resends 1\n", OneFile());
    EXPECT_EQ(Upload(play), kOpenFrame);
    EXPECT_EQ(play.Nak(), kOpenFrame);
    EXPECT_EQ(play.Ack(), BuildFrame(sim::WritePacket(0, "hello")));
    EXPECT_EQ(play.Nak(), BuildFrame(sim::WritePacket(0, "hello")));
    EXPECT_EQ(play.Report().lResends, 2);
    EXPECT_EQ(play.Nak(), "");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::TooManyNaks);
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(Upload(play), kOpenFrame) << "from the beginning";
}

TEST(DeviceUpload, WaitsAMinuteForEachAnswer) {
    DevicePlay play("", OneFile());
    Upload(play);
    play.Pass(60 * kSecond - 1);
    EXPECT_NE(play.Ack(), "");
    play.Pass(60 * kSecond);
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::NoAnswer);
    EXPECT_EQ(play.Ack(), "");
}

TEST(DeviceUpload, SendsNothingButTheEndWithoutFiles) {
    DevicePlay play;
    EXPECT_EQ(Upload(play), kSuccess);
}

TEST(DeviceUpload, EndsInFailureByScript) {
    DevicePlay play("end-with U\n");
    EXPECT_EQ(Upload(play), kFailure);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Unsuccessful);
}

TEST(DeviceUpload, EndsInFailureWhenAFileCanNotBeRead) {
    auto tree = OneFile();
    sim::ServedFile gone;
    gone.strName = "gone";
    gone.lSize = 1;
    gone.open = [] { return sim::ReadAt(); };
    tree->AddFile("", "", gone);
    DevicePlay play("", tree);
    Upload(play);
    play.Ack();
    play.Ack();
    EXPECT_EQ(play.Ack(), kFailure);
    play.Ack();
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Unsuccessful);
}

TEST(DeviceUpload, MisbehavesAtFramesOfTheScript) {
    DevicePlay play("at frame 1 wrong-check 1\nat frame 2 pause 500\nat frame 2 bytes \"?\"\n",
                    OneFile());
    std::string strWrong = kOpenFrame;
    strWrong.back() = static_cast<char>(strWrong.back() ^ 0x55);
    EXPECT_EQ(Upload(play), strWrong);
    EXPECT_EQ(play.Nak(), kOpenFrame);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Pass(kSecond / 2), "?" + BuildFrame(sim::WritePacket(0, "hello")));
}

TEST(DeviceUpload, IsNoSessionToTakeFramesIn) {
    DevicePlay play("", OneFile());
    play.Message("3.9,3,U,Q,0,0,,,U,3");
    play.Ack();
    EXPECT_EQ(play.Frame("Mhello"), "") << "no answer to its request";
    EXPECT_EQ(play.Ack(), kOpenFrame);
    EXPECT_EQ(play.Frame("Mhello"), "");
    EXPECT_EQ(play.Ack(), BuildFrame(sim::WritePacket(0, "hello")));
}

} // namespace
} // namespace brennik
