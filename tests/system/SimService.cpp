#include "tests/system/SimService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace brennik::system_tests {

namespace {

constexpr std::string_view kListening = "listening on ";

std::vector<std::string> ArgumentsOf(const std::string& strCommand,
                                     std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {BRENNIK_SIM_PROGRAM, strCommand});
    return arguments;
}

} // namespace

Ended RunSim(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), BRENNIK_SIM_PROGRAM);
    ProgramRun program(arguments);
    const int nExit = program.Wait();
    return {nExit, program.strOut(), program.strErr()};
}

SimProgram::SimProgram(const std::string& strCommand, std::vector<std::string> arguments,
                       const std::function<void()>& inChild)
    : program_(ArgumentsOf(strCommand, std::move(arguments)), inChild) {
    EXPECT_TRUE(Eventually([&] { return nFirstLine() > 0 || !program_.bRunning(); }));
    EXPECT_THAT(program_.strOut(), testing::StartsWith(kListening)) << program_.strErr();
}

std::string SimProgram::strListening() const {
    const std::string strLine = program_.strOut();
    const size_t nEnd = std::min(strLine.find('\n'), strLine.size());
    return nEnd < kListening.size() ? ""
                                    : strLine.substr(kListening.size(), nEnd - kListening.size());
}

uint16_t SimService::iPort() const {
    const std::string strAddress = strListening();
    EXPECT_THAT(strAddress, testing::MatchesRegex("127\\.0\\.0\\.1:[1-9][0-9]*"));
    const size_t nDigits = strAddress.rfind(':') + 1;
    uint16_t iPort = 0;
    std::from_chars(strAddress.data() + nDigits, strAddress.data() + strAddress.size(), iPort);
    return iPort;
}

void Begin(PlainPeer& peer) {
    ASSERT_TRUE(peer.bConnected());
    ASSERT_EQ(peer.Receive(1), "\x05");
    peer.Send(kRequest);
    ASSERT_EQ(peer.Receive(1), "\x06");
}

std::string TakePayload(PlainPeer& peer, size_t nPayload, bool bWrite) {
    const std::string strFrame = peer.Receive(nPayload + (bWrite ? 3 : 4));
    peer.Send("\x06");
    return strFrame.substr(1, nPayload);
}

} // namespace brennik::system_tests
