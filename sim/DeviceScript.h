// What a device does: the series of its calls, what each one asks for, how it answers, and where it
// misbehaves. The text comes from a file given to brenniksim, or stands in a test; an empty one is
// a device that calls once and does all as it should. The language is told in the manual page of
// brenniksim.
#pragma once

#include "sim/FarEnd.h"
#include "sim/ScriptText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

/// How long and how often a device tries.
struct DeviceLimits {
    int64_t lResends = 10;                 ///< resends of one frame after a NAK
    Microseconds answerTimeout = 60000000; ///< wait for the answer to what it has sent
    Microseconds frameTimeout = 120000000; ///< wait for the next whole frame of a session
    Microseconds restTimeout = 1000000;    ///< silence in the middle of a frame that ends it
};

/// One way to answer ENQ, a transfer command or a status query.
struct DeviceAnswer {
    enum class Kind {
        Syn,       ///< ENQ: SYN
        Agree,     ///< command: ACK, a reply that agrees, and the request of the call behind it
        AgreeOnly, ///< command: the same without the request
        Refuse,    ///< command: ACK, and a reply that refuses
        Short,     ///< command: ACK, and a reply with a field too few
        Ready,     ///< query: ACK, and a reply that says ready
        Error,     ///< query: ACK, and an error reply
        Other,     ///< query: ACK, and a reply that says neither
        Silence,   ///< command and query: ACK and no reply; ENQ: nothing
        Deaf,      ///< command and query: not even an ACK
        Bytes,     ///< ENQ: these bytes as they are; command and query: ACK, and this payload
    };

    Kind kind = Kind::Silence;
    std::string strBytes;
    std::optional<int64_t> lTimes;      ///< how often, before the turn of the next way
    std::optional<Microseconds> length; ///< how long, from the first time on; else for good
};

/// Ways to answer, each in its turn.
class DeviceAnswers {
  public:
    DeviceAnswers() = default;
    explicit DeviceAnswers(std::vector<DeviceAnswer> answers) : answers_(std::move(answers)) {}

    /// The way whose turn it is; null once all have had theirs. It lives until the next call.
    const DeviceAnswer* Next(Microseconds now);

  private:
    std::vector<DeviceAnswer> answers_;
    size_t nAnswer_ = 0;
    int64_t lGiven_ = 0;
    Microseconds begun_ = 0;
};

/// A point of a call: ahead of the request; ahead of a reply to a management message; ahead of the
/// answer to a frame of a session, or, in an upload, ahead of the frame itself.
enum class DevicePlace { Request, Reply, Frame };

struct DeviceAction {
    enum class Kind {
        Pause,
        Bytes,      ///< go out as they are
        WrongCheck, ///< what is sent goes out with a wrong check
        Nak,        ///< the frame is refused
        Silence,    ///< the frame isn't answered
        Answer,     ///< the frame is taken and answered by these bytes in the place of ACK
    };

    Kind kind = Kind::Silence;
    std::string strBytes;
    int64_t lTimes = 1; ///< of WrongCheck, Nak and Silence
    Microseconds pause = 0;
};

struct DeviceRule {
    DevicePlace place = DevicePlace::Frame;
    ScriptFrames frames; ///< of Frame
    DeviceAction action;
};

/// Number of fields of the longest request.
inline constexpr size_t kRequestFields = 12;

/// One call as the script wants it.
struct DeviceCall {
    enum class Ask { Request, Record, Enquiry };

    Ask ask = Ask::Request;
    std::array<std::string, kRequestFields> strFields{"VFI",  "VX520",    "XDL",     "F",
                                                      "APP1", "T0000001", "EPROM1",  "1024",
                                                      "2048", "PT000001", "RELEASE", "CONFIG"};
    size_t nFields = kRequestFields;
    std::string strRecord = "TMS,1,Q,0,0,0,0,0,T0000001,0,APP1"; ///< of Record and Enquiry
    bool bFallsBack = true;
    std::optional<std::string> strFallback; ///< without it a partial request

    std::vector<DeviceAnswer> enq;
    std::vector<DeviceAnswer> commands;
    std::vector<DeviceAnswer> statuses; ///< from the end of the call on
    std::map<std::string, int64_t> resume;
    std::vector<DeviceRule> rules;
    Microseconds reboot = 25000000;
    bool bEndsWithSuccess = true; ///< an upload: with "S", otherwise with "U"

    /// What it asks for: the payload of its first frame.
    std::string strAsked() const;
    /// What it asks for when its enquiry was refused; nothing when it leaves it at that.
    std::optional<std::string> strAskedInstead() const;
    /// The block size of its request, 1 to 65535; 1024 when that is out of range.
    size_t nBlock() const;

    /// What is to be done at a place, in the order of the script. lFrame counts for Frame only.
    /// The pointers live as long as this.
    std::vector<const DeviceAction*> ActionsAt(DevicePlace place, int64_t lFrame = 0) const;
};

class DeviceScript {
  public:
    /// One call, without a word of a script.
    DeviceScript() : calls_(1) {}

    /// Reads a script. On failure nothing, with "line N: " and the reason in strError.
    static std::optional<DeviceScript> Parse(std::string_view strText, std::string& strError);

    /// At least one.
    const std::vector<DeviceCall>& Calls() const { return calls_; }
    const DeviceLimits& Limits() const { return limits_; }

    /// The rate that it hears and speaks at, in bits per second.
    int32_t lRate() const { return lRate_; }
    bool bRepeats() const { return bRepeats_; }   ///< the first call follows the last
    bool bSynAfter() const { return bSynAfter_; } ///< ENQs behind the last call get SYN
    /// What it says to bytes that mean nothing, while it waits to be polled; mostly nothing.
    const std::string& strToNoise() const { return strToNoise_; }
    /// The answers to status queries ahead of the end of the first call.
    const std::vector<DeviceAnswer>& FirstStatuses() const { return firstStatuses_; }

  private:
    friend class DeviceScriptParser;

    std::vector<DeviceCall> calls_;
    std::vector<DeviceAnswer> firstStatuses_;
    DeviceLimits limits_;
    int32_t lRate_ = 115200;
    bool bRepeats_ = false;
    bool bSynAfter_ = true;
    std::string strToNoise_;
};

} // namespace brennik::sim
