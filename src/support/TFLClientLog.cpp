#include "support/TFLClientLog.h"

#include "platform/Host.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/Failure.h"

namespace brennik {

namespace {

std::string_view PacketPrefix(bool bCommsLink, bool bServerSide, bool bOutgoing) {
    if (bCommsLink) {
        return bOutgoing ? "QM OUT : " : "QM IN  : ";
    }
    if (bServerSide) {
        return bOutgoing ? "SERVER OUT : " : "SERVER IN  : ";
    }
    return bOutgoing ? "CLIENT OUT : " : "CLIENT IN  : ";
}

} // namespace

void TFLClientLog::InitialiseLogging(const std::string& strLogPath, const std::string& strLogFile,
                                     bool bLoggingEnabled, bool bLogControlPackets,
                                     bool bLogProcessingPackets) {
    oWriter_ = std::make_unique<Logging>();
    oWriter_->bLoggingEnabled(bLoggingEnabled);
    oWriter_->strLogPath(strLogPath);
    oWriter_->strLogFile(strLogFile);
    oWriter_->bObscureNumericStrings(false);
    Processes& processes = CurrentHost().processes;
    strPidTid_ = "[PID-TID=" + ToDecimal(processes.GetCurrentProcessId()) + "-" +
                 ToDecimal(processes.GetCurrentThreadId()) + "]";
    bLogControlPackets_ = bLogControlPackets;
    bLogProcessingPackets_ = bLogProcessingPackets;
    bCommsLink_ = false;
}

int32_t TFLClientLog::TurnOffLogging() {
    Writer().bLoggingEnabled(false);
    return 0;
}

int32_t TFLClientLog::TurnOnLogging() {
    Writer().bLoggingEnabled(true);
    return 0;
}

void TFLClientLog::Logit(std::string_view strMsg, bool bError) {
    Quietly([&] {
        Writer().LogJoined({strPidTid_, " ", bError ? "ERROR  : " : "INFO   : ", strMsg});
    });
}

void TFLClientLog::LogPacket(bool bControl, bool bOutgoing, std::string_view strData,
                             bool bServerSide) {
    if (bControl ? bLogControlPackets_ : bLogProcessingPackets_) {
        Writer().LogJoined(
            {strPidTid_, " ", PacketPrefix(bCommsLink_, bServerSide, bOutgoing), strData});
    }
}

void TFLClientLog::LogErrorCodeAndMsg(int32_t lErrorCode, std::string_view strErrorMessage) {
    Quietly([&] {
        Logging& writer = Writer();
        if (writer.bLoggingEnabled()) {
            const std::string strCode = "Error Code=" + ToDecimal(lErrorCode);
            writer.LogJoined(
                {strPidTid_, " ", "ERROR  : ", strCode, ", Error Message=", strErrorMessage});
        }
    });
}

Logging& TFLClientLog::Writer() const {
    if (oWriter_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *oWriter_;
}

} // namespace brennik
