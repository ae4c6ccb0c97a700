// A plain TCP connection by which a test talks to a program of ours with bytes made by hand.
// Nothing here sleeps; every wait is for an event, with a generous limit.
#pragma once

#include "tests/system/PlainPeer.h"

#include <cstdint>
#include <string_view>

namespace brennik::system_tests {

/// A connection to a port of this machine, made at once. Its ends are "(closed)" and "(reset)".
class PlainSocket : public PlainPeer {
  public:
    explicit PlainSocket(uint16_t iPort);

    void Send(std::string_view strBytes) override;

  private:
    std::string_view EndName(bool bInOrder) const override;
};

} // namespace brennik::system_tests
