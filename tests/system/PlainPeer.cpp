#include "tests/system/PlainPeer.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace brennik::system_tests {

namespace {

constexpr int kLimitMs = 10'000;

/// The number of bytes read, once there are some; 0 or less at the end of the connection, and after
/// the limit with errno ETIMEDOUT.
ssize_t ReadSome(int fd, char* buffer, size_t nCount, int nLimitMs = kLimitMs) {
    for (;;) {
        pollfd polled{fd, POLLIN, 0};
        if (::poll(&polled, 1, nLimitMs) != 1) {
            errno = ETIMEDOUT;
            return -1;
        }
        // What waited may have been thrown away since by the other end of a line.
        const ssize_t nRead = ::read(fd, buffer, nCount);
        if (nRead >= 0 || errno != EAGAIN) {
            return nRead;
        }
    }
}

} // namespace

PlainPeer::~PlainPeer() {
    Close();
}

std::string PlainPeer::Receive(size_t nCount) {
    return ReceiveWithin(kLimitMs, nCount);
}

std::string PlainPeer::ReceiveWithin(int nMilliseconds, size_t nCount) {
    std::string strBytes(nCount, '\0');
    size_t nHave = 0;
    ssize_t nRead = 1;
    while (nHave < nCount && nRead > 0) {
        nRead = ReadSome(fd_, strBytes.data() + nHave, nCount - nHave, nMilliseconds);
        nHave += nRead > 0 ? static_cast<size_t>(nRead) : 0;
    }
    strBytes.resize(nHave);
    return strBytes;
}

std::string PlainPeer::ReceiveToEnd() {
    std::string strBytes;
    char buffer[4096];
    ssize_t nRead = 0;
    while ((nRead = ReadSome(fd_, buffer, sizeof buffer)) > 0) {
        strBytes.append(buffer, static_cast<size_t>(nRead));
    }
    if (nRead < 0 && errno == ETIMEDOUT) {
        return strBytes + "(silent)";
    }
    return strBytes.append("(").append(EndName(nRead == 0)).append(")");
}

void PlainPeer::Close() {
    if (fd_ >= 0) {
        ::close(std::exchange(fd_, -1));
    }
}

} // namespace brennik::system_tests
