#include "platform/LinuxFiles.h"

#include "platform/Descriptor.h"
#include "platform/FileCopy.h"
#include "platform/FileListing.h"
#include "platform/FolderDeletion.h"
#include "platform/HomeFolders.h"
#include "platform/LinuxErrors.h"
#include "platform/LinuxTextStream.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brennik {

namespace {

constexpr int32_t kReadOnlyAttribute = 1;
constexpr mode_t kWriteBits = 0222;
constexpr mode_t kPermissions = 07777;

bool IsFolder(const std::string& strNative) {
    struct stat status {};
    return ::stat(strNative.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

struct SplitPath {
    std::string strFolder; ///< with its "/", empty for the current folder
    std::string strName;
};

SplitPath Split(const std::string& strNative) {
    const size_t nName = strNative.rfind('/');
    if (nName == std::string::npos) {
        return {"", strNative};
    }
    return {strNative.substr(0, nName + 1), strNative.substr(nName + 1)};
}

/// Throws what errno stands for; a file is missing in another way than the path to it.
[[noreturn]] void ThrowForFile(const std::string& strNative) {
    const int nError = errno;
    const std::string strFolder = Split(strNative).strFolder;
    if (nError == ENOENT && !IsFolder(strFolder.empty() ? "." : strFolder)) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
    throw RuntimeFailure(FailureKindOf(nError));
}

int FlagsOf(OpenMode mode) {
    switch (mode) {
    case OpenMode::Read:
        return O_RDONLY;
    case OpenMode::Write:
        return O_WRONLY | O_CREAT | O_TRUNC;
    case OpenMode::Append:
        break;
    }
    return O_WRONLY | O_CREAT | O_APPEND;
}

Descriptor OpenRegular(const std::string& strNative, int nFlags) {
    Descriptor file = OpenDescriptor(strNative, nFlags);
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
        ThrowForFile(strNative);
    }
    if (!S_ISREG(status.st_mode)) {
        throw RuntimeFailure(FailureKind::PermissionDenied);
    }
    return file;
}

/// Takes back the beginning of a line whose rest found no room, if nothing stands behind it.
void TakeBack(int nFile, ssize_t nWritten) {
    const off_t nEnd = ::lseek(nFile, 0, SEEK_CUR);
    struct stat status {};
    if (nEnd >= nWritten && ::fstat(nFile, &status) == 0 && status.st_size == nEnd) {
        static_cast<void>(::ftruncate(nFile, nEnd - nWritten)); // the line is lost either way
    }
}

} // namespace

LinuxFiles::LinuxFiles(DriveTable drives, std::string strProgramFolder)
    : drives_(std::move(drives)), strProgramFolder_(std::move(strProgramFolder)) {
}

std::unique_ptr<TextStream> LinuxFiles::OpenText(const std::string& strPath, OpenMode mode) {
    return std::make_unique<LinuxTextStream>(OpenRegular(Native(strPath), FlagsOf(mode)), mode);
}

void LinuxFiles::AppendLine(const std::string& strPath, std::string_view strLine) {
    // Three system calls for every line of a log: what kind of file it is isn't asked here.
    const std::string strNative = Native(strPath);
    Descriptor file = OpenDescriptor(strNative, FlagsOf(OpenMode::Append));
    if (!file.IsOpen()) {
        ThrowForFile(strNative);
    }
    const ssize_t nWritten =
        Resumed([&] { return ::write(file.Get(), strLine.data(), strLine.size()); });
    if (nWritten < 0) {
        ThrowErrno();
    }
    if (static_cast<size_t>(nWritten) < strLine.size()) {
        TakeBack(file.Get(), nWritten);
        throw RuntimeFailure(FailureKind::DiskFull);
    }
    if (!file.Close()) {
        ThrowErrno();
    }
}

std::vector<FoundFile> LinuxFiles::Find(const std::string& strPattern) {
    const auto strNative = NativePath(strPattern, drives_);
    if (!strNative) {
        return {};
    }
    const SplitPath split = Split(*strNative);
    return ListMatching(split.strFolder, split.strName);
}

std::optional<FileTimes> LinuxFiles::GetTimes(const std::string& strPath) {
    const auto strNative = NativePath(strPath, drives_);
    if (!strNative) {
        return std::nullopt;
    }
    const Descriptor file = OpenDescriptor(*strNative, O_RDONLY);
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return TimesOfDescriptor(file.Get());
}

bool LinuxFiles::FolderExists(const std::string& strPath) {
    const auto strNative = NativePath(strPath, drives_);
    return strNative && IsFolder(*strNative);
}

void LinuxFiles::CreateFolder(const std::string& strPath) {
    if (::mkdir(Native(strPath).c_str(), 0777) != 0) {
        throw RuntimeFailure(errno == ENOENT ? FailureKind::PathNotFound : FailureKindOf(errno));
    }
}

void LinuxFiles::DeleteFolder(const std::string& strPath) {
    DeleteFolderTree(Native(strPath), ProtectedFolders());
}

int64_t LinuxFiles::GetFileSize(const std::string& strPath) {
    const std::string strNative = Native(strPath);
    struct stat status {};
    if (::stat(strNative.c_str(), &status) != 0) {
        ThrowForFile(strNative);
    }
    if (!S_ISREG(status.st_mode)) {
        throw RuntimeFailure(FailureKind::FileNotFound);
    }
    return status.st_size;
}

int64_t LinuxFiles::GetFolderSize(const std::string& strPath) {
    return SizeOfFolder(Native(strPath));
}

void LinuxFiles::DeleteFile(const std::string& strPath) {
    const std::string strNative = Native(strPath);
    if (::unlink(strNative.c_str()) != 0) {
        ThrowForFile(strNative);
    }
}

void LinuxFiles::CopyFile(const std::string& strSource, const std::string& strTarget) {
    CopyFileTo(Native(strSource), Native(strTarget), Existing::Replace);
}

void LinuxFiles::MoveFile(const std::string& strSource, const std::string& strTarget) {
    MoveFileTo(Native(strSource), Native(strTarget));
}

void LinuxFiles::CopyFolder(const std::string& strSource, const std::string& strTarget,
                            bool bOverwrite) {
    CopyFolderTo(Native(strSource), Native(strTarget),
                 bOverwrite ? Existing::Replace : Existing::Refuse);
}

void LinuxFiles::SetAttributes(const std::string& strPath, int32_t lAttributes) {
    const std::string strNative = Native(strPath);
    struct stat status {};
    if (::stat(strNative.c_str(), &status) != 0) {
        ThrowForFile(strNative);
    }
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        throw RuntimeFailure(FailureKind::PermissionDenied);
    }
    const mode_t nOld = status.st_mode & kPermissions;
    mode_t nNew = nOld;
    if ((lAttributes & kReadOnlyAttribute) != 0) {
        nNew = nOld & ~kWriteBits;
    } else if ((nOld & kWriteBits) == 0) {
        nNew = nOld | S_IWUSR;
    }
    if (nNew != nOld && ::chmod(strNative.c_str(), nNew) != 0) {
        ThrowForFile(strNative);
    }
}

bool LinuxFiles::StaysInside(const std::string& strBaseFolder, const std::string& strPath) {
    const auto strNative = NativePath(strPath, drives_);
    auto strBase = NativePath(strBaseFolder, drives_);
    if (!strNative || !strBase) {
        return false;
    }
    while (!strBase->empty() && strBase->back() == '/') {
        strBase->pop_back();
    }
    const size_t nBelow = strBase->size() + 1;
    if (strNative->compare(0, nBelow, *strBase + "/") != 0 || strNative->size() == nBelow) {
        return false;
    }
    bool bExists = true;
    for (size_t nAt = strBase->size(); nAt < strNative->size();) {
        const size_t nEnd = std::min(strNative->find('/', nAt + 1), strNative->size());
        const std::string_view strPart =
            std::string_view(*strNative).substr(nAt + 1, nEnd - nAt - 1);
        if (strPart == "..") {
            return false;
        }
        if (bExists) {
            struct stat status {};
            bExists = ::lstat(strNative->substr(0, nEnd).c_str(), &status) == 0;
            if (bExists ? S_ISLNK(status.st_mode) : errno != ENOENT && errno != ENOTDIR) {
                return false;
            }
        }
        nAt = nEnd;
    }
    return true;
}

std::string LinuxFiles::Native(const std::string& strText) const {
    auto strNative = NativePath(strText, drives_);
    if (!strNative) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
    return *strNative;
}

std::vector<std::string> LinuxFiles::ProtectedFolders() const {
    std::vector<std::string> folders = HomeFolders();
    folders.push_back(strProgramFolder_);
    for (const auto& drive : drives_) {
        folders.push_back(drive.second);
    }
    return folders;
}

} // namespace brennik
