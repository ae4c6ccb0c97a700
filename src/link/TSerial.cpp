#include "link/TSerial.h"

#include "link/LinkStatus.h"
#include "link/TConnectionInfo.h"
#include "platform/Clock.h"
#include "platform/Host.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/Failure.h"
#include "support/OstrandString.h"
#include "support/TLongBitMap.h"

#include <algorithm>
#include <utility>

namespace brennik {
namespace {

constexpr int32_t kNoBytes = -1; // in place of a number of bytes: a failure

constexpr size_t kPortLetters = 3; // of "COM"
constexpr int32_t kLastPlainPort = 9;
constexpr const char* kDevicePrefix = "\\\\.\\"; // which ports above that need

constexpr int32_t kControlHandshake = 2; // of fDtrControl and fRtsControl
constexpr int16_t kXonLimit = 50;        // bytes left in the input buffer
constexpr char kXon = 17;
constexpr char kXoff = 19;

/// The polling of the layers above is timed by the 10 ms of a read that finds nothing; a write
/// gives up on a line that doesn't move after a second.
constexpr CommTimeouts kTimeouts{10, 0, 10, 0, 1000};

ComPorts& HostPorts() {
    return CurrentHost().comPorts;
}

// From the positions in the lists of the serial settings to the values of the control block.

int8_t ByteSizeOf(int32_t lDatabits) {
    return lDatabits >= 0 && lDatabits <= 3 ? static_cast<int8_t>(lDatabits + 4) : int8_t{8};
}

int8_t ParityOf(int32_t lParity) {
    switch (lParity) {
    case 0:
        return 2; // even
    case 1:
        return 1; // odd
    case 2:
        return 0; // none
    case 4:
        return 3; // mark
    default:
        return 4; // space
    }
}

int8_t StopBitsOf(int32_t lStopbit) {
    return lStopbit == 0 || lStopbit == 1 ? static_cast<int8_t>(lStopbit) : int8_t{2};
}

} // namespace

TSerial::~TSerial() {
    if (hComPort_ != kNoComPort) {
        static_cast<void>(Disconnect()); // there is no one left to tell
    }
}

int32_t TSerial::Initialise(const TConnectionInfo& objConnectionInfo, bool bResetHandle) {
    return GuardedWithText(strErrorMessage_, "TSerialComms.Initialise() Failed - ", kFailure,
                           [&]() -> int32_t {
                               connectionInfo_ = &objConnectionInfo;
                               if (bResetHandle) {
                                   hComPort_ = kNoComPort;
                               }
                               return kSuccess;
                           });
}

int32_t TSerial::Connect() {
    return GuardedWithText(
        strErrorMessage_, "TSerialComms.Connect() Failed - ", kFailure, [&]() -> int32_t {
            if (hComPort_ != kNoComPort) {
                strErrorMessage_ = "COM Port is already opened"; // meant: the number stays
                return kFailure;
            }
            hComPort_ = HostPorts().Open(GetDevicePortName());
            if (hComPort_ == kNoComPort) {
                return FailWithSystemError("Failed opening COM Port " + Parameters().strComPort(),
                                           kFailure);
            }
            return kSuccess;
        });
}

int32_t TSerial::Disconnect() {
    return GuardedWithText(strErrorMessage_, "TSerialComms.Disconnect() Failed - ", kFailure,
                           [&]() -> int32_t {
                               if (hComPort_ == kNoComPort) {
                                   return kFailure; // meant to be silent
                               }
                               if (!HostPorts().Close(hComPort_)) {
                                   return FailWithSystemError("Failed closing COM Port", kFailure);
                               }
                               hComPort_ = kNoComPort;
                               return kSuccess;
                           });
}

int32_t TSerial::Configure() {
    return GuardedWithText(strErrorMessage_, "TSerialComms.Configure() Failed - ", kFailure,
                           [&]() -> int32_t {
                               const int32_t lResult = SetPortInfoSettings();
                               return lResult == kSuccess ? SetSerialTimeouts() : lResult;
                           });
}

int32_t TSerial::SetPortInfoSettings() {
    return GuardedWithText(strErrorMessage_, "TSerialComms.SetPortInfoSettings() Failed - ",
                           kFailure, [&]() -> int32_t {
                               if (!HostPorts().GetState(hComPort_, dcb_)) {
                                   return FailWithSystemError(
                                       "Failed retrieving DCB settings for opened port", kFailure);
                               }
                               const TConnectionInfo& parameters = Parameters();
                               dcb_.BaudRate = parameters.lBaudRate();
                               dcb_.ByteSize = ByteSizeOf(parameters.lDatabits());
                               dcb_.Parity = ParityOf(parameters.lParity());
                               dcb_.StopBits = StopBitsOf(parameters.lStopbit());
                               SetFlowControl();
                               if (!HostPorts().SetState(hComPort_, dcb_)) {
                                   return FailWithSystemError(
                                       "Failed setting opened port with DCB settings", kFailure);
                               }
                               return kSuccess;
                           });
}

/// What isn't named keeps the value that the port had: RTS and DTR control outlive a change to
/// another flow control, and so do the limit and the characters of XON/XOFF.
void TSerial::SetFlowControl() {
    const auto set = [&](int32_t lField, int32_t lValue) {
        SetDcbFlag(dcb_.Flags, lField, lValue);
    };
    const int32_t lFlowControl = Parameters().lFlowControl();
    const bool bXonXoff = lFlowControl == 3;
    const bool bRtsCts = lFlowControl == 1;
    const bool bDtrDsr = lFlowControl != 0 && !bRtsCts && !bXonXoff;
    set(dcbflag::kInX, bXonXoff ? 1 : 0);
    set(dcbflag::kOutX, bXonXoff ? 1 : 0);
    set(dcbflag::kOutxCtsFlow, bRtsCts ? 1 : 0);
    set(dcbflag::kOutxDsrFlow, bDtrDsr ? 1 : 0);
    if (bRtsCts) {
        set(dcbflag::kRtsControl, kControlHandshake);
    } else if (bXonXoff) {
        dcb_.XonLim = kXonLimit;
        dcb_.XonChar = kXon;
        dcb_.XoffChar = kXoff;
    } else if (bDtrDsr) {
        set(dcbflag::kDtrControl, kControlHandshake);
    }
}

void TSerial::SetDcbFlag(int32_t& lFlags, int32_t lField, int32_t lValue) {
    TLongBitMap bits;
    bits.SetBitMap(lFlags);
    switch (lField) {
    case dcbflag::kDtrControl: // two bits wide; 3 is no value of it
        bits.SetField(lField, lValue == 1);
        bits.SetField(lField + 1, lValue == 2);
        break;
    case dcbflag::kRtsControl:
        bits.SetField(lField, lValue == 1 || lValue == 3);
        bits.SetField(lField + 1, lValue == 2 || lValue == 3);
        break;
    default:
        bits.SetField(lField, lValue == 1);
        break;
    }
    lFlags = bits.GetBitMap();
}

int32_t TSerial::SetSerialTimeouts() {
    return GuardedWithText(
        strErrorMessage_, "TSerialComms.SetSerialTimeouts() Failed - ", kFailure, [&]() -> int32_t {
            if (!HostPorts().SetTimeouts(hComPort_, kTimeouts)) {
                return FailWithSystemError("Failed setting serial timeout values", kFailure);
            }
            return kSuccess;
        });
}

int32_t TSerial::WriteData(std::string_view strData, bool bSplit, int32_t lBlockSize,
                           int32_t lDelayMs) {
    return GuardedWithText(
        strErrorMessage_, "TSerialComms.WriteData() Failed - ", kNoBytes, [&]() -> int32_t {
            if (hComPort_ == kNoComPort) {
                strErrorMessage_ = "Port closed"; // meant: the number stays
                return kNoBytes;
            }
            const auto blocks =
                bSplit ? SplitIntoBlocks(strData, lBlockSize) : std::vector{strData};
            int32_t lTotal = 0;
            for (const std::string_view& strBlock : blocks) {
                if (strBlock.empty()) {
                    strErrorMessage_ = "Empty buffer passed. No data to write"; // no failure
                    break;
                }
                int32_t lWritten = 0;
                if (!HostPorts().Write(hComPort_, strBlock, lWritten)) {
                    // Whatever the blocks before it took.
                    return FailWithSystemError("Failed writing data to the opened port", kNoBytes);
                }
                lTotal += lWritten;
                if (lWritten < Narrow<int32_t>(strBlock.size())) {
                    break;
                }
                if (&strBlock != &blocks.back()) {
                    Sleep(lDelayMs);
                }
            }
            return lTotal;
        });
}

/// An empty text is one empty block.
std::vector<std::string_view> TSerial::SplitIntoBlocks(std::string_view strData,
                                                       int32_t lBlockSize) {
    if (lBlockSize < 1) {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
    const size_t nBlock = static_cast<size_t>(lBlockSize);
    std::vector<std::string_view> blocks{strData.substr(0, nBlock)};
    for (size_t nPlace = nBlock; nPlace < strData.size(); nPlace += nBlock) {
        blocks.push_back(strData.substr(nPlace, nBlock));
    }
    return blocks;
}

int32_t TSerial::ReadData(std::string& strData, int32_t vNumBytes) {
    return GuardedWithText(
        strErrorMessage_, "TSerialComms.ReadData() Failed - ", kNoBytes, [&]() -> int32_t {
            if (hComPort_ == kNoComPort) {
                strErrorMessage_ = "Port closed"; // meant: the number stays
                return kNoBytes;
            }
            if (vNumBytes <= 0) {
                strErrorMessage_ = "Number of bytes to read must be greater than 0";
                return kNoBytes;
            }
            strData.clear();
            std::string strBuffer(static_cast<size_t>(vNumBytes), '\0');
            int32_t lRead = 0;
            if (!HostPorts().Read(hComPort_, strBuffer.data(), vNumBytes, lRead)) {
                return FailWithSystemError("Failed reading data from the opened port", kNoBytes);
            }
            strData.assign(strBuffer, 0, static_cast<size_t>(lRead));
            return lRead;
        });
}

void TSerial::ClearInputBuffer() {
    Quietly([&] {
        if (hComPort_ != kNoComPort) {
            HostPorts().Purge(hComPort_, purgeflag::kRxAbort | purgeflag::kRxClear);
        }
    });
}

void TSerial::ClearOutputBuffer() {
    Quietly([&] {
        if (hComPort_ != kNoComPort) {
            HostPorts().Purge(hComPort_, purgeflag::kTxAbort | purgeflag::kTxClear);
        }
    });
}

void TSerial::SetBaudRate(int32_t lBaudRate) {
    dcb_.BaudRate = lBaudRate;
    // Meant: this reads the block and the parameters anew, so the rate just stored plays no part.
    static_cast<void>(SetPortInfoSettings());
}

std::string TSerial::ConvNullTerminatedByteArray2String(const std::vector<uint8_t>& bytes) {
    return GuardedWithText(
        strErrorMessage_, "TSerialComms.ConvNullTerminatedByteArray2String() Failed - ",
        std::string(),
        [&] { return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)); });
}

std::string TSerial::GetDevicePortName() const {
    const std::string& strComPort = Parameters().strComPort();
    const std::string_view strNumber =
        std::string_view(strComPort).substr(std::min(kPortLetters, strComPort.size()));
    return OstrandString::StrToLong(strNumber) > kLastPlainPort ? kDevicePrefix + strComPort
                                                                : strComPort;
}

const TConnectionInfo& TSerial::Parameters() const {
    if (connectionInfo_ == nullptr) {
        throw RuntimeFailure(FailureKind::ObjectNotSet);
    }
    return *connectionInfo_;
}

int32_t TSerial::FailWithSystemError(std::string strText, int32_t lResult) {
    lErrorCode_ = HostPorts().LastError();
    strErrorMessage_ = std::move(strText);
    return lResult;
}

} // namespace brennik
