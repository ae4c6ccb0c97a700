#include "sim/host/ConnectionServer.h"

#include "sim/host/OptionReader.h"
#include "sim/host/Waiting.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace brennik::sim {

namespace {

constexpr size_t kReceiveBuffer = size_t{64} * 1024;

// After an orderly close the other end has this long to close too. Closing at once would turn
// bytes that it still sends into a reset, which may overtake what we sent last.
constexpr Microseconds kLinger = 2'000'000;

// How long an orderly close waits for the other end to take what is still unsent.
constexpr Microseconds kUnsentLimit = 30'000'000;

// How long no connection is taken when there is no descriptor left for one.
constexpr Microseconds kAcceptPause = 100'000;

// A lone connection is read without a poll before each read, which costs an eighth of the time of a
// small frame. All the rest, new connections and signals, is looked at this often meanwhile.
constexpr Microseconds kLookAround = 5'000;

std::string AddressText(const sockaddr_in& address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
    return std::string(text.data()) + ":" + std::to_string(ntohs(address.sin_port));
}

sockaddr_in ParseAddress(const std::string& strText) {
    const size_t nColon = strText.rfind(':');
    unsigned port = 0;
    const char* end = strText.data() + strText.size();
    const char* digits = nColon == std::string::npos ? end : strText.data() + nColon + 1;
    const auto parsed = std::from_chars(digits, end, port);
    if (nColon == 0 || parsed.ec != std::errc() || parsed.ptr != end || port > 65535) {
        throw UsageProblem{"\"" + strText + "\" is no address and port, such as 127.0.0.1:0"};
    }
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const std::string strHost = strText.substr(0, nColon);
    if (const int failure = ::getaddrinfo(strHost.c_str(), nullptr, &hints, &found); failure != 0) {
        throw UsageProblem{strHost + ": " + ::gai_strerror(failure)};
    }
    sockaddr_in address{};
    std::memcpy(&address, found->ai_addr, sizeof address);
    ::freeaddrinfo(found);
    address.sin_port = htons(static_cast<uint16_t>(port));
    return address;
}

} // namespace

// One connection: the wire of its far end, and what is left to be sent.
class ConnectionServer::Connection : public Wire {
  public:
    Connection(int fd, std::unique_ptr<FarEnd> farEnd) : fd_(fd), farEnd_(std::move(farEnd)) {
        farEnd_->Connected(*this, Now());
    }
    ~Connection() override {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Send(std::string_view strBytes) override {
        if (state_ != State::Open) {
            return;
        }
        if (strUnsent_.empty()) {
            strBytes.remove_prefix(SendNow(strBytes));
        }
        strUnsent_.append(strBytes);
    }

    void Close() override {
        if (state_ == State::Open) {
            state_ = State::Closing;
            lingerUntil_ = Now() + kUnsentLimit;
            CloseWhenSent();
        }
    }

    void Reset() override {
        const linger abort{1, 0};
        ::setsockopt(fd_, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
        state_ = State::Over;
    }

    int Descriptor() const { return fd_; }
    FarEnd& End() { return *farEnd_; }
    bool bOver() const { return state_ == State::Over; }

    short PollEvents() const {
        return static_cast<short>(POLLIN | (strUnsent_.empty() ? 0 : POLLOUT));
    }

    std::optional<Microseconds> Deadline() const {
        return state_ == State::Open ? farEnd_->NextDeadline() : lingerUntil_;
    }

    void Ready(short events, std::vector<char>& buffer) {
        if ((events & POLLOUT) != 0) {
            strUnsent_.erase(0, SendNow(strUnsent_));
            CloseWhenSent();
        }
        if ((events & (POLLIN | POLLHUP | POLLERR)) != 0 && !bOver()) {
            Receive(buffer, MSG_DONTWAIT);
        }
    }

    /// True when nothing but arriving bytes can matter to it before the next look around.
    bool bOnlyWaitsForBytes(Microseconds now) const {
        const auto due = Deadline();
        return state_ == State::Open && strUnsent_.empty() &&
               (!due || *due > now + 4 * kLookAround);
    }

    /// Waits for bytes, as long as the time limit of the socket allows, and takes them.
    void ReceiveNext(std::vector<char>& buffer) { Receive(buffer, 0); }

    void Elapsed(Microseconds now) {
        if (state_ == State::Open) {
            farEnd_->Elapsed(*this, now);
        } else {
            state_ = State::Over;
        }
    }

  private:
    enum class State { Open, Closing, Over };

    size_t SendNow(std::string_view strBytes) {
        ssize_t nSent = 0;
        do {
            nSent = ::send(fd_, strBytes.data(), strBytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        } while (nSent < 0 && errno == EINTR);
        if (nSent >= 0) {
            return static_cast<size_t>(nSent);
        }
        // A broken connection shows at the next receive; what can't be sent any more is dropped.
        return errno == EAGAIN || errno == EWOULDBLOCK ? 0 : strBytes.size();
    }

    void CloseWhenSent() {
        if (state_ == State::Closing && strUnsent_.empty() && !bShutDown_) {
            bShutDown_ = true;
            ::shutdown(fd_, SHUT_WR);
            lingerUntil_ = Now() + kLinger;
        }
    }

    void Receive(std::vector<char>& buffer, int flags) {
        ssize_t nRead = 0;
        do {
            nRead = ::recv(fd_, buffer.data(), buffer.size(), flags);
        } while (nRead < 0 && errno == EINTR);
        if (nRead > 0) {
            if (state_ == State::Open) {
                farEnd_->Received(*this, Now(), {buffer.data(), static_cast<size_t>(nRead)});
            }
        } else if (nRead == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            if (state_ == State::Open) {
                farEnd_->Disconnected(Now());
            }
            state_ = State::Over;
        }
    }

    int fd_;
    std::unique_ptr<FarEnd> farEnd_;
    State state_ = State::Open;
    std::string strUnsent_;
    bool bShutDown_ = false;
    std::optional<Microseconds> lingerUntil_;
};

ConnectionServer::ConnectionServer(MakeFarEnd makeFarEnd, FarEndDone farEndDone)
    : makeFarEnd_(std::move(makeFarEnd)),
      farEndDone_(std::move(farEndDone)),
      buffer_(kReceiveBuffer) {
}

ConnectionServer::~ConnectionServer() {
    CloseListener();
}

bool ConnectionServer::Listen(const std::string& strAddressAndPort, std::string& strError) {
    const sockaddr_in address = ParseAddress(strAddressAndPort);
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (listener_ < 0 ||
        ::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener_, SOMAXCONN) != 0) {
        strError = "can't listen at " + strAddressAndPort + ": " + std::strerror(errno);
        CloseListener();
        return false;
    }
    return true;
}

std::string ConnectionServer::strListening() const {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    return AddressText(address);
}

bool ConnectionServer::Run(const StopSignals& signals, bool bOnce) {
    while (!signals.bAsked() && (listener_ >= 0 || !connections_.empty())) {
        if (PollAll(signals) > 0) {
            ServeReady();
            if (polled_.front().revents != 0) {
                AcceptAll(bOnce);
            }
        }
        ServeLoneConnection();
        ServeDeadlines(Now());
        RemoveOver();
    }
    for (Connection& connection : connections_) {
        connection.End().Disconnected(Now());
        farEndDone_(connection.End());
    }
    connections_.clear();
    CloseListener();
    return !signals.bAsked();
}

int ConnectionServer::PollAll(const StopSignals& signals) {
    polled_.clear();
    polled_.push_back({bAcceptPaused_ ? -1 : listener_, POLLIN, 0});
    std::optional<Microseconds> due;
    if (bAcceptPaused_) {
        due = Now() + kAcceptPause;
    }
    for (const Connection& connection : connections_) {
        polled_.push_back({connection.Descriptor(), connection.PollEvents(), 0});
        due = Sooner(due, connection.Deadline());
    }
    bAcceptPaused_ = false;
    return signals.Wait(polled_.data(), polled_.size(), due);
}

void ConnectionServer::ServeReady() {
    size_t nPolled = 1;
    for (Connection& connection : connections_) {
        const short events = polled_[nPolled++].revents;
        if (events != 0 && !connection.bOver()) {
            connection.Ready(events, buffer_);
        }
    }
}

void ConnectionServer::ServeLoneConnection() {
    const Microseconds begun = Now();
    for (Microseconds now = begun; connections_.size() == 1 && now - begun < kLookAround &&
                                   connections_.front().bOnlyWaitsForBytes(now);
         now = Now()) {
        connections_.front().ReceiveNext(buffer_);
    }
}

void ConnectionServer::AcceptAll(bool bOnce) {
    while (listener_ >= 0) {
        sockaddr_in peer{};
        socklen_t length = sizeof peer;
        const int fd =
            ::accept4(listener_, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC);
        if (fd < 0) {
            bAcceptPaused_ =
                errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
            return;
        }
        const int on = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        const timeval limit{0, kLookAround};
        ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        if (bOnce) {
            CloseListener();
        }
        connections_.emplace_back(fd, makeFarEnd_(AddressText(peer)));
    }
}

void ConnectionServer::CloseListener() {
    if (listener_ >= 0) {
        ::close(std::exchange(listener_, -1));
    }
}

void ConnectionServer::ServeDeadlines(Microseconds now) {
    for (Connection& connection : connections_) {
        const auto due = connection.Deadline();
        if (due && *due <= now && !connection.bOver()) {
            connection.Elapsed(now);
        }
    }
}

void ConnectionServer::RemoveOver() {
    for (auto connection = connections_.begin(); connection != connections_.end();) {
        if (!connection->bOver()) {
            ++connection;
            continue;
        }
        farEndDone_(connection->End());
        connection = connections_.erase(connection);
    }
}

} // namespace brennik::sim
