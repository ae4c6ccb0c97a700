#include "bench/PingPong.h"

#include "bench/Processes.h"
#include "bench/ReferenceChecks.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace brennik::bench {

namespace {

/// "VFI" in a plain frame: the sender looks at nothing but its end.
constexpr std::string_view kRequest("\x02VFI\x03\x00\x00", 7);

class Session {
  public:
    Session(Receiver receiver, uint16_t iPort, const Job& job, const std::string& strFolder)
        : bChecked_(receiver == Receiver::Checked),
          job_(job),
          strFolder_(strFolder),
          nSocket_(ConnectTo(iPort)),
          frame_(job.nBlock + kWriteFrameOverhead + kOpenFrameSize) {}
    ~Session() { ::close(nSocket_); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    bool Run() {
        // ENQ, the request, and its ACK.
        if (!Take(1) || !Say(kRequest) || !Take(1))
            return false;
        for (int64_t lFile = 0; lFile < job_.lFiles; ++lFile) {
            if (!TakeFile(FileNameOf(lFile)))
                return false;
        }
        return TakeFrame(kShortFrameSize) && Say({&kAck, 1});
    }

  private:
    bool TakeFile(const std::string& strName) {
        if (!TakeFrame(kOpenFrameSize) || !Say({&kAck, 1}))
            return false;
        int nFile = -1;
        if (bChecked_) {
            const std::string strPath = strFolder_ + "/" + strName;
            nFile = ::open(strPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
            if (nFile < 0)
                return false;
        }
        bool bGood = true;
        for (int64_t lBlock = 0; bGood && lBlock < job_.lBlocksOfFile; ++lBlock)
            bGood = TakeBlock(nFile);
        bGood = bGood && TakeFrame(kShortFrameSize) && Say({&kAck, 1});
        if (nFile >= 0)
            bGood = ::close(nFile) == 0 && bGood;
        return bGood;
    }

    // As in the program, the ACK goes out before anything is done with a frame.
    bool TakeBlock(int nFile) {
        if (!TakeFrame(job_.nBlock + kWriteFrameOverhead) || !Say({&kAck, 1}))
            return false;
        return !bChecked_ || ::write(nFile, frame_.data() + kWriteDataAt, job_.nBlock) ==
                                 static_cast<ssize_t>(job_.nBlock);
    }

    bool TakeFrame(size_t nSize) {
        if (!Take(nSize))
            return false;
        if (!bChecked_)
            return true;
        const uint16_t lCrc = SlicedCrc16<16>({frame_.data() + 1, nSize - 3});
        return frame_[nSize - 2] == static_cast<char>(lCrc >> 8) &&
               frame_[nSize - 1] == static_cast<char>(lCrc & 0xFF);
    }

    bool Take(size_t nSize) {
        return ::recv(nSocket_, frame_.data(), nSize, MSG_WAITALL) == static_cast<ssize_t>(nSize);
    }

    bool Say(std::string_view strBytes) {
        return ::send(nSocket_, strBytes.data(), strBytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(strBytes.size());
    }

    bool bChecked_;
    const Job& job_;
    const std::string& strFolder_;
    int nSocket_;
    std::vector<char> frame_;
};

} // namespace

int ReceiveSession(Receiver receiver, uint16_t iPort, const Job& job,
                   const std::string& strFolder) {
    return Session(receiver, iPort, job, strFolder).Run() ? 0 : 1;
}

int ConnectTo(uint16_t iPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(iPort);
    const int nSocket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int nOn = 1;
    ::setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
    if (::connect(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        Fail(std::string("connect: ") + std::strerror(errno));
    return nSocket;
}

} // namespace brennik::bench
