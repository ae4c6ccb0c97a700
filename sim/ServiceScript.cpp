#include "sim/ServiceScript.h"

#include "sim/ScriptText.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace brennik::sim {

namespace {

constexpr int64_t kMostTimes = 1'000'000'000;
constexpr int64_t kLongestMs = int64_t{24} * 60 * 60 * 1000; ///< a day
constexpr Microseconds kHungUp = 1'000'000; ///< until a line is back when no time is given
constexpr int64_t kMostFrames = std::numeric_limits<int64_t>::max();

} // namespace

// Reads one line at a time into the script that it is given.
class ServiceScriptParser {
  public:
    explicit ServiceScriptParser(ServiceScript& script) : script_(script) {}

    void ParseLine(std::string_view strLine) {
        words_ = SplitScriptLine(strLine);
        nWord_ = 0;
        if (words_.empty()) {
            return;
        }
        const std::string strWord = NextWord("a statement");
        if (strWord == "at") {
            ParseRule();
        } else {
            ParseStatement(strWord);
        }
        if (nWord_ < words_.size()) {
            throw ScriptProblem{"nothing more is expected at \"" + words_[nWord_].strText + "\""};
        }
    }

  private:
    const std::string& NextWord(const char* strWhat) {
        if (nWord_ == words_.size()) {
            throw ScriptProblem{std::string(strWhat) + " is missing at the end of the line"};
        }
        const ScriptWord& word = words_[nWord_++];
        if (word.bQuoted || word.lRepeat != 1) {
            throw ScriptProblem{std::string(strWhat) + " is expected in place of \"" +
                                word.strText + "\""};
        }
        return word.strText;
    }

    int64_t NextNumber(const char* strWhat, int64_t lLeast, int64_t lMost) {
        return ScriptNumber(NextWord(strWhat), strWhat, lLeast, lMost);
    }

    Microseconds NextTime() { return NextNumber("a time in milliseconds", 0, kLongestMs) * 1000; }

    std::string RestAsBytes() {
        const size_t nFirst = std::exchange(nWord_, words_.size());
        return ScriptBytes(words_, nFirst);
    }

    Fragmenting NextFragmenting() {
        Fragmenting fragmenting;
        fragmenting.nBytes = static_cast<size_t>(NextNumber("a number of bytes", 1, kMostTimes));
        if (nWord_ < words_.size()) {
            fragmenting.pause = NextTime();
        }
        return fragmenting;
    }

    void ParseStatement(const std::string& strWord) {
        if (strWord == "no-enq") {
            script_.bSendEnq_ = false;
        } else if (strWord == "nak-request") {
            script_.lRequestNaks_ = NextNumber("a number of times", 0, kMostTimes);
        } else if (strWord == "wrong-check") {
            script_.lWrongChecks_ = NextNumber("a number of times", 0, kMostTimes);
        } else if (strWord == "fragment") {
            script_.fragmenting_ = NextFragmenting();
        } else if (strWord == "end-with") {
            const std::string& strLetter = NextWord("S or U");
            if (strLetter != "S" && strLetter != "U") {
                throw ScriptProblem{"a session ends with S or U, not \"" + strLetter + "\""};
            }
            script_.bEndsWithSuccess_ = strLetter == "S";
        } else if (strWord == "resends") {
            script_.limits_.lResends = NextNumber("a number of times", 0, kMostTimes);
        } else if (strWord == "sessions") {
            script_.lSessions_ = NextNumber("a number of sessions", 1, kMostTimes);
        } else if (strWord == "timeout") {
            ParseTimeout();
        } else {
            throw ScriptProblem{"unknown statement \"" + strWord + "\""};
        }
    }

    void ParseTimeout() {
        const std::string strWord = NextWord("request, answer or close");
        ServiceLimits& limits = script_.limits_;
        if (strWord == "request") {
            limits.requestTimeout = NextTime();
        } else if (strWord == "answer") {
            limits.answerTimeout = NextTime();
        } else if (strWord == "close") {
            limits.closeTimeout = NextTime();
        } else {
            throw ScriptProblem{"a timeout is one of request, answer, close, not \"" + strWord +
                                "\""};
        }
    }

    void ParseRule() {
        ServiceScript::Rule rule;
        const std::string strWord = NextWord("a place");
        if (strWord == "start") {
            rule.place = ScriptPlace::Start;
        } else if (strWord == "request") {
            rule.place = ScriptPlace::Request;
        } else if (strWord == "end") {
            rule.place = ScriptPlace::End;
        } else if (strWord == "frame") {
            rule.place = ScriptPlace::Frame;
            rule.lFirst = rule.lLast = NextNumber("a frame number", 1, kMostTimes);
        } else if (strWord == "frames") {
            rule.place = ScriptPlace::Frame;
            ParseRange(rule);
        } else if (strWord == "every" && NextWord("frame") == "frame") {
            rule.place = ScriptPlace::Frame;
            rule.lFirst = 1;
            rule.lLast = kMostFrames;
        } else {
            throw ScriptProblem{"a place is one of start, request, frame N, frames N-M, every"
                                " frame, end, not \"" +
                                strWord + "\""};
        }
        rule.action = ParseAction(rule.place);
        script_.rules_.push_back(std::move(rule));
    }

    void ParseRange(ServiceScript::Rule& rule) {
        const std::string_view strRange = NextWord("a range of frames");
        const size_t nDash = std::min(strRange.find('-'), strRange.size());
        rule.lFirst = ScriptNumber(strRange.substr(0, nDash), "the first frame", 1, kMostTimes);
        rule.lLast = ScriptNumber(strRange.substr(std::min(nDash + 1, strRange.size())),
                                  "the last frame", rule.lFirst, kMostTimes);
    }

    ScriptAction ParseAction(ScriptPlace place) {
        using Kind = ScriptAction::Kind;
        ScriptAction action;
        const std::string strWord = NextWord("an action");
        if (strWord == "pause") {
            action.kind = Kind::Pause;
            action.pause = NextTime();
        } else if (strWord == "bytes" || strWord == "packet" || strWord == "noise") {
            action.kind = strWord == "bytes"    ? Kind::Bytes
                          : strWord == "packet" ? Kind::Packet
                                                : Kind::Noise;
            action.strBytes = RestAsBytes();
        } else if (strWord == "wrong-check") {
            action.kind = Kind::WrongCheck;
            action.lCount = NextNumber("a number of times", 0, kMostTimes);
        } else if (strWord == "fragment") {
            action.kind = Kind::Fragment;
            action.fragmenting = NextFragmenting();
        } else if (strWord == "hang-up") {
            action.kind = Kind::HangUp;
            action.pause = nWord_ < words_.size() ? NextTime() : kHungUp;
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
    std::vector<ScriptWord> words_;
    size_t nWord_ = 0;
};

std::optional<ServiceScript> ServiceScript::Parse(std::string_view strText, std::string& strError) {
    ServiceScript script;
    ServiceScriptParser parser(script);
    int64_t lLine = 0;
    try {
        while (!strText.empty()) {
            ++lLine;
            const size_t nEnd = std::min(strText.find('\n'), strText.size());
            parser.ParseLine(strText.substr(0, nEnd));
            strText.remove_prefix(std::min(nEnd + 1, strText.size()));
        }
    } catch (const ScriptProblem& problem) {
        strError = "line " + std::to_string(lLine) + ": " + problem.strReason;
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
        const bool bHere = rule.place == place && (place != ScriptPlace::Frame ||
                                                   (lFrame >= rule.lFirst && lFrame <= rule.lLast));
        if (bHere) {
            actions.push_back(&rule.action);
        }
    }
    return actions;
}

} // namespace brennik::sim
