// A simulated host with a session log that writes into it, for the tests of links and channels.
// The time is early in the day, when the clock in single precision is still precise.
#pragma once

#include "support/TFLClientLog.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace brennik {

class LinkFixture : public world::WorldTest {
  protected:
    static constexpr const char* kLogFile = "/log/link.log";

    LinkFixture() {
        host.files.MakeFolder("/log");
        // An early hour, at which the single-precision clock tells microseconds apart.
        host.clock.SetTimeOfDay(100 * world::kSecond);
        StartLog(true, true);
    }

    void StartLog(bool bControlPackets, bool bProcessingPackets) {
        log.InitialiseLogging("/log\\", "link.log", true, bControlPackets, bProcessingPackets);
    }

    /// The lines of the log without date, time and tag.
    std::vector<std::string> Logged() const {
        std::vector<std::string> texts;
        for (const std::string& strLine : host.files.Lines(kLogFile)) {
            const size_t nTag = strLine.find("] ");
            texts.push_back(nTag == std::string::npos ? strLine : strLine.substr(nTag + 2));
        }
        return texts;
    }

    TFLClientLog log;
};

using Lines = std::vector<std::string>;

} // namespace brennik
