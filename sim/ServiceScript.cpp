#include "sim/ServiceScript.h"

#include <utility>

namespace brennik::sim {

namespace {

constexpr Microseconds kHungUp = 1'000'000; ///< until a line is back when no time is given

} // namespace

// Reads one line at a time into the script that it is given.
class ServiceScriptParser {
  public:
    ServiceScriptParser(ServiceScript& script, ScriptLine& line) : script_(script), line_(line) {}

    void ParseLine() {
        const std::string strWord = line_.Word("a statement");
        if (strWord == "at") {
            ParseRule();
        } else {
            ParseStatement(strWord);
        }
    }

  private:
    Fragmenting NextFragmenting() {
        Fragmenting fragmenting;
        fragmenting.nBytes = static_cast<size_t>(line_.Number("a number of bytes", 1, kMostTimes));
        if (line_.bMore()) {
            fragmenting.pause = line_.Time();
        }
        return fragmenting;
    }

    void ParseStatement(const std::string& strWord) {
        if (strWord == "no-enq") {
            script_.bSendEnq_ = false;
        } else if (strWord == "nak-request") {
            script_.lRequestNaks_ = line_.Number("a number of times", 0, kMostTimes);
        } else if (strWord == "wrong-check") {
            script_.lWrongChecks_ = line_.Number("a number of times", 0, kMostTimes);
        } else if (strWord == "fragment") {
            script_.fragmenting_ = NextFragmenting();
        } else if (strWord == "end-with") {
            const std::string& strLetter = line_.Word("S or U");
            if (strLetter != "S" && strLetter != "U") {
                throw ScriptProblem{"a session ends with S or U, not \"" + strLetter + "\""};
            }
            script_.bEndsWithSuccess_ = strLetter == "S";
        } else if (strWord == "resends") {
            script_.limits_.lResends = line_.Number("a number of times", 0, kMostTimes);
        } else if (strWord == "sessions") {
            script_.lSessions_ = line_.Number("a number of sessions", 1, kMostTimes);
        } else if (strWord == "timeout") {
            ParseTimeout();
        } else {
            throw ScriptProblem{"unknown statement \"" + strWord + "\""};
        }
    }

    void ParseTimeout() {
        const std::string strWord = line_.Word("request, answer or close");
        ServiceLimits& limits = script_.limits_;
        if (strWord == "request") {
            limits.requestTimeout = line_.Time();
        } else if (strWord == "answer") {
            limits.answerTimeout = line_.Time();
        } else if (strWord == "close") {
            limits.closeTimeout = line_.Time();
        } else {
            throw ScriptProblem{"a timeout is one of request, answer, close, not \"" + strWord +
                                "\""};
        }
    }

    void ParseRule() {
        ServiceScript::Rule rule;
        const std::string strWord = line_.Word("a place");
        if (strWord == "start") {
            rule.place = ScriptPlace::Start;
        } else if (strWord == "request") {
            rule.place = ScriptPlace::Request;
        } else if (strWord == "end") {
            rule.place = ScriptPlace::End;
        } else if (const auto frames = ReadFrames(strWord, line_)) {
            rule.place = ScriptPlace::Frame;
            rule.frames = *frames;
        } else {
            throw ScriptProblem{"a place is one of start, request, frame N, frames N-M, every"
                                " frame, end, not \"" +
                                strWord + "\""};
        }
        rule.action = ParseAction(rule.place);
        script_.rules_.push_back(std::move(rule));
    }

    ScriptAction ParseAction(ScriptPlace place) {
        using Kind = ScriptAction::Kind;
        ScriptAction action;
        const std::string strWord = line_.Word("an action");
        if (strWord == "pause") {
            action.kind = Kind::Pause;
            action.pause = line_.Time();
        } else if (strWord == "bytes" || strWord == "packet" || strWord == "noise") {
            action.kind = strWord == "bytes"    ? Kind::Bytes
                          : strWord == "packet" ? Kind::Packet
                                                : Kind::Noise;
            action.strBytes = line_.RestAsBytes();
        } else if (strWord == "wrong-check") {
            action.kind = Kind::WrongCheck;
            action.lCount = line_.Number("a number of times", 0, kMostTimes);
        } else if (strWord == "fragment") {
            action.kind = Kind::Fragment;
            action.fragmenting = NextFragmenting();
        } else if (strWord == "hang-up") {
            action.kind = Kind::HangUp;
            action.pause = line_.bMore() ? line_.Time() : kHungUp;
        } else if (strWord == "silence" || strWord == "close" || strWord == "reset") {
            action.kind = strWord == "silence" ? Kind::Silence
                          : strWord == "close" ? Kind::Close
                                               : Kind::Reset;
        } else {
            throw ScriptProblem{"unknown action \"" + strWord + "\""};
        }
        const bool bBeforeFrames = place == ScriptPlace::Start || place == ScriptPlace::Request;
        if (bBeforeFrames && (action.kind == Kind::WrongCheck || action.kind == Kind::Fragment ||
                              action.kind == Kind::Packet)) {
            throw ScriptProblem{strWord + " needs a frame or the end as its place"};
        }
        return action;
    }

    ServiceScript& script_;
    ScriptLine& line_;
};

std::optional<ServiceScript> ServiceScript::Parse(std::string_view strText, std::string& strError) {
    ServiceScript script;
    const auto parseLine = [&](ScriptLine& line) { ServiceScriptParser(script, line).ParseLine(); };
    if (!ReadScript(strText, parseLine, strError)) {
        return std::nullopt;
    }
    return script;
}

ServiceScript ServiceScript::ForSession(int64_t lSession) const {
    return lSessions_ && lSession > *lSessions_ ? ServiceScript() : *this;
}

std::vector<const ScriptAction*> ServiceScript::ActionsAt(ScriptPlace place, int64_t lFrame) const {
    std::vector<const ScriptAction*> actions;
    for (const Rule& rule : rules_) {
        const bool bHere =
            rule.place == place && (place != ScriptPlace::Frame || rule.frames.bHolds(lFrame));
        if (bHere) {
            actions.push_back(&rule.action);
        }
    }
    return actions;
}

} // namespace brennik::sim
