// A device at the far end of a serial line, played by a test: it notes what it hears, cut into
// control characters and frames, and says what the test has laid out for each. It is plugged in for
// good, so that it neither knows nor minds whether the port is open.
#pragma once

#include "sim/FarEnd.h"
#include "tests/world/SimTimeline.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::passthru {

using world::Microseconds;

/// A frame with an LRC, as management messages have it.
std::string LrcFrame(std::string_view strPayload);

/// A frame with a CRC, as the file traffic has it.
std::string CrcFrame(std::string_view strPayload);

/// Bytes that the device says, so long after what they answer.
struct Saying {
    Saying(const char* strSaid) : strBytes(strSaid) {}
    Saying(std::string strSaid, Microseconds after = 0)
        : strBytes(std::move(strSaid)), delay(after) {}
    std::string strBytes;
    Microseconds delay = 0;
};

class Device : public sim::FarEnd {
  public:
    explicit Device(world::SimTimeline& timeline) : timeline_(timeline) {}

    /// What it heard: "ENQ", "ACK", "NAK", "[payload]" of a frame with the right check and
    /// "bad[payload]" of one with another, "part" for a frame that wasn't completed within half a
    /// second, and "noise" for each other byte.
    struct Heard {
        Microseconds moment;
        std::string strWhat;
    };
    const std::vector<Heard>& All() const { return heard_; }
    std::vector<std::string> Texts() const;
    /// How often it heard that.
    int64_t Count(std::string_view strWhat) const;
    /// All bytes as they came.
    const std::string& Bytes() const { return strBytes_; }
    /// Payloads of the whole frames with the right check, in order.
    std::vector<std::string> Payloads() const;
    void Forget();

    /// The frames that it is sent bear an LRC, no CRC.
    void ExpectLrc(bool bLrc) { bLrc_ = bLrc; }

    /// What it says when it hears that: the first time the first, and so on; behind the last,
    /// nothing.
    void On(const std::string& strWhat, std::deque<Saying> sayings) { on_[strWhat] = sayings; }
    /// What it says each time when On has nothing; "[]" stands for every frame with the right
    /// check.
    void Always(const std::string& strWhat, Saying saying) {
        always_.insert_or_assign(strWhat, saying);
    }
    void Say(Saying saying);

    /// Called with each text, before the device answers.
    std::function<void(const std::string&)> onHeard;

    void Connected(sim::Wire& wire, sim::Microseconds now) override;
    void Received(sim::Wire& wire, sim::Microseconds now, std::string_view strBytes) override;
    void Elapsed(sim::Wire& wire, sim::Microseconds now) override;
    void Disconnected(sim::Microseconds) override {}
    std::optional<sim::Microseconds> NextDeadline() const override { return deadline_; }

  private:
    void Hear(char cByte);
    void HearFrameByte(char cByte);
    void Note(std::string strWhat);

    world::SimTimeline& timeline_;
    sim::Wire* wire_ = nullptr;
    bool bLrc_ = false;
    std::string strBytes_;
    std::string strFrame_; ///< from the start character on
    std::optional<sim::Microseconds> deadline_;
    std::vector<Heard> heard_;
    std::map<std::string, std::deque<Saying>> on_;
    std::map<std::string, Saying> always_;
};

} // namespace brennik::passthru
