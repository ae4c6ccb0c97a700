#include "tests/system/RealRun.h"

#include <filesystem>

namespace brennik::system_tests {

std::string SomeBytes(size_t nCount) {
    std::string strBytes;
    uint32_t state = 12345;
    while (strBytes.size() < nCount) {
        state = state * 1664525 + 1013904223;
        strBytes += static_cast<char>(state >> 24);
    }
    return strBytes;
}

RealRun::RealRun() {
    for (const char* folder : {"config", "log", "served"})
        std::filesystem::create_directory(folder_ / folder);
}

void RealRun::StartService(const std::vector<std::string>& where,
                           const std::vector<std::string>& options) {
    std::vector<std::string> arguments = where;
    arguments.insert(arguments.end(), {"--serve", folder_ / "served"});
    arguments.insert(arguments.end(), options.begin(), options.end());
    service_.reset(); // an older one leaves its place first
    service_ = std::make_unique<SimService>(arguments);
}

void RealRun::WriteProfile(const std::vector<std::string>& settings) {
    std::string strText = "[PROFILE_1]\r\nWorkingFolder=" + (folder_ / "received") +
                          "\r\nTerminalID=T1\r\nApplicationID=APP\r\nBlockSize=1024\r\n"
                          "DownloadType=F\r\nLogFilePath=" +
                          (folder_ / "log") +
                          "\r\nLogFileName=session.log\r\nLoggingEnabled=TRUE\r\n"
                          "ConnectAttempts=1\r\nReadPacketAttempts=1\r\n"
                          "SendPacketAttempts=3\r\nCharTimeout=5\r\nReadPacketTimeout=5\r\n";
    for (const std::string& strSetting : settings)
        strText += strSetting + "\r\n";
    WriteFile(folder_ / "config/BrennikClient.ini", strText);
}

std::vector<std::string> RealRun::ClientArguments() const {
    return {BRENNIK_CLIENT_PROGRAM, "-configfiledir", folder_ / "config", "-profileid", "1"};
}

void RealRun::RunClient(const std::function<void()>& inChild) {
    ProgramRun client(ClientArguments(), inChild);
    EXPECT_EQ(client.Wait(), 0);
    EXPECT_EQ(client.strOut(), "");
    EXPECT_EQ(client.strErr(), "");
}

std::string RealRun::Served(const std::string& strName) const {
    return ReadFile(folder_ / ("served/" + strName));
}

std::string RealRun::Received(const std::string& strName) const {
    return ReadFile(folder_ / ("received/" + strName));
}

std::string RealRun::Log() const {
    return ReadFile(folder_ / "log/session.log");
}

bool RealRun::Logged(const std::string& strText) const {
    return Log().find(strText) != std::string::npos;
}

} // namespace brennik::system_tests
