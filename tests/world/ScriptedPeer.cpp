#include "tests/world/ScriptedPeer.h"

#include <utility>

namespace brennik::world {

class ScriptedPeer::Adaptor : public sim::FarEnd {
  public:
    explicit Adaptor(ScriptedPeer& peer) : peer_(peer) {}

    void Connected(sim::Wire& wire, Microseconds) override {
        wire_ = &wire;
        peer_.connection_ = &wire;
        ++peer_.nConnections_;
        const std::string strKept = std::exchange(peer_.strKept_, {});
        if (!strKept.empty()) {
            wire.Send(strKept);
        }
        if (std::exchange(peer_.bCloseKept_, false)) {
            peer_.Close();
        }
        if (peer_.OnConnect) {
            peer_.OnConnect();
        }
    }

    void Received(sim::Wire&, Microseconds now, std::string_view strBytes) override {
        peer_.strReceived_ += strBytes;
        peer_.arrivals_.push_back(Arrival{now, std::string(strBytes)});
        if (peer_.OnBytes) {
            peer_.OnBytes(strBytes);
        }
    }

    void Elapsed(sim::Wire&, Microseconds) override {}

    void Disconnected(Microseconds now) override {
        ++peer_.nDisconnected_;
        peer_.lastDisconnect_ = now;
        if (peer_.connection_ == wire_) {
            peer_.connection_ = nullptr;
        }
        if (peer_.OnDisconnect) {
            peer_.OnDisconnect();
        }
    }

    std::optional<Microseconds> NextDeadline() const override { return std::nullopt; }

  private:
    ScriptedPeer& peer_;
    sim::Wire* wire_ = nullptr;
};

ScriptedPeer::ScriptedPeer(SimTimeline& timeline) : timeline_(timeline) {
}

std::unique_ptr<sim::FarEnd> ScriptedPeer::MakeFarEnd() {
    return std::make_unique<Adaptor>(*this);
}

void ScriptedPeer::Push(std::string_view strBytes) {
    if (connection_ != nullptr) {
        connection_->Send(strBytes);
    } else {
        strKept_ += strBytes;
    }
}

void ScriptedPeer::PushAt(Microseconds delay, std::string strBytes) {
    timeline_.At(delay, [this, strPushed = std::move(strBytes)] { Push(strPushed); });
}

void ScriptedPeer::Close() {
    if (connection_ != nullptr) {
        std::exchange(connection_, nullptr)->Close();
    } else {
        bCloseKept_ = true;
    }
}

void ScriptedPeer::Reset() {
    if (connection_ != nullptr) {
        std::exchange(connection_, nullptr)->Reset();
    }
}

std::string ScriptedPeer::Take() {
    arrivals_.clear();
    return std::exchange(strReceived_, {});
}

} // namespace brennik::world
