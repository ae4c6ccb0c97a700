// A serial line with one far end for good: the line is a pseudo-terminal, found at a path, and who
// opens and closes it doesn't concern the far end. One loop, one thread, no wait that data can't
// cut short.
// Tests of the far end need none of this: they play it in virtual time.
#pragma once

#include "sim/FarEnd.h"
#include "sim/host/LineBytes.h"
#include "sim/host/PathLink.h"
#include "sim/host/PseudoTerminal.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace brennik::sim {

class StopSignals;

class DeviceServer {
  public:
    /// The line is found at strPath. The far end must outlive this; it is connected by Run.
    /// onDevice is told what stands behind the path, each time that it is another.
    DeviceServer(std::string strPath, LineRates rates, FarEnd& farEnd,
                 std::function<void(const std::string& strDevice)> onDevice);
    ~DeviceServer();
    DeviceServer(const DeviceServer&) = delete;
    DeviceServer& operator=(const DeviceServer&) = delete;

    /// Brings the line up. False with the reason in strError; what stands at the path and is no
    /// symbolic link is one, and is left alone.
    bool Open(std::string& strError);

    /// Plays until a stop signal, or until nobody has the line open and bEnough says so. True when
    /// it ended without a signal and without a failure; a failure, a line that can't come back,
    /// stands in strError.
    bool Run(const StopSignals& signals, const std::function<bool()>& bEnough,
             std::string& strError);

  private:
    class LineWire;

    bool Turn(const StopSignals& signals, std::string& strError);
    std::string Take(short events);
    void LookForHolder();
    bool ForgetHolder(std::string& strError);

    LineRates rates_;
    FarEnd& farEnd_;
    std::function<void(const std::string& strDevice)> onDevice_;
    std::unique_ptr<PseudoTerminal> line_;
    std::optional<LineBytes> bytes_;
    PathLink link_; ///< behind the line: it goes first
    bool bHeld_ = false;
};

} // namespace brennik::sim
