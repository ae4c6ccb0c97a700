// The network of the simulated host: the socket calls over connections in memory, with listeners
// that make a far end for each connection, latency, refusals, black holes and a host table.
// It stands in the place of LinuxSockets and keeps its rules: the last error is set by failing
// calls only; a reset raises no error in the query of waiting bytes; a closed or reset peer never
// shortens a wait.
#pragma once

#include "platform/Sockets.h"
#include "tests/world/CallLedger.h"
#include "tests/world/Mangler.h"
#include "tests/world/ScriptedPeer.h"
#include "tests/world/SimConnection.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik::world {

using FarEndFactory = std::function<std::unique_ptr<sim::FarEnd>()>;

/// Errors of the rig that stand outside of those that the logic tests.
inline constexpr int32_t kNotASocket = 10038;
inline constexpr int32_t kHostNotFound = 11001;

class SimNetwork : public Sockets {
  public:
    SimNetwork(SimTimeline& timeline, CallLedger& ledger);
    ~SimNetwork() override;

    int32_t Startup(int32_t lVersion) override;
    void Cleanup() override;
    int32_t LastError() override;
    int32_t Socket() override;
    int32_t Connect(int32_t lSocket, uint32_t lAddress, uint16_t iPort) override;
    int32_t SetNonBlocking(int32_t lSocket) override;
    int32_t BytesWaiting(int32_t lSocket, int32_t& lBytes) override;
    int32_t SelectWritable(int32_t lSocket, int32_t lSeconds) override;
    int32_t Receive(int32_t lSocket, char* buffer, int32_t lLength) override;
    int32_t Send(int32_t lSocket, std::string_view strData) override;
    void Shutdown(int32_t lSocket) override;
    int32_t CloseSocket(int32_t lSocket) override;
    std::vector<std::string> GetHostByName(const std::string& strName) override;
    uint32_t InetAddr(const std::string& strAddress) override;
    uint16_t HostToNetworkPort(uint16_t iPort) override;
    void WaitReadable(int32_t lSocket, int32_t lMilliseconds) override;

    // What follows is for tests; it costs nothing and counts nowhere. Ports are plain numbers.

    /// Each connection to the address and port meets a new far end.
    void Listen(const std::string& strAddress, uint16_t iPort, FarEndFactory makeFarEnd);
    /// A listener played by hand, owned by the network. One at a time may be connected to it.
    ScriptedPeer& AddPeer(const std::string& strAddress, uint16_t iPort);
    /// Connections there fail with that number after the connect delay. An address and port of
    /// which nothing was said refuses (10061). A listener replaces this and the other way round.
    void RefuseWith(const std::string& strAddress, uint16_t iPort, int32_t lError);
    void Refuse(const std::string& strAddress, uint16_t iPort);
    void MakeUnreachable(const std::string& strAddress, uint16_t iPort);
    /// Connections there never come about: a select runs out of time; a blocking connect fails
    /// with 10060 after 127 seconds.
    void BlackHole(const std::string& strAddress, uint16_t iPort);
    /// A name of the host table, case ignored, with its dotted addresses. Dotted names resolve to
    /// themselves; all others fail.
    void AddHostName(const std::string& strName, const std::vector<std::string>& addresses);

    /// Time that a byte is under way, 50 us each way at first, and that a connection takes to be
    /// made, 100 us at first.
    void SetLatency(Microseconds toServer, Microseconds toClient);
    void SetConnectDelay(Microseconds delay) { connectDelay_ = delay; }
    /// Lets a connect on a non-blocking socket succeed at once, with result 0.
    void SetConnectsAtOnce(bool bAtOnce) { bConnectsAtOnce_ = bAtOnce; }
    /// Sets the wire between all ends; null is a wire that does nothing.
    void SetMangler(std::unique_ptr<Mangler> mangler) { mangler_ = std::move(mangler); }

    /// The number that the next LastError gives.
    void SetLastError(int32_t lError) { lLastError_ = lError; }
    int32_t PeekLastError() const { return lLastError_; }

    /// Connections made so far, oldest first. The reference holds as long as the network.
    size_t nConnections() const { return connections_.size(); }
    SimConnection& Connection(size_t nIndex) { return *connections_.at(nIndex); }
    SimConnection& LastConnection() { return *connections_.back(); }
    /// Sockets made and not closed; Startup calls that succeeded less Cleanup calls.
    int32_t nOpenSockets() const { return nOpenSockets_; }
    int32_t nStarted() const { return nStarted_; }

    /// Keeps the calls as text in `calls` and what each Send took in `sends`. Entries:
    /// "Startup 257", "Cleanup", "Socket", "SetNonBlocking", "Connect 10.0.0.1:5000",
    /// "SelectWritable 10", "BytesWaiting 5" (what it found, -1 when it failed), "Receive 5" and
    /// "Send 5" (the length asked for), "WaitReadable 10", "Shutdown", "CloseSocket",
    /// "GetHostByName pos.example". LastError and the two conversions aren't kept.
    void RecordCalls(bool bRecord) { bRecording_ = bRecord; }
    std::vector<std::string> calls;
    std::vector<std::string> sends;

  private:
    friend class SimConnection;
    struct Listener;
    struct SocketState;

    SocketState* Find(int32_t lSocket);
    int32_t Fail(int32_t lError, int32_t lResult = -1);
    int32_t FailBy(const Fault& fault);
    void Note(std::string_view strCall);
    void Note(std::string_view strCall, int64_t lNumber);
    Listener& ListenerAt(const std::string& strAddress, uint16_t iPort);
    const Listener* FindListener(uint32_t lAddress, uint16_t iPort) const;
    void BeginConnect(int32_t lSocket, uint32_t lAddress, uint16_t iPort, bool bAtOnce);
    void FinishConnect(int32_t lSocket);
    int32_t WaitForConnect(int32_t lSocket, Microseconds limit);

    SimTimeline& timeline_;
    CallLedger& ledger_;
    std::vector<std::unique_ptr<Listener>> listeners_;
    std::vector<std::unique_ptr<ScriptedPeer>> peers_;
    std::vector<SocketState> sockets_;
    std::vector<std::unique_ptr<SimConnection>> connections_;
    std::vector<std::pair<std::string, std::vector<std::string>>> names_;
    std::unique_ptr<Mangler> mangler_;
    Microseconds latencyToServer_ = 50;
    Microseconds latencyToClient_ = 50;
    Microseconds connectDelay_ = 100;
    bool bConnectsAtOnce_ = false;
    int32_t lLastError_ = 0;
    int32_t nOpenSockets_ = 0;
    int32_t nStarted_ = 0;
    bool bRecording_ = false;
};

} // namespace brennik::world
