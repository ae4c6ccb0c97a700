// The doubles of the serial ports themselves: what they do, and that their failures show.
#include "link/TConnectionInfo.h"
#include "link/TSerial.h"
#include "platform/Host.h"
#include "tests/link/NotingComPorts.h"
#include "tests/link/ThrowingComPorts.h"
#include "tests/world/SimHost.h"
#include "tests/world/SwappedHost.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace brennik {
namespace {

class ComPortsDoublesTest : public world::WorldTest {
  protected:
    int32_t Connect() {
        EXPECT_EQ(serial.Initialise(info, true), 0);
        return serial.Connect();
    }

    TConnectionInfo info;
    TSerial serial;
};

TEST_F(ComPortsDoublesTest, EveryCallOfTheThrowingPortsThrows) {
    ThrowingComPorts ports;
    DCB dcb;
    char buffer[1];
    int32_t lBytes = 0;
    const std::vector<std::function<void()>> calls = {
        [&] { ports.LastError(); },
        [&] { ports.Open("COM1"); },
        [&] { ports.Close(0); },
        [&] { ports.Read(0, buffer, 1, lBytes); },
        [&] { ports.Write(0, "x", lBytes); },
        [&] { ports.Purge(0, purgeflag::kRxClear); },
        [&] { ports.GetState(0, dcb); },
        [&] { ports.SetState(0, dcb); },
        [&] { ports.SetTimeouts(0, CommTimeouts{}); },
    };
    for (size_t nCall = 0; nCall < calls.size(); ++nCall) {
        EXPECT_THROW(calls[nCall](), RuntimeFailure) << nCall;
    }
}

TEST_F(ComPortsDoublesTest, ThrowingPortsFailATestThatExpectsASuccess) {
    ThrowingComPorts ports;
    Host bad = world::Swapped(host.TheHost(), ports);
    const ScopedHost scoped(bad);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Connect(), 0), "Connect()");
}

TEST_F(ComPortsDoublesTest, TheNotingPortKeepsWhatItWasTold) {
    NotingComPorts ports;
    DCB dcb;
    dcb.BaudRate = -5;
    int32_t lBytes = -1;
    char buffer[1];
    EXPECT_EQ(ports.Open("anything"), NotingComPorts::kHandle);
    EXPECT_TRUE(ports.SetState(NotingComPorts::kHandle, dcb));
    EXPECT_TRUE(ports.SetTimeouts(NotingComPorts::kHandle, {1, 2, 3, 4, 5}));
    EXPECT_TRUE(ports.Write(NotingComPorts::kHandle, "xyz", lBytes));
    EXPECT_EQ(lBytes, 3);
    EXPECT_TRUE(ports.Read(NotingComPorts::kHandle, buffer, 1, lBytes));
    EXPECT_EQ(lBytes, 0);
    ports.Purge(NotingComPorts::kHandle, 9);
    EXPECT_TRUE(ports.Close(NotingComPorts::kHandle));
    EXPECT_EQ(ports.names, std::vector<std::string>{"anything"});
    EXPECT_EQ(ports.state, dcb);
    EXPECT_EQ(ports.timeouts, (CommTimeouts{1, 2, 3, 4, 5}));
    EXPECT_EQ(ports.writes, std::vector<std::string>{"xyz"});
    EXPECT_EQ(ports.purges, std::vector<int32_t>{9});
    EXPECT_EQ(ports.nCloses, 1);
}

TEST_F(ComPortsDoublesTest, TheNotingPortFailsATestWhoseCallsGoElsewhere) {
    NotingComPorts ports;
    EXPECT_NONFATAL_FAILURE(ports.Purge(kNoComPort, 0), "hPort");
}

} // namespace
} // namespace brennik
