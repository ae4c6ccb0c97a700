#include "platform/HostFile.h"

#include "platform/Descriptor.h"
#include "platform/IniText.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace brennik {

namespace {

constexpr const char* kFileName = "/BrennikHost.ini";
constexpr const char* kDrivesSection = "DRIVES";
constexpr size_t kLargestFile = 1048576;

} // namespace

HostFile::HostFile(std::string_view strContent) {
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

} // namespace brennik
