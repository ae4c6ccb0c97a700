// What one pass-through run works with: the profile, the objects, and the variables that live
// across its cycles. In one named place, so that each step can be read against what it changes.
// Room-internal; tests drive whole runs.
#pragma once

#include "link/TCommsChannel.h"
#include "link/TConnectionInfo.h"
#include "link/TIsoProtocol.h"
#include "session/PassThruState.h"
#include "session/TBrennikPacket.h"
#include "session/TBrennikProtocol.h"
#include "session/TTmsEnquiryPacket.h"
#include "support/TFLClientLog.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brennik {

class TBrennikClientConfig;

/// The name of a state as it stands in the log; empty for a number that is no state.
std::string PassThruStateName(int32_t lState);

struct TBrennikProtocol::PassThruRun {
    PassThruRun(TBrennikClientConfig& config, const std::string& strFileLoc, int32_t lProfile)
        : oConfig(config), strConfigFileLoc(strFileLoc), lProfileId(lProfile) {}

    TBrennikClientConfig& oConfig;
    const std::string& strConfigFileLoc;
    int32_t lProfileId;

    PassThruState lPassThruState = PASSTHRU_ST_START;
    int32_t lTries = 0;     ///< cycles ended so far
    bool bError = false;    ///< a failure happened; nothing clears it
    bool bRebooted = false; ///< the extra reboot cycle has been done
    std::string strPacket;  ///< first packet of the cycle, then the packet in flight
    std::string strChar;    ///< acknowledgement in flight
    std::string strPTID;    ///< of the device's request
    int32_t lResult = 1;

    TFLClientLog oLog;
    TBrennikPacket oPacket;
    TTmsEnquiryPacket oEnquiry;
    TIsoProtocol oServerLink;
    TIsoProtocol oDeviceLink;
    TConnectionInfo oServerConnection;
    TConnectionInfo oDeviceConnection;
    // Made anew in every cycle, and gone before what they borrow.
    std::unique_ptr<TCommsChannel> oServerChannel;
    std::unique_ptr<TCommsChannel> oDeviceChannel;
};

/// Takes text and code of a link, a channel or a packet over.
template <class Source>
void TBrennikProtocol::FailPassThru(PassThruRun& run, const Source& source) {
    error_.CopyFrom(source);
    run.bError = true;
}

} // namespace brennik
