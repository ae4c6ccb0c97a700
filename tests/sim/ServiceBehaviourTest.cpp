#include "sim/ServiceBehaviour.h"

#include "tests/sim/GoldenFrames.h"
#include "tests/sim/ServicePlay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using golden::kFailure;
using golden::kShort;
using golden::kSuccess;
using sim::BuildFrame;
using sim::ServedTree;
using sim::ServiceOutcome;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr sim::Microseconds kSecond = 1'000'000;

std::shared_ptr<ServedTree> Empty() {
    return std::make_shared<ServedTree>();
}

/// A variable and two messages: three frames before the closing packet.
std::shared_ptr<ServedTree> ThreeFrames() {
    auto tree = std::make_shared<ServedTree>();
    tree->AddVariable("A=B");
    tree->AddMessage("hello");
    tree->AddMessage("again");
    return tree;
}

TEST(ServiceBehaviour, SpeaksFirstByEnq) {
    ServicePlay play(Empty());
    play.Connect();
    EXPECT_EQ(play.Sent(), "\x05");
}

TEST(ServiceBehaviour, AcknowledgesAGoodRequestThenSendsItsFirstFrame) {
    ServicePlay play(Empty());
    play.Connect();
    play.Sent();
    play.Say("\x02VFI,P,XDL,F,A,T,E,16,0,P,R,C\x03\xCB\xE8");
    EXPECT_THAT(play.Sends(), ElementsAre("\x06", kSuccess));
    EXPECT_EQ(play.Behaviour().strRequest(), "VFI,P,XDL,F,A,T,E,16,0,P,R,C");
    EXPECT_THAT(play.Behaviour().RequestFields(),
                ElementsAre("VFI", "P", "XDL", "F", "A", "T", "E", "16", "0", "P", "R", "C"));
}

TEST(ServiceBehaviour, ReadsARequestInAnyCutting) {
    ServicePlay play(Empty());
    play.Connect();
    play.Sent();
    for (const char c : BuildFrame(ServicePlay::kRequest)) {
        EXPECT_EQ(play.Sent(), "");
        play.Say({&c, 1});
    }
    EXPECT_EQ(play.Sent().substr(0, 1), "\x06");
}

TEST(ServiceBehaviour, RefusesARequestWithAWrongCheckUntilItIsRight) {
    ServicePlay play(Empty());
    play.Connect();
    play.Sent();
    play.Say("\x02VFI\x03\x8B\x6D");
    EXPECT_EQ(play.Sent(), "\x15");
    EXPECT_EQ(play.Behaviour().strRequest(), "");
    play.Say(kShort);
    EXPECT_EQ(play.Sent().substr(0, 1), "\x06");
    EXPECT_EQ(play.Behaviour().strRequest(), "VFI");
    EXPECT_EQ(play.Behaviour().Counts().lRequestsRefused, 1);
}

TEST(ServiceBehaviour, SendsOneFrameForEachAckAndEndsInSuccess) {
    ServicePlay play(ThreeFrames());
    play.Begin();
    EXPECT_EQ(play.Sent(), "\x02LA\x1C"
                           "B\x03\x05\x81");
    EXPECT_EQ(play.Sent(), "") << "nothing more comes before the ACK";
    play.Ack();
    EXPECT_EQ(play.Sent(), "\x02Mhello\x03\x0C\x49"sv);
    play.Ack();
    EXPECT_EQ(play.Sent(), BuildFrame("Magain"));
    play.Ack();
    EXPECT_EQ(play.Sent(), kSuccess);
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Running);
    play.Ack();
    EXPECT_EQ(play.Sent(), "");
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Successful);
    EXPECT_FALSE(play.Wire().bClosed()) << "the other end closes";
    play.Leave();
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Successful);
    EXPECT_EQ(play.Behaviour().Counts().lFrames, 4);
    EXPECT_EQ(play.Behaviour().Counts().lResends, 0);
}

TEST(ServiceBehaviour, SendsFilesInDrivesAndGroups) {
    auto tree = Empty();
    tree->AddFile("", "", "root", "r");
    tree->AddFile("F", "2", "deep", "");
    ServicePlay play(tree);
    play.Begin();
    const std::string strDate = "0000000020150522110000XXXXXXXX";
    EXPECT_THAT(play.AckAll(),
                ElementsAre("OD00000001" + strDate + "root", "W\x00\x01\x00\x00\x00\x00r"sv, "C",
                            "OD00000000" + strDate + "SETDRIVE.F", "C",
                            "OD00000000" + strDate + "SETGROUP.2", "C",
                            "OD00000000" + strDate + "deep", "C", "S"));
    EXPECT_EQ(play.Behaviour().Counts().lFiles, 2);
    EXPECT_EQ(play.Behaviour().Counts().lDataBytes, 1);
}

TEST(ServiceBehaviour, TakesTheBlockSizeOfTheRequestWhenItCan) {
    const struct {
        std::string_view strField;
        int32_t lBlockSize;
    } cases[] = {{"1", 1},      {"256", 256},        {"65535", 65535}, {"65536", 1024},
                 {"0", 1024},   {"-5", 1024},        {"", 1024},       {"12x", 1024},
                 {" 12", 1024}, {"4294967297", 1024}};
    for (const auto& row : cases) {
        ServicePlay play(Empty());
        play.Begin("VFI,P,XDL,F,A,T,E," + std::string(row.strField) + ",0,P");
        EXPECT_EQ(play.Behaviour().lBlockSize(), row.lBlockSize) << row.strField;
    }
    ServicePlay play(Empty());
    play.Begin("VFI,P,XDL");
    EXPECT_EQ(play.Behaviour().lBlockSize(), 1024);
}

TEST(ServiceBehaviour, PrefersItsOwnBlockSize) {
    for (const int32_t lBlockSize : {1, 3, 65535}) {
        auto tree = Empty();
        tree->AddFile("", "", "x", std::string(70'000, 'x'));
        ServicePlay play(tree, "", lBlockSize);
        play.Begin();
        EXPECT_EQ(play.Behaviour().lBlockSize(), lBlockSize);
        const auto payloads = play.AckAll();
        const auto nBlock = static_cast<size_t>(lBlockSize);
        EXPECT_EQ(payloads.size(), 3 + (70'000 + nBlock - 1) / nBlock);
        EXPECT_EQ(payloads[1].size(), 7 + nBlock);
    }
}

TEST(ServiceBehaviour, ResendsTheSameFrameAfterNak) {
    ServicePlay play(ThreeFrames());
    play.Begin();
    const std::string strFrame = play.Sent();
    for (int n = 0; n < 10; ++n) {
        play.Nak();
        EXPECT_EQ(play.Sent(), strFrame);
    }
    play.Ack();
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello"));
    EXPECT_EQ(play.Behaviour().Counts().lResends, 10);
    EXPECT_EQ(play.Behaviour().Counts().lFrames, 2);
}

TEST(ServiceBehaviour, ClosesAfterTooManyNaksOfOneFrame) {
    ServicePlay play(ThreeFrames(), "resends 2");
    play.Begin();
    play.Nak();
    play.Nak();
    play.Ack();
    play.Nak();
    play.Nak();
    EXPECT_FALSE(play.Wire().bClosed()) << "each frame has its own count";
    play.Sent();
    play.Nak();
    EXPECT_EQ(play.Sent(), "");
    EXPECT_TRUE(play.Wire().bClosed());
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::TooManyNaks);
    EXPECT_FALSE(play.Behaviour().NextDeadline());
}

TEST(ServiceBehaviour, ResendsTheClosingPacketToo) {
    ServicePlay play(Empty());
    play.Begin();
    EXPECT_EQ(play.Sent(), kSuccess);
    play.Nak();
    EXPECT_EQ(play.Sent(), kSuccess);
    play.Ack();
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Successful);
}

TEST(ServiceBehaviour, IgnoresBytesThatAreNoAnswer) {
    ServicePlay play(ThreeFrames());
    play.Begin();
    play.Sent();
    play.Say("\x05\x02junk\x03\x04");
    EXPECT_EQ(play.Sent(), "");
    play.Say("junk\x06");
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello"));
}

TEST(ServiceBehaviour, TakesOneAnswerFromADelivery) {
    ServicePlay play(ThreeFrames());
    play.Begin();
    play.Sent();
    play.Say("\x06\x06\x15");
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello"));
    play.Say("\x15\x06");
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello"));
}

TEST(ServiceBehaviour, GivesUpWithoutARequest) {
    ServicePlay play(Empty());
    play.Connect();
    play.Pass(60 * kSecond - 1);
    EXPECT_FALSE(play.Wire().bClosed());
    play.Pass(1);
    EXPECT_TRUE(play.Wire().bClosed());
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::NoRequest);
}

TEST(ServiceBehaviour, WaitsForTheRequestAnewAfterEachNak) {
    ServicePlay play(Empty());
    play.Connect();
    play.Pass(50 * kSecond);
    play.Say("\x02VFI\x03xx");
    play.Pass(60 * kSecond - 1);
    EXPECT_FALSE(play.Wire().bClosed());
    play.Pass(1);
    EXPECT_TRUE(play.Wire().bClosed());
}

TEST(ServiceBehaviour, GivesUpWithoutAnAnswer) {
    ServicePlay play(ThreeFrames());
    play.Begin();
    play.Pass(29 * kSecond);
    play.Say("x");
    play.Pass(kSecond - 1);
    EXPECT_FALSE(play.Wire().bClosed());
    play.Pass(1);
    EXPECT_TRUE(play.Wire().bClosed());
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::NoAnswer);
}

TEST(ServiceBehaviour, ClosesWhenTheOtherEndDoesNot) {
    ServicePlay play(Empty());
    play.Begin();
    play.Ack();
    play.Pass(10 * kSecond - 1);
    EXPECT_FALSE(play.Wire().bClosed());
    play.Pass(1);
    EXPECT_TRUE(play.Wire().bClosed());
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Successful);
    EXPECT_FALSE(play.Behaviour().NextDeadline());
}

TEST(ServiceBehaviour, TakesItsTimeLimitsFromTheScript) {
    ServicePlay noRequest(Empty(), "timeout request 100");
    noRequest.Connect();
    noRequest.Pass(100'000);
    EXPECT_EQ(noRequest.Behaviour().Outcome(), ServiceOutcome::NoRequest);
    ServicePlay noAnswer(Empty(), "timeout answer 100");
    noAnswer.Begin();
    noAnswer.Pass(100'000);
    EXPECT_EQ(noAnswer.Behaviour().Outcome(), ServiceOutcome::NoAnswer);
    ServicePlay noClose(Empty(), "timeout close 100");
    noClose.Begin();
    noClose.Ack();
    noClose.Pass(100'000);
    EXPECT_TRUE(noClose.Wire().bClosed());
}

TEST(ServiceBehaviour, NotesThatTheOtherEndLeft) {
    ServicePlay early(Empty());
    early.Connect();
    early.Leave();
    EXPECT_EQ(early.Behaviour().Outcome(), ServiceOutcome::LeftByOtherEnd);
    EXPECT_FALSE(early.Behaviour().NextDeadline());
    ServicePlay late(Empty());
    late.Begin();
    late.Leave();
    EXPECT_EQ(late.Behaviour().Outcome(), ServiceOutcome::LeftByOtherEnd)
        << "the closing packet was not acknowledged";
}

TEST(ServiceBehaviour, EndsWithFailureWhenAFileCannotBeRead) {
    auto tree = Empty();
    sim::ServedFile file;
    file.strName = "gone";
    file.open = [] { return sim::ReadAt(); };
    tree->AddFile("", "", file);
    ServicePlay play(tree);
    play.Begin();
    EXPECT_EQ(play.Sent(), kFailure);
    play.Ack();
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Unsuccessful);
    EXPECT_THAT(play.Events(), Contains("a file can't be read as it was listed"));
}

TEST(ServiceBehaviour, TellsItsEvents) {
    ServicePlay play(ThreeFrames(), "nak-request 1\nat frame 2 wrong-check 1\nat end pause 5");
    play.Connect();
    play.Say(BuildFrame("VFI"));
    play.Say(BuildFrame("VFI"));
    play.Ack();
    play.Nak();
    play.Ack();
    play.Say("?\x06");
    play.Pass(5'000);
    play.Ack();
    play.Leave();
    EXPECT_THAT(play.Events(),
                ElementsAre("connected", "sent ENQ", "good request refused with NAK",
                            "request: VFI", "sent ACK", "sent frame 1: L, 8 bytes", "ACK",
                            "sent frame 2: M, 10 bytes, with a wrong block check", "NAK",
                            "resent frame 2: M, 10 bytes", "ACK", "sent frame 3: M, 10 bytes",
                            "ignored 1 byte", "ACK", "pause of 5 ms", "sent frame 4: S, 5 bytes",
                            "ACK", "session ended: successful", "the other end has gone"));
}

// What scripts make of it.

TEST(ServiceBehaviourScript, RefusesGoodRequests) {
    ServicePlay play(Empty(), "nak-request 2");
    play.Connect();
    play.Sent();
    const std::string strRequest = BuildFrame(ServicePlay::kRequest);
    play.Say(strRequest);
    EXPECT_EQ(play.Sent(), "\x15");
    play.Say(strRequest);
    EXPECT_EQ(play.Sent(), "\x15");
    play.Say(strRequest);
    EXPECT_EQ(play.Sent().substr(0, 1), "\x06");
}

TEST(ServiceBehaviourScript, LeavesEnqOut) {
    ServicePlay play(Empty(), "no-enq");
    play.Connect();
    EXPECT_EQ(play.Sent(), "");
    play.Say(BuildFrame(ServicePlay::kRequest));
    EXPECT_EQ(play.Sent().substr(0, 1), "\x06");
}

TEST(ServiceBehaviourScript, EndsWithUnsuccessful) {
    ServicePlay play(Empty(), "end-with U");
    play.Begin();
    EXPECT_EQ(play.Sent(), kFailure);
    play.Ack();
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Unsuccessful);
}

TEST(ServiceBehaviourScript, SendsTheFirstFramesWithAWrongCheck) {
    ServicePlay play(ThreeFrames(), "wrong-check 2");
    play.Begin();
    const std::string strRight = BuildFrame("LA\x1C"
                                            "B");
    for (int n = 0; n < 2; ++n) {
        const std::string strWrong = play.Sent();
        EXPECT_NE(strWrong, strRight);
        EXPECT_EQ(strWrong.substr(0, strWrong.size() - 1), strRight.substr(0, strRight.size() - 1));
        play.Nak();
    }
    EXPECT_EQ(play.Sent(), strRight);
    play.Ack();
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello"));
}

TEST(ServiceBehaviourScript, SendsChosenFramesWithAWrongCheck) {
    ServicePlay play(ThreeFrames(), "at frames 2-3 wrong-check 1\nat end wrong-check 1");
    play.Begin();
    const std::string strFirst = BuildFrame("LA\x1C"
                                            "B");
    EXPECT_EQ(play.Sent(), strFirst);
    for (const std::string_view strPayload : {"Mhello", "Magain", "S"}) {
        play.Ack();
        EXPECT_NE(play.Sent(), BuildFrame(strPayload));
        play.Nak();
        EXPECT_EQ(play.Sent(), BuildFrame(strPayload));
    }
}

TEST(ServiceBehaviourScript, CutsAllThatItSendsIntoPieces) {
    ServicePlay play(Empty(), "fragment 2");
    play.Connect();
    EXPECT_THAT(play.Sends(), ElementsAre("\x05"));
    play.Say(BuildFrame(ServicePlay::kRequest));
    EXPECT_THAT(play.Sends(), ElementsAre("\x06", "\x02S", "\x03\x6A", "\x0F"));
    play.Ack();
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Successful);
}

TEST(ServiceBehaviourScript, PausesBetweenPieces) {
    ServicePlay play(ThreeFrames(), "at frame 2 fragment 4 20");
    play.Connect();
    play.Sends();
    play.Say(BuildFrame(ServicePlay::kRequest));
    EXPECT_EQ(play.Sends().size(), 2U) << "the ACK and the first frame, which goes whole";
    play.Ack();
    EXPECT_THAT(play.Sends(), ElementsAre("\x02Mhe"));
    play.Pass(19'999);
    EXPECT_THAT(play.Sends(), IsEmpty());
    play.Pass(1);
    EXPECT_THAT(play.Sends(), ElementsAre("llo\x03"));
    play.Ack();
    EXPECT_THAT(play.Sends(), IsEmpty()) << "no answer counts before the frame is out";
    play.Pass(20'000);
    EXPECT_THAT(play.Sends(), ElementsAre("\x0C\x49"));
    play.Ack();
    EXPECT_THAT(play.Sends(), ElementsAre(BuildFrame("Magain")));
}

TEST(ServiceBehaviourScript, CountsTheAnswerTimeFromTheLastPiece) {
    ServicePlay play(ThreeFrames(), "timeout answer 50\nat frame 1 fragment 1 30");
    play.Begin();
    play.Pass(7 * 30'000);
    EXPECT_EQ(play.Sent().size(), 8U);
    play.Pass(49'999);
    EXPECT_FALSE(play.Wire().bClosed());
    play.Pass(1);
    EXPECT_TRUE(play.Wire().bClosed());
}

TEST(ServiceBehaviourScript, PutsNoiseAheadOnceAndInTheSameSend) {
    ServicePlay play(ThreeFrames(), "at frame 2 noise \"junk\" 00\n"
                                    "at frame 2 noise 01\n"
                                    "at start noise \"hello \"\n"
                                    "at request noise \"wait \"\n");
    play.Connect();
    EXPECT_THAT(play.Sends(), ElementsAre("hello \x05"));
    play.Say(BuildFrame(ServicePlay::kRequest));
    ASSERT_EQ(play.Sends().front(), "wait \x06");
    play.Ack();
    EXPECT_THAT(play.Sends(), ElementsAre("junk\0\x01"s + BuildFrame("Mhello")));
    play.Nak();
    EXPECT_THAT(play.Sends(), ElementsAre(BuildFrame("Mhello")));
}

TEST(ServiceBehaviourScript, Pauses) {
    ServicePlay play(ThreeFrames(), "at start pause 100\nat request pause 200\n"
                                    "at frame 2 pause 300\nat frame 2 pause 50");
    play.Connect();
    EXPECT_EQ(play.Sent(), "");
    play.Pass(99'999);
    EXPECT_EQ(play.Sent(), "");
    play.Pass(1);
    EXPECT_EQ(play.Sent(), "\x05");
    play.Say(BuildFrame(ServicePlay::kRequest));
    EXPECT_EQ(play.Sent(), "");
    play.Pass(200'000);
    EXPECT_EQ(play.Sent().substr(0, 1), "\x06");
    play.Ack();
    play.Pass(349'999);
    EXPECT_EQ(play.Sent(), "");
    play.Pass(1);
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello"));
}

TEST(ServiceBehaviourScript, FallsSilentForGood) {
    for (const std::string_view strPlace : {"start", "request", "frame 2", "end"}) {
        ServicePlay play(ThreeFrames(), "at " + std::string(strPlace) + " silence");
        play.Connect();
        play.Say(BuildFrame(ServicePlay::kRequest));
        for (int n = 0; n < 5; ++n) {
            play.Ack();
        }
        play.Sent();
        play.Say(BuildFrame(ServicePlay::kRequest));
        play.Ack();
        EXPECT_FALSE(play.Behaviour().NextDeadline()) << strPlace;
        play.Pass(86'400 * kSecond);
        EXPECT_EQ(play.Sent(), "") << strPlace;
        EXPECT_FALSE(play.Wire().bClosed()) << strPlace;
        EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Running) << strPlace;
        play.Leave();
        EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::LeftByOtherEnd) << strPlace;
    }
}

TEST(ServiceBehaviourScript, ClosesAtAnyPlace) {
    const struct {
        std::string_view strPlace;
        std::string strBefore;
    } cases[] = {
        {"start", ""},
        {"request", "\x05"},
        {"frame 2", "\x05\x06" + BuildFrame("LA\x1C"
                                            "B")},
        {"end", "\x05\x06" +
                    BuildFrame("LA\x1C"
                               "B") +
                    BuildFrame("Mhello") + BuildFrame("Magain")},
    };
    for (const auto& row : cases) {
        ServicePlay play(ThreeFrames(), "at " + std::string(row.strPlace) + " close");
        play.Connect();
        play.Say(BuildFrame(ServicePlay::kRequest));
        for (int n = 0; n < 5; ++n) {
            play.Ack();
        }
        EXPECT_EQ(play.Sent(), row.strBefore) << row.strPlace;
        EXPECT_TRUE(play.Wire().bClosed()) << row.strPlace;
        EXPECT_FALSE(play.Wire().bReset()) << row.strPlace;
        EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::EndedByScript) << row.strPlace;
    }
}

TEST(ServiceBehaviourScript, Resets) {
    ServicePlay play(ThreeFrames(), "at frame 2 reset");
    play.Begin();
    play.Sent();
    EXPECT_FALSE(play.Wire().bReset());
    play.Ack();
    EXPECT_TRUE(play.Wire().bReset());
    EXPECT_FALSE(play.Wire().bClosed());
    EXPECT_EQ(play.Sent(), "");
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::EndedByScript);
    EXPECT_FALSE(play.Behaviour().NextDeadline());
}

TEST(ServiceBehaviourScript, HangsUpAtAnyPlace) {
    const struct {
        std::string_view strPlace;
        size_t nFrames;
    } cases[] = {{"start", 0}, {"request", 0}, {"frame 2", 1}, {"end", 3}};
    for (const auto& row : cases) {
        ServicePlay play(ThreeFrames(), "at " + std::string(row.strPlace) + " hang-up 250");
        play.Connect();
        play.Say(BuildFrame(ServicePlay::kRequest));
        for (size_t n = 0; n < row.nFrames; ++n) {
            EXPECT_FALSE(play.Wire().Back()) << row.strPlace;
            play.Ack();
        }
        EXPECT_EQ(play.Wire().Back(), 250'000) << row.strPlace;
        EXPECT_FALSE(play.Wire().bClosed()) << row.strPlace;
        EXPECT_FALSE(play.Wire().bReset()) << row.strPlace;
        EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::EndedByScript) << row.strPlace;
        EXPECT_FALSE(play.Behaviour().NextDeadline()) << row.strPlace;
        play.Sent();
        play.Ack();
        EXPECT_EQ(play.Sent(), "") << row.strPlace;
    }
}

TEST(ServiceBehaviourScript, HangsUpByAResetWhereThereIsNoLine) {
    class Connection : public sim::Wire {
      public:
        void Send(std::string_view /*strBytes*/) override {}
        void Close() override {}
        void Reset() override { bReset = true; }
        bool bReset = false;
    } connection;
    sim::ServiceOptions options;
    options.script = GoodScript("at start hang-up");
    sim::ServiceBehaviour behaviour(Empty(), options);
    behaviour.Connected(connection, 1);
    EXPECT_TRUE(connection.bReset);
    EXPECT_EQ(behaviour.Outcome(), ServiceOutcome::EndedByScript);
}

TEST(ServiceBehaviourScript, SendsRawBytesWithoutWaiting) {
    ServicePlay play(ThreeFrames(), "at start bytes \"AT\" 0D\nat frame 2 bytes NAK*2\n"
                                    "at frame 2 bytes FF");
    play.Connect();
    EXPECT_THAT(play.Sends(), ElementsAre("AT\r", "\x05"));
    play.Say(BuildFrame(ServicePlay::kRequest));
    play.Sent();
    play.Ack();
    EXPECT_THAT(play.Sends(), ElementsAre("\x15\x15", "\xFF", BuildFrame("Mhello")));
}

TEST(ServiceBehaviourScript, SendsRawPacketsLikeItsOwn) {
    ServicePlay play(ThreeFrames(), "at frame 2 packet \"P1234\"\n"
                                    "at frame 2 packet \"W\" 00 01 00 00 00 00 \"x\"\n"
                                    "at end packet \"T20240102030405\"\n"
                                    "resends 1");
    play.Begin();
    play.Sent();
    play.Ack();
    EXPECT_EQ(play.Sent(), BuildFrame("P1234"));
    play.Nak();
    EXPECT_EQ(play.Sent(), BuildFrame("P1234"));
    play.Ack();
    EXPECT_EQ(play.Sent(), BuildFrame("W\x00\x01\x00\x00\x00\x00x"sv));
    play.Ack();
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello")) << "scripted packets have no number";
    play.Nak();
    EXPECT_EQ(play.Sent(), BuildFrame("Mhello")) << "and a resend limit of their own";
    EXPECT_THAT(play.AckAll(), IsEmpty());
    play.Ack();
    EXPECT_THAT(play.AckAll(), ElementsAre("Magain", "T20240102030405", "S"));
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::Successful);
    EXPECT_EQ(play.Behaviour().Counts().lFrames, 7);
}

TEST(ServiceBehaviourScript, GivesUpOnAScriptedPacketToo) {
    ServicePlay play(Empty(), "resends 0\nat end packet \"Mx\"");
    play.Begin();
    EXPECT_EQ(play.Sent(), BuildFrame("Mx"));
    play.Nak();
    EXPECT_TRUE(play.Wire().bClosed());
    EXPECT_EQ(play.Behaviour().Outcome(), ServiceOutcome::TooManyNaks);
}

TEST(ServiceBehaviourScript, WrongChecksOfAPlaceSpareItsScriptedPackets) {
    ServicePlay play(Empty(), "at end wrong-check 1\nat end packet \"Mx\"");
    play.Begin();
    EXPECT_EQ(play.Sent(), BuildFrame("Mx"));
    play.Ack();
    EXPECT_NE(play.Sent(), kSuccess);
}

TEST(ServiceBehaviour, DescribesEveryOutcome) {
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::Running), "running");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::Successful), "successful");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::Unsuccessful), "unsuccessful");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::NoRequest), "no request");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::NoAnswer), "no answer");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::TooManyNaks), "too many NAKs");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::LeftByOtherEnd), "left by the other end");
    EXPECT_EQ(sim::DescribeOutcome(ServiceOutcome::EndedByScript), "ended by the script");
}

} // namespace
} // namespace brennik
