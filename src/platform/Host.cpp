#include "platform/Host.h"

#include "platform/PumpEvents.h"

namespace brennik {

namespace {

Host*& Current() {
    static Host* current = nullptr;
    return current;
}

} // namespace

Host& CurrentHost() {
    Host* current = Current();
    return current != nullptr ? *current : RealHost();
}

ScopedHost::ScopedHost(Host& host) : previous_(Current()) {
    Current() = &host;
}

ScopedHost::~ScopedHost() {
    Current() = previous_;
}

void PumpEvents() {
    // A host that nobody has used yet has no hook, and isn't made for the sake of it.
    if (Current() != nullptr || RealHostMade())
        CurrentHost().pumpEvents();
}

float SecondsSinceMidnight() {
    return CurrentHost().clock.SecondsSinceMidnight();
}

DateTime LocalNow() {
    return CurrentHost().clock.LocalNow();
}

void Sleep(int32_t lMilliseconds) {
    CurrentHost().clock.Sleep(lMilliseconds);
}

} // namespace brennik
