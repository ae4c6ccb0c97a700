#include "link/TSocket.h"

#include "link/LinkStatus.h"
#include "platform/Clock.h"
#include "platform/Host.h"
#include "platform/PumpEvents.h"
#include "platform/RuntimeFailure.h"
#include "support/AsciiText.h"
#include "support/Rounding.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brennik {
namespace {

constexpr int32_t kTimeRanOut = -1; // beside the two statuses, for the timed read alone

constexpr int32_t kWinsockVersion = 0x0101; // 1.1, the low byte being the major number

/// Milliseconds, slept after every blocking connect, a failed one too: the far end's listener is
/// given time to start its session before the first bytes come, and retries aren't a storm.
constexpr int32_t kPauseAfterConnectMs = 50;

/// Milliseconds, at most, in which a read that found nothing waits for bytes: about a hundred
/// looks a second at a silent line, idle in between.
constexpr int32_t kPauseOfEmptyReadMs = 10;

Sockets& HostSockets() {
    return CurrentHost().sockets;
}

/// Error numbers are kept in 16 bits.
int16_t ToWsaError(int32_t lError) {
    return Narrow<int16_t>(lError);
}

/// True for any text that converts to a number, fractions included.
bool IsNumeric(std::string_view strText) {
    return Guarded(
        [&] {
            static_cast<void>(ParseNumber<double>(strText));
            return true;
        },
        [](const std::string&) { return false; });
}

/// Whole seconds for the wait of a connect, ties to even. Less than none is none.
int32_t ToWholeSeconds(double dSeconds) {
    const double dRounded = RoundedTiesToEven(dSeconds);
    if (!(std::abs(dRounded) <= std::numeric_limits<int32_t>::max())) {
        throw RuntimeFailure(FailureKind::Overflow);
    }
    return std::max(static_cast<int32_t>(dRounded), 0);
}

std::string DottedAddress(const std::string& strBytes) {
    std::string strAddress;
    for (const char cByte : strBytes) {
        if (!strAddress.empty()) {
            strAddress += '.';
        }
        strAddress += ToDecimal(static_cast<unsigned char>(cByte));
    }
    return strAddress;
}

/// Closes a handle whose connection wasn't made, so that retries leak none. The failure that is
/// being reported stands, whatever comes of it.
void CloseUnused(int32_t& lSocket) {
    if (lSocket > 0) {
        Quietly([&] { static_cast<void>(HostSockets().CloseSocket(lSocket)); });
    }
    lSocket = kNoSocket;
}

} // namespace

int32_t TSocket::OpenSocket(const std::string& /*strHostName*/, const std::string& strIPAddress,
                            uint16_t iPort, double dTimeout, int32_t& lSocket, bool bBlocking,
                            bool bStartWinsock) {
    lSocket = kNoSocket;
    const auto lStatus =
        GuardedWithCode(error_, "TSocket.OpenSocket() Failed - ", kFailure, [&]() -> int32_t {
            // A failed start goes on: what follows will normally fail and replace its text.
            if (bStartWinsock && HostSockets().Startup(kWinsockVersion) != 0) {
                SetError(error_, CommsErrors::kWinsockStart);
            }
            lSocket = HostSockets().Socket();
            if (lSocket <= 0) {
                SetError(error_, CommsErrors::kCreateSocket);
                return kFailure;
            }
            if (MakeConnection(lSocket, strIPAddress, iPort, dTimeout, bBlocking)) {
                return kSuccess;
            }
            const int16_t iWsaError = ToWsaError(HostSockets().LastError());
            SetError(error_, CommsErrors::kConnectTimeout,
                     iWsaError >= 1 ? WsaErrorSuffix(iWsaError) : std::string());
            return kFailure;
        });
    if (lStatus != kSuccess) {
        CloseUnused(lSocket);
    }
    return lStatus;
}

bool TSocket::MakeConnection(int32_t& lSocket, const std::string& strIPAddress, uint16_t iPort,
                             double dTimeout, bool bBlocking) {
    const uint16_t iNetworkPort = HostSockets().HostToNetworkPort(iPort);
    if (iNetworkPort == 0) {
        // The caller replaces this at once: a port of 0 is told as a connection not made.
        SetError(error_, CommsErrors::kResolvePort);
        return false;
    }
    const uint32_t lAddress = HostSockets().InetAddr(strIPAddress);
    return bBlocking ? ConnectBlocking(lSocket, lAddress, iNetworkPort)
                     : ConnectNonBlocking(lSocket, lAddress, iNetworkPort, dTimeout);
}

bool TSocket::ConnectBlocking(int32_t lSocket, uint32_t lAddress, uint16_t iNetworkPort) {
    const bool bMade = HostSockets().Connect(lSocket, lAddress, iNetworkPort) == 0;
    Sleep(kPauseAfterConnectMs);
    return bMade;
}

bool TSocket::ConnectNonBlocking(int32_t& lSocket, uint32_t lAddress, uint16_t iNetworkPort,
                                 double dTimeout) {
    // A socket that stays blocking shows in the connect below.
    static_cast<void>(HostSockets().SetNonBlocking(lSocket));
    // Meant: such a connect reports that it is under way, so one made at once counts as not made.
    if (HostSockets().Connect(lSocket, lAddress, iNetworkPort) == 0) {
        return false;
    }
    const int32_t lReady = HostSockets().SelectWritable(lSocket, ToWholeSeconds(dTimeout));
    if (lReady != 0 && lReady != -1) {
        return true;
    }
    // Its text, if it fails, is replaced by the caller's.
    static_cast<void>(CloseSocket(lSocket));
    lSocket = kNoSocket;
    return false;
}

int32_t TSocket::CloseSocket(int32_t lSocket) {
    return GuardedWithCode(error_, "TSocket.CloseSocket() Failed - ", kFailure, [&]() -> int32_t {
        HostSockets().Shutdown(lSocket);
        const bool bClosed = HostSockets().CloseSocket(lSocket) == 0;
        if (!bClosed) {
            SetError(error_, CommsErrors::kCloseSocket);
        }
        HostSockets().Cleanup();
        return bClosed ? kSuccess : kFailure;
    });
}

int32_t TSocket::ReadNumBytesTimed(std::string& strData, double dTimeout, int32_t lBytes,
                                   int32_t lSocket) {
    strData.clear();
    return GuardedWithCode(
        error_, "TSocket.ReadNumBytesTimed() Failed - ", kFailure, [&]() -> int32_t {
            int32_t lResult = kTimeRanOut;
            bool bRead = false;
            const double dEnd = double{SecondsSinceMidnight()} + dTimeout;
            while (!bRead && SecondsSinceMidnight() <= dEnd) {
                int32_t lWaiting = 0;
                // A query that fails leaves 0 and is told by the last error.
                static_cast<void>(HostSockets().BytesWaiting(lSocket, lWaiting));
                if (lWaiting < 1) {
                    // A lost connection is noted and waited on all the same.
                    if (PauseAndTellIfLost(lSocket, CommsErrors::kReadNumBytes)) {
                        lResult = kFailure;
                    }
                    PumpEvents();
                } else if (ReadInto(strData, lBytes, lSocket) == lBytes) {
                    bRead = true;
                    lResult = kSuccess;
                } else {
                    strData.clear();
                }
            }
            return lResult;
        });
}

int32_t TSocket::Read(std::string& strData, int32_t& lBytesRead, int32_t lSocket) {
    strData.clear();
    lBytesRead = 0;
    return GuardedWithCode(error_, "TSocket.Read() Failed - ", kFailure, [&]() -> int32_t {
        const bool bAnswered = HostSockets().BytesWaiting(lSocket, lBytesRead) == 0;
        if (bAnswered && lBytesRead >= 1) {
            // Meant not to be examined: bytes that don't come stay zero bytes.
            static_cast<void>(ReadInto(strData, lBytesRead, lSocket));
            return kSuccess;
        }
        lBytesRead = 0;
        if (PauseAndTellIfLost(lSocket, CommsErrors::kReadSocket)) {
            return kFailure;
        }
        return bAnswered ? kSuccess : kFailure;
    });
}

int32_t TSocket::ReadnBytes(std::string& strData, int32_t lBytes, int32_t& lBytesRead,
                            int32_t lSocket) {
    strData.clear();
    lBytesRead = 0;
    return GuardedWithCode(error_, "TSocket.ReadnBytes() Failed - ", kFailure, [&]() -> int32_t {
        int32_t lWaiting = 0;
        // A query that fails leaves 0 and is told by the last error.
        static_cast<void>(HostSockets().BytesWaiting(lSocket, lWaiting));
        if (lWaiting < 1) {
            return PauseAndTellIfLost(lSocket, CommsErrors::kReadSocket) ? kFailure : kSuccess;
        }
        const int32_t lTaken = std::min(lWaiting, lBytes);
        // Meant not to be examined: bytes that don't come stay zero bytes.
        static_cast<void>(ReadInto(strData, lTaken, lSocket));
        lBytesRead = lTaken;
        return kSuccess;
    });
}

int32_t TSocket::ReadInto(std::string& strData, int32_t lBytes, int32_t lSocket) {
    if (lBytes < 0) {
        throw RuntimeFailure(FailureKind::InvalidProcedureCall);
    }
    strData.assign(static_cast<size_t>(lBytes), '\0');
    return HostSockets().Receive(lSocket, strData.data(), lBytes);
}

bool TSocket::PauseAndTellIfLost(int32_t lSocket, const CommsError& commsError) {
    const int32_t lLastError = HostSockets().LastError();
    HostSockets().WaitReadable(lSocket, kPauseOfEmptyReadMs);
    const int16_t iWsaError = ToWsaError(lLastError);
    if (iWsaError < socketerror::kNetworkDown || iWsaError > socketerror::kConnectionReset) {
        return false;
    }
    SetError(error_, commsError, WsaErrorSuffix(iWsaError));
    return true;
}

int32_t TSocket::Send(std::string_view strData, int32_t lSocket) {
    return GuardedWithCode(error_, "TSocket.Send() Failed - ", kFailure, [&]() -> int32_t {
        const int32_t lSent = HostSockets().Send(lSocket, strData);
        if (lSent >= 1) {
            return kSuccess; // also when only a part was taken
        }
        error_.Set(lSent, std::string(CommsErrors::kSendSocketText));
        return kFailure;
    });
}

bool TSocket::IsIPAddress(std::string_view strAddress) const {
    for (int iDot = 0; iDot < 3; ++iDot) {
        const size_t nDot = strAddress.find('.');
        if (nDot == std::string_view::npos || !IsNumeric(strAddress.substr(0, nDot))) {
            return false;
        }
        strAddress.remove_prefix(nDot + 1);
    }
    return IsNumeric(strAddress);
}

int32_t TSocket::GetIPAddress(const std::string& strHostName, std::string& strIPAddress) {
    strIPAddress.clear();
    return GuardedWithCode(error_, "TSocket.GetIPAddress() Failed - ", kFailure, [&]() -> int32_t {
        // No clean-up answers this start; OpenSocket and CloseSocket pair their own.
        if (HostSockets().Startup(kWinsockVersion) != 0) {
            SetError(error_, CommsErrors::kWinsockStart);
            return kFailure;
        }
        const auto addresses = HostSockets().GetHostByName(strHostName);
        if (addresses.empty()) {
            SetError(error_, CommsErrors::kResolveHost, " - " + strHostName);
            return kFailure;
        }
        strIPAddress = DottedAddress(addresses.front());
        return kSuccess;
    });
}

std::string TSocket::WsaErrorSuffix(int16_t iWsaError) const {
    return " - WSA Error Code=" + ToDecimal(iWsaError) +
           " WSA Error Message=" + GetWsaErrorText(iWsaError);
}

std::string TSocket::GetWsaErrorText(int16_t /*iWsaError*/) const {
    return {};
}

} // namespace brennik
