#include "tests/system/PlainSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace brennik::system_tests {

namespace {

constexpr int kLimitMs = 10'000;

void CloseFd(int& fd) {
    if (fd >= 0) {
        ::close(std::exchange(fd, -1));
    }
}

bool WaitReadable(int fd) {
    pollfd polled{fd, POLLIN, 0};
    return ::poll(&polled, 1, kLimitMs) == 1;
}

} // namespace

PlainSocket::PlainSocket(uint16_t iPort) : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(iPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        CloseFd(fd_);
    }
}

PlainSocket::~PlainSocket() {
    CloseFd(fd_);
}

void PlainSocket::Send(std::string_view strBytes) {
    // What was not taken shows in the answer that never comes.
    static_cast<void>(::send(fd_, strBytes.data(), strBytes.size(), MSG_NOSIGNAL));
}

std::string PlainSocket::Receive(size_t nCount) {
    std::string strBytes(nCount, '\0');
    size_t nHave = 0;
    while (nHave < nCount && WaitReadable(fd_)) {
        const ssize_t nRead = ::recv(fd_, strBytes.data() + nHave, nCount - nHave, 0);
        if (nRead <= 0) {
            break;
        }
        nHave += static_cast<size_t>(nRead);
    }
    strBytes.resize(nHave);
    return strBytes;
}

std::string PlainSocket::ReceiveToEnd() {
    std::string strBytes;
    char buffer[4096];
    while (WaitReadable(fd_)) {
        const ssize_t nRead = ::recv(fd_, buffer, sizeof buffer, 0);
        if (nRead <= 0) {
            return strBytes + (nRead == 0 ? "(closed)" : "(reset)");
        }
        strBytes.append(buffer, static_cast<size_t>(nRead));
    }
    return strBytes + "(silent)";
}

void PlainSocket::Close() {
    CloseFd(fd_);
}

} // namespace brennik::system_tests
