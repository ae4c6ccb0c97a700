#include "link/TSerialComms.h"

#include "link/CommsErrors.h"
#include "link/LinkStatus.h"
#include "link/TConnectionInfo.h"
#include "platform/Clock.h"
#include "platform/PumpEvents.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/TFLClientLog.h"

#include <array>

namespace brennik {
namespace {

/// Milliseconds behind each failed opening, the last included: a port that another program has
/// just closed, or an adapter that was just plugged in, needs a moment.
constexpr int32_t kPauseOfFailedOpenMs = 250;

/// Bytes of one write and milliseconds between two: devices without flow control keep up so.
constexpr int32_t kBlockSize = 1000;
constexpr int32_t kDelayOfBlocksMs = 10;

/// The most that one read delivers, twice the largest frame: a line that babbles without a pause
/// must not keep the layer above from its time limit for ever, nor take memory without end.
constexpr size_t kMostDelivered = size_t{128} * 1024;

/// The labels of the log, by the positions of the parameters; nothing for any other position.
template <size_t nLabels>
std::string_view LabelOf(const std::array<std::string_view, nLabels>& labels, int32_t lPosition) {
    return lPosition >= 0 && static_cast<size_t>(lPosition) < nLabels
               ? labels[static_cast<size_t>(lPosition)]
               : std::string_view();
}

constexpr std::array<std::string_view, 5> kParities{"Even", "Odd", "None", "Space", "Mark"};
constexpr std::array<std::string_view, 5> kDatabits{"4", "5", "6", "7", "8"};
constexpr std::array<std::string_view, 3> kStopbits{"1", "1.5", "2"};
constexpr std::array<std::string_view, 4> kFlowControls{"None", "RtsCts", "DtrDsr", "XonXoff"};

} // namespace

TSerialComms::~TSerialComms() {
    if (bConnected_) {
        static_cast<void>(oSerial_->Disconnect()); // there is no one left to tell
    }
}

int32_t TSerialComms::Connect(TConnectionInfo& objConnectionInfo, TFLClientLog& objLog) {
    return GuardedWithCode(error_, "TSerialComms.Connect() Failed - ", kFailure, [&]() -> int32_t {
        if (bConnected_) {
            return kSuccess;
        }
        oLog_ = &objLog;
        if (objConnectionInfo.lConnectionAttempts() < 1) {
            SetError(error_, CommsErrors::kConnectionAttempts);
            return kFailure;
        }
        oSerial_ = std::make_unique<TSerial>();
        if (oSerial_->Initialise(objConnectionInfo, /*bResetHandle=*/true) != kSuccess) {
            return FailAsUnopened();
        }
        if (OpenPort(objConnectionInfo) != kSuccess) {
            return kFailure;
        }
        if (oSerial_->Configure() != kSuccess) {
            return FailAsUnopened(); // meant to stay connected, with the port open
        }
        return kSuccess;
    });
}

int32_t TSerialComms::OpenPort(const TConnectionInfo& objConnectionInfo) {
    const int64_t lAttempts = objConnectionInfo.lConnectionAttempts();
    for (int64_t lAttempt = 1; lAttempt <= lAttempts; ++lAttempt) {
        if (oSerial_->Connect() == kSuccess) {
            oLog_->Logit("Connected to " + GetConnectionDescription(objConnectionInfo) +
                             " ,Connection Attempt=" + ToDecimal(lAttempt),
                         false);
            bConnected_ = true;
            return kSuccess;
        }
        static_cast<void>(FailAsUnopened());
        oLog_->LogErrorCodeAndMsg(error_.lErrorCode(), error_.strErrorMessage());
        Sleep(kPauseOfFailedOpenMs); // meant not to pump
    }
    return kFailure;
}

/// The port's own number is not taken over here.
int32_t TSerialComms::FailAsUnopened() {
    error_.Set(CommsErrors::kComPortOpenCode, oSerial_->strErrorMessage());
    return kFailure;
}

std::string TSerialComms::GetConnectionDescription(const TConnectionInfo& objConnectionInfo) {
    std::string strText = "Port=" + objConnectionInfo.strComPort();
    strText += ", BaudRate=" + ToDecimal(objConnectionInfo.lBaudRate());
    strText.append(", Parity=").append(LabelOf(kParities, objConnectionInfo.lParity()));
    strText.append(" ,Databits=").append(LabelOf(kDatabits, objConnectionInfo.lDatabits()));
    strText.append(" ,Stopbit=").append(LabelOf(kStopbits, objConnectionInfo.lStopbit()));
    strText.append(" ,Flowcontrol=")
        .append(LabelOf(kFlowControls, objConnectionInfo.lFlowControl()));
    return strText;
}

int32_t TSerialComms::Disconnect() {
    return GuardedWithCode(
        error_, "TSerialComms.Disconnect() Failed - ", kFailure, [&]() -> int32_t {
            if (!bConnected_) {
                return kSuccess;
            }
            if (oSerial_->Disconnect() != kSuccess) {
                error_.Set(CommsErrors::kComPortCloseCode, oSerial_->strErrorMessage());
                oLog_->LogErrorCodeAndMsg(error_.lErrorCode(), error_.strErrorMessage());
                return kFailure;
            }
            oLog_->Logit("Connection Closed", false);
            bConnected_ = false;
            oSerial_.reset();
            return kSuccess;
        });
}

int32_t TSerialComms::WriteData(std::string_view strData) {
    // The prefix is spelt as readers of the log know it.
    return GuardedWithCode(
        error_, "TSerialComms.SendPacket() Failed - ", kFailure, [&]() -> int32_t {
            const int32_t lWritten =
                Port().WriteData(strData, /*bSplit=*/true, kBlockSize, kDelayOfBlocksMs);
            if (lWritten == -1) {
                error_.CopyFrom(Port());
                return kFailure;
            }
            if (lWritten < Narrow<int32_t>(strData.size())) {
                SetError(error_, CommsErrors::kComPortWrite,
                         ". Only " + ToDecimal(lWritten) + " written");
                return kFailure;
            }
            return kSuccess;
        });
}

int32_t TSerialComms::ReadData(std::string& strData) {
    return GuardedWithCode(error_, "TSerialComms.ReadData() Failed - ", kFailure, [&]() -> int32_t {
        strData.clear();
        int32_t lResult = kFailure;
        std::string strByte;
        while (strData.size() < kMostDelivered) {
            PumpEvents();
            switch (Port().ReadData(strByte, 1)) {
            case 1:
                strData += strByte;
                lResult = kSuccess;
                break;
            case 0:
                return kSuccess;
            default:
                // Meant: what came before the failure is delivered as a success.
                error_.CopyFrom(Port());
                return lResult;
            }
        }
        return lResult;
    });
}

int32_t TSerialComms::ReadCharacter(std::string& strData) {
    return GuardedWithCode(error_, "TSerialComms.ReadCharacter() Failed - ", kFailure,
                           [&]() -> int32_t {
                               strData.clear();
                               PumpEvents();
                               if (Port().ReadData(strData, 1) == -1) {
                                   error_.CopyFrom(Port());
                                   return kFailure;
                               }
                               return kSuccess;
                           });
}

void TSerialComms::ConfigureComPort(const TConnectionInfo& objConnectionInfo) {
    Quietly([&] {
        static_cast<void>(Port().Initialise(objConnectionInfo, /*bResetHandle=*/false));
        static_cast<void>(Port().Configure());
    });
}

void TSerialComms::SetBaudRate(const TConnectionInfo& objConnectionInfo) {
    Quietly([&] { Port().SetBaudRate(objConnectionInfo.lBaudRate()); });
}

TSerial& TSerialComms::Port() {
    if (oSerial_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *oSerial_;
}

} // namespace brennik
