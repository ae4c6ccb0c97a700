// A TCP channel over the network in memory, and a scripted peer to connect it to.
// Its verbs connect and let the peer speak; what it gathers are the calls of the sockets.
#pragma once

#include "link/TConnectionInfo.h"
#include "link/TSocketComms.h"
#include "tests/link/LinkFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace brennik {

class TSocketCommsFixture : public LinkFixture {
  protected:
    TSocketCommsFixture() {
        info.strIPAddress1("10.0.0.1");
        info.lIPPortNo1(5001);
        info.lConnectionAttempts(1);
        info.lConnectTimeout(10);
        host.network.RecordCalls(true);
    }

    int32_t Connect() { return comms->Connect(info, log); }

    /// Connects to a scripted peer and forgets calls and log.
    void ConnectToPeer() {
        peer = &host.network.AddPeer("10.0.0.1", 5001);
        ASSERT_EQ(Connect(), 0);
        host.RunFor(world::kMillisecond);
        host.network.calls.clear();
        host.files.Remove(kLogFile);
    }

    void Feed(std::string_view strBytes) { host.network.LastConnection().Feed(strBytes); }

    void ExpectError(int32_t lErrorCode, const std::string& strErrorMessage) const {
        EXPECT_EQ(comms->lErrorCode(), lErrorCode);
        EXPECT_EQ(comms->strErrorMessage(), strErrorMessage);
    }

    Lines TakeCalls() { return std::exchange(host.network.calls, {}); }

    /// The connects among the calls.
    Lines Connects() const {
        Lines connects;
        for (const std::string& strCall : host.network.calls) {
            if (strCall.starts_with("Connect ")) {
                connects.push_back(strCall);
            }
        }
        return connects;
    }

    TConnectionInfo info;
    std::unique_ptr<TSocketComms> comms = std::make_unique<TSocketComms>();
    std::string strData = "old";
    world::ScriptedPeer* peer = nullptr;
};

} // namespace brennik
