// A plain TCP connection by which a test talks to a program of ours with bytes made by hand.
// Nothing here sleeps; every wait is for an event, with a generous limit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace brennik::system_tests {

/// A connection to a port of this machine, made at once. Waits end after ten seconds.
class PlainSocket {
  public:
    explicit PlainSocket(uint16_t iPort);
    ~PlainSocket();
    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;

    bool bConnected() const { return fd_ >= 0; }
    void Send(std::string_view strBytes);

    /// Exactly so many bytes; fewer when the connection or the limit ends first.
    std::string Receive(size_t nCount);

    /// What follows until the other end closes, then "(closed)", or "(reset)", or "(silent)".
    std::string ReceiveToEnd();

    void Close();

  private:
    int fd_ = -1;
};

} // namespace brennik::system_tests
