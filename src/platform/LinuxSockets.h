// TCP over IPv4 on the Berkeley sockets, with the error numbers that the logic tests.
// Every connection sends without delay, every descriptor is close-on-exec, interrupted calls
// resume. Tests put the network in memory of the simulated host in its place.
#pragma once

#include "platform/Sockets.h"

namespace brennik {

class LinuxSockets : public Sockets {
  public:
    int32_t Startup(int32_t lVersion) override;
    void Cleanup() override;
    int32_t LastError() override;
    int32_t Socket() override;
    int32_t Connect(int32_t lSocket, uint32_t lAddress, uint16_t iPort) override;
    int32_t SetNonBlocking(int32_t lSocket) override;
    int32_t BytesWaiting(int32_t lSocket, int32_t& lBytes) override;
    int32_t SelectWritable(int32_t lSocket, int32_t lSeconds) override;
    int32_t Receive(int32_t lSocket, char* buffer, int32_t lLength) override;
    int32_t Send(int32_t lSocket, std::string_view strData) override;
    void Shutdown(int32_t lSocket) override;
    int32_t CloseSocket(int32_t lSocket) override;
    std::vector<std::string> GetHostByName(const std::string& strName) override;
    uint32_t InetAddr(const std::string& strAddress) override;
    uint16_t HostToNetworkPort(uint16_t iPort) override;
    void WaitReadable(int32_t lSocket, int32_t lMilliseconds) override;
};

} // namespace brennik
