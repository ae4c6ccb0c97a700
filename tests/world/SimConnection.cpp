#include "tests/world/SimConnection.h"

#include "platform/Sockets.h"
#include "tests/world/SimNetwork.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace brennik::world {

/// Where the mangler of the network puts what it lets through: the flight of one direction.
class SimConnection::FlightOutlet : public Outlet {
  public:
    FlightOutlet(SimConnection& connection, Direction direction)
        : connection_(connection), direction_(direction) {}

    void Put(std::string_view strBytes, Microseconds delay) override {
        connection_.Launch(direction_, PieceKind::Bytes, strBytes, delay);
    }

  private:
    SimConnection& connection_;
    Direction direction_;
};

SimConnection::SimConnection(SimNetwork& network, std::unique_ptr<sim::FarEnd> farEnd)
    : network_(network), farEnd_(std::move(farEnd)) {
}

SimConnection::~SimConnection() = default;

SimTimeline& SimConnection::Time() const {
    return network_.timeline_;
}

// The far side.

void SimConnection::Send(std::string_view strBytes) {
    if (bFarLeft_ || strBytes.empty()) {
        return;
    }
    nSentByFarEnd_ += static_cast<int64_t>(strBytes.size());
    PassBytes(Direction::ToClient, strBytes);
}

void SimConnection::Close() {
    if (!std::exchange(bFarLeft_, true)) {
        Launch(Direction::ToClient, PieceKind::Close, {}, 0);
    }
}

void SimConnection::Reset() {
    if (!std::exchange(bFarLeft_, true)) {
        Launch(Direction::ToClient, PieceKind::Reset, {}, 0);
    }
}

// The client's side.

void SimConnection::Open() {
    bOpen_ = true;
    farEnd_->Connected(*this, Time().Now());
    ArmDeadline(false);
}

bool SimConnection::ClientSend(std::string_view strBytes, int32_t& lError) {
    if (bClientShut_ || bReset_) {
        const int32_t lPending = std::exchange(lPendingError_, 0);
        lError = lPending != 0 ? lPending : socketerror::kConnectionAborted;
        return false;
    }
    nSentByClient_ += static_cast<int64_t>(strBytes.size());
    PassBytes(Direction::ToServer, strBytes);
    return true;
}

size_t SimConnection::ClientReceive(char* buffer, size_t nLength, int32_t& lError) {
    lError = 0;
    const size_t nTake = std::min(nLength, nWaiting());
    if (nTake == 0) {
        lError = std::exchange(lPendingError_, 0);
        return 0;
    }
    std::memcpy(buffer, strWaiting_.data() + nTaken_, nTake);
    nTaken_ += nTake;
    if (nTaken_ == strWaiting_.size()) {
        strWaiting_.clear();
        nTaken_ = 0;
    }
    return nTake;
}

void SimConnection::ClientShutdown() {
    if (!std::exchange(bClientShut_, true) && !bReset_) {
        Launch(Direction::ToServer, PieceKind::Close, {}, 0);
    }
}

void SimConnection::ClientClose() {
    ClientShutdown();
    bClientClosed_ = true;
}

// The wire.

void SimConnection::PassBytes(Direction direction, std::string_view strBytes) {
    if (network_.mangler_ == nullptr) {
        Launch(direction, PieceKind::Bytes, strBytes, 0);
        return;
    }
    FlightOutlet outlet(*this, direction);
    network_.mangler_->Pass(direction, strBytes, outlet);
}

void SimConnection::Launch(Direction direction, PieceKind kind, std::string_view strBytes,
                           Microseconds delay) {
    const bool bToServer = direction == Direction::ToServer;
    Flight& flight = bToServer ? toServer_ : toClient_;
    const Microseconds latency = bToServer ? network_.latencyToServer_ : network_.latencyToClient_;
    const Microseconds due =
        std::max(flight.lastDue, Time().Now() + latency + std::max<Microseconds>(delay, 0));
    const bool bPlanned = !flight.pieces.empty() && flight.lastDue == due;
    flight.lastDue = due;
    flight.pieces.push_back(Piece{due, kind, std::string(strBytes)});
    if (bPlanned) {
        return;
    }
    if (bToServer) {
        Time().AtMoment(due, [this] { Deliver(Direction::ToServer); });
    } else {
        Time().AtMoment(due, [this] { Deliver(Direction::ToClient); });
    }
}

void SimConnection::Deliver(Direction direction) {
    Flight& flight = direction == Direction::ToServer ? toServer_ : toClient_;
    const Microseconds now = Time().Now();
    while (!flight.pieces.empty() && flight.pieces.front().due <= now) {
        Piece piece = std::move(flight.pieces.front());
        flight.pieces.pop_front();
        while (piece.kind == PieceKind::Bytes && !flight.pieces.empty() &&
               flight.pieces.front().due <= now && flight.pieces.front().kind == PieceKind::Bytes) {
            piece.strBytes += flight.pieces.front().strBytes;
            flight.pieces.pop_front();
        }
        if (direction == Direction::ToServer) {
            DeliverToServer(piece.kind, piece.strBytes);
        } else {
            DeliverToClient(piece.kind, piece.strBytes);
        }
    }
}

void SimConnection::DeliverToServer(PieceKind kind, std::string_view strBytes) {
    if (kind == PieceKind::Bytes) {
        if (bFarLeft_) {
            // Nobody is there to read: the far host answers with a reset.
            Launch(Direction::ToClient, PieceKind::Reset, {}, 0);
            return;
        }
        farEnd_->Received(*this, Time().Now(), strBytes);
        ArmDeadline(false);
        return;
    }
    if (!std::exchange(bFarLeft_, true)) {
        farEnd_->Disconnected(Time().Now());
    }
}

void SimConnection::DeliverToClient(PieceKind kind, std::string_view strBytes) {
    if (bClientClosed_ || bReset_) {
        return;
    }
    switch (kind) {
    case PieceKind::Bytes:
        strWaiting_ += strBytes;
        break;
    case PieceKind::Close:
        bFarClosed_ = true;
        break;
    case PieceKind::Reset:
        bReset_ = true;
        // A client that already knew that the far end had closed is told of an abort.
        lPendingError_ =
            bFarClosed_ ? socketerror::kConnectionAborted : socketerror::kConnectionReset;
        break;
    }
}

// The far end's deadlines. A planned event is never taken back; it is passed over when its
// generation is no longer the current one.

void SimConnection::ArmDeadline(bool bElapsed) {
    if (bFarLeft_) {
        return;
    }
    const auto deadline = farEnd_->NextDeadline();
    if (!deadline) {
        bArmed_ = false;
        ++nGeneration_;
        return;
    }
    if (bArmed_ && !bElapsed && armedFor_ == *deadline) {
        return;
    }
    bArmed_ = true;
    armedFor_ = *deadline;
    const uint64_t nGeneration = ++nGeneration_;
    // A far end that leaves its deadline in the past must not hold time still.
    const Microseconds moment = std::max(*deadline, Time().Now() + (bElapsed ? 1 : 0));
    Time().AtMoment(moment, [this, nGeneration] { DeadlineCame(nGeneration); });
}

void SimConnection::DeadlineCame(uint64_t nGeneration) {
    if (nGeneration != nGeneration_ || bFarLeft_) {
        return;
    }
    bArmed_ = false;
    farEnd_->Elapsed(*this, Time().Now());
    ArmDeadline(true);
}

} // namespace brennik::world
