// A plain connection by which a test talks to a program of ours with bytes made by hand: what a
// TCP connection and a serial line have in common.
// Nothing here sleeps; every wait is for an event, with a generous limit.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brennik::system_tests {

/// Waits end after ten seconds.
class PlainPeer {
  public:
    virtual ~PlainPeer();
    PlainPeer(const PlainPeer&) = delete;
    PlainPeer& operator=(const PlainPeer&) = delete;

    bool bConnected() const { return fd_ >= 0; }

    /// What was not taken shows in the answer that never comes.
    virtual void Send(std::string_view strBytes) = 0;

    /// Exactly so many bytes; fewer when the connection or the limit ends first.
    std::string Receive(size_t nCount);

    /// The same, but with waits of at most so many milliseconds.
    std::string ReceiveWithin(int nMilliseconds, size_t nCount);

    /// What follows until the connection ends, then its end in parentheses, or "(silent)".
    std::string ReceiveToEnd();

    void Close();

  protected:
    explicit PlainPeer(int fd) : fd_(fd) {}

    int Descriptor() const { return fd_; }

  private:
    /// The name of an end, without the parentheses.
    virtual std::string_view EndName(bool bInOrder) const = 0;

    int fd_;
};

} // namespace brennik::system_tests
