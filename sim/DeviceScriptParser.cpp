#include "sim/DeviceScript.h"
#include "sim/PacedBytes.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace brennik::sim {

namespace {

using AnswerKind = DeviceAnswer::Kind;
using ActionKind = DeviceAction::Kind;

constexpr int64_t kMostCalls = 1000;
constexpr int64_t kMostResumed = std::numeric_limits<uint32_t>::max();

struct NamedAnswer {
    std::string_view strName;
    AnswerKind kind;
};
using AnswerNames = std::vector<NamedAnswer>;

const AnswerNames kEnqAnswers = {
    {"syn", AnswerKind::Syn}, {"silence", AnswerKind::Silence}, {"bytes", AnswerKind::Bytes}};
const AnswerNames kCommandAnswers = {
    {"agree", AnswerKind::Agree},     {"agree-only", AnswerKind::AgreeOnly},
    {"refuse", AnswerKind::Refuse},   {"short", AnswerKind::Short},
    {"silence", AnswerKind::Silence}, {"deaf", AnswerKind::Deaf},
    {"bytes", AnswerKind::Bytes}};
const AnswerNames kStatusAnswers = {{"ready", AnswerKind::Ready}, {"error", AnswerKind::Error},
                                    {"other", AnswerKind::Other}, {"silence", AnswerKind::Silence},
                                    {"deaf", AnswerKind::Deaf},   {"bytes", AnswerKind::Bytes}};

struct NamedAction {
    std::string_view strName;
    ActionKind kind;
    bool bFramesOnly;
};
constexpr NamedAction kActions[] = {{"pause", ActionKind::Pause, false},
                                    {"bytes", ActionKind::Bytes, false},
                                    {"wrong-check", ActionKind::WrongCheck, false},
                                    {"nak", ActionKind::Nak, true},
                                    {"silence", ActionKind::Silence, true},
                                    {"answer", ActionKind::Answer, true}};

} // namespace

// Reads one line at a time. What stands ahead of the first block of a call holds for all calls, so
// each block begins as a copy of it.
class DeviceScriptParser {
  public:
    explicit DeviceScriptParser(DeviceScript& script) : script_(script) {}

    void ParseLine(ScriptLine& line) {
        line_ = &line;
        const std::string strWord = line.Word("a statement");
        if (strWord == "call") {
            BeginCall();
        } else if (!ParseOfCall(strWord) && !ParseOfSeries(strWord)) {
            throw ScriptProblem{"unknown statement \"" + strWord + "\""};
        }
    }

    void Finish() {
        script_.firstStatuses_ = blocks_.empty() ? common_.statuses : script_.firstStatuses_;
        script_.calls_.clear();
        for (const Block& block : blocks_) {
            script_.calls_.insert(script_.calls_.end(), block.nTimes, block.call);
        }
        if (blocks_.empty()) {
            script_.calls_.push_back(common_);
        }
    }

  private:
    struct Block {
        DeviceCall call;
        size_t nTimes = 1;
        bool bOwnEnq = false;
        bool bOwnCommands = false;
        bool bOwnStatuses = false;
    };

    DeviceCall& Call() { return blocks_.empty() ? common_ : blocks_.back().call; }

    void BeginCall() {
        if (blocks_.empty()) {
            script_.firstStatuses_ = common_.statuses;
        }
        Block block;
        block.call = common_;
        if (line_->bMore()) {
            block.nTimes = static_cast<size_t>(line_->Number("a number of calls", 1, kMostCalls));
        }
        nCalls_ += block.nTimes;
        if (nCalls_ > kMostCalls) {
            throw ScriptProblem{"more than 1000 calls"};
        }
        blocks_.push_back(std::move(block));
    }

    bool ParseOfCall(const std::string& strWord) {
        DeviceCall& call = Call();
        if (strWord == "request") {
            ParseRequest(call);
        } else if (strWord == "fields") {
            call.nFields =
                static_cast<size_t>(line_->Number("a number of fields", 1, kRequestFields));
        } else if (strWord == "field") {
            const int64_t lField = line_->Number("the number of a field", 0, kRequestFields - 1);
            call.strFields[static_cast<size_t>(lField)] = line_->Text("a text");
        } else if (strWord == "request-record") {
            call.ask = DeviceCall::Ask::Record;
            call.strRecord = line_->RestAsBytes();
        } else if (strWord == "enquiry") {
            call.ask = DeviceCall::Ask::Enquiry;
            call.strRecord = line_->bMore() ? line_->RestAsBytes() : DeviceCall().strRecord;
        } else if (strWord == "fallback") {
            ParseFallback(call);
        } else if (strWord == "resume") {
            const std::string strName = line_->Text("the name of a file");
            call.resume[strName] = line_->Number("a number of bytes", 0, kMostResumed);
        } else if (strWord == "reboot") {
            call.reboot = line_->Time();
        } else if (strWord == "end-with") {
            call.bEndsWithSuccess = Choice("S", "U", "a session ends with S or U");
        } else if (strWord == "at") {
            ParseRule(call);
        } else {
            return ParseAnswers(strWord, call);
        }
        return true;
    }

    bool ParseAnswers(const std::string& strWord, DeviceCall& call) {
        Block* block = blocks_.empty() ? nullptr : &blocks_.back();
        if (strWord == "enq") {
            AddAnswer(call.enq, block == nullptr ? nullptr : &block->bOwnEnq, kEnqAnswers);
        } else if (strWord == "command") {
            AddAnswer(call.commands, block == nullptr ? nullptr : &block->bOwnCommands,
                      kCommandAnswers);
        } else if (strWord == "status") {
            AddAnswer(call.statuses, block == nullptr ? nullptr : &block->bOwnStatuses,
                      kStatusAnswers);
        } else {
            return false;
        }
        return true;
    }

    // The first one of a block takes the place of those that hold for all calls.
    void AddAnswer(std::vector<DeviceAnswer>& answers, bool* bOwn, const AnswerNames& names) {
        if (bOwn != nullptr && !std::exchange(*bOwn, true)) {
            answers.clear();
        }
        const std::string strWord = line_->Word("an answer");
        const auto named = std::find_if(names.begin(), names.end(), [&](const NamedAnswer& one) {
            return one.strName == strWord;
        });
        if (named == names.end()) {
            std::string strAll;
            for (const NamedAnswer& one : names) {
                strAll += (strAll.empty() ? "" : ", ") + std::string(one.strName);
            }
            throw ScriptProblem{"an answer here is one of " + strAll + ", not \"" + strWord + "\""};
        }
        DeviceAnswer answer;
        answer.kind = named->kind;
        if (named->kind == AnswerKind::Bytes) {
            answer.strBytes = line_->RestAsBytes();
            answer.lTimes = 1;
        } else if (line_->bMore()) {
            ParseHowLong(answer);
        }
        answers.push_back(std::move(answer));
    }

    void ParseHowLong(DeviceAnswer& answer) {
        const std::string strWord = line_->Word("a number of times");
        if (strWord == "for") {
            answer.length = line_->Time();
        } else {
            answer.lTimes = ScriptNumber(strWord, "a number of times", 0, kMostTimes);
        }
    }

    void ParseRequest(DeviceCall& call) {
        call.ask = DeviceCall::Ask::Request;
        call.strFields[2] = line_->Text("a keyword");
        if (line_->bMore()) {
            call.strFields[3] = line_->Text("F or P");
        }
    }

    void ParseFallback(DeviceCall& call) {
        call.strFallback.reset();
        call.bFallsBack = line_->bQuotedNext();
        if (call.bFallsBack) {
            call.strFallback = line_->RestAsBytes();
        } else if (const std::string strWord = line_->Word("a record"); strWord != "none") {
            throw ScriptProblem{"a fallback is a record in quotes or none, not \"" + strWord +
                                "\""};
        }
    }

    void ParseRule(DeviceCall& call) {
        DeviceRule rule;
        const std::string strWord = line_->Word("a place");
        if (strWord == "request") {
            rule.place = DevicePlace::Request;
        } else if (strWord == "reply") {
            rule.place = DevicePlace::Reply;
        } else if (const auto frames = ReadFrames(strWord, *line_)) {
            rule.frames = *frames;
        } else {
            throw ScriptProblem{"a place is one of request, reply, frame N, frames N-M, every"
                                " frame, not \"" +
                                strWord + "\""};
        }
        rule.action = ParseAction(rule.place);
        call.rules.push_back(std::move(rule));
    }

    DeviceAction ParseAction(DevicePlace place) {
        const std::string strWord = line_->Word("an action");
        const auto* named =
            std::find_if(std::begin(kActions), std::end(kActions),
                         [&](const NamedAction& one) { return one.strName == strWord; });
        if (named == std::end(kActions)) {
            throw ScriptProblem{"unknown action \"" + strWord + "\""};
        }
        if (named->bFramesOnly && place != DevicePlace::Frame) {
            throw ScriptProblem{strWord + " needs a frame as its place"};
        }
        DeviceAction action;
        action.kind = named->kind;
        if (action.kind == ActionKind::Pause) {
            action.pause = line_->Time();
        } else if (action.kind == ActionKind::Bytes || action.kind == ActionKind::Answer) {
            action.strBytes = line_->RestAsBytes();
        } else if (line_->bMore()) {
            action.lTimes = line_->Number("a number of times", 0, kMostTimes);
        }
        return action;
    }

    bool ParseOfSeries(const std::string& strWord) {
        if (strWord == "rate") {
            script_.lRate_ = static_cast<int32_t>(
                line_->Number("a rate in bits per second", kLowestRate, kHighestRate));
        } else if (strWord == "repeat") {
            script_.bRepeats_ = true;
        } else if (strWord == "after") {
            script_.bSynAfter_ =
                Choice("syn", "silence", "behind the last call comes syn or silence");
        } else if (strWord == "noise") {
            script_.strToNoise_ = line_->RestAsBytes();
        } else if (strWord == "resends") {
            script_.limits_.lResends = line_->Number("a number of times", 0, kMostTimes);
        } else if (strWord == "timeout") {
            ParseTimeout();
        } else {
            return false;
        }
        if (!blocks_.empty()) {
            throw ScriptProblem{strWord + " belongs ahead of the first call"};
        }
        return true;
    }

    void ParseTimeout() {
        const std::string strWord = line_->Word("answer, frame or rest");
        DeviceLimits& limits = script_.limits_;
        if (strWord == "answer") {
            limits.answerTimeout = line_->Time();
        } else if (strWord == "frame") {
            limits.frameTimeout = line_->Time();
        } else if (strWord == "rest") {
            limits.restTimeout = line_->Time();
        } else {
            throw ScriptProblem{"a timeout is one of answer, frame, rest, not \"" + strWord + "\""};
        }
    }

    bool Choice(std::string_view strYes, std::string_view strNo, const char* strWhat) {
        const std::string strWord = line_->Word(strWhat);
        if (strWord != strYes && strWord != strNo) {
            throw ScriptProblem{std::string(strWhat) + ", not \"" + strWord + "\""};
        }
        return strWord == strYes;
    }

    DeviceScript& script_;
    ScriptLine* line_ = nullptr;
    DeviceCall common_;
    std::vector<Block> blocks_;
    size_t nCalls_ = 0;
};

std::optional<DeviceScript> DeviceScript::Parse(std::string_view strText, std::string& strError) {
    DeviceScript script;
    DeviceScriptParser parser(script);
    if (!ReadScript(
            strText, [&](ScriptLine& line) { parser.ParseLine(line); }, strError)) {
        return std::nullopt;
    }
    parser.Finish();
    return script;
}

} // namespace brennik::sim
