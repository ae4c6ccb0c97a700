// One serial port without a line. It opens under any name, takes any setting, also those that no
// line could be given, and keeps all that it was told. A call with another handle than its own
// fails the test.
#pragma once

#include "platform/ComPorts.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace brennik {

class NotingComPorts final : public ComPorts {
  public:
    static constexpr int32_t kHandle = 7;

    int32_t LastError() override { return 0; }
    int32_t Open(const std::string& strPort) override {
        names.push_back(strPort);
        return kHandle;
    }
    bool Close(int32_t hPort) override {
        EXPECT_EQ(hPort, kHandle);
        ++nCloses;
        return true;
    }
    bool Read(int32_t hPort, char*, int32_t, int32_t& lRead) override {
        EXPECT_EQ(hPort, kHandle);
        lRead = 0;
        return true;
    }
    bool Write(int32_t hPort, std::string_view strData, int32_t& lWritten) override {
        EXPECT_EQ(hPort, kHandle);
        writes.emplace_back(strData);
        lWritten = static_cast<int32_t>(strData.size());
        return true;
    }
    void Purge(int32_t hPort, int32_t lFlags) override {
        EXPECT_EQ(hPort, kHandle);
        purges.push_back(lFlags);
    }
    bool GetState(int32_t hPort, DCB& dcb) override {
        EXPECT_EQ(hPort, kHandle);
        dcb = state;
        return true;
    }
    bool SetState(int32_t hPort, const DCB& dcb) override {
        EXPECT_EQ(hPort, kHandle);
        state = dcb;
        return true;
    }
    bool SetTimeouts(int32_t hPort, const CommTimeouts& limits) override {
        EXPECT_EQ(hPort, kHandle);
        timeouts = limits;
        return true;
    }

    std::vector<std::string> names; ///< that it was opened under
    int32_t nCloses = 0;
    std::vector<std::string> writes;
    std::vector<int32_t> purges;
    DCB state; ///< a test may set what is found there
    CommTimeouts timeouts;
};

} // namespace brennik
