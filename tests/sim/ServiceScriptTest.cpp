#include "sim/ServiceScript.h"

#include "tests/sim/ServicePlay.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace brennik {
namespace {

using sim::ScriptAction;
using sim::ScriptPlace;
using sim::ServiceScript;
using Kind = ScriptAction::Kind;

std::string ErrorOf(std::string_view strText) {
    std::string strError = "none";
    EXPECT_FALSE(ServiceScript::Parse(strText, strError)) << strText;
    return strError;
}

/// The one action that a script names for a place.
ScriptAction OnlyAction(std::string_view strText, ScriptPlace place, int64_t lFrame = 0) {
    const ServiceScript script = GoodScript(strText);
    const auto actions = script.ActionsAt(place, lFrame);
    EXPECT_EQ(actions.size(), 1U) << strText;
    return actions.empty() ? ScriptAction() : *actions.front();
}

TEST(ServiceScript, OfNothingChangesNothing) {
    for (const std::string_view strText : {"", "\n\n", "# a comment\n   \n\t# another"}) {
        const ServiceScript script = GoodScript(strText);
        EXPECT_TRUE(script.bNoActions());
        EXPECT_TRUE(script.bSendEnq());
        EXPECT_TRUE(script.bEndsWithSuccess());
        EXPECT_EQ(script.lRequestNaks(), 0);
        EXPECT_EQ(script.lWrongChecks(), 0);
        EXPECT_EQ(script.DefaultFragmenting().nBytes, 0U);
        EXPECT_EQ(script.Limits().lResends, 10);
        EXPECT_EQ(script.Limits().requestTimeout, 60'000'000);
        EXPECT_EQ(script.Limits().answerTimeout, 30'000'000);
        EXPECT_EQ(script.Limits().closeTimeout, 10'000'000);
    }
}

TEST(ServiceScript, ReadsEachStatement) {
    const ServiceScript script = GoodScript("no-enq\r\n"
                                            "nak-request 2\r\n"
                                            "wrong-check 3 # three\r\n"
                                            "fragment 7 25\r\n"
                                            "end-with U\r\n"
                                            "resends 4\r\n"
                                            "timeout request 100\r\n"
                                            "timeout answer 200\r\n"
                                            "timeout close 300");
    EXPECT_FALSE(script.bSendEnq());
    EXPECT_EQ(script.lRequestNaks(), 2);
    EXPECT_EQ(script.lWrongChecks(), 3);
    EXPECT_EQ(script.DefaultFragmenting().nBytes, 7U);
    EXPECT_EQ(script.DefaultFragmenting().pause, 25'000);
    EXPECT_FALSE(script.bEndsWithSuccess());
    EXPECT_EQ(script.Limits().lResends, 4);
    EXPECT_EQ(script.Limits().requestTimeout, 100'000);
    EXPECT_EQ(script.Limits().answerTimeout, 200'000);
    EXPECT_EQ(script.Limits().closeTimeout, 300'000);
    EXPECT_TRUE(script.bNoActions());
}

TEST(ServiceScript, FragmentsWithoutAPauseByDefault) {
    EXPECT_EQ(GoodScript("fragment 1").DefaultFragmenting().pause, 0);
}

TEST(ServiceScript, HangsUpForASecondByDefault) {
    EXPECT_EQ(OnlyAction("at start hang-up", ScriptPlace::Start).pause, 1'000'000);
}

TEST(ServiceScript, HoldsForEverySessionByDefault) {
    const ServiceScript script = GoodScript("no-enq\nat start close");
    for (const int64_t lSession : {int64_t{1}, int64_t{2}, int64_t{1'000'000'000'000}}) {
        EXPECT_FALSE(script.ForSession(lSession).bSendEnq());
        EXPECT_EQ(script.ForSession(lSession).ActionsAt(ScriptPlace::Start).size(), 1U);
    }
}

TEST(ServiceScript, ChangesNothingInLaterSessionsThanItSays) {
    const ServiceScript script = GoodScript("at start close\nsessions 2\nno-enq\nresends 4");
    EXPECT_FALSE(script.ForSession(1).bSendEnq());
    EXPECT_EQ(script.ForSession(1).ActionsAt(ScriptPlace::Start).size(), 1U);
    EXPECT_EQ(script.ForSession(2).Limits().lResends, 4);
    EXPECT_FALSE(script.ForSession(2).bNoActions());
    EXPECT_TRUE(script.ForSession(3).bNoActions());
    EXPECT_TRUE(script.ForSession(3).bSendEnq());
    EXPECT_EQ(script.ForSession(3).Limits().lResends, 10);
}

TEST(ServiceScript, TheLastOfEqualStatementsCounts) {
    EXPECT_TRUE(GoodScript("end-with U\nend-with S").bEndsWithSuccess());
    EXPECT_EQ(GoodScript("nak-request 2\nnak-request 5").lRequestNaks(), 5);
}

TEST(ServiceScript, ReadsEachAction) {
    EXPECT_EQ(OnlyAction("at start pause 1500", ScriptPlace::Start).pause, 1'500'000);
    EXPECT_EQ(OnlyAction("at request silence", ScriptPlace::Request).kind, Kind::Silence);
    EXPECT_EQ(OnlyAction("at end close", ScriptPlace::End).kind, Kind::Close);
    EXPECT_EQ(OnlyAction("at end reset", ScriptPlace::End).kind, Kind::Reset);
    const ScriptAction hangUp = OnlyAction("at request hang-up 250", ScriptPlace::Request);
    EXPECT_EQ(hangUp.kind, Kind::HangUp);
    EXPECT_EQ(hangUp.pause, 250'000);
    EXPECT_EQ(OnlyAction("at frame 1 hang-up 0", ScriptPlace::Frame, 1).pause, 0);
    const ScriptAction bytes = OnlyAction("at start bytes 02 \"x\"", ScriptPlace::Start);
    EXPECT_EQ(bytes.kind, Kind::Bytes);
    EXPECT_EQ(bytes.strBytes, "\x02x");
    const ScriptAction packet = OnlyAction("at end packet \"Mhi\"", ScriptPlace::End);
    EXPECT_EQ(packet.kind, Kind::Packet);
    EXPECT_EQ(packet.strBytes, "Mhi");
    const ScriptAction noise = OnlyAction("at request noise 41*3", ScriptPlace::Request);
    EXPECT_EQ(noise.kind, Kind::Noise);
    EXPECT_EQ(noise.strBytes, "AAA");
    const ScriptAction wrong = OnlyAction("at frame 2 wrong-check 4", ScriptPlace::Frame, 2);
    EXPECT_EQ(wrong.kind, Kind::WrongCheck);
    EXPECT_EQ(wrong.lCount, 4);
    const ScriptAction fragment = OnlyAction("at frame 2 fragment 3 10", ScriptPlace::Frame, 2);
    EXPECT_EQ(fragment.kind, Kind::Fragment);
    EXPECT_EQ(fragment.fragmenting.nBytes, 3U);
    EXPECT_EQ(fragment.fragmenting.pause, 10'000);
}

TEST(ServiceScript, FindsActionsByPlaceInTheirOrder) {
    const ServiceScript script = GoodScript("at frame 3 pause 1\n"
                                            "at every frame pause 2\n"
                                            "at frames 2-4 pause 3\n"
                                            "at end pause 4\n");
    const auto pauses = [&](ScriptPlace place, int64_t lFrame) {
        std::string strPauses;
        for (const ScriptAction* action : script.ActionsAt(place, lFrame)) {
            strPauses += std::to_string(action->pause / 1000);
        }
        return strPauses;
    };
    EXPECT_EQ(pauses(ScriptPlace::Frame, 1), "2");
    EXPECT_EQ(pauses(ScriptPlace::Frame, 2), "23");
    EXPECT_EQ(pauses(ScriptPlace::Frame, 3), "123");
    EXPECT_EQ(pauses(ScriptPlace::Frame, 4), "23");
    EXPECT_EQ(pauses(ScriptPlace::Frame, 5), "2");
    EXPECT_EQ(pauses(ScriptPlace::Frame, 1'000'000), "2");
    EXPECT_EQ(pauses(ScriptPlace::End, 6), "4");
    EXPECT_EQ(pauses(ScriptPlace::Start, 0), "");
    EXPECT_EQ(pauses(ScriptPlace::Request, 0), "");
}

TEST(ServiceScript, TellsWhatIsWrongAndWhere) {
    const struct {
        std::string_view strText;
        std::string_view strError;
    } cases[] = {
        {"nak", "line 1: unknown statement \"nak\""},
        {"\n# fine\n  nak 2", "line 3: unknown statement \"nak\""},
        {"no-enq please", "line 1: nothing more is expected at \"please\""},
        {"nak-request", "line 1: a number of times is missing at the end of the line"},
        {"nak-request \"2\"", "line 1: a number of times is expected in place of \"2\""},
        {"nak-request -1", "line 1: a number of times must be a whole number from 0 to"
                           " 1000000000, not \"-1\""},
        {"wrong-check x", "line 1: a number of times must be a whole number from 0 to"
                          " 1000000000, not \"x\""},
        {"sessions 0", "line 1: a number of sessions must be a whole number from 1 to 1000000000,"
                       " not \"0\""},
        {"sessions", "line 1: a number of sessions is missing at the end of the line"},
        {"fragment 0", "line 1: a number of bytes must be a whole number from 1 to 1000000000,"
                       " not \"0\""},
        {"fragment 1 2 3", "line 1: nothing more is expected at \"3\""},
        {"end-with T", "line 1: a session ends with S or U, not \"T\""},
        {"timeout ack 5", "line 1: a timeout is one of request, answer, close, not \"ack\""},
        {"timeout answer 86400001", "line 1: a time in milliseconds must be a whole number from 0"
                                    " to 86400000, not \"86400001\""},
        {"at", "line 1: a place is missing at the end of the line"},
        {"at begin close", "line 1: a place is one of start, request, frame N, frames N-M, every"
                           " frame, end, not \"begin\""},
        {"at every time close", "line 1: a place is one of start, request, frame N, frames N-M,"
                                " every frame, end, not \"every\""},
        {"at frame close", "line 1: a frame number must be a whole number from 1 to 1000000000,"
                           " not \"close\""},
        {"at frame 0 close", "line 1: a frame number must be a whole number from 1 to 1000000000,"
                             " not \"0\""},
        {"at frames 3 close", "line 1: the last frame must be a whole number from 3 to"
                              " 1000000000, not \"\""},
        {"at frames 3-2 close", "line 1: the last frame must be a whole number from 3 to"
                                " 1000000000, not \"2\""},
        {"at end", "line 1: an action is missing at the end of the line"},
        {"at end explode", "line 1: unknown action \"explode\""},
        {"at end close now", "line 1: nothing more is expected at \"now\""},
        {"at end hang-up soon", "line 1: a time in milliseconds must be a whole number from 0 to"
                                " 86400000, not \"soon\""},
        {"at end hang-up 1 2", "line 1: nothing more is expected at \"2\""},
        {"at end bytes", "line 1: bytes are missing at the end of the line"},
        {"at end packet \"x", "line 1: a quoted text has no closing quote"},
        {"at start wrong-check 1", "line 1: wrong-check needs a frame or the end as its place"},
        {"at start packet \"M\"", "line 1: packet needs a frame or the end as its place"},
        {"at request fragment 1", "line 1: fragment needs a frame or the end as its place"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ErrorOf(row.strText), row.strError) << row.strText;
    }
}

} // namespace
} // namespace brennik
