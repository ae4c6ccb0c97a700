#include "tests/world/SimNetwork.h"

#include "tests/world/Addresses.h"

#include <algorithm>
#include <cstring>

namespace brennik::world {

namespace {

constexpr int32_t kFirstHandle = 4;
constexpr int32_t kNotConnected = 10057;
constexpr Microseconds kConnectGivesUp = 127 * kSecond;
// A blocking receive would wait for ever; a test that comes here must still end.
constexpr Microseconds kReceiveGivesUp = 3600 * kSecond;

enum class LinkState : uint8_t { Fresh, Connecting, Connected, Failed };

bool SameName(std::string_view strOne, std::string_view strOther) {
    const auto lower = [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
    };
    return std::equal(strOne.begin(), strOne.end(), strOther.begin(), strOther.end(),
                      [&](char one, char other) { return lower(one) == lower(other); });
}

} // namespace

struct SimNetwork::Listener {
    uint32_t lAddress = 0;
    uint16_t iPort = 0;
    FarEndFactory makeFarEnd{};
    int32_t lError = 0;
    bool bBlackHole = false;
};

struct SimNetwork::SocketState {
    bool bClosed = false;
    bool bNonBlocking = false;
    LinkState state = LinkState::Fresh;
    int32_t lError = 0; // what a failed connection met
    SimConnection* connection = nullptr;
};

SimNetwork::SimNetwork(SimTimeline& timeline, CallLedger& ledger)
    : timeline_(timeline), ledger_(ledger) {
}

SimNetwork::~SimNetwork() = default;

// Bookkeeping.

SimNetwork::SocketState* SimNetwork::Find(int32_t lSocket) {
    const auto nIndex = static_cast<size_t>(int64_t{lSocket} - kFirstHandle);
    if (lSocket < kFirstHandle || nIndex >= sockets_.size() || sockets_[nIndex].bClosed) {
        return nullptr;
    }
    return &sockets_[nIndex];
}

int32_t SimNetwork::Fail(int32_t lError, int32_t lResult) {
    lLastError_ = lError;
    return lResult;
}

int32_t SimNetwork::FailBy(const Fault& fault) {
    return Fail(fault.lLastError, fault.lResult.value_or(-1));
}

void SimNetwork::Note(std::string_view strCall) {
    if (bRecording_) {
        calls.emplace_back(strCall);
    }
    if (ledger_.Recording()) {
        ledger_.Record(std::string(strCall));
    }
}

void SimNetwork::Note(std::string_view strCall, int64_t lNumber) {
    if (bRecording_ || ledger_.Recording()) {
        Note(std::string(strCall) + " " + std::to_string(lNumber));
    }
}

// The socket calls.

int32_t SimNetwork::Startup(int32_t lVersion) {
    const Fault* fault = ledger_.Enter(Op::Startup);
    Note("Startup", lVersion);
    if (fault != nullptr) {
        return fault->lResult.value_or(1);
    }
    ++nStarted_;
    return 0;
}

void SimNetwork::Cleanup() {
    ledger_.Enter();
    Note("Cleanup");
    --nStarted_;
}

int32_t SimNetwork::LastError() {
    ledger_.Enter();
    return lLastError_;
}

int32_t SimNetwork::Socket() {
    const Fault* fault = ledger_.Enter(Op::Socket);
    Note("Socket");
    if (fault != nullptr) {
        return FailBy(*fault);
    }
    sockets_.emplace_back();
    ++nOpenSockets_;
    return kFirstHandle + static_cast<int32_t>(sockets_.size()) - 1;
}

int32_t SimNetwork::Connect(int32_t lSocket, uint32_t lAddress, uint16_t iPort) {
    const Fault* fault = ledger_.Enter(Op::Connect);
    if (bRecording_ || ledger_.Recording()) {
        Note("Connect " + TextOf(lAddress) + ":" + std::to_string(SwapPort(iPort)));
    }
    SocketState* socket = Find(lSocket);
    if (socket == nullptr) {
        return Fail(kNotASocket);
    }
    if (fault != nullptr && fault->lResult.value_or(-1) < 0) {
        socket->state = LinkState::Failed;
        socket->lError = fault->lLastError;
        return FailBy(*fault);
    }
    BeginConnect(lSocket, lAddress, SwapPort(iPort), fault != nullptr || bConnectsAtOnce_);
    socket = Find(lSocket);
    if (socket->state == LinkState::Connecting && socket->bNonBlocking) {
        return Fail(socketerror::kWouldBlock);
    }
    const int32_t lOutcome = WaitForConnect(lSocket, timeline_.Now() + kConnectGivesUp);
    if (lOutcome == 0) {
        socket = Find(lSocket);
        socket->state = LinkState::Failed;
        socket->lError = socketerror::kTimedOut;
        return Fail(socketerror::kTimedOut);
    }
    return lOutcome > 0 ? 0 : -1;
}

int32_t SimNetwork::SetNonBlocking(int32_t lSocket) {
    const Fault* fault = ledger_.Enter(Op::SetNonBlocking);
    Note("SetNonBlocking");
    SocketState* socket = Find(lSocket);
    if (fault != nullptr) {
        return FailBy(*fault);
    }
    if (socket == nullptr) {
        return Fail(kNotASocket);
    }
    socket->bNonBlocking = true;
    return 0;
}

int32_t SimNetwork::BytesWaiting(int32_t lSocket, int32_t& lBytes) {
    const Fault* fault = ledger_.Enter(Op::BytesWaiting);
    int32_t lResult = 0;
    SocketState* socket = Find(lSocket);
    if (fault != nullptr && fault->lResult.value_or(-1) >= 0) {
        lBytes = *fault->lResult;
    } else if (fault != nullptr) {
        lResult = FailBy(*fault);
    } else if (socket == nullptr) {
        lResult = Fail(kNotASocket);
    } else {
        lBytes = socket->connection != nullptr
                     ? static_cast<int32_t>(socket->connection->nWaiting())
                     : 0;
    }
    Note("BytesWaiting", lResult < 0 ? -1 : lBytes);
    return lResult;
}

int32_t SimNetwork::SelectWritable(int32_t lSocket, int32_t lSeconds) {
    const Fault* fault = ledger_.Enter(Op::SelectWritable);
    Note("SelectWritable", lSeconds);
    const Microseconds limit = timeline_.Now() + std::max(lSeconds, 0) * kSecond;
    if (fault != nullptr) {
        if (fault->lResult.value_or(-1) < 0) {
            return FailBy(*fault);
        }
        timeline_.AdvanceTo(limit);
        return 0;
    }
    return WaitForConnect(lSocket, limit);
}

int32_t SimNetwork::Receive(int32_t lSocket, char* buffer, int32_t lLength) {
    const Fault* fault = ledger_.Enter(Op::Receive);
    Note("Receive", lLength);
    if (fault != nullptr) {
        if (fault->lResult.value_or(-1) < 0) {
            return FailBy(*fault);
        }
        lLength = std::min(lLength, *fault->lResult);
    }
    SocketState* socket = Find(lSocket);
    if (socket == nullptr) {
        return Fail(kNotASocket);
    }
    if (socket->connection == nullptr || socket->state != LinkState::Connected) {
        return Fail(kNotConnected);
    }
    if (lLength <= 0) {
        return 0;
    }
    SimConnection& connection = *socket->connection;
    if (!socket->bNonBlocking) {
        const Microseconds limit = timeline_.Now() + kReceiveGivesUp;
        while (connection.nWaiting() == 0 && !connection.AtEnd() && timeline_.Step(limit)) {
        }
    }
    int32_t lError = 0;
    const size_t nTaken = connection.ClientReceive(buffer, static_cast<size_t>(lLength), lError);
    if (nTaken > 0) {
        return static_cast<int32_t>(nTaken);
    }
    if (lError != 0) {
        return Fail(lError);
    }
    return connection.AtEnd() ? 0 : Fail(socketerror::kWouldBlock);
}

int32_t SimNetwork::Send(int32_t lSocket, std::string_view strData) {
    const Fault* fault = ledger_.Enter(Op::Send);
    Note("Send", static_cast<int64_t>(strData.size()));
    if (fault != nullptr) {
        if (fault->lResult.value_or(-1) < 0) {
            return FailBy(*fault);
        }
        strData = strData.substr(0, static_cast<size_t>(*fault->lResult));
    }
    SocketState* socket = Find(lSocket);
    if (socket == nullptr) {
        return Fail(kNotASocket);
    }
    if (socket->connection == nullptr || socket->state != LinkState::Connected) {
        return Fail(socketerror::kConnectionAborted);
    }
    int32_t lError = 0;
    if (!strData.empty() && !socket->connection->ClientSend(strData, lError)) {
        return Fail(lError);
    }
    if (bRecording_) {
        sends.emplace_back(strData);
    }
    return static_cast<int32_t>(strData.size());
}

void SimNetwork::Shutdown(int32_t lSocket) {
    ledger_.Enter();
    Note("Shutdown");
    SocketState* socket = Find(lSocket);
    if (socket != nullptr && socket->state == LinkState::Connected) {
        socket->connection->ClientShutdown();
    }
}

int32_t SimNetwork::CloseSocket(int32_t lSocket) {
    const Fault* fault = ledger_.Enter(Op::CloseSocket);
    Note("CloseSocket");
    SocketState* socket = Find(lSocket);
    if (fault != nullptr || socket == nullptr) {
        return -1;
    }
    if (socket->state == LinkState::Connected) {
        socket->connection->ClientClose();
    }
    socket->bClosed = true;
    --nOpenSockets_;
    return 0;
}

std::vector<std::string> SimNetwork::GetHostByName(const std::string& strName) {
    const Fault* fault = ledger_.Enter(Op::GetHostByName);
    if (bRecording_ || ledger_.Recording()) {
        Note("GetHostByName " + strName);
    }
    std::vector<std::string> found;
    const auto add = [&found](uint32_t lAddress) {
        std::string strBytes(sizeof lAddress, '\0');
        std::memcpy(strBytes.data(), &lAddress, sizeof lAddress);
        found.push_back(std::move(strBytes));
    };
    if (fault == nullptr && IsDotted(strName)) {
        add(AddressOf(strName));
    } else if (fault == nullptr) {
        for (const auto& [strKnown, addresses] : names_) {
            if (SameName(strKnown, strName)) {
                for (const std::string& strAddress : addresses) {
                    add(AddressOf(strAddress));
                }
                break;
            }
        }
    }
    if (found.empty()) {
        lLastError_ = fault != nullptr ? fault->lLastError : kHostNotFound;
    }
    return found;
}

uint32_t SimNetwork::InetAddr(const std::string& strAddress) {
    ledger_.Enter();
    return AddressOf(strAddress);
}

uint16_t SimNetwork::HostToNetworkPort(uint16_t iPort) {
    ledger_.Enter();
    return SwapPort(iPort);
}

void SimNetwork::WaitReadable(int32_t lSocket, int32_t lMilliseconds) {
    ledger_.Enter();
    Note("WaitReadable", lMilliseconds);
    const Microseconds limit = timeline_.Now() + std::max(lMilliseconds, 0) * kMillisecond;
    const auto readable = [&] {
        const SocketState* socket = Find(lSocket);
        return socket != nullptr && socket->connection != nullptr &&
               socket->connection->nWaiting() > 0;
    };
    while (!readable() && timeline_.Step(limit)) {
    }
}

// Connecting.

void SimNetwork::BeginConnect(int32_t lSocket, uint32_t lAddress, uint16_t iPort, bool bAtOnce) {
    SocketState& socket = *Find(lSocket);
    socket.state = LinkState::Connecting;
    socket.lError = socketerror::kConnectionRefused;
    const Listener* listener = FindListener(lAddress, iPort);
    if (listener != nullptr && listener->bBlackHole) {
        return;
    }
    if (listener != nullptr && listener->makeFarEnd) {
        connections_.push_back(std::make_unique<SimConnection>(*this, listener->makeFarEnd()));
        socket.connection = connections_.back().get();
    } else if (lAddress == kNoAddress) {
        socket.lError = socketerror::kNetworkUnreachable;
    } else if (listener != nullptr) {
        socket.lError = listener->lError;
    }
    if (bAtOnce) {
        FinishConnect(lSocket);
    } else {
        timeline_.At(connectDelay_, [this, lSocket] { FinishConnect(lSocket); });
    }
}

void SimNetwork::FinishConnect(int32_t lSocket) {
    SocketState* socket = Find(lSocket);
    if (socket == nullptr || socket->state != LinkState::Connecting) {
        return;
    }
    if (socket->connection == nullptr) {
        socket->state = LinkState::Failed;
        return;
    }
    socket->state = LinkState::Connected;
    socket->connection->Open();
}

/// As SelectWritable: 1 made, 0 when the limit came first, -1 with the error.
int32_t SimNetwork::WaitForConnect(int32_t lSocket, Microseconds limit) {
    const auto pending = [&] {
        const SocketState* socket = Find(lSocket);
        return socket != nullptr && socket->state == LinkState::Connecting;
    };
    while (pending() && timeline_.Step(limit)) {
    }
    const SocketState* socket = Find(lSocket);
    if (socket == nullptr) {
        return Fail(kNotASocket);
    }
    switch (socket->state) {
    case LinkState::Connecting:
        return 0;
    case LinkState::Connected:
        return 1;
    case LinkState::Fresh:
        return Fail(kNotConnected);
    case LinkState::Failed:
        break;
    }
    return Fail(socket->lError);
}

// The lay of the network.

SimNetwork::Listener& SimNetwork::ListenerAt(const std::string& strAddress, uint16_t iPort) {
    const uint32_t lAddress = AddressOf(strAddress);
    for (const auto& listener : listeners_) {
        if (listener->lAddress == lAddress && listener->iPort == iPort) {
            *listener = Listener{.lAddress = lAddress, .iPort = iPort};
            return *listener;
        }
    }
    listeners_.push_back(
        std::make_unique<Listener>(Listener{.lAddress = lAddress, .iPort = iPort}));
    return *listeners_.back();
}

const SimNetwork::Listener* SimNetwork::FindListener(uint32_t lAddress, uint16_t iPort) const {
    for (const auto& listener : listeners_) {
        if (listener->lAddress == lAddress && listener->iPort == iPort) {
            return listener.get();
        }
    }
    return nullptr;
}

void SimNetwork::Listen(const std::string& strAddress, uint16_t iPort, FarEndFactory makeFarEnd) {
    ListenerAt(strAddress, iPort).makeFarEnd = std::move(makeFarEnd);
}

ScriptedPeer& SimNetwork::AddPeer(const std::string& strAddress, uint16_t iPort) {
    peers_.push_back(std::make_unique<ScriptedPeer>(timeline_));
    ScriptedPeer* peer = peers_.back().get();
    Listen(strAddress, iPort, [peer] { return peer->MakeFarEnd(); });
    return *peer;
}

void SimNetwork::RefuseWith(const std::string& strAddress, uint16_t iPort, int32_t lError) {
    ListenerAt(strAddress, iPort).lError = lError;
}

void SimNetwork::Refuse(const std::string& strAddress, uint16_t iPort) {
    RefuseWith(strAddress, iPort, socketerror::kConnectionRefused);
}

void SimNetwork::MakeUnreachable(const std::string& strAddress, uint16_t iPort) {
    RefuseWith(strAddress, iPort, socketerror::kHostUnreachable);
}

void SimNetwork::BlackHole(const std::string& strAddress, uint16_t iPort) {
    ListenerAt(strAddress, iPort).bBlackHole = true;
}

void SimNetwork::AddHostName(const std::string& strName,
                             const std::vector<std::string>& addresses) {
    names_.emplace_back(strName, addresses);
}

void SimNetwork::SetLatency(Microseconds toServer, Microseconds toClient) {
    latencyToServer_ = toServer;
    latencyToClient_ = toClient;
}

} // namespace brennik::world
