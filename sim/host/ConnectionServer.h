// A listening TCP socket whose connections are each played by a far end: one loop, one
// thread, no wait that data can't cut short.
// Tests of the far ends need none of this: they play them in virtual time.
#pragma once

#include "sim/FarEnd.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

struct pollfd;

namespace brennik::sim {

class StopSignals;

class ConnectionServer {
  public:
    /// Makes the far end of a new connection; strPeer is "address:port" of the other end.
    using MakeFarEnd = std::function<std::unique_ptr<FarEnd>(const std::string& strPeer)>;

    /// Is told each far end whose connection is over, just before it is destroyed.
    using FarEndDone = std::function<void(FarEnd&)>;

    ConnectionServer(MakeFarEnd makeFarEnd, FarEndDone farEndDone);
    ~ConnectionServer();
    ConnectionServer(const ConnectionServer&) = delete;
    ConnectionServer& operator=(const ConnectionServer&) = delete;

    /// Listens at "address:port"; port 0 lets the system choose. False with the reason in strError;
    /// throws UsageProblem when the text is no address and port.
    bool Listen(const std::string& strAddressAndPort, std::string& strError);

    /// The address and port in use, as "address:port".
    std::string strListening() const;

    /// Serves until a stop signal, or, with bOnce, until the first connection is over, beside which
    /// no other is taken. True when it ended without a signal.
    bool Run(const StopSignals& signals, bool bOnce);

  private:
    class Connection;

    int PollAll(const StopSignals& signals);
    void AcceptAll(bool bOnce);
    void CloseListener();
    void ServeReady();
    void ServeLoneConnection();
    void ServeDeadlines(Microseconds now);
    void RemoveOver();

    MakeFarEnd makeFarEnd_;
    FarEndDone farEndDone_;
    int listener_ = -1;
    bool bAcceptPaused_ = false; ///< out of descriptors: the listener rests for a moment
    std::list<Connection> connections_;
    std::vector<pollfd> polled_; ///< the listener first, then the connections in order
    std::vector<char> buffer_;
};

} // namespace brennik::sim
