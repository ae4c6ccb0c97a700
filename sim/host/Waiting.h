// How the servers of brenniksim wait: the clock of their far ends, and the signals that end them.
// Tests of the far ends need none of this: they tell the time themselves.
#pragma once

#include "sim/FarEnd.h"

#include <csignal>
#include <cstddef>
#include <optional>

struct pollfd;

namespace brennik::sim {

/// The moment at hand, on a clock that only goes forward.
Microseconds Now();

/// The sooner of two moments; nothing when there is neither.
std::optional<Microseconds> Sooner(std::optional<Microseconds> one,
                                   std::optional<Microseconds> other);

/// While it lives, SIGINT and SIGTERM ask for the end in place of bringing it, and come only while
/// Wait waits, so that none is lost between a look and a wait. One at a time.
class StopSignals {
  public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// One of them has come.
    bool bAsked() const;

    /// Waits until one of the descriptors is ready, a moment has come, or a signal has. The number
    /// of ready ones; without any their results mean nothing.
    int Wait(pollfd* polled, size_t nPolled, std::optional<Microseconds> until) const;

  private:
    sigset_t before_{};
};

} // namespace brennik::sim
