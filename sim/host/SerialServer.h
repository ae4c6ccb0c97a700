// A serial line whose sessions are each played by a far end, one after another: the line is a
// pseudo-terminal, found at a path. One loop, one thread, no wait that data can't cut short.
// Tests of the far ends need none of this: they play them in virtual time.
#pragma once

#include "sim/FarEnd.h"
#include "sim/host/PathLink.h"
#include "sim/host/PseudoTerminal.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace brennik::sim {

class StopSignals;

class SerialServer {
  public:
    struct Callbacks {
        /// Makes the far end of a new session.
        std::function<std::unique_ptr<FarEnd>()> makeFarEnd;

        /// Is told each far end whose session is over, just before it is destroyed.
        std::function<void(FarEnd&)> farEndDone;

        /// Is told the device behind the path, each time that another one stands there.
        std::function<void(const std::string& strDevice)> onDevice;
    };

    /// The line is found at strPath. It has a rate of lRate bits per second (see PacedBytes), or is
    /// as fast as the host. All callbacks are needed.
    SerialServer(std::string strPath, std::optional<int64_t> lRate, Callbacks callbacks);

    /// Takes the line down, and what leads to it away.
    ~SerialServer();
    SerialServer(const SerialServer&) = delete;
    SerialServer& operator=(const SerialServer&) = delete;

    /// Brings the line up. False with the reason in strError; what stands at the path and is no
    /// symbolic link is one, and is left alone.
    bool Open(std::string& strError);

    /// Plays one session from each opening of the line to its closing, until a stop signal, or,
    /// with bOnce, until the first one is over. True when it ended without a signal and without a
    /// failure; a failure, a line that can't come back, stands in strError.
    bool Run(const StopSignals& signals, bool bOnce, std::string& strError);

  private:
    class Session;

    bool WaitForOpening(const StopSignals& signals);
    void Serve(const StopSignals& signals);
    bool PrepareNext(std::optional<Microseconds> back, std::string& strError);

    std::optional<int64_t> lRate_;
    Callbacks callbacks_;
    std::unique_ptr<PseudoTerminal> line_; ///< none while it is hung up
    PathLink link_;                        ///< behind the line: it goes first
    Microseconds back_ = 0;                ///< when it comes back then
    std::unique_ptr<Session> session_;
};

} // namespace brennik::sim
