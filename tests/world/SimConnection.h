// One TCP connection of the simulated network: bytes under way in both directions, what waits at
// the client, and the far end that lives on the other side. Made and owned by SimNetwork.
// The far end acts through the Wire that this is; the client acts through the socket calls.
#pragma once

#include "sim/FarEnd.h"
#include "tests/world/Mangler.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

namespace brennik::world {

class SimNetwork;

class SimConnection : public sim::Wire {
  public:
    SimConnection(SimNetwork& network, std::unique_ptr<sim::FarEnd> farEnd);
    ~SimConnection() override;
    SimConnection(const SimConnection&) = delete;
    SimConnection& operator=(const SimConnection&) = delete;

    // The far side.
    void Send(std::string_view strBytes) override;
    void Close() override;
    void Reset() override;

    // The client's side, for the socket calls.

    /// The connection is up: tells the far end.
    void Open();
    /// Puts the client's bytes on the wire; false when the connection is dead, with the number.
    bool ClientSend(std::string_view strBytes, int32_t& lError);
    /// Takes at most nLength waiting bytes: the number, or 0 with lError (0 for an orderly end).
    size_t ClientReceive(char* buffer, size_t nLength, int32_t& lError);
    size_t nWaiting() const { return strWaiting_.size() - nTaken_; }
    /// No byte will ever come again: closed or reset by the far end, or shut down by the client.
    bool AtEnd() const { return bFarClosed_ || bReset_ || bClientShut_; }
    void ClientShutdown();
    void ClientClose();

    // For tests.

    /// Puts bytes straight in front of the client, whatever state the connection is in.
    void Feed(std::string_view strBytes) { strWaiting_.append(strBytes); }
    sim::FarEnd& FarEnd() { return *farEnd_; }
    /// The client has closed its socket.
    bool ClientClosed() const { return bClientClosed_; }
    /// Bytes that each end has sent, before any mangling.
    int64_t nSentByClient() const { return nSentByClient_; }
    int64_t nSentByFarEnd() const { return nSentByFarEnd_; }

  private:
    enum class PieceKind : uint8_t { Bytes, Close, Reset };
    struct Piece {
        Microseconds due;
        PieceKind kind;
        std::string strBytes;
    };
    struct Flight {
        std::deque<Piece> pieces;
        Microseconds lastDue = 0;
    };
    class FlightOutlet;

    void Launch(Direction direction, PieceKind kind, std::string_view strBytes, Microseconds delay);
    void PassBytes(Direction direction, std::string_view strBytes);
    void Deliver(Direction direction);
    void DeliverToServer(PieceKind kind, std::string_view strBytes);
    void DeliverToClient(PieceKind kind, std::string_view strBytes);
    void ArmDeadline(bool bElapsed);
    void DeadlineCame(uint64_t nGeneration);
    SimTimeline& Time() const;

    SimNetwork& network_;
    std::unique_ptr<sim::FarEnd> farEnd_;
    Flight toServer_;
    Flight toClient_;

    std::string strWaiting_;
    size_t nTaken_ = 0;
    bool bOpen_ = false;
    bool bFarClosed_ = false;    // the far end's close has reached the client
    bool bReset_ = false;        // a reset has reached the client
    int32_t lPendingError_ = 0;  // told once by the next send or receive
    bool bClientShut_ = false;   // the client has shut its side
    bool bClientClosed_ = false; // the client has closed its socket
    bool bFarLeft_ = false;      // the far end has closed or reset, or was told of the end

    bool bArmed_ = false;
    Microseconds armedFor_ = 0;
    uint64_t nGeneration_ = 0;
    int64_t nSentByClient_ = 0;
    int64_t nSentByFarEnd_ = 0;
};

} // namespace brennik::world
