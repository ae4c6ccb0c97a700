// The far end of every measured session: the leanest service that the protocol allows. It asks
// with ENQ, takes the request, and sends frames made beforehand, each after the ACK of the one
// before, over a blocking socket. It keeps the time, so that all receivers are timed alike and
// neither process start nor connecting counts.
#pragma once

#include "bench/Frames.h"

#include <cstdint>

namespace brennik::bench {

/// What a sender found; shared between processes.
struct SenderTimes {
    int64_t lAccepted = 0; ///< when the connection was there
    int64_t lBegun = 0;    ///< just before the first data frame (or file, with more than one)
    int64_t lDone = 0;     ///< when the last frame of the session was acknowledged; 0 if never
};

/// A TCP socket that listens on a free port of 127.0.0.1.
class Listener {
  public:
    Listener();
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    int Descriptor() const { return nDescriptor_; }
    uint16_t Port() const { return iPort_; }

  private:
    int nDescriptor_ = -1;
    uint16_t iPort_ = 0;
};

/// Serves one connection of the listener. An exit status: 0 when all frames were acknowledged.
int ServeOneSession(const Listener& listener, const Job& job, SenderTimes& times);

} // namespace brennik::bench
