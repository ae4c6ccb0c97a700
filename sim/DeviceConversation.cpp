// The conversation of one call: the request and its answer, frames taken, frames sent.
#include "sim/Codec.h"
#include "sim/Counted.h"
#include "sim/DeviceBehaviour.h"

#include <algorithm>

namespace brennik::sim {

namespace {

constexpr size_t kStatus = 2; ///< the field of an enquiry's answer that may say error

bool bRefusesEnquiry(std::string_view strReply) {
    const auto fields = SplitRecord(strReply);
    return fields.size() > kStatus && fields[kStatus] == "E";
}

std::string Described(std::string_view strPayload) {
    return std::string(strPayload.substr(0, 1)) + ", " + Counted(strPayload.size(), "byte");
}

} // namespace

// What it sends and waits for the answer to.

void DeviceBehaviour::SendRequest(std::string strPayload) {
    strRequest_ = std::move(strPayload);
    strFrame_ = BuildFrame(strRequest_);
    Report().outcome = DeviceOutcome::Running;
    if (!bFallback_) {
        ExpectFrame(1);
    }
    BeginFrame(DevicePlace::Request, Call().ActionsAt(DevicePlace::Request));
}

void DeviceBehaviour::SendReply(const std::string& strPayload, const Actions& actions) {
    Tell([&] { return "reply: " + strPayload; });
    strFrame_ = BuildManagementFrame(strPayload);
    BeginFrame(DevicePlace::Reply, actions);
}

void DeviceBehaviour::BeginUpload() {
    upload_.emplace(options_.files, Call().nBlock());
    bEndSent_ = false;
    lFrame_ = 0;
    SendNextOfUpload();
}

void DeviceBehaviour::SendNextOfUpload() {
    const auto result = upload_->Next(strFrame_);
    bEndSent_ = result != ServicePackets::Result::Frame;
    if (bEndSent_) {
        bEndsWell_ = result == ServicePackets::Result::NoMore && Call().bEndsWithSuccess;
        strFrame_ = BuildFrame(bEndsWell_ ? SuccessPacket() : FailurePacket());
    }
    ++lFrame_;
    ++Report().lFrames;
    Report().lFilesSent = upload_->lFilesClosed();
    Report().lDataBytesSent = upload_->lDataBytes();
    BeginFrame(DevicePlace::Frame, Call().ActionsAt(DevicePlace::Frame, lFrame_));
}

// The frame itself stands in strFrame_ already.
void DeviceBehaviour::BeginFrame(DevicePlace place, const Actions& actions) {
    place_ = place;
    lTransmissions_ = 0;
    lWrongLeft_ = 0;
    for (const DeviceAction* action : actions) {
        lWrongLeft_ += action->kind == DeviceAction::Kind::WrongCheck ? action->lTimes : 0;
    }
    SayAhead(actions);
    Transmit();
}

void DeviceBehaviour::Transmit() {
    const bool bAgain = ++lTransmissions_ > 1;
    const bool bWrong = lWrongLeft_ > 0;
    lWrongLeft_ -= bWrong ? 1 : 0;
    std::string strFrame = strFrame_;
    if (bWrong) {
        strFrame.back() = static_cast<char>(strFrame.back() ^ 0x55);
    }
    if (place_ != DevicePlace::Reply) {
        Report().lResends += bAgain ? 1 : 0;
    }
    if (place_ == DevicePlace::Request) {
        ++Report().lRequests;
        requests_.Add(strRequest_);
    }
    Tell([&] {
        const std::string strWhat =
            place_ == DevicePlace::Request ? "request: " + strRequest_
            : place_ == DevicePlace::Reply
                ? "the reply"
                : "frame " + std::to_string(lFrame_) + ": " + Described(strFrame_.substr(1));
        return (bAgain ? "sent again " : "sent ") + strWhat +
               (bWrong ? ", with a wrong block check" : "");
    });
    Say(std::move(strFrame));
    WaitIn(place_ == DevicePlace::Request ? State::Request
           : place_ == DevicePlace::Reply ? State::ReplyAck
                                          : State::Upload,
           Limits().answerTimeout);
}

void DeviceBehaviour::Acknowledged() {
    Tell([] { return "ACK"; });
    if (state_ == State::ReplyAck) {
        if (bRequestNext_) {
            SendRequest(Call().strAsked());
        } else {
            WaitIn(State::Polled);
        }
    } else if (state_ == State::Request && bUpload_) {
        BeginUpload();
    } else if (state_ == State::Request) {
        BeginSession();
    } else if (state_ == State::Upload && bEndSent_) {
        EndCall(bEndsWell_ ? DeviceOutcome::Successful : DeviceOutcome::Unsuccessful);
    } else if (state_ == State::Upload) {
        SendNextOfUpload();
    }
}

void DeviceBehaviour::Refused() {
    Tell([] { return "NAK"; });
    if (state_ != State::ReplyAck && state_ != State::Request && state_ != State::Upload) {
        return;
    }
    if (lTransmissions_ <= Limits().lResends) {
        Transmit();
    } else if (state_ == State::ReplyAck) {
        WaitIn(State::Polled);
    } else {
        GiveUp(DeviceOutcome::TooManyNaks);
    }
}

// Frames of a session, and the answer to an enquiry.

void DeviceBehaviour::BeginSession() {
    if (Call().ask == DeviceCall::Ask::Enquiry && !bFallback_) {
        WaitIn(State::Enquiry, Limits().answerTimeout);
        return;
    }
    session_ = std::make_unique<DeviceSession>(options_.store, Call().resume);
    WaitIn(State::Session, Limits().frameTimeout);
}

void DeviceBehaviour::ExpectFrame(int64_t lFrame) {
    lFrame_ = lFrame;
    refusals_.clear();
    for (const DeviceAction* action : Call().ActionsAt(DevicePlace::Frame, lFrame)) {
        if (action->kind == DeviceAction::Kind::Nak ||
            action->kind == DeviceAction::Kind::Silence) {
            refusals_.emplace_back(action->kind, action->lTimes);
        }
    }
}

void DeviceBehaviour::TakeFrame(bool bGood) {
    if (!bGood) {
        Tell([&] { return "frame " + std::to_string(lFrame_) + ": wrong block check: NAK"; });
        RefuseFrame();
    } else if (RefusedByScript()) {
        Tell([&] { return "frame " + std::to_string(lFrame_) + " refused by the script"; });
    } else if (state_ == State::Enquiry) {
        TakeEnquiryReply();
    } else {
        TakePacket();
    }
}

void DeviceBehaviour::TakePacket() {
    using Result = DeviceSession::Result;
    const std::string& strPayload = reader_.strPayload();
    const Result result = session_->Take(strPayload);
    if (result == Result::NotStored) {
        Tell([&] { return "frame " + std::to_string(lFrame_) + " can't be stored: NAK"; });
        RefuseFrame();
        return;
    }
    Report().received = session_->Counts();
    if (!strPayload.starts_with('W')) {
        packets_.Add(strPayload);
    }
    Answer(result == Result::Resume ? ResumeReply(session_->lResume()) : std::string(1, kAck));
    if (result == Result::EndedWell || result == Result::EndedBadly) {
        EndCall(result == Result::EndedWell ? DeviceOutcome::Successful
                                            : DeviceOutcome::Unsuccessful);
    } else {
        WaitIn(State::Session, Limits().frameTimeout);
    }
}

void DeviceBehaviour::TakeEnquiryReply() {
    const std::string strReply = reader_.strPayload();
    packets_.Add(strReply);
    Answer(std::string(1, kAck));
    const auto strInstead = Call().strAskedInstead();
    if (bRefusesEnquiry(strReply) && strInstead) {
        bFallback_ = true;
        SendRequest(*strInstead);
    } else {
        EndCall(DeviceOutcome::Answered);
    }
}

// The frame at hand is taken.
void DeviceBehaviour::Answer(std::string strAnswer) {
    const Actions actions = Call().ActionsAt(DevicePlace::Frame, lFrame_);
    SayAhead(actions);
    for (const DeviceAction* action : actions) {
        if (action->kind == DeviceAction::Kind::Answer) {
            strAnswer = action->strBytes;
        }
    }
    Tell([&] {
        const bool bAck = strAnswer == std::string(1, kAck);
        return "frame " + std::to_string(lFrame_) + ": " + Described(reader_.strPayload()) +
               (bAck ? "" : ", with an answer of its own");
    });
    Say(std::move(strAnswer));
    ++Report().lFrames;
    ExpectFrame(lFrame_ + 1);
}

// A frame keeps its number until it is taken.
bool DeviceBehaviour::RefusedByScript() {
    for (auto& [kind, lLeft] : refusals_) {
        if (lLeft == 0) {
            continue;
        }
        --lLeft;
        if (kind == DeviceAction::Kind::Nak) {
            RefuseFrame();
        } else {
            ++Report().lUnheard;
            WaitIn(state_, Limits().frameTimeout);
        }
        return true;
    }
    return false;
}

void DeviceBehaviour::RefuseFrame() {
    ++Report().lRefused;
    Say(std::string(1, kNak));
    WaitIn(state_, Limits().frameTimeout);
}

} // namespace brennik::sim
