// A plain model of the client of a session, for the torture to hold the engine against: it is fed
// with what the engine saw (each look at the time of day, each delivery of bytes, each look that
// found none) and says what a client that keeps the rules has sent and stored, and how it ended.
// Written straight from the rules, a byte at a time where that is simpler, sharing no code with
// the engine or with the far ends.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace brennik::session {

/// One thing that the engine saw of the host, in order.
struct Sight {
    enum class Kind { Time, Bytes, Nothing };
    Kind kind;
    float dSeconds = 0;     ///< of Time: seconds since midnight
    std::string strBytes{}; ///< of Bytes
};

struct PlainProfile {
    /// A line: looks are at single bytes, none of them is waited for, and files go to "I/1" until
    /// the far end names a drive or a group.
    bool bSerial = false;
    std::string strRequest; ///< the payload of the request
    int32_t lCharTimeout = 0;
    int32_t lReadPacketTimeout = 0;
    int32_t lReadPacketAttempts = 0;
    int32_t lSendPacketAttempts = 0;
};

/// How a run ended by the model.
struct PlainOutcome {
    int32_t lResult = 1;
    int32_t lErrorCode = 0;
    std::string strErrorMessage;
    std::string strSent;                      ///< all bytes that went out
    std::map<std::string, std::string> files; ///< by path below the base folder, with "/"
    int32_t lNumFiles = 0;
    /// The far end named something that the model has no rule for (damage that passed the check).
    bool bBeyondTheModel = false;
};

class PlainClient {
  public:
    PlainClient(const PlainProfile& profile, const std::vector<Sight>& sights)
        : profile_(profile),
          sights_(sights),
          strDrive_(profile.bSerial ? "I/" : ""),
          strGroup_(profile.bSerial ? "1/" : ""),
          strFolder_(strDrive_ + strGroup_) {}

    /// Throws std::logic_error when the engine looked at the host in an order that no client that
    /// keeps the rules does.
    PlainOutcome Run();

    /// True when every sight was accounted for.
    bool bAllSeen() const { return nNext_ == sights_.size(); }

  private:
    enum class Read { Good, BadCheck, TimedOut };

    bool WaitForEnq();
    bool SendRequest();
    bool ReadPacket(std::string& strPayload);
    Read ReadFrame(std::string& strPayload);
    /// Acts on a packet; false ends the session.
    bool Act(const std::string& strPayload);
    bool OpenFile(const std::string& strPayload);
    bool Fail(int32_t lCode, const std::string& strText);

    double Time();
    /// What a look at the connection delivered; nothing if none.
    std::optional<std::string> Look();
    /// What a read delivered: one look over TCP; over a line all looks up to one that finds none.
    std::optional<std::string> Delivery();

    const PlainProfile& profile_;
    const std::vector<Sight>& sights_;
    size_t nNext_ = 0;
    PlainOutcome outcome_;
    bool bDone_ = false;
    std::string strDrive_;
    std::string strGroup_;
    std::string strFolder_;
    std::string strOpen_; ///< path of the open file; empty for none
    std::string strName_; ///< name of the last open packet
    int64_t lCounted_ = 0;
};

} // namespace brennik::session
