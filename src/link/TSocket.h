// One TCP connection's calls: open, close, send, and reading what is waiting.
// It stands on the sockets of the current host; tests put the network in memory there. It holds
// no socket: the caller keeps the handle. A status is 0 for success and 1 for failure.
#pragma once

#include "link/CommsErrors.h"
#include "support/Failure.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

/// In place of a handle: no open socket.
inline constexpr int32_t kNoSocket = -1;

/// A read that finds nothing looks at the last socket error, which nothing clears: 10050 to 10054
/// is a lost connection, anything else is silence. Both then pause for 10 ms, cut short by arriving
/// bytes, so that a caller that reads again never spins. An orderly close looks like silence.
class TSocket {
  public:
    /// Opens a connection to a dotted address; strHostName plays no part. dTimeout is in seconds,
    /// rounded to whole ones (ties to even), and limits a non-blocking connect only; below 0 it
    /// counts as 0, which looks once. A blocking connect is followed by 50 ms of sleep. A
    /// non-blocking connect that succeeds at once counts as not made. lSocket is the handle on
    /// success and kNoSocket on failure.
    [[nodiscard]] int32_t OpenSocket(const std::string& strHostName,
                                     const std::string& strIPAddress, uint16_t iPort,
                                     double dTimeout, int32_t& lSocket, bool bBlocking,
                                     bool bStartWinsock);

    /// Shuts down both directions, closes and cleans up. A handle that can't be closed is failure
    /// 1000005; the clean-up is done all the same.
    [[nodiscard]] int32_t CloseSocket(int32_t lSocket);

    /// Waits up to dTimeout seconds for one receive of exactly lBytes bytes; a receive of another
    /// number is dropped. 0 when they came, -1 when the time ran out, 1 when in addition the
    /// connection was seen lost, or on a failure.
    [[nodiscard]] int32_t ReadNumBytesTimed(std::string& strData, double dTimeout, int32_t lBytes,
                                            int32_t lSocket);

    /// Reads all that is waiting; success with nothing read when nothing is. A query that fails
    /// without a lost connection is a failure without a text.
    [[nodiscard]] int32_t Read(std::string& strData, int32_t& lBytesRead, int32_t lSocket);

    /// Reads what is waiting, at most lBytes; the rest stays. Success with nothing read when
    /// nothing is waiting.
    [[nodiscard]] int32_t ReadnBytes(std::string& strData, int32_t lBytes, int32_t& lBytesRead,
                                     int32_t lSocket);

    /// Sends with one call; taking a part of the bytes is success. On failure lErrorCode is the
    /// result of the call, 0 or -1.
    [[nodiscard]] int32_t Send(std::string_view strData, int32_t lSocket);

    /// True for four numbers with dots between. No number is tested against 255, and the last may
    /// have a fraction.
    bool IsIPAddress(std::string_view strAddress) const;

    /// The first IPv4 address of a host, dotted; empty on failure.
    [[nodiscard]] int32_t GetIPAddress(const std::string& strHostName, std::string& strIPAddress);

    const std::string& strErrorMessage() const { return error_.strErrorMessage(); }
    int32_t lErrorCode() const { return error_.lErrorCode(); }

  private:
    /// Connects a fresh socket; iPort is in host order. True when the connection was made. One
    /// that wasn't may have closed the socket, and lSocket is then kNoSocket.
    bool MakeConnection(int32_t& lSocket, const std::string& strIPAddress, uint16_t iPort,
                        double dTimeout, bool bBlocking);
    /// The two ways of it; address and port are in network order. The first leaves the socket
    /// open, the second closes one whose wait came to nothing.
    bool ConnectBlocking(int32_t lSocket, uint32_t lAddress, uint16_t iNetworkPort);
    bool ConnectNonBlocking(int32_t& lSocket, uint32_t lAddress, uint16_t iNetworkPort,
                            double dTimeout);

    /// The one rule for a read that found nothing, told at the class: pauses, then sets the error
    /// with its suffix and gives true if the last socket error is that of a lost connection.
    bool PauseAndTellIfLost(int32_t lSocket, const CommsError& commsError);

    /// Receives once into strData, which becomes lBytes long; what doesn't come are zero bytes.
    /// Gives what the receive gave: the number received, 0 or -1.
    int32_t ReadInto(std::string& strData, int32_t lBytes, int32_t lSocket);

    /// What stands behind the text of a failure that a socket error explains.
    std::string WsaErrorSuffix(int16_t iWsaError) const;
    /// Always empty: there is no table of these texts.
    std::string GetWsaErrorText(int16_t iWsaError) const;

    ErrorState error_;
};

} // namespace brennik
