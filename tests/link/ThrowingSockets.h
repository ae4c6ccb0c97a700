// Sockets whose every call fails as no socket call does: with a run-time failure. For the
// catch-alls of the classes above them.
#pragma once

#include "platform/RuntimeFailure.h"
#include "platform/Sockets.h"

#include <string>
#include <string_view>
#include <vector>

namespace brennik {

class ThrowingSockets final : public Sockets {
  public:
    int32_t Startup(int32_t) override { Throw(); }
    void Cleanup() override { Throw(); }
    int32_t LastError() override { Throw(); }
    int32_t Socket() override { Throw(); }
    int32_t Connect(int32_t, uint32_t, uint16_t) override { Throw(); }
    int32_t SetNonBlocking(int32_t) override { Throw(); }
    int32_t BytesWaiting(int32_t, int32_t&) override { Throw(); }
    int32_t SelectWritable(int32_t, int32_t) override { Throw(); }
    int32_t Receive(int32_t, char*, int32_t) override { Throw(); }
    int32_t Send(int32_t, std::string_view) override { Throw(); }
    void Shutdown(int32_t) override { Throw(); }
    int32_t CloseSocket(int32_t) override { Throw(); }
    std::vector<std::string> GetHostByName(const std::string&) override { Throw(); }
    uint32_t InetAddr(const std::string&) override { Throw(); }
    uint16_t HostToNetworkPort(uint16_t) override { Throw(); }
    void WaitReadable(int32_t, int32_t) override { Throw(); }

  private:
    [[noreturn]] static void Throw() { throw RuntimeFailure(FailureKind::DeviceIoError); }
};

} // namespace brennik
