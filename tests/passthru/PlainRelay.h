// A plain model of a relay between two ends, for the torture to hold the driver against: it is fed
// with what the driver saw (each look at the time of day, each look at either end) and says what a
// relay that keeps the rules has sent to each end, and how it ended. Written straight from the
// rules, sharing no code with the driver or with the far ends.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace brennik::passthru {

/// One thing that the driver saw of the host, in order.
struct RelaySight {
    enum class Kind { Time, ServerBytes, ServerNothing, DeviceByte, DeviceNothing };
    Kind kind;
    float dSeconds = 0;     ///< of Time: seconds since midnight
    std::string strBytes{}; ///< of ServerBytes and DeviceByte
};

struct RelayProfile {
    bool bUpload = false; ///< frames come from the device, else from the server
    int32_t lCharTimeout = 0;
    int32_t lReadPacketTimeout = 0;
    int32_t lReadPacketAttempts = 0;
    std::set<std::string> payloads; ///< what the end that sends has to send
};

struct RelayOutcome {
    bool bError = false;
    int32_t lErrorCode = 0;
    std::string strErrorMessage;
    std::string strToServer; ///< all bytes that went out
    std::string strToDevice;
    /// A frame passed on bears a damaged packet, whose fields the model has no rule for; what was
    /// sent up to then stands above.
    bool bBeyondTheModel = false;
};

class PlainRelay {
  public:
    PlainRelay(const RelayProfile& profile, const std::vector<RelaySight>& sights)
        : profile_(profile), sights_(sights) {}

    /// Throws std::logic_error when the driver looked at the host in an order that no relay that
    /// keeps the rules does.
    RelayOutcome Run();

    /// True when every sight was accounted for.
    bool bAllSeen() const { return nNext_ == sights_.size(); }

  private:
    enum class End { Server, Device };
    enum class Act { GoOn, Ended, Failed };

    bool ReadFrame(End end, std::string& strPayload);
    bool ReadFrameOnce(End end, std::string& strPayload);
    std::optional<std::string> ReadAnswer(End end);
    Act ActOn(const std::string& strPayload);
    void Fail(int32_t lCode, const std::string& strText);
    std::string& Sent(End end);

    double Time();
    std::optional<std::string> Look(End end);
    std::string Delivery(End end);

    const RelayProfile& profile_;
    const std::vector<RelaySight>& sights_;
    size_t nNext_ = 0;
    RelayOutcome outcome_;
};

} // namespace brennik::passthru
