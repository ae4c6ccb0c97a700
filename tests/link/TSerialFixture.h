// A port wrapper over the serial lines in memory, and a scripted peer at the other end of COM1.
// The line is in memory and its time virtual; the ports write down each call.
#pragma once

#include "link/TConnectionInfo.h"
#include "link/TSerial.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik {

/// The one way to what is private there.
class TSerialTestAccess {
  public:
    static std::vector<std::string_view> SplitIntoBlocks(std::string_view strData,
                                                         int32_t lBlockSize) {
        return TSerial::SplitIntoBlocks(strData, lBlockSize);
    }
    static void SetDcbFlag(int32_t& lFlags, int32_t lField, int32_t lValue) {
        TSerial::SetDcbFlag(lFlags, lField, lValue);
    }
    static int32_t SetPortInfoSettings(TSerial& serial) { return serial.SetPortInfoSettings(); }
    static int32_t SetSerialTimeouts(TSerial& serial) { return serial.SetSerialTimeouts(); }
    static std::string ConvNullTerminatedByteArray2String(TSerial& serial,
                                                          const std::vector<uint8_t>& bytes) {
        return serial.ConvNullTerminatedByteArray2String(bytes);
    }
    static std::string GetDevicePortName(const TSerial& serial) {
        return serial.GetDevicePortName();
    }
};

using Calls = std::vector<std::string>;

class TSerialFixture : public world::WorldTest {
  protected:
    TSerialFixture() {
        info.strComPort("COM1");
        info.lBaudRate(9600);
        info.lParity(2);   // none
        info.lDatabits(4); // eight
        host.RecordCalls();
    }

    /// A number of the operating system that later text-only failures must leave alone.
    void FailToOpenWith(int32_t lErrorCode) {
        host.FailNext(world::Op::ComOpen, {.lLastError = lErrorCode});
        ASSERT_EQ(serial->Initialise(info, true), 0);
        ASSERT_EQ(serial->Connect(), 1);
        host.ledger.trace.clear();
    }

    /// Opens COM1 with a scripted peer behind it and forgets the calls that it took.
    void Open() {
        peer = &host.comPorts.AddPeer("COM1");
        ASSERT_EQ(serial->Initialise(info, true), 0);
        ASSERT_EQ(serial->Connect(), 0);
        host.ledger.trace.clear();
    }

    /// The same, with the line set and time limits in force.
    void OpenAndConfigure() {
        Open();
        ASSERT_EQ(serial->Configure(), 0);
        host.ledger.trace.clear();
    }

    world::SimLine& Line() { return host.comPorts.Line("COM1"); }

    void ExpectError(int32_t lErrorCode, const std::string& strErrorMessage) const {
        EXPECT_EQ(serial->lErrorCode(), lErrorCode);
        EXPECT_EQ(serial->strErrorMessage(), strErrorMessage);
    }

    /// Calls of the ports and the pauses among them, in their order.
    Calls TakeCalls() { return std::exchange(host.ledger.trace, {}); }

    TConnectionInfo info;
    std::unique_ptr<TSerial> serial = std::make_unique<TSerial>();
    std::string strData = "old";
    world::ScriptedPeer* peer = nullptr;
};

} // namespace brennik
