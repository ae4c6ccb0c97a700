// A far end that a test plays by hand: it says what it is told to, when it is told to, and keeps
// all that it hears. For whole conversations there are the far ends of sim/; this is for frames
// and bytes at exact moments.
#pragma once

#include "tests/world/SimTimeline.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::world {

/// Bytes and the moment at which the peer received them.
struct Arrival {
    Microseconds moment;
    std::string strBytes;
};

class ScriptedPeer {
  public:
    explicit ScriptedPeer(SimTimeline& timeline);
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

    /// Puts bytes on the wire now. Without a connection they are kept and go out as soon as one
    /// is made; so they do after a Close or Reset, for the connection that follows.
    void Push(std::string_view strBytes);
    /// The same, `delay` microseconds from now.
    void PushAt(Microseconds delay, std::string strBytes);
    /// Closes in good order behind what was pushed; without a connection, the next one is closed
    /// behind what is kept for it.
    void Close();
    /// Tears the connection down at once.
    void Reset();

    /// All bytes received since the start (or the last Take), over all connections.
    const std::string& Received() const { return strReceived_; }
    /// The same bytes as they came, with their moments.
    const std::vector<Arrival>& Arrivals() const { return arrivals_; }
    /// Gives all bytes received and forgets them.
    std::string Take();

    bool IsConnected() const { return connection_ != nullptr; }
    /// How many connections were made to this peer, and how many of them the client ended.
    int32_t nConnections() const { return nConnections_; }
    int32_t nDisconnected() const { return nDisconnected_; }
    /// The moment at which the client's end of the last connection that it closed was noticed.
    Microseconds LastDisconnect() const { return lastDisconnect_; }

    /// Called with each piece received, after it was kept; may push, close and reset.
    std::function<void(std::string_view)> OnBytes;
    /// Called for each connection made, after what was kept has gone out.
    std::function<void()> OnConnect;
    /// Called when the client has gone.
    std::function<void()> OnDisconnect;

  private:
    friend class SimNetwork;
    friend class SimComPorts;
    class Adaptor;
    /// The far end of one connection, which forwards to this peer; the peer must outlive it.
    std::unique_ptr<sim::FarEnd> MakeFarEnd();

    SimTimeline& timeline_;
    sim::Wire* connection_ = nullptr;
    std::string strKept_;
    bool bCloseKept_ = false;
    std::string strReceived_;
    std::vector<Arrival> arrivals_;
    int32_t nConnections_ = 0;
    int32_t nDisconnected_ = 0;
    Microseconds lastDisconnect_ = -1;
};

} // namespace brennik::world
