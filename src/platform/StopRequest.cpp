#include "platform/StopRequest.h"

#include <csignal>
#include <initializer_list>

namespace brennik {

namespace {

volatile std::sig_atomic_t bStopRequested = 0;

void SetDisposition(int nSignal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    static_cast<void>(sigaction(nSignal, &action, nullptr)); // known signals: it can't fail
}

extern "C" void AskForStop(int nSignal) {
    if (bStopRequested == 0) {
        bStopRequested = 1;
        return;
    }
    SetDisposition(nSignal, SIG_DFL);
    static_cast<void>(raise(nSignal)); // ends the process when this handler returns
}

} // namespace

void CatchStopSignals() {
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    for (const int nSignal : {SIGINT, SIGTERM}) {
        SetDisposition(nSignal, AskForStop);
        sigaddset(&stopSignals, nSignal);
    }
    for (const int nSignal : {SIGPIPE, SIGXFSZ}) {
        SetDisposition(nSignal, SIG_IGN);
    }
    // Whoever started us may have left them blocked.
    static_cast<void>(pthread_sigmask(SIG_UNBLOCK, &stopSignals, nullptr));
}

bool StopRequested() {
    return bStopRequested != 0;
}

} // namespace brennik
