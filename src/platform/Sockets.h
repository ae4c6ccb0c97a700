// The socket calls that the TCP wrapper makes, with the error numbers it tests.
// For real they stand on the Berkeley sockets (LinuxSockets); tests put the network in memory of
// the simulated host in their place. Handles are small positive integers; -1 is none.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

/// The error numbers above the seam, as the logic tests them.
namespace socketerror {
inline constexpr int32_t kNone = 0;
inline constexpr int32_t kWouldBlock = 10035; ///< also a connection that is under way
inline constexpr int32_t kNetworkDown = 10050;
inline constexpr int32_t kNetworkUnreachable = 10051;
inline constexpr int32_t kNetworkReset = 10052;
inline constexpr int32_t kConnectionAborted = 10053;
inline constexpr int32_t kConnectionReset = 10054;
inline constexpr int32_t kTimedOut = 10060;
inline constexpr int32_t kConnectionRefused = 10061;
inline constexpr int32_t kHostUnreachable = 10065;
} // namespace socketerror

class Sockets {
  public:
    virtual ~Sockets() = default;

    /// Starts the socket library; non-zero is a failure. Cleanup's outcome is never looked at.
    virtual int32_t Startup(int32_t lVersion) = 0;
    virtual void Cleanup() = 0;

    /// The number of the last failing call of this thread. Set by failing calls only, never
    /// cleared by a success; Shutdown and CloseSocket leave it alone.
    virtual int32_t LastError() = 0;

    /// A new TCP socket over IPv4. A handle greater than 0 means success.
    virtual int32_t Socket() = 0;

    /// Connects to an IPv4 address and a port, both in network byte order. 0 means made; -1 is a
    /// failure or, on a non-blocking socket, a connection that is under way (kWouldBlock).
    virtual int32_t Connect(int32_t lSocket, uint32_t lAddress, uint16_t iPort) = 0;

    /// Makes the socket non-blocking for the rest of its life. 0 or -1.
    virtual int32_t SetNonBlocking(int32_t lSocket) = 0;

    /// How many bytes wait to be read, into lBytes. 0 or -1; a closed or reset connection shows 0
    /// bytes and no error.
    virtual int32_t BytesWaiting(int32_t lSocket, int32_t& lBytes) = 0;

    /// Waits until a connection under way is made: 1 made, 0 out of time, -1 not connected, with
    /// the error that the connection met as the last error. lSeconds is at least 0.
    virtual int32_t SelectWritable(int32_t lSocket, int32_t lSeconds) = 0;

    /// Receives at most lLength bytes into the buffer: the number received, 0 when the peer has
    /// closed, or -1.
    virtual int32_t Receive(int32_t lSocket, char* buffer, int32_t lLength) = 0;

    /// Sends with one call and never raises a signal: the number taken, or -1.
    virtual int32_t Send(int32_t lSocket, std::string_view strData) = 0;

    /// Shuts down both directions. The outcome is never looked at.
    virtual void Shutdown(int32_t lSocket) = 0;

    /// 0 or, when the handle can't be closed, -1.
    virtual int32_t CloseSocket(int32_t lSocket) = 0;

    /// Resolves a name to its IPv4 addresses, four bytes each in network order; empty is failure.
    virtual std::vector<std::string> GetHostByName(const std::string& strName) = 0;

    /// A dotted text as an address in network byte order; 0xFFFFFFFF when it is none.
    virtual uint32_t InetAddr(const std::string& strAddress) = 0;

    /// A port in network byte order.
    virtual uint16_t HostToNetworkPort(uint16_t iPort) = 0;

    /// The pause of a read that found nothing: returns at once when bytes arrive, otherwise after
    /// lMilliseconds. A closed or failed connection with nothing left to read lasts the full time,
    /// so that no polling caller ever spins.
    virtual void WaitReadable(int32_t lSocket, int32_t lMilliseconds) = 0;
};

} // namespace brennik
