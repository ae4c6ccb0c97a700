// The host system as the logic sees it: one set of small interfaces, reached through one accessor.
// For real it is RealHost(); tests swap the whole set with a ScopedHost for a simulated one.
#pragma once

#include "platform/Clock.h"
#include "platform/ComPorts.h"
#include "platform/Files.h"
#include "platform/OstRtl.h"
#include "platform/Processes.h"
#include "platform/ProfileStrings.h"
#include "platform/Sockets.h"

#include <functional>

namespace brennik {

/// Borrowed references: whoever makes a Host keeps what it names alive as long as it is current.
struct Host {
    Clock& clock;
    Sockets& sockets;
    ComPorts& comPorts;
    Files& files;
    ProfileStrings& profileStrings;
    Processes& processes;
    OstRtl& ostRtl;

    /// What PumpEvents calls; nothing at first.
    std::function<void()> pumpEvents = [] {};
};

/// The host in force: RealHost() unless a ScopedHost stands.
Host& CurrentHost();

/// The one host over the operating system, made at its first use.
Host& RealHost();

/// Whether that first use has been.
bool RealHostMade();

/// Makes a host the current one for as long as it lives.
class ScopedHost {
  public:
    explicit ScopedHost(Host& host);
    ~ScopedHost();
    ScopedHost(const ScopedHost&) = delete;
    ScopedHost& operator=(const ScopedHost&) = delete;

  private:
    Host* previous_;
};

} // namespace brennik
