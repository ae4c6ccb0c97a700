#include "sim/host/Waiting.h"

#include <algorithm>
#include <ctime>
#include <poll.h>

namespace brennik::sim {

namespace {

volatile std::sig_atomic_t bStopAsked = 0;

void AskToStop(int /*signal*/) {
    bStopAsked = 1;
}

} // namespace

Microseconds Now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return Microseconds{time.tv_sec} * 1'000'000 + time.tv_nsec / 1000;
}

std::optional<Microseconds> Sooner(std::optional<Microseconds> one,
                                   std::optional<Microseconds> other) {
    return one && other ? std::min(one, other) : one ? one : other;
}

StopSignals::StopSignals() {
    sigset_t stopSignals;
    ::sigemptyset(&stopSignals);
    ::sigaddset(&stopSignals, SIGINT);
    ::sigaddset(&stopSignals, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &stopSignals, &before_);
    struct sigaction action {};
    action.sa_handler = AskToStop;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

StopSignals::~StopSignals() {
    ::sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool StopSignals::bAsked() const {
    return bStopAsked != 0;
}

int StopSignals::Wait(pollfd* polled, size_t nPolled, std::optional<Microseconds> until) const {
    timespec limit{};
    if (until) {
        const Microseconds left = std::max<Microseconds>(0, *until - Now());
        limit.tv_sec = left / 1'000'000;
        limit.tv_nsec = left % 1'000'000 * 1000;
    }
    sigset_t none;
    ::sigemptyset(&none);
    return ::ppoll(polled, nPolled, until ? &limit : nullptr, &none);
}

} // namespace brennik::sim
