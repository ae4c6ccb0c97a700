#include "bench/Workplace.h"

#include "bench/Processes.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace brennik::bench {

namespace fs = std::filesystem;

namespace {

bool HoldsBlocks(const std::string& strPath, const Job& job) {
    const auto blocks = DataBlocks(job.nBlock);
    std::ifstream file(strPath, std::ios::binary);
    std::string strRead(job.nBlock, '\0');
    for (int64_t lBlock = 0; lBlock < job.lBlocksOfFile; ++lBlock) {
        file.read(strRead.data(), static_cast<std::streamsize>(strRead.size()));
        if (!file || strRead != blocks[static_cast<size_t>(lBlock) % blocks.size()])
            return false;
    }
    return true;
}

} // namespace

Workplace::Workplace(const std::string& strParent)
    : strFolder_(strParent + "/brennik-bench-" + std::to_string(::getpid())),
      strReceived_(strFolder_ + "/received"),
      strLog_(strFolder_ + "/log/session.log") {
    fs::create_directories(strReceived_);
    fs::create_directories(strFolder_ + "/log");
}

Workplace::~Workplace() {
    std::error_code ignored;
    fs::remove_all(strFolder_, ignored);
}

void Workplace::Clear() {
    fs::remove_all(strReceived_);
    fs::create_directory(strReceived_);
    fs::remove(strLog_);
}

void Workplace::Verify(const Job& job, bool bContent) const {
    for (int64_t lFile = 0; lFile < job.lFiles; ++lFile) {
        const std::string strPath = strReceived_ + "/" + FileNameOf(lFile);
        std::error_code error;
        const auto nSize = fs::file_size(strPath, error);
        if (error || nSize != static_cast<uintmax_t>(job.FileBytes()))
            Fail(strPath + " was not received whole");
        if (bContent && !HoldsBlocks(strPath, job))
            Fail(strPath + " differs from what was sent");
    }
    const auto nFiles =
        std::distance(fs::directory_iterator(strReceived_), fs::directory_iterator());
    if (nFiles != job.lFiles)
        Fail(strReceived_ + " holds " + std::to_string(nFiles) + " entries, not " +
             std::to_string(job.lFiles));
}

ProfileValues Workplace::Profile(uint16_t iPort, size_t nBlock, bool bLogAll) const {
    ProfileValues profile;
    profile.strProfileName = "Measured";
    profile.strWorkingFolder = strReceived_;
    profile.strPlatformName = "VX520";
    profile.strApplicationID = "POSAPP";
    profile.strTerminalId = "000123-01";
    profile.lBlockSize = static_cast<int32_t>(nBlock);
    profile.lMemory = 4096;
    profile.strLogFilePath = strFolder_ + "/log";
    profile.strLogFileName = "session.log";
    profile.bLoggingEnabled = bLogAll;
    profile.bLogControlPackets = bLogAll;
    profile.bLogProcessingPackets = bLogAll;
    profile.strServerIPAddress1 = "127.0.0.1";
    profile.lServerPort1 = iPort;
    profile.lServerConnectTimeout = 5;
    profile.lConnectAttempts = 1;
    profile.lReadPacketAttempts = 1;
    profile.lSendPacketAttempts = 3;
    profile.lCharTimeout = 5;
    profile.lReadPacketTimeout = 5;
    return profile;
}

void Workplace::WriteProfiles(const ProfileValues& profile, int32_t lProfiles) const {
    std::ofstream file(strFolder_ + "/BrennikClient.ini", std::ios::binary);
    file << "[GENERAL]\r\nProfilecount=" << lProfiles << "\r\n";
    for (int32_t lProfile = 1; lProfile <= lProfiles; ++lProfile) {
        ProfileValues numbered = profile;
        numbered.strProfileName += " " + std::to_string(lProfile);
        file << "[PROFILE_" << lProfile << "]\r\n";
        for (const ProfileKey& key : ProfileKeys()) {
            if (key.TextFrom != nullptr)
                file << key.strKey << "=" << key.TextFrom(numbered) << "\r\n";
        }
    }
    if (!file.flush())
        Fail(strFolder_ + "/BrennikClient.ini can't be written");
}

} // namespace brennik::bench
