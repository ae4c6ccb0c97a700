// What a device makes of management messages.
#include "sim/DeviceMessages.h"
#include "tests/sim/DevicePlay.h"
#include "tests/sim/GoldenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace brennik {
namespace {

using namespace std::string_view_literals;
using golden::kQuery;
using golden::kReady;
using golden::kShort;
using golden::kSuccess;
using golden::kUpload;
using sim::BuildManagementFrame;
using sim::DeviceOutcome;
using testing::ElementsAre;

constexpr sim::Microseconds kSecond = 1'000'000;

constexpr std::string_view kDownload = "\x02"
                                       "5.8,2,U,Q,0,0,,,T,\x03\x6E";
constexpr std::string_view kAgreed = "\x06\x02"
                                     "5.8,1,T,R,0,0,,,A\x03\x56";
constexpr std::string_view kRefused = "\x06\x02"
                                      "5.8,1,T,R,0,0,,,D\x03\x53";
constexpr std::string_view kError = "\x06\x02"
                                    "5.8,0,E,R,0,0,,,\x03\x07";

/// A device that asks for no more than "VFI".
std::string Script(const std::string& strRest = "") {
    return "request-record \"VFI\"\n" + strRest;
}

/// ACK, and a message in its frame.
std::string Replied(std::string_view strPayload) {
    return "\x06" + BuildManagementFrame(strPayload);
}

TEST(DeviceMessages, ReadsWhatItIsAsked) {
    using Kind = sim::ManagementMessage::Kind;
    const auto command = sim::ReadManagementMessage("5.8,2,U,Q,0,0,,,T,");
    EXPECT_EQ(command.kind, Kind::TransferCommand);
    EXPECT_EQ(command.strVersion, "5.8");
    EXPECT_EQ(command.strData, "T,");
    EXPECT_FALSE(command.bUpload());
    EXPECT_FALSE(sim::ReadManagementMessage("5.8,2,U,Q,0,0,,,F,").bUpload());
    EXPECT_TRUE(sim::ReadManagementMessage("3.9,3,U,Q,0,0,,,U,3").bUpload());
    const auto query = sim::ReadManagementMessage("3.9,0,LS,Q,0,0,,,");
    EXPECT_EQ(query.kind, Kind::StatusQuery);
    EXPECT_EQ(query.strVersion, "3.9");
    EXPECT_EQ(query.strData, "");
    for (const char* strOther :
         {"5.8,0,X,Q,0,0,,,", "5.8,0,LS,Q,0,0,,", "5.8,2,U,Q", "5.8,", "", "5.8,0,ls,Q,0,0,,,"}) {
        EXPECT_EQ(sim::ReadManagementMessage(strOther).kind, Kind::Other) << strOther;
    }
}

TEST(DeviceMessages, KnowsAReplyThatAgrees) {
    EXPECT_TRUE(sim::bAgrees("5.8,1,T,R,0,0,,,A"));
    EXPECT_TRUE(sim::bAgrees("5.8,1,U,R,0,0,,,A"));
    EXPECT_FALSE(sim::bAgrees("5.8,1,T,R,0,0,,,a"));
    EXPECT_FALSE(sim::bAgrees("5.8,1,X,R,0,0,,,A"));
    EXPECT_FALSE(sim::bAgrees("5.8,1,T,R,0,0,,A"));
    EXPECT_FALSE(sim::bAgrees(""));
}

// Transfer commands.

TEST(DeviceManagement, AgreesAndSendsItsRequestWithoutBeingPolled) {
    DevicePlay play(Script());
    EXPECT_EQ(play.Say(kDownload), kAgreed);
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Ack(), kShort);
    EXPECT_TRUE(play.Device().bInSession());
    play.Ack();
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_EQ(play.Report().outcome, DeviceOutcome::Successful);
    EXPECT_THAT(play.Device().Messages(), ElementsAre("5.8,2,U,Q,0,0,,,T,"));
}

TEST(DeviceManagement, RepliesInTheVersionThatItIsAskedIn) {
    DevicePlay play(Script());
    EXPECT_EQ(play.Message("3.9,2,U,Q,0,0,,,F,"), Replied("3.9,1,T,R,0,0,,,A"));
    play.Ack();
    DevicePlay upload(Script());
    EXPECT_EQ(upload.Say(kUpload), "\x06\x02"
                                   "3.9,1,U,R,0,0,,,A\x03\x50");
    EXPECT_EQ(upload.Ack(), kShort);
}

TEST(DeviceManagement, RefusesOrFallsShortOrIsSilentByScript) {
    const struct {
        const char* strAnswer;
        std::string strReply;
    } cases[] = {
        {"refuse", std::string(kRefused)},
        {"short", Replied("5.8,0,T,R,0,0,,")},
        {"bytes \"5.8,1,X,R,0,0,,,A\"", Replied("5.8,1,X,R,0,0,,,A")},
        {"silence", "\x06"},
        {"deaf", ""},
    };
    for (const auto& row : cases) {
        DevicePlay play(Script(std::string("command ") + row.strAnswer + "\n"));
        EXPECT_EQ(play.Say(kDownload), row.strReply);
        EXPECT_EQ(play.Ack(), "") << row.strAnswer;
        EXPECT_FALSE(play.Device().bInSession());
        EXPECT_EQ(play.Enq(), kShort) << "polling goes on";
    }
}

TEST(DeviceManagement, AgreesByBytesOfTheScript) {
    DevicePlay play(Script("command bytes \"7.7,0,U,,,,,,A\"\n"));
    EXPECT_EQ(play.Say(kDownload), Replied("7.7,0,U,,,,,,A"));
    EXPECT_EQ(play.Ack(), kShort);
}

TEST(DeviceManagement, MayAgreeAndWaitToBePolledAllTheSame) {
    DevicePlay play(Script("command agree-only\nenq syn 1\n"));
    EXPECT_EQ(play.Say(kDownload), kAgreed);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Enq(), "\x16");
    EXPECT_EQ(play.Enq(), kShort);
}

TEST(DeviceManagement, ChangesItsAnswerFromOneCommandToTheNext) {
    DevicePlay play(Script("command refuse 1\ncommand silence for 1000\n"));
    EXPECT_EQ(play.Say(kDownload), kRefused);
    play.Ack();
    EXPECT_EQ(play.Say(kDownload), "\x06");
    play.Pass(kSecond);
    EXPECT_EQ(play.Say(kDownload), kAgreed);
}

TEST(DeviceManagement, SendsItsReplyAgainAfterEachNak) {
    DevicePlay play(Script("resends 1\nat reply wrong-check 1\nat reply bytes \"!\"\n"));
    std::string strWrong = "\x06!" + std::string(kAgreed.substr(1));
    strWrong.back() = '\x03'; // 56 turned by 55
    EXPECT_EQ(play.Say(kDownload), strWrong);
    EXPECT_EQ(play.Nak(), kAgreed.substr(1));
    EXPECT_EQ(play.Nak(), "") << "once is enough";
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Enq(), kShort);
}

TEST(DeviceManagement, SendsNoRequestWhenItsReplyIsNotAcknowledged) {
    DevicePlay play(Script("timeout answer 500\n"));
    play.Say(kDownload);
    play.Pass(kSecond / 2);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_FALSE(play.Device().bInSession());
}

TEST(DeviceManagement, TakesAPollForAnAckThatWasLost) {
    DevicePlay play(Script());
    play.Say(kUpload);
    EXPECT_EQ(play.Enq(), kShort);
    play.Ack();
    EXPECT_EQ(play.Say(kSuccess), "\x06") << "whoever polls wants no upload";
}

TEST(DeviceManagement, RefusesAWrongCheckWithNak) {
    DevicePlay play(Script());
    EXPECT_EQ(play.Say("\x02"
                       "5.8,2,U,Q,0,0,,,T,\x03\x6F"),
              "\x15");
    EXPECT_THAT(play.Device().Messages(), ElementsAre());
    EXPECT_EQ(play.Say(kDownload), kAgreed);
}

TEST(DeviceManagement, StartsOverWhenItIsAskedAnew) {
    DevicePlay play(Script());
    play.Say(kDownload);
    EXPECT_EQ(play.Say(kDownload), kAgreed) << "in the place of the ACK";
    EXPECT_EQ(play.Ack(), kShort);
    EXPECT_EQ(play.Say(kDownload), kAgreed) << "in the place of an answer to the request";
    EXPECT_FALSE(play.Device().bInSession());
    EXPECT_EQ(play.Ack(), kShort);
    EXPECT_EQ(play.Report().lRequests, 2);
}

TEST(DeviceManagement, IgnoresMessagesInTheMiddleOfASession) {
    DevicePlay play(Script());
    play.Begin();
    EXPECT_EQ(play.Say(kQuery), "");
    EXPECT_EQ(play.Say(kSuccess), "\x06");
    EXPECT_THAT(play.Device().Messages(), ElementsAre());
}

TEST(DeviceManagement, AcknowledgesWhatItDoesNotKnow) {
    DevicePlay play(Script());
    EXPECT_EQ(play.Message("5.8,0,XX,Q,0,0,,,"), "\x06");
    EXPECT_EQ(play.Message("5.8,"), "\x06");
    EXPECT_THAT(play.Device().Messages(), ElementsAre("5.8,0,XX,Q,0,0,,,", "5.8,"));
    EXPECT_EQ(play.Enq(), kShort);
}

TEST(DeviceManagement, RefusesCommandsAfterItsLastCall) {
    DevicePlay play(Script("reboot 0\n"));
    play.Begin();
    play.Say(kSuccess);
    EXPECT_EQ(play.Say(kDownload), kRefused);
    EXPECT_EQ(play.Ack(), "");
}

// Status queries.

TEST(DeviceManagement, IsReadyUnlessTheScriptSaysOtherwise) {
    DevicePlay play(Script());
    EXPECT_EQ(play.Say(kQuery), kReady);
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Message("3.9,0,LS,Q,0,0,,,"), Replied("3.9,1,LS,R,0,0,,,R"));
    EXPECT_EQ(play.Ack(), "");
    EXPECT_EQ(play.Enq(), kShort);
}

TEST(DeviceManagement, AnswersQueriesAsTheScriptSays) {
    DevicePlay play(Script("status error 1\nstatus other 1\nstatus silence 1\nstatus deaf 1\n"
                           "status bytes \"5.8\"\nstatus ready\n"));
    EXPECT_EQ(play.Say(kQuery), kError);
    play.Ack();
    EXPECT_EQ(play.Say(kQuery), Replied("5.8,1,LS,R,0,0,,,B"));
    play.Ack();
    EXPECT_EQ(play.Say(kQuery), "\x06");
    EXPECT_EQ(play.Say(kQuery), "");
    EXPECT_EQ(play.Say(kQuery), "\x06\x02"
                                "5.8\x03\x20");
    EXPECT_EQ(play.Say(kQuery), kReady);
    EXPECT_EQ(play.Device().Messages().size(), 6U);
}

TEST(DeviceManagement, AnswersQueriesByTheCallThatHasEndedLast) {
    DevicePlay play("request-record \"VFI\"\nstatus other 1\nreboot 0\n"
                    "call\nstatus error 1\nat reply bytes \"1\"\n"
                    "call\nat reply bytes \"2\"\n");
    EXPECT_EQ(play.Say(kQuery), "\x06"
                                "1" +
                                    BuildManagementFrame("5.8,1,LS,R,0,0,,,B"));
    EXPECT_EQ(play.Say(kQuery), "\x06"
                                "1" +
                                    std::string(kReady.substr(1)));
    play.Begin();
    play.Say(kSuccess);
    EXPECT_EQ(play.Say(kQuery), "\x06"
                                "1" +
                                    std::string(kError.substr(1)));
    play.Begin();
    play.Say(kSuccess);
    EXPECT_EQ(play.Say(kQuery), "\x06"
                                "2" +
                                    BuildManagementFrame("5.8,1,LS,R,0,0,,,B"));
}

} // namespace
} // namespace brennik
