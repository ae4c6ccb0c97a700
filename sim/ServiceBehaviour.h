// The far end of a client session: asks with ENQ, reads one request, then sends what it serves,
// frame by frame, each waiting for its ACK. A script makes it misbehave.
// For real brenniksim drives one for each connection; tests drive it in virtual time.
#pragma once

#include "sim/Codec.h"
#include "sim/FarEnd.h"
#include "sim/ServedTree.h"
#include "sim/ServicePackets.h"
#include "sim/ServiceScript.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

struct ServiceOptions {
    /// The block size, 1 to 65535; without it the one that the request names, or 1024 when that
    /// is out of range.
    std::optional<int32_t> lBlockSize;

    ServiceScript script;

    /// Is told each event of the session as one line of text, without a line end. Without it no
    /// text is made.
    std::function<void(std::string_view)> onEvent;
};

enum class ServiceOutcome {
    Running,
    Successful,     ///< "S" was sent and acknowledged
    Unsuccessful,   ///< "U" was sent and acknowledged
    NoRequest,      ///< no good request in time
    NoAnswer,       ///< a frame was neither acknowledged nor refused in time
    TooManyNaks,    ///< a frame was refused more often than the limit allows
    LeftByOtherEnd, ///< the other end went before the closing packet was acknowledged
    EndedByScript,  ///< the script closed, reset or hung up the connection
};

/// The outcome in a word or two, as it stands in reports.
std::string_view DescribeOutcome(ServiceOutcome outcome);

struct ServiceCounts {
    int64_t lFrames = 0;          ///< different frames sent, scripted packets included
    int64_t lResends = 0;         ///< transmissions after a NAK
    int64_t lRequestsRefused = 0; ///< requests answered with NAK
    int64_t lFiles = 0;           ///< files whose close packet was built
    int64_t lDataBytes = 0;       ///< bytes of file data in the frames built
};

class ServiceBehaviour : public FarEnd {
  public:
    explicit ServiceBehaviour(std::shared_ptr<const ServedTree> tree, ServiceOptions options = {});

    void Connected(Wire& wire, Microseconds now) override;
    void Received(Wire& wire, Microseconds now, std::string_view strBytes) override;
    void Elapsed(Wire& wire, Microseconds now) override;
    void Disconnected(Microseconds now) override;
    std::optional<Microseconds> NextDeadline() const override;

    ServiceOutcome Outcome() const { return outcome_; }
    ServiceCounts Counts() const;

    /// The request that was accepted: its payload, and its fields. Empty before that.
    const std::string& strRequest() const { return strRequest_; }
    const std::vector<std::string>& RequestFields() const { return requestFields_; }

    /// The block size in use; 0 before a request was accepted.
    int32_t lBlockSize() const { return lBlockSize_; }

  private:
    /// What the session waits for. Nothing means that Proceed goes on at once.
    enum class Wait { Nothing, Request, Answer, Pause, Close, Forever };

    void Proceed(Wire& wire, Microseconds now);
    void Enter(ScriptPlace place, int64_t lFrame);
    void Perform(Wire& wire, Microseconds now, const ScriptAction& action);
    void FinishPlace(Wire& wire, Microseconds now);
    void EnterNextFrame();
    void ReceivedForRequest(Wire& wire, Microseconds now, std::string_view strBytes);
    void ReceivedAnswer(Wire& wire, Microseconds now, std::string_view strBytes);
    void AcceptRequest();
    std::string WithNoise(std::string_view strBytes);
    void Acknowledged(Microseconds now);
    void Refused(Wire& wire, Microseconds now);
    void Transmit(Wire& wire, Microseconds now);
    void Put(Wire& wire, Microseconds now, std::string_view strBytes, const Fragmenting& cut);
    void PutPieces(Wire& wire, Microseconds now);
    void WaitFor(Wait wait, Microseconds now, std::optional<Microseconds> length = {});
    void GiveUp(Wire& wire, ServiceOutcome outcome);
    void End(ServiceOutcome outcome);
    bool bOutboxEmpty() const { return nOutboxSent_ == strOutbox_.size(); }
    template <class MakeText>
    void Tell(MakeText&& makeText) const;

    std::shared_ptr<const ServedTree> tree_;
    ServiceOptions options_;
    std::optional<ServicePackets> packets_;
    FrameReader reader_;

    Wait wait_ = Wait::Nothing;
    std::optional<Microseconds> waitLength_; ///< counted from when the last piece is out
    std::optional<Microseconds> deadline_;
    ServiceOutcome outcome_ = ServiceOutcome::Running;

    ScriptPlace place_ = ScriptPlace::Start;
    int64_t lFrame_ = 0;                       ///< number of the frame at hand, from 1
    std::vector<const ScriptAction*> actions_; ///< of the place at hand
    size_t nNextAction_ = 0;

    // The frame at hand, and how it goes out.
    std::string strFrame_;
    std::string strScripted_; ///< the frame of a scripted packet that waits for its answer
    bool bScripted_ = false;
    bool bSuccess_ = false; ///< the closing packet at hand is "S"
    int64_t lTransmissions_ = 0;
    int64_t lWrongHere_ = 0;
    int64_t lWrongLeft_ = 0;
    std::string strNoise_;
    Fragmenting cut_;

    std::string strOutbox_; ///< what goes out in pieces
    size_t nOutboxSent_ = 0;
    Fragmenting outboxCut_;
    Microseconds nextPiece_ = 0;

    int64_t lNaksLeft_ = 0;
    int32_t lBlockSize_ = 0;
    std::string strRequest_;
    std::vector<std::string> requestFields_;
    ServiceCounts counts_;
};

} // namespace brennik::sim
