#include "sim/ServiceBehaviour.h"

#include "sim/Counted.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace brennik::sim {

namespace {

constexpr int32_t kDefaultBlock = 1024;
constexpr size_t kBlockField = 7; ///< the field of the request that names the block size

int32_t RequestedBlock(const std::vector<std::string>& fields) {
    if (fields.size() <= kBlockField) {
        return kDefaultBlock;
    }
    const std::string& strField = fields[kBlockField];
    const char* end = strField.data() + strField.size();
    int32_t lBlock = 0;
    const auto parsed = std::from_chars(strField.data(), end, lBlock);
    const bool bUsable = parsed.ec == std::errc() && parsed.ptr == end && lBlock >= 1 &&
                         lBlock <= static_cast<int32_t>(kLargestBlock);
    return bUsable ? lBlock : kDefaultBlock;
}

std::string InMilliseconds(Microseconds time) {
    return std::to_string(time / 1000) + " ms";
}

} // namespace

std::string_view DescribeOutcome(ServiceOutcome outcome) {
    switch (outcome) {
    case ServiceOutcome::Running:
        return "running";
    case ServiceOutcome::Successful:
        return "successful";
    case ServiceOutcome::Unsuccessful:
        return "unsuccessful";
    case ServiceOutcome::NoRequest:
        return "no request";
    case ServiceOutcome::NoAnswer:
        return "no answer";
    case ServiceOutcome::TooManyNaks:
        return "too many NAKs";
    case ServiceOutcome::LeftByOtherEnd:
        return "left by the other end";
    case ServiceOutcome::EndedByScript:
        break;
    }
    return "ended by the script";
}

ServiceBehaviour::ServiceBehaviour(std::shared_ptr<const ServedTree> tree, ServiceOptions options)
    : tree_(std::move(tree)), options_(std::move(options)) {
}

template <class MakeText>
void ServiceBehaviour::Tell(MakeText&& makeText) const {
    if (options_.onEvent) {
        options_.onEvent(makeText());
    }
}

void ServiceBehaviour::Connected(Wire& wire, Microseconds now) {
    lWrongLeft_ = options_.script.lWrongChecks();
    lNaksLeft_ = options_.script.lRequestNaks();
    Tell([] { return "connected"; });
    Enter(ScriptPlace::Start, 0);
    Proceed(wire, now);
}

void ServiceBehaviour::Received(Wire& wire, Microseconds now, std::string_view strBytes) {
    if (wait_ == Wait::Request && bOutboxEmpty()) {
        ReceivedForRequest(wire, now, strBytes);
    } else if (wait_ == Wait::Answer && bOutboxEmpty()) {
        ReceivedAnswer(wire, now, strBytes);
    } else {
        // Nothing that arrives before the last piece is out can be an answer to it.
        Tell([&] { return "ignored " + Counted(strBytes.size(), "byte"); });
    }
}

void ServiceBehaviour::Elapsed(Wire& wire, Microseconds now) {
    const auto due = NextDeadline();
    if (!due || now < *due) {
        return;
    }
    if (!bOutboxEmpty()) {
        Proceed(wire, now);
        return;
    }
    switch (wait_) {
    case Wait::Request:
        GiveUp(wire, ServiceOutcome::NoRequest);
        break;
    case Wait::Answer:
        GiveUp(wire, ServiceOutcome::NoAnswer);
        break;
    case Wait::Close:
        Tell([] { return "closed, since the other end did not"; });
        GiveUp(wire, outcome_);
        break;
    case Wait::Pause:
        WaitFor(Wait::Nothing, now);
        Proceed(wire, now);
        break;
    case Wait::Nothing:
    case Wait::Forever:
        break;
    }
}

void ServiceBehaviour::Disconnected(Microseconds now) {
    Tell([] { return "the other end has gone"; });
    if (outcome_ == ServiceOutcome::Running) {
        End(ServiceOutcome::LeftByOtherEnd);
    }
    WaitFor(Wait::Forever, now);
    nOutboxSent_ = strOutbox_.size();
}

std::optional<Microseconds> ServiceBehaviour::NextDeadline() const {
    return bOutboxEmpty() ? deadline_ : nextPiece_;
}

ServiceCounts ServiceBehaviour::Counts() const {
    ServiceCounts counts = counts_;
    if (packets_) {
        counts.lFiles = packets_->lFilesClosed();
        counts.lDataBytes = packets_->lDataBytes();
    }
    return counts;
}

// Goes on until there is something to wait for: the pieces of what is going out first, then the
// actions of the script at this place, then what the place itself is for.
void ServiceBehaviour::Proceed(Wire& wire, Microseconds now) {
    while (true) {
        if (!bOutboxEmpty()) {
            PutPieces(wire, now);
            if (!bOutboxEmpty()) {
                return;
            }
            WaitFor(wait_, now, waitLength_);
        }
        if (wait_ != Wait::Nothing) {
            return;
        }
        if (nNextAction_ < actions_.size()) {
            Perform(wire, now, *actions_[nNextAction_++]);
        } else {
            FinishPlace(wire, now);
        }
    }
}

void ServiceBehaviour::Enter(ScriptPlace place, int64_t lFrame) {
    place_ = place;
    lFrame_ = lFrame;
    lTransmissions_ = 0;
    if (options_.script.bNoActions()) {
        cut_ = options_.script.DefaultFragmenting();
        return;
    }
    actions_ = options_.script.ActionsAt(place, lFrame);
    nNextAction_ = 0;
    lWrongHere_ = 0;
    strNoise_.clear();
    cut_ = options_.script.DefaultFragmenting();
}

void ServiceBehaviour::Perform(Wire& wire, Microseconds now, const ScriptAction& action) {
    using Kind = ScriptAction::Kind;
    switch (action.kind) {
    case Kind::Pause:
        Tell([&] { return "pause of " + InMilliseconds(action.pause); });
        WaitFor(Wait::Pause, now, action.pause);
        break;
    case Kind::Bytes:
        Tell([&] { return "sent " + Counted(action.strBytes.size(), "byte") + " of the script"; });
        Put(wire, now, action.strBytes, options_.script.DefaultFragmenting());
        break;
    case Kind::Packet:
        strScripted_ = BuildFrame(action.strBytes);
        bScripted_ = true;
        lTransmissions_ = 0;
        Transmit(wire, now);
        break;
    case Kind::Noise:
        strNoise_ += action.strBytes;
        break;
    case Kind::WrongCheck:
        lWrongHere_ += action.lCount;
        break;
    case Kind::Fragment:
        cut_ = action.fragmenting;
        break;
    case Kind::Silence:
        Tell([] { return "silent from now on"; });
        WaitFor(Wait::Forever, now);
        break;
    case Kind::Close:
        GiveUp(wire, ServiceOutcome::EndedByScript);
        break;
    case Kind::Reset:
    case Kind::HangUp:
        End(ServiceOutcome::EndedByScript);
        WaitFor(Wait::Forever, now);
        if (action.kind == Kind::Reset) {
            wire.Reset();
        } else {
            wire.HangUp(action.pause);
        }
        break;
    }
}

void ServiceBehaviour::FinishPlace(Wire& wire, Microseconds now) {
    switch (place_) {
    case ScriptPlace::Start:
        if (options_.script.bSendEnq()) {
            Tell([] { return "sent ENQ"; });
            Put(wire, now, WithNoise({&kEnq, 1}), cut_);
        }
        WaitFor(Wait::Request, now, options_.script.Limits().requestTimeout);
        break;
    case ScriptPlace::Request:
        Tell([] { return "sent ACK"; });
        Put(wire, now, WithNoise({&kAck, 1}), cut_);
        EnterNextFrame();
        break;
    case ScriptPlace::Frame:
    case ScriptPlace::End:
        Transmit(wire, now);
        break;
    }
}

void ServiceBehaviour::EnterNextFrame() {
    switch (packets_->Next(strFrame_)) {
    case ServicePackets::Result::Frame:
        Enter(ScriptPlace::Frame, lFrame_ + 1);
        return;
    case ServicePackets::Result::NoMore:
        bSuccess_ = options_.script.bEndsWithSuccess();
        break;
    case ServicePackets::Result::ReadFailed:
        Tell([] { return "a file can't be read as it was listed"; });
        bSuccess_ = false;
        break;
    }
    strFrame_ = BuildFrame(bSuccess_ ? SuccessPacket() : FailurePacket());
    Enter(ScriptPlace::End, lFrame_ + 1);
}

void ServiceBehaviour::ReceivedForRequest(Wire& wire, Microseconds now, std::string_view strBytes) {
    const FrameReader::Result result = reader_.Add(strBytes);
    if (result == FrameReader::Result::Incomplete) {
        return;
    }
    const bool bGood = result == FrameReader::Result::Good;
    if (bGood && lNaksLeft_ == 0) {
        AcceptRequest();
        WaitFor(Wait::Nothing, now);
        Enter(ScriptPlace::Request, 0);
        Proceed(wire, now);
        return;
    }
    if (bGood) {
        --lNaksLeft_;
    }
    ++counts_.lRequestsRefused;
    Tell([&] {
        return bGood ? "good request refused with NAK"
                     : "request with a wrong block check refused with NAK";
    });
    Put(wire, now, {&kNak, 1}, cut_);
    WaitFor(Wait::Request, now, options_.script.Limits().requestTimeout);
}

void ServiceBehaviour::AcceptRequest() {
    strRequest_ = reader_.strPayload();
    requestFields_ = SplitRecord(strRequest_);
    lBlockSize_ = options_.lBlockSize.value_or(RequestedBlock(requestFields_));
    packets_.emplace(tree_, static_cast<size_t>(lBlockSize_));
    Tell([&] { return "request: " + strRequest_; });
}

void ServiceBehaviour::ReceivedAnswer(Wire& wire, Microseconds now, std::string_view strBytes) {
    // The first answer counts. What stands behind it came before the next frame was out, so it
    // can't be meant for that one.
    const size_t nAnswer = strBytes.find_first_of(std::string_view("\x06\x15"));
    if (nAnswer == std::string_view::npos) {
        Tell([&] { return "ignored " + Counted(strBytes.size(), "byte"); });
        return;
    }
    if (strBytes.size() > 1) {
        Tell([&] { return "ignored " + Counted(strBytes.size() - 1, "byte"); });
    }
    if (strBytes[nAnswer] == kNak) {
        Refused(wire, now);
        return;
    }
    Acknowledged(now);
    Proceed(wire, now);
}

void ServiceBehaviour::Acknowledged(Microseconds now) {
    Tell([] { return "ACK"; });
    WaitFor(Wait::Nothing, now);
    if (bScripted_) {
        bScripted_ = false;
        lTransmissions_ = 0;
    } else if (place_ == ScriptPlace::End) {
        End(bSuccess_ ? ServiceOutcome::Successful : ServiceOutcome::Unsuccessful);
        WaitFor(Wait::Close, now, options_.script.Limits().closeTimeout);
    } else {
        EnterNextFrame();
    }
}

void ServiceBehaviour::Refused(Wire& wire, Microseconds now) {
    Tell([] { return "NAK"; });
    if (lTransmissions_ > options_.script.Limits().lResends) {
        GiveUp(wire, ServiceOutcome::TooManyNaks);
        return;
    }
    Transmit(wire, now);
}

void ServiceBehaviour::Transmit(Wire& wire, Microseconds now) {
    std::string& strFrame = bScripted_ ? strScripted_ : strFrame_;
    ++lTransmissions_;
    ++(lTransmissions_ == 1 ? counts_.lFrames : counts_.lResends);
    int64_t* lWrong = !bScripted_ && lWrongHere_ > 0 ? &lWrongHere_ : &lWrongLeft_;
    const bool bWrong = *lWrong > 0;
    Tell([&] {
        const std::string strNumber =
            bScripted_ ? "scripted packet" : "frame " + std::to_string(lFrame_);
        return (lTransmissions_ == 1 ? "sent " : "resent ") + strNumber + ": " + strFrame[1] +
               ", " + Counted(strFrame.size(), "byte") +
               (bWrong ? ", with a wrong block check" : "");
    });
    const char last = strFrame.back();
    if (bWrong) {
        --*lWrong;
        strFrame.back() = static_cast<char>(last ^ 0x55);
    }
    if (bScripted_ || strNoise_.empty()) {
        Put(wire, now, strFrame, bScripted_ ? options_.script.DefaultFragmenting() : cut_);
    } else {
        Put(wire, now, WithNoise(strFrame), cut_);
    }
    strFrame.back() = last;
    WaitFor(Wait::Answer, now, options_.script.Limits().answerTimeout);
}

// Noise goes out once, together with what it stands ahead of.
std::string ServiceBehaviour::WithNoise(std::string_view strBytes) {
    std::string strAll = std::exchange(strNoise_, {});
    strAll += strBytes;
    return strAll;
}

void ServiceBehaviour::Put(Wire& wire, Microseconds now, std::string_view strBytes,
                           const Fragmenting& cut) {
    if (cut.nBytes == 0) {
        wire.Send(strBytes);
        return;
    }
    strOutbox_ = strBytes;
    nOutboxSent_ = 0;
    outboxCut_ = cut;
    nextPiece_ = now;
    PutPieces(wire, now);
}

void ServiceBehaviour::PutPieces(Wire& wire, Microseconds now) {
    while (!bOutboxEmpty() && nextPiece_ <= now) {
        const size_t nPiece = std::min(outboxCut_.nBytes, strOutbox_.size() - nOutboxSent_);
        wire.Send(std::string_view(strOutbox_).substr(nOutboxSent_, nPiece));
        nOutboxSent_ += nPiece;
        nextPiece_ = now + outboxCut_.pause;
    }
}

void ServiceBehaviour::WaitFor(Wait wait, Microseconds now, std::optional<Microseconds> length) {
    wait_ = wait;
    waitLength_ = length;
    deadline_.reset();
    if (length) {
        deadline_ = now + *length;
    }
}

void ServiceBehaviour::GiveUp(Wire& wire, ServiceOutcome outcome) {
    if (outcome_ == ServiceOutcome::Running) {
        End(outcome);
    }
    wait_ = Wait::Forever;
    waitLength_.reset();
    deadline_.reset();
    wire.Close();
}

void ServiceBehaviour::End(ServiceOutcome outcome) {
    outcome_ = outcome;
    Tell([&] { return "session ended: " + std::string(DescribeOutcome(outcome)); });
}

} // namespace brennik::sim
