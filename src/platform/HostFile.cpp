#include "platform/HostFile.h"

#include "platform/Descriptor.h"
#include "platform/IniText.h"
#include "platform/PlainText.h"

#include <charconv>
#include <cstdint>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace brennik {

namespace {

constexpr const char* kFileName = "/BrennikHost.ini";
constexpr const char* kDrivesSection = "DRIVES";
constexpr const char* kPortsSection = "PORTS";
constexpr std::string_view kDevicePrefix = "\\\\.\\";
constexpr std::string_view kComPort = "COM";
constexpr size_t kLargestFile = 1048576;

bool IsAbsolute(std::string_view strPath) {
    return !strPath.empty() && strPath.front() == '/' &&
           strPath.find('\0') == std::string_view::npos;
}

/// Where the operating system has the ports that nobody maps: they count from 0 there.
std::string StandardPortPath(std::string_view strPort) {
    if (!UpperAscii(strPort).starts_with(kComPort)) {
        return {};
    }
    strPort.remove_prefix(kComPort.size());
    if (strPort.empty() || strPort.front() < '1' || strPort.front() > '9') {
        return {};
    }
    int32_t lNumber = 0;
    const char* end = strPort.data() + strPort.size();
    const auto parsed = std::from_chars(strPort.data(), end, lNumber);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        return {};
    }
    return "/dev/ttyS" + std::to_string(lNumber - 1);
}

} // namespace

HostFile::HostFile(std::string_view strContent) : strContent_(strContent) {
    if (!HasIniSection(strContent, kDrivesSection)) {
        drives_ = DefaultDrives();
        return;
    }
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const auto strFolder =
            FindIniValue(strContent, kDrivesSection, std::string_view(&letter, 1));
        if (strFolder && !strFolder->empty() && strFolder->front() == '/') {
            drives_.emplace(letter, WithoutEndSeparators(*strFolder));
        }
    }
}

HostFile HostFile::InFolder(const std::string& strFolder) {
    const Descriptor file = OpenDescriptor(strFolder + kFileName, O_RDONLY);
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return HostFile({});
    }
    return HostFile(ReadAllOf(file.Get(), kLargestFile).value_or(std::string()));
}

std::string HostFile::PortPath(std::string_view strPort) const {
    if (strPort.starts_with(kDevicePrefix)) {
        strPort.remove_prefix(kDevicePrefix.size());
    }
    strPort = WithoutBlanks(strPort);
    if (strPort.empty()) {
        return {};
    }
    if (const auto strEntry = FindIniValue(strContent_, kPortsSection, strPort)) {
        return IsAbsolute(*strEntry) ? *strEntry : std::string();
    }
    return StandardPortPath(strPort);
}

} // namespace brennik
