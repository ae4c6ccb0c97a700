// A far end that writes down what it is told, as texts: "connected", the bytes of each arrival,
// "elapsed" with the moment, "disconnected". A test says what it does by its three functions.
// And a wire that a test writes as a function.
#pragma once

#include "sim/FarEnd.h"
#include "tests/world/Mangler.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik::world {

class NotingFarEnd : public sim::FarEnd {
  public:
    explicit NotingFarEnd(std::vector<std::string>& notes) : notes_(notes) {}

    void Connected(sim::Wire& wire, sim::Microseconds) override {
        notes_.emplace_back("connected");
        if (onConnected) {
            onConnected(wire);
        }
    }
    void Received(sim::Wire& wire, sim::Microseconds now, std::string_view strBytes) override {
        notes_.emplace_back(strBytes);
        if (onReceived) {
            onReceived(wire, now);
        }
    }
    void Elapsed(sim::Wire&, sim::Microseconds now) override {
        notes_.push_back("elapsed " + std::to_string(now));
        if (onElapsed) {
            onElapsed();
        }
    }
    void Disconnected(sim::Microseconds) override { notes_.emplace_back("disconnected"); }
    std::optional<sim::Microseconds> NextDeadline() const override { return deadline; }

    std::optional<sim::Microseconds> deadline;
    std::function<void(sim::Wire&)> onConnected;
    std::function<void(sim::Wire&, sim::Microseconds)> onReceived;
    std::function<void()> onElapsed;

  private:
    std::vector<std::string>& notes_;
};

class FunctionMangler : public Mangler {
  public:
    using Function = std::function<void(Direction, std::string_view, Outlet&)>;
    explicit FunctionMangler(Function function) : function_(std::move(function)) {}
    void Pass(Direction direction, std::string_view strBytes, Outlet& outlet) override {
        function_(direction, strBytes, outlet);
    }

  private:
    Function function_;
};

} // namespace brennik::world
