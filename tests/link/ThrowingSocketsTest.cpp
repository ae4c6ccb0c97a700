// The throwing sockets themselves: every call throws, and a test that expects better fails.
#include "tests/link/ThrowingSockets.h"

#include "link/TSocket.h"
#include "platform/Host.h"
#include "tests/world/SimHost.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace brennik {
namespace {

class ThrowingSocketsTest : public world::WorldTest {
  protected:
    ThrowingSockets sockets;
};

TEST_F(ThrowingSocketsTest, EveryCallThrows) {
    int32_t lBytes = 0;
    char buffer[1];
    const std::vector<std::function<void()>> calls = {
        [&] { sockets.Startup(0x0101); },
        [&] { sockets.Cleanup(); },
        [&] { sockets.LastError(); },
        [&] { sockets.Socket(); },
        [&] { sockets.Connect(1, 0, 0); },
        [&] { sockets.SetNonBlocking(1); },
        [&] { sockets.BytesWaiting(1, lBytes); },
        [&] { sockets.SelectWritable(1, 0); },
        [&] { sockets.Receive(1, buffer, 1); },
        [&] { sockets.Send(1, "x"); },
        [&] { sockets.Shutdown(1); },
        [&] { sockets.CloseSocket(1); },
        [&] { sockets.GetHostByName("x"); },
        [&] { sockets.InetAddr("1.2.3.4"); },
        [&] { sockets.HostToNetworkPort(1); },
        [&] { sockets.WaitReadable(1, 1); },
    };
    for (size_t nCall = 0; nCall < calls.size(); ++nCall) {
        EXPECT_THROW(calls[nCall](), RuntimeFailure) << nCall;
    }
}

TEST_F(ThrowingSocketsTest, FailATestThatExpectsASuccess) {
    Host bad = world::Swapped(host.TheHost(), sockets);
    const ScopedHost scoped(bad);
    TSocket socket;
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(socket.Send("x", 1), 0), "socket.Send");
}

} // namespace
} // namespace brennik
