// A channel that plays what a test has laid out: each read takes the next delivery. With nothing
// laid out it is silent, and each read then takes 10 ms, as on a serial line; or it fails at once.
#pragma once

#include "link/TCommsChannel.h"
#include "tests/world/SimHost.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brennik {

/// What one read does.
struct Delivery {
    std::string strData{};
    int32_t lStatus = 0;
    /// The time of day to which the read moves the clock, in microseconds.
    std::optional<world::Microseconds> timeOfDay{};
    /// Thrown by the read in place of all else.
    std::optional<FailureKind> thrown{};
};

class FakeChannel final : public TCommsChannel {
  public:
    explicit FakeChannel(world::SimHost& host) : host_(host) {}

    [[nodiscard]] int32_t Connect(TConnectionInfo&, TFLClientLog&) override { return 0; }
    [[nodiscard]] int32_t Disconnect() override { return 0; }

    [[nodiscard]] int32_t WriteData(std::string_view strData) override {
        writes.emplace_back(strData);
        if (writeThrows) {
            throw RuntimeFailure(*writeThrows);
        }
        if (OnWrite) {
            OnWrite(strData);
        }
        return lWriteStatus;
    }

    [[nodiscard]] int32_t ReadData(std::string& strData) override {
        ++nReads;
        return Play(reads, strData);
    }

    [[nodiscard]] int32_t ReadCharacter(std::string& strData) override {
        ++nCharacters;
        return Play(characters, strData);
    }

    int32_t lErrorCode() const override { return lErrorCode_; }
    const std::string& strErrorMessage() const override { return strErrorMessage_; }
    const std::string& strConnectionData() const override { return strConnectionData_; }

    /// What each ReadData and each ReadCharacter does next.
    std::deque<Delivery> reads;
    std::deque<Delivery> characters;
    /// The status of a read for which nothing is laid out; a failure takes no time at all.
    int32_t lStatusWhenEmpty = 0;
    int32_t nReads = 0;
    int32_t nCharacters = 0;

    std::vector<std::string> writes;
    int32_t lWriteStatus = 0;
    std::optional<FailureKind> writeThrows;
    std::function<void(std::string_view)> OnWrite;

  private:
    int32_t Play(std::deque<Delivery>& deliveries, std::string& strData) {
        strData.clear();
        if (deliveries.empty() && lStatusWhenEmpty != 0) {
            return lStatusWhenEmpty;
        }
        if (deliveries.empty()) {
            host_.RunFor(10 * world::kMillisecond);
            return 0;
        }
        const Delivery delivery = deliveries.front();
        deliveries.pop_front();
        if (delivery.timeOfDay) {
            host_.clock.SetTimeOfDay(*delivery.timeOfDay);
        }
        if (delivery.thrown) {
            throw RuntimeFailure(*delivery.thrown);
        }
        strData = delivery.strData;
        return delivery.lStatus;
    }

    world::SimHost& host_;
    int32_t lErrorCode_ = 4711;
    std::string strErrorMessage_ = "the line is cut";
    std::string strConnectionData_;
};

} // namespace brennik
