// The simulated host with one of its parts replaced by a double of a test's own.
// For doubles that the simulated parts have no switch for.
#pragma once

#include "platform/Host.h"

namespace brennik::world {

/// Each borrows what it names, and all else from the host.
inline Host Swapped(Host& host, Clock& clock) {
    return {clock,          host.sockets, host.comPorts,  host.files, host.profileStrings,
            host.processes, host.ostRtl,  host.pumpEvents};
}
inline Host Swapped(Host& host, Sockets& sockets) {
    return {host.clock,          sockets,        host.comPorts, host.files,
            host.profileStrings, host.processes, host.ostRtl,   host.pumpEvents};
}
inline Host Swapped(Host& host, ComPorts& comPorts) {
    return {host.clock,          host.sockets,   comPorts,    host.files,
            host.profileStrings, host.processes, host.ostRtl, host.pumpEvents};
}
inline Host Swapped(Host& host, Files& files) {
    return {host.clock,          host.sockets,   host.comPorts, files,
            host.profileStrings, host.processes, host.ostRtl,   host.pumpEvents};
}
inline Host Swapped(Host& host, ProfileStrings& profileStrings) {
    return {host.clock,     host.sockets,   host.comPorts, host.files,
            profileStrings, host.processes, host.ostRtl,   host.pumpEvents};
}
inline Host Swapped(Host& host, Processes& processes) {
    return {host.clock,          host.sockets, host.comPorts, host.files,
            host.profileStrings, processes,    host.ostRtl,   host.pumpEvents};
}
inline Host Swapped(Host& host, OstRtl& ostRtl) {
    return {host.clock,          host.sockets,   host.comPorts, host.files,
            host.profileStrings, host.processes, ostRtl,        host.pumpEvents};
}

} // namespace brennik::world
