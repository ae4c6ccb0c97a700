// The far end of a serial line that is a payment device: it waits to be polled, asks for what its
// script says, takes or sends files frame by frame, reboots, and calls again. It lives through all
// its calls and doesn't notice whether the port on the other side is open.
// For real brenniksim drives one on a pseudo-terminal; tests drive it in virtual time.
#pragma once

#include "sim/DeviceScript.h"
#include "sim/DeviceSession.h"
#include "sim/DeviceStore.h"
#include "sim/FarEnd.h"
#include "sim/LineReader.h"
#include "sim/ServedTree.h"
#include "sim/ServicePackets.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik::sim {

enum class DeviceOutcome {
    NotBegun,     ///< nothing was asked for yet
    Running,      ///< the request is out, or more
    Successful,   ///< the session ended with "S"
    Unsuccessful, ///< the session ended with "U"
    Answered,     ///< the enquiry had its answer
    NoAnswer,     ///< what it sent was not answered in time, or the next frame didn't come
    TooManyNaks,  ///< what it sent was refused more often than the limit allows
};

/// The outcome in a word or two, as it stands in reports.
std::string_view DescribeOutcome(DeviceOutcome outcome);

/// A call that came to no good end goes on: the next poll is answered by its request again.
struct DeviceReport {
    DeviceOutcome outcome = DeviceOutcome::NotBegun;
    int64_t lRequests = 0; ///< requests sent, those sent again after a NAK included
    int64_t lFrames = 0;   ///< frames taken; in an upload different frames sent
    int64_t lRefused = 0;  ///< frames refused with NAK
    int64_t lUnheard = 0;  ///< frames not answered, as the script wanted
    int64_t lResends = 0;  ///< requests and frames sent again after a NAK
    DeviceCounts received; ///< of the last session
    int64_t lFilesSent = 0;
    int64_t lDataBytesSent = 0;
};

struct DeviceOptions {
    DeviceScript script;

    /// Where files go that it is sent; without it they are taken and forgotten.
    std::shared_ptr<DeviceStore> store;

    /// What it sends when it is told to upload; without it nothing but the end.
    std::shared_ptr<const ServedTree> files;

    /// Is told each event as one line of text, without a line end. Without it no text is made.
    std::function<void(std::string_view)> onEvent;

    /// Is told each call that has ended or was given up, by its number counted from 0.
    std::function<void(size_t nCall, const DeviceReport& report)> onOutcome;
};

class DeviceBehaviour : public FarEnd {
  public:
    explicit DeviceBehaviour(DeviceOptions options = {});

    /// Once, when it is plugged in; closings and openings of the port aren't told.
    void Connected(Wire& wire, Microseconds now) override;
    void Received(Wire& wire, Microseconds now, std::string_view strBytes) override;
    void Elapsed(Wire& wire, Microseconds now) override;
    void Disconnected(Microseconds now) override;
    std::optional<Microseconds> NextDeadline() const override;

    /// The call at hand, counted from 0; the number of calls once all are over. With a series that
    /// repeats it goes back to 0.
    size_t nCall() const { return nCall_; }
    bool bSeriesOver() const { return nCall_ == reports_.size(); }

    /// The request is out or more, and the end of the session hasn't come.
    bool bInSession() const { return state_ >= State::Request; }
    bool bRebooting() const { return state_ == State::Rebooting; }

    /// One for each call of the series.
    const std::vector<DeviceReport>& Reports() const { return reports_; }

    // What it said and heard, in order, as payloads. Each list ends quietly at 1 MiB of text.

    /// Requests, each as often as it was sent.
    const std::vector<std::string>& Requests() const { return requests_.Texts(); }
    /// Management messages with a right check.
    const std::vector<std::string>& Messages() const { return messages_.Texts(); }
    /// Frames taken, those with write data left out; the answers to enquiries among them.
    const std::vector<std::string>& Packets() const { return packets_.Texts(); }

  private:
    /// What it waits for. The order counts: from Request on something of a call is under way.
    enum class State { Rebooting, Polled, ReplyAck, Request, Enquiry, Session, Upload };

    /// Texts up to a bound.
    class Notes {
      public:
        void Add(const std::string& strText);
        const std::vector<std::string>& Texts() const { return texts_; }

      private:
        std::vector<std::string> texts_;
        size_t nBytes_ = 0;
    };

    /// What is going out: bytes, or a pause.
    struct Step {
        std::string strBytes;
        Microseconds pause = 0;
    };

    using Actions = std::vector<const DeviceAction*>;

    const DeviceCall& Call() const { return options_.script.Calls()[nCall_]; }
    DeviceReport& Report() { return reports_[nCall_]; }
    const DeviceLimits& Limits() const { return options_.script.Limits(); }

    void BeginCall();
    void EndCall(DeviceOutcome outcome);
    void GiveUp(DeviceOutcome outcome);
    void Conclude(DeviceOutcome outcome);
    void WaitedInVain();

    // What arrives.
    void HeardControl(Microseconds now);
    void HeardFrame(Microseconds now, bool bGood);
    void HeardOther();
    void Polled(Microseconds now);
    void Managed(Microseconds now, bool bGood);
    void Acknowledged();
    void Refused();

    // Frames of a session, and the answer to an enquiry.
    void BeginSession();
    void ExpectFrame(int64_t lFrame);
    void TakeFrame(bool bGood);
    void TakePacket();
    void TakeEnquiryReply();
    void Answer(std::string strAnswer);
    bool RefusedByScript();
    void RefuseFrame();

    // What it sends and waits for the answer to.
    void SendRequest(std::string strPayload);
    void SendReply(const std::string& strPayload, const Actions& actions);
    void BeginUpload();
    void SendNextOfUpload();
    void BeginFrame(DevicePlace place, const Actions& actions);
    void Transmit();

    // How it goes out.
    void Say(std::string strBytes) { steps_.push_back({std::move(strBytes), 0}); }
    void SayAhead(const Actions& actions);
    void WaitIn(State state);
    void WaitIn(State state, Microseconds length);
    void Proceed(Wire& wire, Microseconds now);
    bool bBusy() const { return nStep_ < steps_.size(); }
    template <class MakeText>
    void Tell(MakeText&& makeText) const {
        if (options_.onEvent) {
            options_.onEvent(makeText());
        }
    }

    DeviceOptions options_;
    size_t nCall_ = 0;
    const DeviceCall* ended_ = nullptr; ///< the last call that has come to its end
    std::vector<DeviceReport> reports_;
    DeviceAnswers enq_;
    DeviceAnswers commands_;
    DeviceAnswers statuses_;
    Notes requests_;
    Notes messages_;
    Notes packets_;

    State state_ = State::Polled;
    bool bArm_ = false; ///< the wait begins when all that goes out is out
    std::optional<Microseconds> waitLength_;
    std::optional<Microseconds> deadline_;
    std::optional<Microseconds> restDeadline_; ///< of a frame that has begun
    LineReader reader_;

    std::vector<Step> steps_;
    size_t nStep_ = 0;
    std::optional<Microseconds> pauseEnd_; ///< of the step at hand

    // What was sent last and waits for its answer.
    DevicePlace place_ = DevicePlace::Request;
    std::string strFrame_;
    std::string strRequest_;
    int64_t lTransmissions_ = 0;
    int64_t lWrongLeft_ = 0;
    bool bUpload_ = false;      ///< the request at hand is that of an upload
    bool bFallback_ = false;    ///< it is that of a refused enquiry
    bool bRequestNext_ = false; ///< the reply at hand lets the request follow
    bool bEndSent_ = false;     ///< the frame at hand ends the upload
    bool bEndsWell_ = false;    ///< and it is "S"

    // The frame of a session that comes next, in either direction.
    int64_t lFrame_ = 0;
    std::vector<std::pair<DeviceAction::Kind, int64_t>> refusals_; ///< how often each is left
    std::unique_ptr<DeviceSession> session_;
    std::optional<ServicePackets> upload_;
};

} // namespace brennik::sim
