// A socket wrapper over the network in memory, and a scripted peer to connect it to.
// Its verbs connect and let the peer speak; what it gathers are the calls of the sockets.
#pragma once

#include "link/TSocket.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik {

using Calls = std::vector<std::string>;

inline constexpr const char* kPeerAddress = "10.0.0.1";
inline constexpr uint16_t kPeerPort = 5000;

class TSocketFixture : public world::WorldTest {
  protected:
    TSocketFixture() {
        host.clock.SetTimeOfDay(100 * world::kSecond);
        host.network.RecordCalls(true);
    }

    int32_t Open(bool bBlocking = true, double dTimeout = 10, uint16_t iPort = kPeerPort) {
        return socket.OpenSocket("", kPeerAddress, iPort, dTimeout, lSocket, bBlocking, true);
    }

    /// Opens a connection to a scripted peer and forgets the calls that it took.
    void Connect() {
        peer = &host.network.AddPeer(kPeerAddress, kPeerPort);
        ASSERT_EQ(Open(), 0);
        host.RunFor(world::kMillisecond);
        host.network.calls.clear();
    }

    void Feed(std::string_view strBytes) { host.network.LastConnection().Feed(strBytes); }

    void ExpectError(int32_t lErrorCode, const std::string& strErrorMessage) const {
        EXPECT_EQ(socket.lErrorCode(), lErrorCode);
        EXPECT_EQ(socket.strErrorMessage(), strErrorMessage);
    }

    Calls TakeCalls() { return std::exchange(host.network.calls, {}); }

    TSocket socket;
    int32_t lSocket = 77;
    std::string strData = "old";
    int32_t lBytesRead = 99;
    world::ScriptedPeer* peer = nullptr;
};

} // namespace brennik
