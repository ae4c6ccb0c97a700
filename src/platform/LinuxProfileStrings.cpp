#include "platform/LinuxProfileStrings.h"

#include "platform/Descriptor.h"
#include "platform/IniText.h"

#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brennik {

namespace {

/// One name for all writers: under the lock there is only one of them, and what a killed one left
/// behind is taken away by the next.
constexpr const char* kNewFile = ".brennik-ini.new";
constexpr mode_t kWriteBits = 0222;
constexpr mode_t kPermissions = 07777;
constexpr int kMostLinks = 40;

/// Where a chain of links ends, whether or not there is a file; nothing for an endless one.
std::optional<std::string> EndOfLinks(std::string strPath) {
    for (int n = 0; n < kMostLinks; ++n) {
        char buffer[PATH_MAX];
        const ssize_t nLength = ::readlink(strPath.c_str(), buffer, sizeof buffer);
        if (nLength < 0) {
            return strPath;
        }
        const std::string strTarget(buffer, static_cast<size_t>(nLength));
        if (strTarget.empty() || strTarget.front() == '/') {
            strPath = strTarget;
        } else {
            strPath.resize(strPath.rfind('/') + 1); // npos + 1 is 0: a name alone
            strPath += strTarget;
        }
    }
    return std::nullopt;
}

/// The file as it stands before the write.
struct OldFile {
    bool bExists = false;
    bool bWritable = true;
    struct stat status {};
    std::string strContent;
};

/// Nothing when there is something of that name that isn't a readable file.
std::optional<OldFile> ReadOld(int nFolder, const std::string& strName) {
    OldFile old;
    const Descriptor file = OpenDescriptorAt(nFolder, strName, O_RDONLY);
    if (!file.IsOpen()) {
        return errno == ENOENT ? std::optional(old) : std::nullopt;
    }
    if (::fstat(file.Get(), &old.status) != 0 || !S_ISREG(old.status.st_mode)) {
        return std::nullopt;
    }
    auto strContent = ReadAllOf(file.Get(), kLargestIniFile);
    if (!strContent) {
        return std::nullopt;
    }
    old.bExists = true;
    // A rename asks the folder alone; a file that its owner closed to writing stays as it is.
    old.bWritable = (old.status.st_mode & kWriteBits) != 0 &&
                    ::faccessat(nFolder, strName.c_str(), W_OK, AT_EACCESS) == 0;
    old.strContent = std::move(*strContent);
    return old;
}

/// Gives the new file the owner, where that is permitted, and the mode of the old one.
bool TakeOver(int nFile, const struct stat& old) {
    struct stat status {};
    if (::fstat(nFile, &status) != 0) {
        return false;
    }
    if ((status.st_uid != old.st_uid || status.st_gid != old.st_gid) &&
        ::fchown(nFile, old.st_uid, old.st_gid) != 0) {
        static_cast<void>(::fchown(nFile, static_cast<uid_t>(-1), old.st_gid)); // where permitted
    }
    return ::fchmod(nFile, old.st_mode & kPermissions) == 0;
}

bool WriteNew(int nFolder, const OldFile& old, std::string_view strContent) {
    static_cast<void>(::unlinkat(nFolder, kNewFile, 0)); // most times there is none
    const unsigned nMode = old.bExists ? 0600 : 0666;
    Descriptor file =
        OpenDescriptorAt(nFolder, kNewFile, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, nMode);
    return file.IsOpen() && WriteAll(file.Get(), strContent) &&
           (!old.bExists || TakeOver(file.Get(), old.status)) &&
           Resumed([&] { return ::fsync(file.Get()); }) == 0 && file.Close();
}

bool Replace(int nFolder, const std::string& strName, const OldFile& old,
             std::string_view strContent) {
    if (!WriteNew(nFolder, old, strContent) ||
        ::renameat(nFolder, kNewFile, nFolder, strName.c_str()) != 0) {
        static_cast<void>(::unlinkat(nFolder, kNewFile, 0)); // the old file is whole
        return false;
    }
    // Not every file system can flush a folder; the file itself is on the disk.
    static_cast<void>(::fsync(nFolder));
    return true;
}

} // namespace

LinuxProfileStrings::LinuxProfileStrings(DriveTable drives) : drives_(std::move(drives)) {
}

std::string LinuxProfileStrings::GetPrivateProfileString(const std::string& strSection,
                                                         const std::string& strKey,
                                                         const std::string& strDefault,
                                                         int32_t lBufferSize,
                                                         const std::string& strPath) {
    if (lBufferSize < 1) {
        return {};
    }
    const auto strNative = NativePath(strPath, drives_);
    IniIndex* const index = strNative ? cache_.Read(*strNative) : nullptr;
    std::string strValue =
        (index != nullptr ? index->Find(strSection, strKey) : std::nullopt).value_or(strDefault);
    if (strValue.size() > static_cast<size_t>(lBufferSize - 1)) {
        strValue.resize(static_cast<size_t>(lBufferSize - 1));
    }
    return strValue;
}

int32_t LinuxProfileStrings::WritePrivateProfileString(const std::string& strSection,
                                                       const std::string& strKey,
                                                       const std::string& strValue,
                                                       const std::string& strPath) {
    const auto strNative = NativePath(strPath, drives_);
    const auto strTarget = strNative ? EndOfLinks(*strNative) : std::nullopt;
    if (!strTarget || !CanStandOnOneLine(strSection) || !CanStandOnOneLine(strKey) ||
        !CanStandOnOneLine(strValue)) {
        return 0;
    }
    const size_t nName = strTarget->rfind('/') + 1;
    const std::string strName = strTarget->substr(nName);
    const Descriptor folder =
        OpenDescriptor(nName == 0 ? "." : strTarget->substr(0, nName), O_RDONLY | O_DIRECTORY);
    // The lock ends with the descriptor, and so with the process.
    if (!folder.IsOpen() || strName.empty() || strName == kNewFile ||
        Resumed([&] { return ::flock(folder.Get(), LOCK_EX); }) != 0) {
        return 0;
    }
    const auto old = ReadOld(folder.Get(), strName);
    if (!old) {
        return 0;
    }
    const std::string strNew = WithIniValue(old->strContent, strSection, strKey, strValue);
    if (old->bExists && strNew == old->strContent) {
        return 1;
    }
    return old->bWritable && strNew.size() <= kLargestIniFile &&
                   Replace(folder.Get(), strName, *old, strNew)
               ? 1
               : 0;
}

} // namespace brennik
