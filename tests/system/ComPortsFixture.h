// Real ports over a pseudo-terminal that the host file calls COM1, for the tests of LinuxComPorts.
// The test holds the other end; nothing here is simulated.
#pragma once

#include "platform/LinuxComPorts.h"
#include "tests/system/PseudoTerminal.h"
#include "tests/system/Sandbox.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace brennik::system_tests {

class ComPortsFixture : public testing::Test {
  protected:
    /// Opens COM1 with the time limits that its wrapper sets.
    void Open() {
        hPort_ = ports_.Open("COM1");
        ASSERT_GE(hPort_, 0) << "error " << ports_.LastError();
        Limit({10, 0, 10, 0, 1000});
    }

    void Limit(const CommTimeouts& timeouts) { ASSERT_TRUE(ports_.SetTimeouts(hPort_, timeouts)); }

    /// The time limits of reads, and of writes, alone.
    void LimitReads(int32_t lConstant, int32_t lMultiplier = 0, int32_t lInterval = 0) {
        Limit({lInterval, lMultiplier, lConstant, 0, 1000});
    }
    void LimitWrites(int32_t lConstant, int32_t lMultiplier = 0) {
        Limit({10, 0, 10, lMultiplier, lConstant});
    }

    /// What a read of so many bytes gives, or "error n".
    std::string Read(int32_t lCount) {
        std::string strText(static_cast<size_t>(lCount), '\0');
        int32_t lRead = -7;
        if (!ports_.Read(hPort_, strText.data(), lCount, lRead)) {
            return "error " + std::to_string(ports_.LastError());
        }
        strText.resize(static_cast<size_t>(lRead));
        return strText;
    }

    /// How many bytes a write gives, or "error n".
    std::string Write(const std::string& strText) {
        int32_t lWritten = -7;
        return ports_.Write(hPort_, strText, lWritten)
                   ? std::to_string(lWritten)
                   : "error " + std::to_string(ports_.LastError());
    }

    std::string SetState(const DCB& dcb) {
        return ports_.SetState(hPort_, dcb) ? "set" : "error " + std::to_string(ports_.LastError());
    }

    DCB State() {
        DCB dcb;
        EXPECT_TRUE(ports_.GetState(hPort_, dcb));
        return dcb;
    }

    /// Makes the last error one that no test expects.
    void SpoilLastError() {
        ASSERT_EQ(ports_.Open("no such port"), -1);
        ASSERT_EQ(ports_.LastError(), 2);
    }

    /// Milliseconds that something lasts.
    static long long Lasts(const std::function<void()>& body) {
        const long long lBegin = MonotonicNanoseconds();
        body();
        return (MonotonicNanoseconds() - lBegin) / 1000000;
    }

    /// Longer than any wait that is asked for, and shorter than one that hangs.
    static constexpr long long kHangs = 5000;

    PseudoTerminal terminal_;
    LinuxComPorts ports_{HostFile("[PORTS]\nCOM1=" + terminal_.strPath() + "\n")};
    int32_t hPort_ = kNoComPort;
};

} // namespace brennik::system_tests
