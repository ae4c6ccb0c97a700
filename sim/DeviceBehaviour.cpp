#include "sim/DeviceBehaviour.h"

#include "sim/Codec.h"
#include "sim/Counted.h"
#include "sim/DeviceMessages.h"

#include <algorithm>

namespace brennik::sim {

namespace {

constexpr size_t kMostNoted = size_t{1} << 20;

} // namespace

std::string_view DescribeOutcome(DeviceOutcome outcome) {
    switch (outcome) {
    case DeviceOutcome::NotBegun:
        return "not begun";
    case DeviceOutcome::Running:
        return "running";
    case DeviceOutcome::Successful:
        return "successful";
    case DeviceOutcome::Unsuccessful:
        return "unsuccessful";
    case DeviceOutcome::Answered:
        return "answered";
    case DeviceOutcome::NoAnswer:
        return "no answer";
    case DeviceOutcome::TooManyNaks:
        break;
    }
    return "too many NAKs";
}

void DeviceBehaviour::Notes::Add(const std::string& strText) {
    nBytes_ += strText.size() + sizeof(std::string);
    if (nBytes_ <= kMostNoted) {
        texts_.push_back(strText);
    }
}

DeviceBehaviour::DeviceBehaviour(DeviceOptions options)
    : options_(std::move(options)),
      reports_(options_.script.Calls().size()),
      statuses_(options_.script.FirstStatuses()) {
    if (!options_.files) {
        options_.files = std::make_shared<const ServedTree>();
    }
}

void DeviceBehaviour::Connected(Wire& /*wire*/, Microseconds /*now*/) {
    BeginCall();
    WaitIn(State::Polled);
}

// A device speaks only when it is spoken to, or when a time is over: what goes out is gathered by
// all that happens below here, and leaves at the end of each turn.
void DeviceBehaviour::Received(Wire& wire, Microseconds now, std::string_view strBytes) {
    while (!strBytes.empty() && state_ != State::Rebooting && !bBusy()) {
        switch (reader_.Next(strBytes)) {
        case LineReader::Result::Nothing:
            break;
        case LineReader::Result::Control:
            HeardControl(now);
            break;
        case LineReader::Result::Frame:
            HeardFrame(now, true);
            break;
        case LineReader::Result::WrongFrame:
            HeardFrame(now, false);
            break;
        case LineReader::Result::Other:
            HeardOther();
            break;
        }
        Proceed(wire, now);
    }
    if (!strBytes.empty()) {
        Tell([&] { return "deaf to " + Counted(strBytes.size(), "byte"); });
    }
    restDeadline_.reset();
    if (reader_.bInFrame()) {
        restDeadline_ = now + Limits().restTimeout;
    }
}

void DeviceBehaviour::Elapsed(Wire& wire, Microseconds now) {
    const auto due = NextDeadline();
    if (!due || now < *due) {
        return;
    }
    if (!bBusy()) {
        // What was to come by then has not come as a whole, whichever of the two it is.
        const bool bRest = restDeadline_ == due;
        restDeadline_.reset();
        reader_.Drop();
        if (!bRest) {
            WaitedInVain();
        } else {
            Tell([] { return "a frame broke off"; });
            if (state_ == State::Session || state_ == State::Enquiry) {
                RefuseFrame();
            }
        }
    }
    Proceed(wire, now);
}

void DeviceBehaviour::Disconnected(Microseconds /*now*/) {
    if (bInSession()) {
        GiveUp(DeviceOutcome::NoAnswer);
    }
    steps_.clear();
    nStep_ = 0;
    deadline_.reset();
    restDeadline_.reset();
    bArm_ = false;
}

std::optional<Microseconds> DeviceBehaviour::NextDeadline() const {
    if (bBusy()) {
        return pauseEnd_;
    }
    if (restDeadline_ && deadline_) {
        return std::min(restDeadline_, deadline_);
    }
    return restDeadline_ ? restDeadline_ : deadline_;
}

// The series of calls.

void DeviceBehaviour::BeginCall() {
    reports_[nCall_] = DeviceReport();
    enq_ = DeviceAnswers(Call().enq);
    commands_ = DeviceAnswers(Call().commands);
    Tell([&] {
        return "call " + std::to_string(nCall_ + 1) + " of " + std::to_string(reports_.size());
    });
}

void DeviceBehaviour::EndCall(DeviceOutcome outcome) {
    Tell([&] { return "call ended: " + std::string(DescribeOutcome(outcome)); });
    Conclude(outcome);
    ended_ = &Call();
    statuses_ = DeviceAnswers(ended_->statuses);
    ++nCall_;
    if (bSeriesOver() && options_.script.bRepeats()) {
        nCall_ = 0;
    }
    if (!bSeriesOver()) {
        BeginCall();
    }
    // An enquiry that has its answer changes nothing in the device.
    if (outcome == DeviceOutcome::Answered || ended_->reboot == 0) {
        WaitIn(State::Polled);
        return;
    }
    Tell([&] { return "reboots for " + std::to_string(ended_->reboot / 1000) + " ms"; });
    WaitIn(State::Rebooting, ended_->reboot);
}

void DeviceBehaviour::GiveUp(DeviceOutcome outcome) {
    Tell([&] { return "gave up: " + std::string(DescribeOutcome(outcome)); });
    Conclude(outcome);
    WaitIn(State::Polled);
}

void DeviceBehaviour::Conclude(DeviceOutcome outcome) {
    session_.reset();
    upload_.reset();
    Report().outcome = outcome;
    if (options_.onOutcome) {
        options_.onOutcome(nCall_, Report());
    }
}

void DeviceBehaviour::WaitedInVain() {
    switch (state_) {
    case State::Rebooting:
        Tell([] { return "has rebooted"; });
        WaitIn(State::Polled);
        break;
    case State::Polled:
        break;
    case State::ReplyAck:
        Tell([] { return "the reply was not acknowledged"; });
        WaitIn(State::Polled);
        break;
    case State::Request:
    case State::Enquiry:
    case State::Session:
    case State::Upload:
        GiveUp(DeviceOutcome::NoAnswer);
        break;
    }
}

// What arrives.

void DeviceBehaviour::HeardControl(Microseconds now) {
    if (reader_.cControl() == kAck) {
        Acknowledged();
    } else if (reader_.cControl() == kNak) {
        Refused();
    } else if (state_ == State::Polled || state_ == State::ReplyAck) {
        Polled(now);
    } else {
        Tell([] { return "ENQ ignored"; });
    }
}

void DeviceBehaviour::HeardFrame(Microseconds now, bool bGood) {
    if (reader_.bManagement()) {
        if (state_ <= State::Request) {
            Managed(now, bGood);
        } else {
            Tell([] { return "a management message ignored"; });
        }
        return;
    }
    if (state_ == State::Request && !bUpload_) {
        // The first frame answers the request as well as an ACK does.
        BeginSession();
    }
    if (state_ == State::Session || state_ == State::Enquiry) {
        TakeFrame(bGood);
    } else {
        Tell([] { return "a frame ignored"; });
    }
}

void DeviceBehaviour::HeardOther() {
    Tell([&] { return "ignored " + Counted(reader_.nOther(), "byte"); });
    if (state_ == State::Polled && !options_.script.strToNoise().empty()) {
        Say(options_.script.strToNoise());
    }
}

void DeviceBehaviour::Polled(Microseconds now) {
    static const DeviceAnswer kSynAnswer{DeviceAnswer::Kind::Syn, {}, {}, {}};
    static const DeviceAnswer kNoAnswer{DeviceAnswer::Kind::Silence, {}, {}, {}};
    WaitIn(State::Polled);
    const DeviceAnswer* answer =
        bSeriesOver() ? options_.script.bSynAfter() ? &kSynAnswer : &kNoAnswer : enq_.Next(now);
    if (answer == nullptr) {
        Tell([] { return "ENQ"; });
        bUpload_ = false;
        bFallback_ = false;
        SendRequest(Call().strAsked());
    } else if (answer->kind == DeviceAnswer::Kind::Syn) {
        Tell([] { return "ENQ: sent SYN"; });
        Say(std::string(1, kSyn));
    } else if (answer->kind == DeviceAnswer::Kind::Bytes) {
        Tell([&] {
            return "ENQ: sent " + Counted(answer->strBytes.size(), "byte") + " of the script";
        });
        Say(answer->strBytes);
    } else {
        Tell([] { return "ENQ: no answer"; });
    }
}

void DeviceBehaviour::Managed(Microseconds now, bool bGood) {
    using Kind = ManagementMessage::Kind;
    if (!bGood) {
        Tell([] { return "a management message with a wrong block check: NAK"; });
        Say(std::string(1, kNak));
        return;
    }
    messages_.Add(reader_.strPayload());
    Tell([&] { return "message: " + reader_.strPayload(); });
    const ManagementMessage message = ReadManagementMessage(reader_.strPayload());
    WaitIn(State::Polled); // whoever asks anew has given up what was before
    DeviceAnswer answer;
    Actions actions;
    if (message.kind == Kind::StatusQuery) {
        const DeviceAnswer* next = statuses_.Next(now);
        answer = next != nullptr ? *next : DeviceAnswer{DeviceAnswer::Kind::Ready, {}, {}, {}};
        actions = (ended_ != nullptr ? *ended_ : Call()).ActionsAt(DevicePlace::Reply);
    } else if (message.kind == Kind::TransferCommand && bSeriesOver()) {
        answer.kind = DeviceAnswer::Kind::Refuse; // there is nothing left to ask for
    } else if (message.kind == Kind::TransferCommand) {
        const DeviceAnswer* next = commands_.Next(now);
        answer = next != nullptr ? *next : DeviceAnswer{DeviceAnswer::Kind::Agree, {}, {}, {}};
        actions = Call().ActionsAt(DevicePlace::Reply);
    }
    if (answer.kind == DeviceAnswer::Kind::Deaf) {
        return;
    }
    Say(std::string(1, kAck));
    const auto strReply = ReplyTo(message, answer);
    if (strReply) {
        bUpload_ = message.bUpload();
        bFallback_ = false;
        bRequestNext_ = message.kind == Kind::TransferCommand && !bSeriesOver() &&
                        answer.kind != DeviceAnswer::Kind::AgreeOnly && bAgrees(*strReply);
        SendReply(*strReply, actions);
    }
}

// How it goes out.

void DeviceBehaviour::SayAhead(const Actions& actions) {
    for (const DeviceAction* action : actions) {
        if (action->kind == DeviceAction::Kind::Pause) {
            steps_.push_back({{}, action->pause});
        } else if (action->kind == DeviceAction::Kind::Bytes) {
            Say(action->strBytes);
        }
    }
}

void DeviceBehaviour::WaitIn(State state) {
    state_ = state;
    deadline_.reset();
    waitLength_.reset();
    bArm_ = false;
    reader_.OrdinaryOnly(state == State::Enquiry);
    reader_.EnqEndsFrame(state == State::Polled || state == State::ReplyAck);
}

void DeviceBehaviour::WaitIn(State state, Microseconds length) {
    WaitIn(state);
    waitLength_ = length;
    bArm_ = true;
}

void DeviceBehaviour::Proceed(Wire& wire, Microseconds now) {
    for (; bBusy(); ++nStep_) {
        const Step& step = steps_[nStep_];
        if (step.pause > 0 && !pauseEnd_) {
            pauseEnd_ = now + step.pause;
        }
        if (pauseEnd_ && now < *pauseEnd_) {
            return;
        }
        pauseEnd_.reset();
        if (!step.strBytes.empty()) {
            wire.Send(step.strBytes);
        }
    }
    steps_.clear();
    nStep_ = 0;
    if (bArm_) {
        bArm_ = false;
        deadline_ = now + *waitLength_;
    }
}

} // namespace brennik::sim
