// A wire that only writes down what a far end does to it.
// No bytes go anywhere: the test that holds it plays the other end.
#pragma once

#include "sim/FarEnd.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brennik {

class NotingWire : public sim::Wire {
  public:
    void Send(std::string_view strBytes) override { sends_.emplace_back(strBytes); }
    void Close() override { bClosed_ = true; }
    void Reset() override { bReset_ = true; }
    void HangUp(sim::Microseconds back) override { back_ = back; }

    bool bClosed() const { return bClosed_; }
    bool bReset() const { return bReset_; }

    /// How long the line was to be down, once it was hung up.
    std::optional<sim::Microseconds> Back() const { return back_; }

    /// What was sent since the last call, send by send.
    std::vector<std::string> TakeSends() { return std::exchange(sends_, {}); }

  private:
    std::vector<std::string> sends_;
    bool bClosed_ = false;
    bool bReset_ = false;
    std::optional<sim::Microseconds> back_;
};

} // namespace brennik
