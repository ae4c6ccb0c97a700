#include "shell/frmEventPump.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <utility>

namespace brennik {

frmEventPump::frmEventPump(std::function<int64_t()> now) : now_(std::move(now)) {
}

void frmEventPump::Pump() {
    if (bPumping_ || now_() < lNextPump_)
        return;
    bPumping_ = true;
    QCoreApplication::processEvents();
    bPumping_ = false;
    lNextPump_ = now_() + kLeastPumpInterval;
}

std::function<int64_t()> frmEventPump::ForwardClock() {
    QElapsedTimer timer;
    timer.start();
    return [timer] { return static_cast<int64_t>(timer.elapsed()); };
}

} // namespace brennik
