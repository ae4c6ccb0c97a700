#include "platform/LinuxSockets.h"

#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace brennik {
namespace {

using namespace std::string_literals;
using namespace system_tests;

constexpr uint32_t kLoopback = 0x0100007F; // 127.0.0.1 as its four bytes stand in memory
constexpr int32_t kLongTime = 60000;

void AwaitEvent(int nSocket, short nEvents) {
    pollfd watched{nSocket, nEvents, 0};
    while (::poll(&watched, 1, kLongTime) < 0 && errno == EINTR) {
    }
    ASSERT_NE(watched.revents, 0) << "nothing came";
}

/// A far end on the loopback, spoken to with plain system calls.
class Listener {
  public:
    explicit Listener(int nBacklog = 5)
        : nSocket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = kLoopback;
        socklen_t nLength = sizeof address;
        if (::bind(nSocket_, reinterpret_cast<sockaddr*>(&address), nLength) != 0 ||
            ::listen(nSocket_, nBacklog) != 0 ||
            ::getsockname(nSocket_, reinterpret_cast<sockaddr*>(&address), &nLength) != 0) {
            ::abort();
        }
        iPort_ = address.sin_port;
    }
    ~Listener() { Stop(); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// In network byte order.
    uint16_t iPort() const { return iPort_; }

    int Accept() {
        AwaitEvent(nSocket_, POLLIN);
        return ::accept4(nSocket_, nullptr, nullptr, SOCK_CLOEXEC);
    }

    void Stop() {
        if (nSocket_ >= 0) {
            ::close(std::exchange(nSocket_, -1));
        }
    }

  private:
    int nSocket_;
    uint16_t iPort_ = 0;
};

class LinuxSocketsTest : public testing::Test {
  protected:
    void TearDown() override {
        if (lSocket_ > 0) {
            static_cast<void>(sockets_.CloseSocket(lSocket_)); // some tests have closed it
        }
        if (nPeer_ >= 0) {
            ::close(nPeer_);
        }
    }

    void Connect() {
        lSocket_ = sockets_.Socket();
        ASSERT_GT(lSocket_, 0);
        ASSERT_EQ(sockets_.Connect(lSocket_, kLoopback, listener_.iPort()), 0);
        nPeer_ = listener_.Accept();
        ASSERT_GE(nPeer_, 0);
    }

    void PeerSends(const std::string& strData) {
        ASSERT_EQ(::send(nPeer_, strData.data(), strData.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(strData.size()));
    }

    void PeerCloses() { ::close(std::exchange(nPeer_, -1)); }

    void PeerResets() {
        const linger atOnce{1, 0};
        ::setsockopt(nPeer_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        PeerCloses();
    }

    int32_t Waiting() {
        int32_t lBytes = -7;
        EXPECT_EQ(sockets_.BytesWaiting(lSocket_, lBytes), 0);
        return lBytes;
    }

    /// Milliseconds that a wait of so many takes.
    long long WaitLasts(int32_t lMilliseconds) {
        const long long lBegin = MonotonicNanoseconds();
        sockets_.WaitReadable(lSocket_, lMilliseconds);
        return (MonotonicNanoseconds() - lBegin) / 1000000;
    }

    /// Makes the last error of this thread one that no test expects.
    void SpoilLastError() {
        int32_t lBytes = 0;
        ASSERT_EQ(sockets_.BytesWaiting(-1, lBytes), -1);
        ASSERT_EQ(sockets_.LastError(), EBADF);
    }

    LinuxSockets sockets_;
    Listener listener_;
    int32_t lSocket_ = -1;
    int nPeer_ = -1;
};

TEST_F(LinuxSocketsTest, StartsAlways) {
    EXPECT_EQ(sockets_.Startup(0x0101), 0);
    sockets_.Cleanup();
}

TEST_F(LinuxSocketsTest, EverySocketSendsWithoutDelayAndIsClosedOnExec) {
    Connect();
    int nNoDelay = 0;
    socklen_t nLength = sizeof nNoDelay;
    ASSERT_EQ(::getsockopt(lSocket_, IPPROTO_TCP, TCP_NODELAY, &nNoDelay, &nLength), 0);
    EXPECT_NE(nNoDelay, 0);
    EXPECT_EQ(::fcntl(lSocket_, F_GETFD), FD_CLOEXEC);
}

TEST_F(LinuxSocketsTest, CarriesBytesBothWays) {
    Connect();
    EXPECT_EQ(sockets_.Send(lSocket_, "\0frame\xFF"s), 7);
    char buffer[16];
    EXPECT_EQ(std::string(buffer, static_cast<size_t>(::recv(nPeer_, buffer, sizeof buffer, 0))),
              "\0frame\xFF"s);
    EXPECT_EQ(Waiting(), 0);
    PeerSends("\x06\0\x01"s);
    AwaitEvent(lSocket_, POLLIN);
    EXPECT_EQ(Waiting(), 3);
    EXPECT_EQ(sockets_.Receive(lSocket_, buffer, 1), 1);
    EXPECT_EQ(buffer[0], '\x06');
    EXPECT_EQ(Waiting(), 2);
    EXPECT_EQ(sockets_.Receive(lSocket_, buffer, 16), 2);
    EXPECT_EQ(std::string(buffer, 2), "\0\x01"s);
}

TEST_F(LinuxSocketsTest, ARefusedConnectionKeepsItsNumberOverTheClose) {
    lSocket_ = sockets_.Socket();
    const uint16_t iPort = listener_.iPort();
    listener_.Stop();
    EXPECT_EQ(sockets_.Connect(lSocket_, kLoopback, iPort), -1);
    EXPECT_EQ(sockets_.LastError(), 10061);
    sockets_.Shutdown(lSocket_);
    EXPECT_EQ(sockets_.CloseSocket(lSocket_), 0);
    sockets_.Shutdown(lSocket_);
    EXPECT_EQ(sockets_.CloseSocket(lSocket_), -1);
    EXPECT_EQ(sockets_.CloseSocket(-1), -1);
    EXPECT_EQ(sockets_.LastError(), 10061);
    lSocket_ = -1;
}

TEST_F(LinuxSocketsTest, ANonBlockingConnectionIsUnderWayAndThenMade) {
    lSocket_ = sockets_.Socket();
    ASSERT_EQ(sockets_.SetNonBlocking(lSocket_), 0);
    ASSERT_EQ(sockets_.Connect(lSocket_, kLoopback, listener_.iPort()), -1);
    EXPECT_EQ(sockets_.LastError(), 10035);
    EXPECT_EQ(sockets_.SelectWritable(lSocket_, 60), 1);
    EXPECT_EQ(sockets_.LastError(), 10035) << "no success clears it";
    nPeer_ = listener_.Accept();
    EXPECT_EQ(sockets_.Send(lSocket_, "x"), 1);
    char byte = 0;
    EXPECT_EQ(sockets_.Receive(lSocket_, &byte, 1), -1) << "it never blocks from now on";
    EXPECT_EQ(sockets_.LastError(), 10035);
}

TEST_F(LinuxSocketsTest, ANonBlockingConnectionThatIsRefusedIsNotMade) {
    lSocket_ = sockets_.Socket();
    const uint16_t iPort = listener_.iPort();
    listener_.Stop();
    ASSERT_EQ(sockets_.SetNonBlocking(lSocket_), 0);
    ASSERT_EQ(sockets_.Connect(lSocket_, kLoopback, iPort), -1);
    EXPECT_EQ(sockets_.SelectWritable(lSocket_, 60), -1);
    EXPECT_EQ(sockets_.LastError(), 10061);
    sockets_.Shutdown(lSocket_);
    EXPECT_EQ(sockets_.CloseSocket(lSocket_), 0);
    EXPECT_EQ(sockets_.LastError(), 10061);
    lSocket_ = -1;
}

TEST_F(LinuxSocketsTest, AnAddressThatIsNoneIsNeverConnectedTo) {
    // The address that stands for no address; nothing is ever sent there.
    lSocket_ = sockets_.Socket();
    ASSERT_EQ(sockets_.SetNonBlocking(lSocket_), 0);
    ASSERT_EQ(sockets_.Connect(lSocket_, sockets_.InetAddr("999.1.1.1"), listener_.iPort()), -1);
    EXPECT_EQ(sockets_.LastError(), 10051);
    EXPECT_EQ(sockets_.SelectWritable(lSocket_, 60), -1);
    EXPECT_EQ(sockets_.LastError(), 10051);
}

TEST_F(LinuxSocketsTest, ASocketThatWasNeverConnectedIsNotMade) {
    std::thread([&] {
        lSocket_ = sockets_.Socket(); // in a thread where no call has failed yet
        EXPECT_EQ(sockets_.SelectWritable(lSocket_, 60), -1);
        EXPECT_NE(sockets_.LastError(), 0);
    }).join();
}

TEST_F(LinuxSocketsTest, ANetworkThatCannotBeReachedHasItsNumber) {
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  // A world of its own with no network in it.
                  if (::unshare(::geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) !=
                      0) {
                      return "no world of its own";
                  }
                  const int32_t lSocket = sockets_.Socket();
                  const int32_t lMade = sockets_.Connect(lSocket, 0x0100000A, 1);
                  return std::to_string(lMade) + " " + std::to_string(sockets_.LastError());
              }),
              "-1 10051");
}

/// Fills the queue of a listener that takes nobody, so that the next connection hangs; the sockets
/// that wait in it.
std::vector<int32_t> FillQueue(LinuxSockets& sockets, const Listener& busy) {
    std::vector<int32_t> waiting;
    for (int32_t lMade = 1; lMade == 1 && waiting.size() < 20;) {
        waiting.push_back(sockets.Socket());
        static_cast<void>(sockets.SetNonBlocking(waiting.back()));
        static_cast<void>(sockets.Connect(waiting.back(), kLoopback, busy.iPort()));
        lMade = sockets.SelectWritable(waiting.back(), 1);
    }
    return waiting;
}

TEST_F(LinuxSocketsTest, AConnectionThatIsNotMadeInTimeGivesNone) {
    const Listener busy(0);
    const std::vector<int32_t> waiting = FillQueue(sockets_, busy);
    EXPECT_EQ(sockets_.SelectWritable(waiting.back(), 0), 0);
    EXPECT_EQ(sockets_.LastError(), 10035);
    for (const int32_t lSocket : waiting) {
        EXPECT_EQ(sockets_.CloseSocket(lSocket), 0);
    }
}

TEST_F(LinuxSocketsTest, AConnectionThatFailedAtOnceIsNeverMade) {
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  if (::unshare(::geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) !=
                      0) {
                      return "no world of its own";
                  }
                  const int32_t lSocket = sockets_.Socket();
                  static_cast<void>(sockets_.SetNonBlocking(lSocket));
                  const int32_t lUnderWay = sockets_.Connect(lSocket, 0x0100000A, 1);
                  const int32_t lMade = sockets_.SelectWritable(lSocket, 60);
                  return std::to_string(lUnderWay) + " " + std::to_string(lMade) + " " +
                         std::to_string(sockets_.LastError());
              }),
              "-1 -1 10051");
}

TEST_F(LinuxSocketsTest, AnInterruptedConnectionIsWaitedFor) {
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  Listener busy(0);
                  const std::vector<int32_t> waiting = FillQueue(sockets_, busy);
                  std::thread far([&] {
                      sigset_t alarms;
                      sigemptyset(&alarms);
                      sigaddset(&alarms, SIGALRM);
                      pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
                      Interruptions::Await(5);
                      for (const int32_t lSocket : waiting) {
                          static_cast<void>(sockets_.CloseSocket(lSocket)); // makes room
                      }
                      char byte = 0;
                      while (::recv(busy.Accept(), &byte, 1, 0) != 1) {
                      }
                  });
                  const Interruptions interruptions;
                  const int32_t lSocket = sockets_.Socket();
                  const int32_t lMade = sockets_.Connect(lSocket, kLoopback, busy.iPort());
                  const int nCount = Interruptions::Count();
                  if (lMade != 0) {
                      ::_exit(9); // the far end would wait for ever
                  }
                  static_cast<void>(sockets_.Send(lSocket, "x")); // lets the far end go
                  far.join();
                  return nCount > 5 ? "made, interrupted" : "made, undisturbed";
              }),
              "made, interrupted");
}

TEST_F(LinuxSocketsTest, AnOrderlyCloseShowsNothingWaitingAndNoError) {
    Connect();
    SpoilLastError();
    PeerCloses();
    AwaitEvent(lSocket_, POLLIN);
    EXPECT_EQ(Waiting(), 0);
    char byte = 0;
    EXPECT_EQ(sockets_.Receive(lSocket_, &byte, 1), 0);
    EXPECT_EQ(sockets_.LastError(), EBADF);
}

TEST_F(LinuxSocketsTest, AResetConnectionShowsNothingWaitingAndFailsTheRead) {
    Connect();
    SpoilLastError();
    PeerResets();
    AwaitEvent(lSocket_, POLLIN);
    EXPECT_EQ(Waiting(), 0);
    EXPECT_EQ(sockets_.LastError(), EBADF);
    char byte = 0;
    EXPECT_EQ(sockets_.Receive(lSocket_, &byte, 1), -1);
    EXPECT_EQ(sockets_.LastError(), 10054);
}

TEST_F(LinuxSocketsTest, ASendOnALostConnectionFailsWithoutASignal) {
    Connect();
    PeerResets();
    AwaitEvent(lSocket_, POLLIN);
    char byte = 0;
    EXPECT_EQ(sockets_.Receive(lSocket_, &byte, 1), -1);
    EXPECT_EQ(sockets_.Send(lSocket_, "x"), -1);
    EXPECT_EQ(sockets_.LastError(), 10053);
}

TEST_F(LinuxSocketsTest, ASendTakesWhatFits) {
    Connect();
    ASSERT_EQ(sockets_.SetNonBlocking(lSocket_), 0);
    const std::string strData(100000000, 'x');
    const int32_t lTaken = sockets_.Send(lSocket_, strData);
    EXPECT_GT(lTaken, 0);
    EXPECT_LT(lTaken, 100000000);
    while (sockets_.Send(lSocket_, strData) > 0) {
    }
    EXPECT_EQ(sockets_.LastError(), 10035);
    EXPECT_EQ(sockets_.Send(lSocket_, ""), 0);
}

TEST_F(LinuxSocketsTest, CallsOnNoSocketFail) {
    int32_t lBytes = 5;
    char byte = 0;
    for (const int32_t lNone : {-1, 1000000}) {
        EXPECT_EQ(sockets_.BytesWaiting(lNone, lBytes), -1);
        EXPECT_EQ(sockets_.Receive(lNone, &byte, 1), -1);
        EXPECT_EQ(sockets_.Send(lNone, "x"), -1);
        EXPECT_EQ(sockets_.Connect(lNone, kLoopback, 1), -1);
        EXPECT_EQ(sockets_.SetNonBlocking(lNone), -1);
        EXPECT_EQ(sockets_.LastError(), EBADF);
    }
    EXPECT_EQ(sockets_.SelectWritable(1000000, 0), -1);
    EXPECT_EQ(lBytes, 5);
    lSocket_ = sockets_.Socket();
    EXPECT_EQ(sockets_.Receive(lSocket_, &byte, -1), -1);
    EXPECT_EQ(sockets_.LastError(), EINVAL);
}

TEST_F(LinuxSocketsTest, EachThreadHasItsOwnLastError) {
    SpoilLastError();
    int32_t lOther = -1;
    std::thread([&] {
        const int32_t lBefore = sockets_.LastError();
        lSocket_ = sockets_.Socket();
        char byte = 0;
        static_cast<void>(sockets_.Receive(lSocket_, &byte, -1)); // fails with EINVAL
        lOther = lBefore * 1000 + sockets_.LastError();
    }).join();
    EXPECT_EQ(lOther, EINVAL);
    EXPECT_EQ(sockets_.LastError(), EBADF);
}

TEST_F(LinuxSocketsTest, AnInterruptedReceiveIsResumed) {
    EXPECT_EQ(ReportOfChild([&]() -> std::string {
                  Connect();
                  std::thread far([&] {
                      sigset_t alarms;
                      sigemptyset(&alarms);
                      sigaddset(&alarms, SIGALRM);
                      pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
                      Interruptions::Await(5);
                      PeerSends("x");
                  });
                  const Interruptions interruptions;
                  char byte = 0;
                  const int32_t lReceived = sockets_.Receive(lSocket_, &byte, 1);
                  far.join();
                  return std::to_string(lReceived) + byte;
              }),
              "1x");
}

TEST_F(LinuxSocketsTest, AnUrgentByteStaysInItsPlace) {
    Connect();
    PeerSends("ab");
    ASSERT_EQ(::send(nPeer_, "!", 1, MSG_OOB), 1);
    PeerSends("cd");
    const long long lLimit = MonotonicNanoseconds() + 60000000000;
    while (Waiting() < 5 && MonotonicNanoseconds() < lLimit) {
        AwaitEvent(lSocket_, POLLIN);
    }
    char buffer[8];
    ASSERT_EQ(sockets_.Receive(lSocket_, buffer, 5), 5);
    EXPECT_EQ(std::string(buffer, 5), "ab!cd");
    EXPECT_GE(WaitLasts(30), 30) << "nothing is left of it";
}

// The pause of a read that found nothing.

TEST_F(LinuxSocketsTest, AWaitEndsWithTheBytesThatAreThere) {
    Connect();
    PeerSends("x");
    AwaitEvent(lSocket_, POLLIN);
    EXPECT_LT(WaitLasts(kLongTime), kLongTime / 2);
    EXPECT_EQ(Waiting(), 1);
}

TEST_F(LinuxSocketsTest, AWaitEndsWhenBytesArrive) {
    Connect();
    std::thread far([&] { PeerSends("x"); });
    EXPECT_LT(WaitLasts(kLongTime), kLongTime / 2);
    far.join();
    EXPECT_EQ(Waiting(), 1);
}

TEST_F(LinuxSocketsTest, AWaitForNothingLastsItsTime) {
    Connect();
    EXPECT_GE(WaitLasts(30), 30);
}

TEST_F(LinuxSocketsTest, AWaitOfNoTimeEndsAtOnce) {
    Connect();
    PeerCloses();
    AwaitEvent(lSocket_, POLLIN);
    for (const int32_t lNone : {0, -1, -2147483647 - 1}) {
        EXPECT_LT(WaitLasts(lNone), kLongTime / 2);
    }
}

TEST_F(LinuxSocketsTest, AWaitOnAClosedPeerLastsItsTimeWithoutSpinning) {
    Connect();
    PeerCloses();
    AwaitEvent(lSocket_, POLLIN);
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
    EXPECT_GE(WaitLasts(200), 200);
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
    const long long lUsed =
        (after.tv_sec - before.tv_sec) * 1000000000LL + after.tv_nsec - before.tv_nsec;
    EXPECT_LT(lUsed, 100000000) << "half of the time at full load";
}

TEST_F(LinuxSocketsTest, AWaitOnAResetPeerLastsItsTime) {
    Connect();
    PeerResets();
    AwaitEvent(lSocket_, POLLIN);
    EXPECT_GE(WaitLasts(30), 30);
    char byte = 0;
    EXPECT_EQ(sockets_.Receive(lSocket_, &byte, 1), -1);
    EXPECT_GE(WaitLasts(30), 30);
}

TEST_F(LinuxSocketsTest, AWaitOnNoConnectionLastsItsTime) {
    EXPECT_GE(WaitLasts(30), 30) << "no socket";
    lSocket_ = sockets_.Socket();
    EXPECT_GE(WaitLasts(30), 30) << "never connected";
}

TEST_F(LinuxSocketsTest, BytesThatAClosedPeerLeftEndAWait) {
    Connect();
    PeerSends("last words");
    PeerCloses();
    AwaitEvent(lSocket_, POLLRDHUP);
    EXPECT_LT(WaitLasts(kLongTime), kLongTime / 2);
    EXPECT_EQ(Waiting(), 10);
}

TEST_F(LinuxSocketsTest, InterruptedWaitsLastTheRestOfTheirTime) {
    Connect();
    EXPECT_EQ(ReportOfChild([&] {
                  const Interruptions interruptions;
                  const bool bIdle = WaitLasts(100) >= 100;
                  PeerCloses();
                  ::shutdown(lSocket_, SHUT_RD);
                  const bool bClosed = WaitLasts(100) >= 100;
                  const int nCount = Interruptions::Count();
                  return std::string(bIdle ? "whole " : "short ") +
                         (bClosed ? "whole " : "short ") + (nCount > 10 ? "interrupted" : "quiet");
              }),
              "whole whole interrupted");
}

TEST_F(LinuxSocketsTest, AnUrgentByteStandsAmongTheOthersAndNoTurnIsLostOnIt) {
    Connect();
    ASSERT_EQ(sockets_.SetNonBlocking(lSocket_), 0);
    for (const std::string& strBefore : {""s, "ab"s}) {
        if (!strBefore.empty()) {
            PeerSends(strBefore);
        }
        ASSERT_EQ(::send(nPeer_, "!", 1, MSG_OOB | MSG_NOSIGNAL), 1);
        PeerSends("cde");
        std::string strRead;
        int nTurns = 0;
        for (; strRead.size() < strBefore.size() + 4 && nTurns < 1000; ++nTurns) {
            const int32_t lBytes = Waiting();
            if (lBytes == 0) {
                sockets_.WaitReadable(lSocket_, 1000);
                continue;
            }
            std::string strTaken(static_cast<size_t>(lBytes), '\0');
            ASSERT_EQ(sockets_.Receive(lSocket_, strTaken.data(), lBytes), lBytes);
            strRead += strTaken;
        }
        EXPECT_EQ(strRead, strBefore + "!cde");
        EXPECT_LE(nTurns, 8);
    }
    EXPECT_GE(WaitLasts(30), 30) << "nothing is left";
}

TEST_F(LinuxSocketsTest, BeingReadyWithoutAByteToCountIsNoEndOfAWait) {
    Connect();
    // An urgent byte apart from the stream: it stands in front of the others and hides them.
    const int nOff = 0;
    ASSERT_EQ(::setsockopt(lSocket_, SOL_SOCKET, SO_OOBINLINE, &nOff, sizeof nOff), 0);
    ASSERT_EQ(::send(nPeer_, "!", 1, MSG_OOB | MSG_NOSIGNAL), 1);
    PeerSends("cde");
    AwaitEvent(lSocket_, POLLIN);
    ASSERT_EQ(Waiting(), 0);
    EXPECT_GE(WaitLasts(30), 30);
}

// Names and numbers.

TEST_F(LinuxSocketsTest, ReadsDottedAddresses) {
    EXPECT_EQ(sockets_.InetAddr("127.0.0.1"), kLoopback);
    EXPECT_EQ(sockets_.InetAddr("1.2.3.4"), 0x04030201U);
    EXPECT_EQ(sockets_.InetAddr("999.1.1.1"), 0xFFFFFFFFU);
    EXPECT_EQ(sockets_.InetAddr("host"), 0xFFFFFFFFU);
    EXPECT_EQ(sockets_.InetAddr(""), 0xFFFFFFFFU);
    EXPECT_EQ(sockets_.InetAddr("1.2.3.4\0"s), 0xFFFFFFFFU);
}

TEST_F(LinuxSocketsTest, TurnsPortsIntoNetworkOrder) {
    const uint16_t iPort = sockets_.HostToNetworkPort(60000);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&iPort), 2), "\xEA\x60");
    EXPECT_EQ(sockets_.HostToNetworkPort(0), 0);
}

TEST_F(LinuxSocketsTest, ResolvesNames) {
    EXPECT_EQ(sockets_.GetHostByName("127.0.0.1"), std::vector<std::string>{"\x7F\0\0\x01"s});
    const auto addresses = sockets_.GetHostByName("localhost");
    ASSERT_FALSE(addresses.empty());
    EXPECT_EQ(addresses[0], "\x7F\0\0\x01"s);
}

TEST_F(LinuxSocketsTest, ANameThatDoesNotResolveFails) {
    for (const std::string& strName : {""s, "localhost\0"s, std::string(300, 'x'), "a..b"s}) {
        SpoilLastError();
        EXPECT_TRUE(sockets_.GetHostByName(strName).empty());
        EXPECT_EQ(sockets_.LastError(), 11001);
    }
}

} // namespace
} // namespace brennik
