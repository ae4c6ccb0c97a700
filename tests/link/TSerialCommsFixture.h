// A serial channel over the lines in memory, and a scripted peer at the other end of COM1.
// Its verbs connect; what it gathers are the calls of the ports and the lines of the log.
#pragma once

#include "link/TConnectionInfo.h"
#include "link/TSerialComms.h"
#include "tests/link/LinkFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace brennik {

class TSerialCommsFixture : public LinkFixture {
  protected:
    TSerialCommsFixture() {
        info.strComPort("COM1");
        info.lBaudRate(9600);
        info.lParity(2);   // none
        info.lDatabits(4); // eight
        info.lConnectionAttempts(1);
        host.RecordCalls();
    }

    int32_t Connect() { return comms->Connect(info, log); }

    /// Connects to a scripted peer and forgets calls and log.
    void ConnectToPeer() {
        peer = &host.comPorts.AddPeer("COM1");
        ASSERT_EQ(Connect(), 0);
        Forget();
    }

    /// Connects to a line whose settings were refused: connected all the same.
    void ConnectUnconfigured() {
        peer = &host.comPorts.AddPeer("COM1");
        host.FailNext(world::Op::ComSetState);
        ASSERT_EQ(Connect(), 1);
        Forget();
    }

    void Forget() {
        host.ledger.trace.clear();
        host.files.Remove(kLogFile);
    }

    world::SimLine& Line() { return host.comPorts.Line("COM1"); }

    void ExpectError(int32_t lErrorCode, const std::string& strErrorMessage) const {
        EXPECT_EQ(comms->lErrorCode(), lErrorCode);
        EXPECT_EQ(comms->strErrorMessage(), strErrorMessage);
    }

    /// Calls of the ports, pauses and lines of the log, in their order.
    Lines TakeCalls() {
        Lines calls = std::exchange(host.ledger.trace, {});
        for (std::string& strCall : calls) {
            if (strCall.starts_with("AppendLine ")) {
                strCall = "log";
            }
        }
        return calls;
    }

    TConnectionInfo info;
    std::unique_ptr<TSerialComms> comms = std::make_unique<TSerialComms>();
    std::string strData = "old";
    world::ScriptedPeer* peer = nullptr;
};

} // namespace brennik
