// The session log as the rest of the system sees it: the tag of process and thread, the labels of
// messages, the direction and side of packets, and which packets are worth a line. One object
// serves a whole run and is lent to the engine, the links and the channels.
// Behind it stands a Logging, which it owns; tests read the file in memory.
#pragma once

#include "support/Logging.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace brennik {

class TFLClientLog {
  public:
    /// Stored for the owner; no operation looks at it.
    bool bServer() const { return bServer_; }
    void bServer(bool bValue) { bServer_ = bValue; }

    /// Makes the writer and the tag of this process and thread. Comes first: without it there is
    /// no writer.
    void InitialiseLogging(const std::string& strLogPath, const std::string& strLogFile,
                           bool bLoggingEnabled, bool bLogControlPackets,
                           bool bLogProcessingPackets);

    /// Silence, or let speak, the writer; what is logged of packets stays as it was. Always 0;
    /// throw ObjectNotSet without a writer.
    int32_t TurnOffLogging();
    int32_t TurnOnLogging();

    /// Writes a message behind "ERROR  : " or "INFO   : ". A failure loses the line.
    void Logit(std::string_view strMsg, bool bError);

    /// Writes a packet, given as it is on the wire, behind its side and direction, if packets of
    /// its kind are logged. Throws ObjectNotSet without a writer.
    void LogPacket(bool bControl, bool bOutgoing, std::string_view strData, bool bServerSide);

    /// Writes code and text of a failure as an error. A failure loses the line.
    void LogErrorCodeAndMsg(int32_t lErrorCode, std::string_view strErrorMessage);

    /// With True "QM" stands in the place of both sides until InitialiseLogging.
    void SetCommsLink(bool bCommsLink) { bCommsLink_ = bCommsLink; }

  private:
    Logging& Writer() const;

    std::unique_ptr<Logging> oWriter_;
    std::string strPidTid_;
    bool bLogControlPackets_ = false;
    bool bLogProcessingPackets_ = false;
    bool bCommsLink_ = false;
    bool bServer_ = false;
};

} // namespace brennik
