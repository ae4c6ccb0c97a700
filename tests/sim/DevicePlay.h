// A device behaviour on a wire that only writes down what is done to it, in time that moves when a
// test says so. The test plays the other side of the line.
#pragma once

#include "sim/Codec.h"
#include "sim/DeviceBehaviour.h"
#include "tests/sim/NotingWire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik {

/// The script of a text that has to be right.
inline sim::DeviceScript GoodDeviceScript(std::string_view strText) {
    std::string strError;
    auto script = sim::DeviceScript::Parse(strText, strError);
    EXPECT_TRUE(script) << strError;
    return script.value_or(sim::DeviceScript());
}

class DevicePlay {
  public:
    explicit DevicePlay(std::string_view strScript = "",
                        std::shared_ptr<const sim::ServedTree> files = nullptr)
        : store_(std::make_shared<sim::MemoryStore>()),
          device_(Options(strScript, std::move(files))) {
        device_.Connected(wire_, now_);
    }

    sim::DeviceBehaviour& Device() { return device_; }
    std::map<std::string, std::string>& Files() { return store_->Files(); }
    const std::vector<std::string>& Events() const { return events_; }
    sim::Microseconds Now() const { return now_; }
    const sim::DeviceReport& Report(size_t nCall = 0) const { return device_.Reports()[nCall]; }

    /// Says something and gives what the device says at once.
    std::string Say(std::string_view strBytes) {
        device_.Received(wire_, now_, strBytes);
        return Sent();
    }
    std::string Enq() { return Say("\x05"); }
    std::string Ack() { return Say("\x06"); }
    std::string Nak() { return Say("\x15"); }
    std::string Frame(std::string_view strPayload) { return Say(sim::BuildFrame(strPayload)); }
    std::string Message(std::string_view strPayload) {
        return Say(sim::BuildManagementFrame(strPayload));
    }
    std::string Open(std::string_view strName) {
        return Frame(sim::OpenPacket('O', strName, 0, {2015, 5, 22, 11, 0, 0}));
    }
    std::string Write(uint32_t lOffset, std::string_view strData) {
        return Frame(sim::WritePacket(lOffset, strData));
    }

    /// Polls and acknowledges the request.
    void Begin() {
        ASSERT_NE(Enq(), "");
        ASSERT_EQ(Ack(), "");
        ASSERT_TRUE(device_.bInSession());
    }

    /// All bytes sent since the last call.
    std::string Sent() {
        std::string strAll;
        for (const std::string& strSend : wire_.TakeSends()) {
            strAll += strSend;
        }
        return strAll;
    }

    /// Lets so many microseconds pass, with every deadline kept; gives what the device says.
    std::string Pass(sim::Microseconds time) {
        const sim::Microseconds end = now_ + time;
        for (auto due = device_.NextDeadline(); due && *due <= end; due = device_.NextDeadline()) {
            now_ = std::max(now_, *due);
            device_.Elapsed(wire_, now_);
        }
        now_ = end;
        return Sent();
    }

  private:
    sim::DeviceOptions Options(std::string_view strScript,
                               std::shared_ptr<const sim::ServedTree> files) {
        sim::DeviceOptions options;
        options.script = GoodDeviceScript(strScript);
        options.store = store_;
        options.files = std::move(files);
        options.onEvent = [this](std::string_view strEvent) { events_.emplace_back(strEvent); };
        return options;
    }

    NotingWire wire_;
    std::vector<std::string> events_;
    std::shared_ptr<sim::MemoryStore> store_;
    sim::Microseconds now_ = 5'000'000;
    sim::DeviceBehaviour device_;
};

} // namespace brennik
