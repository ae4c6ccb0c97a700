#include "platform/LinuxSockets.h"

#include "platform/Descriptor.h"
#include "platform/LinuxErrors.h"
#include "platform/Waits.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace brennik {

namespace {

constexpr int32_t kFailed = -1;
constexpr int32_t kHostNotFound = 11001; // no system call's number stands for it

thread_local int32_t lLastError = socketerror::kNone;

int32_t Fail(int nErrno) {
    lLastError = SocketErrorOf(nErrno);
    return kFailed;
}

/// The error that a connection has met, as errno; 0 when it stands.
int ConnectionError(int nSocket) {
    int nError = 0;
    socklen_t nLength = sizeof nError;
    return ::getsockopt(nSocket, SOL_SOCKET, SO_ERROR, &nError, &nLength) == 0 ? nError : errno;
}

/// Bytes that a read would find at once; 0 also when nobody can tell.
int BytesThere(int nSocket) {
    int nBytes = 0;
    return ::ioctl(nSocket, FIONREAD, &nBytes) == 0 ? nBytes : 0;
}

/// A blocking connect that a signal interrupts goes on by itself; its outcome is waited for.
int32_t FinishConnect(int nSocket) {
    pollfd watched{nSocket, POLLOUT, 0};
    if (PollUntil(watched, std::nullopt) < 0) {
        return Fail(errno);
    }
    const int nError = ConnectionError(nSocket);
    return nError == 0 ? 0 : Fail(nError);
}

} // namespace

int32_t LinuxSockets::Startup(int32_t) {
    return 0;
}

void LinuxSockets::Cleanup() {
}

int32_t LinuxSockets::LastError() {
    return lLastError;
}

int32_t LinuxSockets::Socket() {
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP));
    const int nOn = 1;
    // An urgent byte stays in its place among the others: apart from them it would make the socket
    // readable for ever without a byte that the count of waiting ones tells of.
    if (!socket.IsOpen() ||
        ::setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn) != 0 ||
        ::setsockopt(socket.Get(), SOL_SOCKET, SO_OOBINLINE, &nOn, sizeof nOn) != 0) {
        return Fail(errno);
    }
    return socket.Release();
}

int32_t LinuxSockets::Connect(int32_t lSocket, uint32_t lAddress, uint16_t iPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = lAddress;
    address.sin_port = iPort;
    if (::connect(lSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return 0;
    }
    return errno == EINTR ? FinishConnect(lSocket) : Fail(errno);
}

int32_t LinuxSockets::SetNonBlocking(int32_t lSocket) {
    int nOn = 1;
    return ::ioctl(lSocket, FIONBIO, &nOn) == 0 ? 0 : Fail(errno);
}

int32_t LinuxSockets::BytesWaiting(int32_t lSocket, int32_t& lBytes) {
    int nBytes = 0;
    if (::ioctl(lSocket, FIONREAD, &nBytes) != 0) {
        return Fail(errno);
    }
    lBytes = nBytes;
    return 0;
}

int32_t LinuxSockets::SelectWritable(int32_t lSocket, int32_t lSeconds) {
    pollfd watched{lSocket, POLLOUT, 0};
    const int nReady = PollUntil(watched, MonotonicNow() + lSeconds * kNanosecondsOfSecond);
    if (nReady < 0) {
        return Fail(errno);
    }
    if (nReady == 0) {
        return 0;
    }
    // A refused connection is ready for writing too: only its error tells.
    const int nError = ConnectionError(lSocket);
    if (nError != 0) {
        return Fail(nError);
    }
    if ((watched.revents & POLLHUP) == 0) {
        return 1;
    }
    // No connection is under way and none stands. The connect that failed at once has taken its
    // error with it and left it as the last one.
    return lLastError != socketerror::kNone ? kFailed : Fail(ENOTCONN);
}

int32_t LinuxSockets::Receive(int32_t lSocket, char* buffer, int32_t lLength) {
    if (lLength < 0) {
        return Fail(EINVAL);
    }
    const auto take = [&](int32_t lFrom) {
        return static_cast<int32_t>(Resumed([&] {
            return ::recv(lSocket, buffer + lFrom, static_cast<size_t>(lLength - lFrom), 0);
        }));
    };
    int32_t lReceived = take(0);
    if (lReceived < 0) {
        return Fail(errno);
    }
    // A receive ends in front of an urgent byte, though what follows is counted as waiting.
    while (lReceived > 0 && lReceived < lLength && BytesThere(lSocket) > 0) {
        const int32_t lMore = take(lReceived);
        if (lMore <= 0) {
            break;
        }
        lReceived += lMore;
    }
    return lReceived;
}

int32_t LinuxSockets::Send(int32_t lSocket, std::string_view strData) {
    const ssize_t nSent =
        Resumed([&] { return ::send(lSocket, strData.data(), strData.size(), MSG_NOSIGNAL); });
    return nSent < 0 ? Fail(errno) : static_cast<int32_t>(nSent);
}

void LinuxSockets::Shutdown(int32_t lSocket) {
    static_cast<void>(::shutdown(lSocket, SHUT_RDWR)); // a connection that is gone already
}

int32_t LinuxSockets::CloseSocket(int32_t lSocket) {
    return lSocket >= 0 && Descriptor(lSocket).Close() ? 0 : kFailed;
}

std::vector<std::string> LinuxSockets::GetHostByName(const std::string& strName) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    std::vector<std::string> addresses;
    if (strName.empty() || strName.find('\0') != std::string::npos ||
        ::getaddrinfo(strName.c_str(), nullptr, &hints, &found) != 0) {
        lLastError = kHostNotFound;
        return addresses;
    }
    for (const addrinfo* at = found; at != nullptr; at = at->ai_next) {
        const auto* address = reinterpret_cast<const sockaddr_in*>(at->ai_addr);
        addresses.emplace_back(reinterpret_cast<const char*>(&address->sin_addr.s_addr),
                               sizeof address->sin_addr.s_addr);
    }
    ::freeaddrinfo(found);
    return addresses;
}

uint32_t LinuxSockets::InetAddr(const std::string& strAddress) {
    return strAddress.find('\0') != std::string::npos ? INADDR_NONE
                                                      : ::inet_addr(strAddress.c_str());
}

uint16_t LinuxSockets::HostToNetworkPort(uint16_t iPort) {
    return htons(iPort);
}

void LinuxSockets::WaitReadable(int32_t lSocket, int32_t lMilliseconds) {
    if (lMilliseconds <= 0) {
        return;
    }
    const int64_t lDeadline = MonotonicNow() + lMilliseconds * kNanosecondsOfMillisecond;
    pollfd watched{lSocket, POLLIN | POLLRDHUP, 0};
    const int nReady = PollUntil(watched, lDeadline);
    // Being ready says little: a closed or failed connection is that for ever. Only bytes that
    // wait end the pause.
    if (nReady != 0 && BytesThere(lSocket) == 0) {
        SleepUntil(lDeadline);
    }
}

} // namespace brennik
