#include "bench/FrameSender.h"

#include "bench/Processes.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace brennik::bench {

namespace {

constexpr char kEtx = 0x03;
constexpr size_t kCheckSize = 2;

bool SendAll(int nSocket, std::string_view strBytes) {
    while (!strBytes.empty()) {
        const ssize_t nSent = ::send(nSocket, strBytes.data(), strBytes.size(), MSG_NOSIGNAL);
        if (nSent <= 0)
            return false;
        strBytes.remove_prefix(static_cast<size_t>(nSent));
    }
    return true;
}

bool Acknowledged(int nSocket, std::string_view strFrame) {
    char cAnswer = 0;
    return SendAll(nSocket, strFrame) && ::recv(nSocket, &cAnswer, 1, 0) == 1 && cAnswer == kAck;
}

/// The request is the one frame that the other end builds: it ends with ETX and a check.
bool TakeRequest(int nSocket) {
    std::string strRequest;
    char buffer[4096];
    for (;;) {
        const size_t nEtx = strRequest.find(kEtx);
        if (nEtx != std::string::npos && strRequest.size() == nEtx + 1 + kCheckSize)
            return SendAll(nSocket, {&kAck, 1});
        const ssize_t nRead = ::recv(nSocket, buffer, sizeof buffer, 0);
        if (nRead <= 0)
            return false;
        strRequest.append(buffer, static_cast<size_t>(nRead));
    }
}

bool SendFiles(int nSocket, const Job& job, SenderTimes& times) {
    const auto blocks = WriteFrames(job.nBlock);
    const std::string strClose = CloseFrame();
    std::string strOpen = OpenFrame(FileNameOf(0), job.FileBytes());
    if (!SendAll(nSocket, {&kEnq, 1}) || !TakeRequest(nSocket))
        return false;
    // With one file the clock starts behind its open frame, with many it covers them all.
    times.lBegun = Now();
    for (int64_t lFile = 0; lFile < job.lFiles; ++lFile) {
        if (lFile > 0)
            strOpen = OpenFrame(FileNameOf(lFile), job.FileBytes());
        if (!Acknowledged(nSocket, strOpen))
            return false;
        if (job.lFiles == 1)
            times.lBegun = Now();
        for (int64_t lBlock = 0; lBlock < job.lBlocksOfFile; ++lBlock) {
            const auto nBlock = static_cast<size_t>(lBlock) % blocks.size();
            if (!Acknowledged(nSocket, blocks[nBlock]))
                return false;
        }
        if (!Acknowledged(nSocket, strClose))
            return false;
    }
    if (!Acknowledged(nSocket, SuccessFrame()))
        return false;
    times.lDone = Now();
    return true;
}

} // namespace

Listener::Listener() : nDescriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t nSize = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(nDescriptor_, generic, nSize) != 0 || ::listen(nDescriptor_, 16) != 0 ||
        ::getsockname(nDescriptor_, generic, &nSize) != 0)
        Fail(std::string("listening socket: ") + std::strerror(errno));
    iPort_ = ntohs(address.sin_port);
}

Listener::~Listener() {
    ::close(nDescriptor_);
}

int ServeOneSession(const Listener& listener, const Job& job, SenderTimes& times) {
    const int nSocket = ::accept(listener.Descriptor(), nullptr, nullptr);
    times.lAccepted = Now();
    const int nOn = 1;
    ::setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
    const bool bGood = nSocket >= 0 && SendFiles(nSocket, job, times);
    ::close(nSocket);
    return bGood ? 0 : 1;
}

} // namespace brennik::bench
