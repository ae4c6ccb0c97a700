// A script that makes a service misbehave: what it does, and at which point of a session.
// The text comes from a file given to brenniksim, or stands in a test. The language is told in the
// manual page of brenniksim.
#pragma once

#include "sim/FarEnd.h"
#include "sim/ScriptText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::sim {

/// How long and how often a service tries. Scripts may change each.
struct ServiceLimits {
    int64_t lResends = 10;                    ///< resends of one frame after a NAK
    Microseconds requestTimeout = 60'000'000; ///< wait for a good request
    Microseconds answerTimeout = 30'000'000;  ///< wait for the ACK of a frame
    Microseconds closeTimeout = 10'000'000;   ///< wait for the other end to close
};

/// How bytes go out: in pieces of nBytes (0 means whole) with a pause between.
struct Fragmenting {
    size_t nBytes = 0;
    Microseconds pause = 0;
};

/// A point of a session: before anything is sent; when a good request has arrived, ahead of its
/// ACK; ahead of a frame, counted from 1; ahead of the closing packet.
enum class ScriptPlace { Start, Request, Frame, End };

struct ScriptAction {
    enum class Kind {
        Pause,
        Bytes,
        Packet,
        Noise,
        WrongCheck,
        Fragment,
        Silence,
        Close,
        Reset,
        HangUp
    };

    Kind kind = Kind::Silence;
    std::string strBytes;    ///< of Bytes, Packet (its payload) and Noise
    int64_t lCount = 0;      ///< transmissions with a wrong check
    Microseconds pause = 0;  ///< of Pause, and of HangUp until the line is back
    Fragmenting fragmenting; ///< of Fragment
};

class ServiceScript {
  public:
    /// Reads a script. On failure nothing, with "line N: " and the reason in strError.
    static std::optional<ServiceScript> Parse(std::string_view strText, std::string& strError);

    /// The script of one session, counted from 1: this one, or one that changes nothing once the
    /// sessions for which this one holds are over.
    ServiceScript ForSession(int64_t lSession) const;

    /// What is to be done at a place, in the order of the script. lFrame counts for Frame only.
    /// The pointers live as long as the script.
    std::vector<const ScriptAction*> ActionsAt(ScriptPlace place, int64_t lFrame = 0) const;

    /// True when ActionsAt would give nothing at all, whatever the place.
    bool bNoActions() const { return rules_.empty(); }

    const ServiceLimits& Limits() const { return limits_; }
    const Fragmenting& DefaultFragmenting() const { return fragmenting_; }
    int64_t lRequestNaks() const { return lRequestNaks_; } ///< good requests refused first
    int64_t lWrongChecks() const { return lWrongChecks_; } ///< first transmissions sent wrong
    bool bSendEnq() const { return bSendEnq_; }
    bool bEndsWithSuccess() const { return bEndsWithSuccess_; } ///< "S", otherwise "U"

  private:
    friend class ServiceScriptParser;

    struct Rule {
        ScriptPlace place = ScriptPlace::Start;
        ScriptFrames frames;
        ScriptAction action;
    };

    std::vector<Rule> rules_;
    ServiceLimits limits_;
    Fragmenting fragmenting_;
    std::optional<int64_t> lSessions_; ///< how many it holds for; without it all
    int64_t lRequestNaks_ = 0;
    int64_t lWrongChecks_ = 0;
    bool bSendEnq_ = true;
    bool bEndsWithSuccess_ = true;
};

} // namespace brennik::sim
