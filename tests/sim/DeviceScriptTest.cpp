#include "sim/DeviceScript.h"

#include "tests/sim/DevicePlay.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace brennik {
namespace {

using sim::DeviceAction;
using sim::DeviceAnswer;
using sim::DeviceAnswers;
using sim::DeviceCall;
using sim::DevicePlace;
using sim::DeviceScript;

constexpr std::string_view kDefault =
    "VFI,VX520,XDL,F,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG";

/// The request of the only call of a script.
std::string Asked(std::string_view strText) {
    const DeviceScript script = GoodDeviceScript(strText);
    EXPECT_EQ(script.Calls().size(), 1U);
    return script.Calls()[0].strAsked();
}

std::string ProblemOf(std::string_view strText) {
    std::string strError;
    return DeviceScript::Parse(strText, strError) ? "no problem" : strError;
}

TEST(DeviceScript, IsOneFullDownloadWhenItIsEmpty) {
    for (const DeviceScript& script : {DeviceScript(), GoodDeviceScript("# nothing\n\n")}) {
        ASSERT_EQ(script.Calls().size(), 1U);
        const DeviceCall& call = script.Calls()[0];
        EXPECT_EQ(call.strAsked(), kDefault);
        EXPECT_TRUE(call.enq.empty());
        EXPECT_TRUE(call.commands.empty());
        EXPECT_TRUE(call.statuses.empty());
        EXPECT_TRUE(call.rules.empty());
        EXPECT_TRUE(call.resume.empty());
        EXPECT_EQ(call.reboot, 25'000'000);
        EXPECT_EQ(call.nBlock(), 1024U);
        EXPECT_TRUE(call.bEndsWithSuccess);
        EXPECT_EQ(script.lRate(), 115200);
        EXPECT_EQ(script.Limits().lResends, 10);
        EXPECT_EQ(script.Limits().answerTimeout, 60'000'000);
        EXPECT_EQ(script.Limits().frameTimeout, 120'000'000);
        EXPECT_EQ(script.Limits().restTimeout, 1'000'000);
        EXPECT_FALSE(script.bRepeats());
        EXPECT_TRUE(script.bSynAfter());
        EXPECT_EQ(script.strToNoise(), "");
        EXPECT_TRUE(script.FirstStatuses().empty());
    }
}

TEST(DeviceScript, MakesRequests) {
    EXPECT_EQ(Asked("request XCDL"),
              "VFI,VX520,XCDL,F,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG");
    EXPECT_EQ(Asked("request XCDLF P"),
              "VFI,VX520,XCDLF,P,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG");
    EXPECT_EQ(Asked("request \"any thing\" f\nfields 4"), "VFI,VX520,any thing,f");
    EXPECT_EQ(Asked("fields 10"), "VFI,VX520,XDL,F,APP1,T0000001,EPROM1,1024,2048,PT000001");
    EXPECT_EQ(Asked("fields 1"), "VFI");
    EXPECT_EQ(Asked("field 9 PT7\nfield 10 \"\"\nfield 11 \"a,\\\"b\\\"\"\nfield 0 X\nfield 7 512"),
              "X,VX520,XDL,F,APP1,T0000001,EPROM1,512,2048,PT7,,\"a,\"\"b\"\"\"");
    EXPECT_EQ(Asked("request-record \"VFI\" 0D \"x\"*3"), "VFI\rxxx");
    EXPECT_EQ(Asked("enquiry"), "TMS,1,Q,0,0,0,0,0,T0000001,0,APP1");
    EXPECT_EQ(Asked("enquiry \"TMS\" 41"), "TMSA");
    EXPECT_EQ(Asked("enquiry \"TMS\"\nrequest XDL"), kDefault) << "the last one counts";
    EXPECT_EQ(Asked("enquiry \"TMS\"\nenquiry"), "TMS,1,Q,0,0,0,0,0,T0000001,0,APP1");
}

TEST(DeviceScript, MakesFallbacks) {
    const auto instead = [](std::string_view strText) {
        return GoodDeviceScript(strText).Calls()[0].strAskedInstead().value_or("(nothing)");
    };
    EXPECT_EQ(instead("enquiry"),
              "VFI,VX520,XDL,P,APP1,T0000001,EPROM1,1024,2048,PT000001,RELEASE,CONFIG");
    EXPECT_EQ(instead("enquiry\nfields 10\nfield 1 P400"),
              "VFI,P400,XDL,P,APP1,T0000001,EPROM1,1024,2048,PT000001");
    EXPECT_EQ(instead("enquiry\nfallback \"VFI\""), "VFI");
    EXPECT_EQ(instead("enquiry\nfallback none"), "(nothing)");
    EXPECT_EQ(instead("fallback none\nfallback \"\""), "");
}

TEST(DeviceScript, CopiesWhatStandsAheadIntoEachCall) {
    const DeviceScript script = GoodDeviceScript("fields 4\nenq syn 1\nstatus error 1\n"
                                                 "at frame 1 nak\nreboot 1\n"
                                                 "call 2\nrequest XCDL\nenq silence\nenq syn\n"
                                                 "at frame 2 nak\n"
                                                 "call\nrequest XCDLF\nreboot 7\nstatus other\n");
    ASSERT_EQ(script.Calls().size(), 3U);
    for (const size_t n : {size_t{0}, size_t{1}}) {
        EXPECT_EQ(script.Calls()[n].strAsked(), "VFI,VX520,XCDL,F");
        ASSERT_EQ(script.Calls()[n].enq.size(), 2U) << "in the place of the common ones";
        EXPECT_EQ(script.Calls()[n].enq[0].kind, DeviceAnswer::Kind::Silence);
        EXPECT_EQ(script.Calls()[n].rules.size(), 2U) << "beside the common ones";
        EXPECT_EQ(script.Calls()[n].reboot, 1000);
        EXPECT_EQ(script.Calls()[n].statuses[0].kind, DeviceAnswer::Kind::Error);
    }
    EXPECT_EQ(script.Calls()[2].strAsked(), "VFI,VX520,XCDLF,F");
    EXPECT_EQ(script.Calls()[2].enq[0].kind, DeviceAnswer::Kind::Syn);
    EXPECT_EQ(script.Calls()[2].rules.size(), 1U);
    EXPECT_EQ(script.Calls()[2].reboot, 7000);
    EXPECT_EQ(script.Calls()[2].statuses[0].kind, DeviceAnswer::Kind::Other);
    ASSERT_EQ(script.FirstStatuses().size(), 1U);
    EXPECT_EQ(script.FirstStatuses()[0].kind, DeviceAnswer::Kind::Error);
}

TEST(DeviceScript, ReadsWhatIsSaidOfTheWholeSeries) {
    const DeviceScript script =
        GoodDeviceScript("rate 19200\nrepeat\nafter silence\nnoise NAK \"x\"\nresends 3\n"
                         "timeout answer 1\ntimeout frame 2\ntimeout rest 3\nend-with U\ncall\n");
    EXPECT_EQ(script.lRate(), 19200);
    EXPECT_TRUE(script.bRepeats());
    EXPECT_FALSE(script.bSynAfter());
    EXPECT_EQ(script.strToNoise(), "\x15x");
    EXPECT_EQ(script.Limits().lResends, 3);
    EXPECT_EQ(script.Limits().answerTimeout, 1000);
    EXPECT_EQ(script.Limits().frameTimeout, 2000);
    EXPECT_EQ(script.Limits().restTimeout, 3000);
    EXPECT_FALSE(script.Calls()[0].bEndsWithSuccess);
    EXPECT_TRUE(GoodDeviceScript("after syn\n").bSynAfter());
    EXPECT_TRUE(GoodDeviceScript("end-with S\n").Calls()[0].bEndsWithSuccess);
}

TEST(DeviceScript, ReadsEachAnswer) {
    using Kind = DeviceAnswer::Kind;
    const DeviceCall call =
        GoodDeviceScript("enq syn\nenq silence 3\nenq bytes 02 \"x\"\n"
                         "command agree 0\ncommand agree-only\ncommand refuse\ncommand short\n"
                         "command silence for 10\ncommand deaf\ncommand bytes \"A\"\n"
                         "status ready\nstatus error\nstatus other\nstatus silence\nstatus deaf\n"
                         "status bytes \"B\"\n")
            .Calls()[0];
    const auto kinds = [](const std::vector<DeviceAnswer>& answers) {
        std::vector<Kind> all;
        for (const DeviceAnswer& answer : answers) {
            all.push_back(answer.kind);
        }
        return all;
    };
    EXPECT_EQ(kinds(call.enq), (std::vector{Kind::Syn, Kind::Silence, Kind::Bytes}));
    EXPECT_EQ(kinds(call.commands),
              (std::vector{Kind::Agree, Kind::AgreeOnly, Kind::Refuse, Kind::Short, Kind::Silence,
                           Kind::Deaf, Kind::Bytes}));
    EXPECT_EQ(kinds(call.statuses), (std::vector{Kind::Ready, Kind::Error, Kind::Other,
                                                 Kind::Silence, Kind::Deaf, Kind::Bytes}));
    EXPECT_EQ(call.enq[0].lTimes, std::nullopt);
    EXPECT_EQ(call.enq[0].length, std::nullopt);
    EXPECT_EQ(call.enq[1].lTimes, 3);
    EXPECT_EQ(call.enq[2].lTimes, 1);
    EXPECT_EQ(call.enq[2].strBytes, "\x02x");
    EXPECT_EQ(call.commands[0].lTimes, 0);
    EXPECT_EQ(call.commands[4].lTimes, std::nullopt);
    EXPECT_EQ(call.commands[4].length, 10'000);
}

TEST(DeviceScript, GivesAnswersInTheirTurn) {
    DeviceAnswer once;
    once.strBytes = "once";
    once.lTimes = 1;
    DeviceAnswer forAWhile;
    forAWhile.strBytes = "for a while";
    forAWhile.length = 100;
    DeviceAnswers answers({once, forAWhile, once});
    const auto next = [&](sim::Microseconds now) {
        const DeviceAnswer* answer = answers.Next(now);
        return answer == nullptr ? "nothing" : answer->strBytes;
    };
    EXPECT_EQ(next(0), "once");
    EXPECT_EQ(next(1000), "for a while");
    EXPECT_EQ(next(1099), "for a while");
    EXPECT_EQ(next(1100), "once");
    EXPECT_EQ(next(1100), "nothing");
    EXPECT_EQ(next(0), "nothing");
    EXPECT_EQ(DeviceAnswers().Next(0), nullptr);
}

TEST(DeviceScript, FindsActionsByPlaceInTheirOrder) {
    const DeviceCall call =
        GoodDeviceScript("at frame 2 pause 5\nat request pause 1\nat frames 2-3 nak\n"
                         "at every frame silence 2\nat reply wrong-check\nat request bytes 00\n"
                         "at frame 2 answer \"x\"\nat frame 4 wrong-check 3\n")
            .Calls()[0];
    using Kind = DeviceAction::Kind;
    const auto at = [&](DevicePlace place, int64_t lFrame) {
        std::vector<std::pair<Kind, int64_t>> all;
        for (const DeviceAction* action : call.ActionsAt(place, lFrame)) {
            all.emplace_back(action->kind, action->lTimes);
        }
        return all;
    };
    using Found = std::vector<std::pair<Kind, int64_t>>;
    EXPECT_EQ(at(DevicePlace::Request, 2), (Found{{Kind::Pause, 1}, {Kind::Bytes, 1}}));
    EXPECT_EQ(at(DevicePlace::Reply, 0), (Found{{Kind::WrongCheck, 1}}));
    EXPECT_EQ(at(DevicePlace::Frame, 1), (Found{{Kind::Silence, 2}}));
    EXPECT_EQ(at(DevicePlace::Frame, 2),
              (Found{{Kind::Pause, 1}, {Kind::Nak, 1}, {Kind::Silence, 2}, {Kind::Answer, 1}}));
    EXPECT_EQ(at(DevicePlace::Frame, 3), (Found{{Kind::Nak, 1}, {Kind::Silence, 2}}));
    EXPECT_EQ(at(DevicePlace::Frame, 4), (Found{{Kind::Silence, 2}, {Kind::WrongCheck, 3}}));
    EXPECT_EQ(call.ActionsAt(DevicePlace::Frame, 2)[0]->pause, 5000);
    EXPECT_EQ(call.ActionsAt(DevicePlace::Request)[1]->strBytes, std::string(1, '\0'));
}

TEST(DeviceScript, ReadsResumesAndTheLastOfEqualOnesCounts) {
    const DeviceCall call =
        GoodDeviceScript("resume a 1\nresume \"b c\" 4294967295\nresume a 0\n").Calls()[0];
    EXPECT_EQ(call.resume, (std::map<std::string, int64_t>{{"a", 0}, {"b c", 4294967295}}));
}

TEST(DeviceScript, TellsWhatIsWrongAndWhere) {
    const struct {
        std::string_view strText;
        std::string_view strError;
    } cases[] = {
        {"rat 5", "line 1: unknown statement \"rat\""},
        {"\n# x\nrate", "line 3: a rate in bits per second is missing at the end of the line"},
        {"rate 49", "line 1: a rate in bits per second must be a whole number from 50 to 4000000,"
                    " not \"49\""},
        {"call\nrate 9600", "line 2: rate belongs ahead of the first call"},
        {"call\nrepeat", "line 2: repeat belongs ahead of the first call"},
        {"call 0", "line 1: a number of calls must be a whole number from 1 to 1000, not \"0\""},
        {"call 999\ncall 2", "line 2: more than 1000 calls"},
        {"call 1 2", "line 1: nothing more is expected at \"2\""},
        {"request", "line 1: a keyword is missing at the end of the line"},
        {"request XDL F P", "line 1: nothing more is expected at \"P\""},
        {"fields 13", "line 1: a number of fields must be a whole number from 1 to 12, not \"13\""},
        {"field 12 x", "line 1: the number of a field must be a whole number from 0 to 11, not"
                       " \"12\""},
        {"field 1", "line 1: a text is missing at the end of the line"},
        {"request-record", "line 1: bytes are missing at the end of the line"},
        {"fallback nothing", "line 1: a fallback is a record in quotes or none, not \"nothing\""},
        {"fallback", "line 1: a record is missing at the end of the line"},
        {"enq agree", "line 1: an answer here is one of syn, silence, bytes, not \"agree\""},
        {"command syn", "line 1: an answer here is one of agree, agree-only, refuse, short,"
                        " silence, deaf, bytes, not \"syn\""},
        {"status refuse", "line 1: an answer here is one of ready, error, other, silence, deaf,"
                          " bytes, not \"refuse\""},
        {"enq syn for", "line 1: a time in milliseconds is missing at the end of the line"},
        {"enq syn x",
         "line 1: a number of times must be a whole number from 0 to 1000000000, not \"x\""},
        {"at end nak", "line 1: a place is one of request, reply, frame N, frames N-M, every"
                       " frame, not \"end\""},
        {"at request nak", "line 1: nak needs a frame as its place"},
        {"at reply answer ACK", "line 1: answer needs a frame as its place"},
        {"at frame 1 hop", "line 1: unknown action \"hop\""},
        {"at frames 3-2 nak",
         "line 1: the last frame must be a whole number from 3 to 1000000000, not \"2\""},
        {"end-with X", "line 1: a session ends with S or U, not \"X\""},
        {"after noise", "line 1: behind the last call comes syn or silence, not \"noise\""},
        {"timeout request 5", "line 1: a timeout is one of answer, frame, rest, not \"request\""},
        {"reboot 86400001", "line 1: a time in milliseconds must be a whole number from 0 to"
                            " 86400000, not \"86400001\""},
        {"resume a 4294967296",
         "line 1: a number of bytes must be a whole number from 0 to 4294967295, not"
         " \"4294967296\""},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ProblemOf(row.strText), row.strError);
    }
}

} // namespace
} // namespace brennik
