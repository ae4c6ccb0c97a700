// brenniksim and brennikclient as real processes on the two ends of one channel, with their
// folders: what is served, what is received, the configuration and the log.
#pragma once

#include "tests/system/ProgramRun.h"
#include "tests/system/Sandbox.h"
#include "tests/system/SimService.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace brennik::system_tests {

/// Reproducible bytes of every value.
std::string SomeBytes(size_t nCount);

class RealRun : public ::testing::Test {
  protected:
    RealRun();

    /// Starts a service of the folder "served" at that place and waits until it listens.
    void StartService(const std::vector<std::string>& where,
                      const std::vector<std::string>& options);

    /// A profile with short limits and the log on; settings stand behind the others, as lines.
    void WriteProfile(const std::vector<std::string>& settings);

    std::vector<std::string> ClientArguments() const;

    /// Runs the profile to its end: nothing on stdout and stderr, and exit status 0.
    void RunClient(const std::function<void()>& inChild = {});

    std::string Served(const std::string& strName) const;
    std::string Received(const std::string& strName) const;
    std::string Log() const;
    bool Logged(const std::string& strText) const;

    TempFolder folder_;
    std::unique_ptr<SimService> service_;
};

} // namespace brennik::system_tests
