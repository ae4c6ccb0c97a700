// The serial line COM1 of the simulated host with a far end behind it, and the calls of the program
// on its port in verbs, for the tests of the line itself.
#pragma once

#include "tests/world/NotingFarEnd.h"
#include "tests/world/SimHost.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brennik::world {

inline constexpr CommTimeouts kLimits{10, 0, 10, 0, 1000};
inline constexpr Microseconds kByteTime = 1042; // at 9600 bits per second, rounded up

using Notes = std::vector<std::string>;

class SimLineFixture : public WorldTest {
  protected:
    /// A peer played by hand behind COM1, and the port opened.
    void OpenWithPeer() {
        peer = &host.comPorts.AddPeer("COM1");
        Open();
    }
    /// A far end that takes notes, a new one for each opening.
    void ServeNotes() {
        host.comPorts.AddLine("COM1").ServeEachOpening([this] {
            auto made = std::make_unique<NotingFarEnd>(notes);
            if (prepare) {
                prepare(*made);
            }
            return made;
        });
    }
    /// One that is plugged in for good.
    NotingFarEnd& PlugNotes() {
        auto made = std::make_unique<NotingFarEnd>(notes);
        NotingFarEnd& farEnd = *made;
        host.comPorts.AddLine("COM1").Plug(std::move(made));
        return farEnd;
    }
    void Open() {
        hPort = host.comPorts.Open("COM1");
        ASSERT_GE(hPort, 0);
        ASSERT_TRUE(host.comPorts.SetTimeouts(hPort, kLimits));
    }
    void Close() { ASSERT_TRUE(host.comPorts.Close(hPort)); }
    void Set(const DCB& dcb) { ASSERT_TRUE(host.comPorts.SetState(hPort, dcb)); }
    void SetRate(int32_t lBaudRate) {
        DCB dcb;
        dcb.BaudRate = lBaudRate;
        Set(dcb);
    }
    SimLine& Line() { return host.comPorts.Line("COM1"); }

    void Write(std::string_view strBytes) {
        int32_t lWritten = 0;
        EXPECT_TRUE(host.comPorts.Write(hPort, strBytes, lWritten));
        EXPECT_EQ(lWritten, static_cast<int32_t>(strBytes.size()));
    }
    /// What comes in ten milliseconds; "dead" on a port that has hung up.
    std::string Read() {
        std::string strBytes(1000, '\0');
        int32_t lRead = 0;
        if (!host.comPorts.Read(hPort, strBytes.data(), 1000, lRead)) {
            return "dead";
        }
        strBytes.resize(static_cast<size_t>(lRead));
        return strBytes;
    }
    bool Dead() {
        int32_t lWritten = 0;
        return !host.comPorts.Write(hPort, "x", lWritten);
    }

    ScriptedPeer* peer = nullptr;
    Notes notes;
    std::function<void(NotingFarEnd&)> prepare;
    int32_t hPort = kNoComPort;
};

} // namespace brennik::world
