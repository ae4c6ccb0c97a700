// A service behaviour on a wire that only writes down what is done to it, in time that moves when
// a test says so. The test plays the client.
#pragma once

#include "sim/ServiceBehaviour.h"
#include "tests/sim/NotingWire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik {

/// The script of a text that has to be right.
inline sim::ServiceScript GoodScript(std::string_view strText) {
    std::string strError;
    auto script = sim::ServiceScript::Parse(strText, strError);
    EXPECT_TRUE(script) << strError;
    return script.value_or(sim::ServiceScript());
}

class ServicePlay {
  public:
    static constexpr const char* kRequest = "VFI,P,XDL,F,A,T,E,16,0,P,R,C";

    explicit ServicePlay(std::shared_ptr<const sim::ServedTree> tree,
                         std::string_view strScript = "",
                         std::optional<int32_t> lBlockSize = std::nullopt)
        : behaviour_(std::move(tree), Options(strScript, lBlockSize)) {}

    sim::ServiceBehaviour& Behaviour() { return behaviour_; }
    NotingWire& Wire() { return wire_; }
    const std::vector<std::string>& Events() const { return events_; }

    void Connect() { behaviour_.Connected(wire_, now_); }
    void Say(std::string_view strBytes) { behaviour_.Received(wire_, now_, strBytes); }
    void Ack() { Say("\x06"); }
    void Nak() { Say("\x15"); }
    void Leave() { behaviour_.Disconnected(now_); }

    /// Connects and makes the request; what was sent up to and with its ACK is dropped.
    void Begin(std::string_view strRequest = kRequest) {
        Connect();
        Say(sim::BuildFrame(strRequest));
        const std::string strSent = Sent();
        const size_t nAck = strSent.find('\x06');
        ASSERT_NE(nAck, std::string::npos) << "the request was not accepted";
        strHeld_ = strSent.substr(nAck + 1);
    }

    std::vector<std::string> Sends() { return wire_.TakeSends(); }

    /// All bytes sent since the last call.
    std::string Sent() {
        std::string strAll = std::exchange(strHeld_, {});
        for (const std::string& strSend : wire_.TakeSends()) {
            strAll += strSend;
        }
        return strAll;
    }

    /// Lets so many microseconds pass, with every deadline kept.
    void Pass(sim::Microseconds time) {
        const sim::Microseconds end = now_ + time;
        for (auto due = behaviour_.NextDeadline(); due && *due <= end;
             due = behaviour_.NextDeadline()) {
            now_ = std::max(now_, *due);
            behaviour_.Elapsed(wire_, now_);
        }
        now_ = end;
    }

    /// Acknowledges frame after frame until nothing more comes; gives their payloads.
    std::vector<std::string> AckAll() {
        std::vector<std::string> payloads;
        for (std::string strFrame = Sent(); !strFrame.empty(); strFrame = Sent()) {
            sim::FrameReader reader;
            EXPECT_EQ(reader.Add(strFrame), sim::FrameReader::Result::Good);
            payloads.push_back(reader.strPayload());
            Ack();
        }
        return payloads;
    }

  private:
    sim::ServiceOptions Options(std::string_view strScript, std::optional<int32_t> lBlockSize) {
        sim::ServiceOptions options;
        options.lBlockSize = lBlockSize;
        options.script = GoodScript(strScript);
        options.onEvent = [this](std::string_view strEvent) { events_.emplace_back(strEvent); };
        return options;
    }

    NotingWire wire_;
    std::vector<std::string> events_;
    std::string strHeld_;
    sim::Microseconds now_ = 5'000'000;
    sim::ServiceBehaviour behaviour_;
};

} // namespace brennik
