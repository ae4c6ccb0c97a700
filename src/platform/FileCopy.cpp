#include "platform/FileCopy.h"

#include "platform/CanonicalPath.h"
#include "platform/Descriptor.h"
#include "platform/FolderWalk.h"
#include "platform/LinuxErrors.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace brennik {

namespace {

constexpr size_t kCopyBlock = 131072;
constexpr mode_t kPermissions = 07777;

Descriptor OpenSource(const std::string& strPath, struct stat& status) {
    Descriptor source = OpenDescriptor(strPath, O_RDONLY);
    if (!source.IsOpen() || ::fstat(source.Get(), &status) != 0) {
        ThrowErrno();
    }
    if (!S_ISREG(status.st_mode)) {
        throw RuntimeFailure(FailureKind::PermissionDenied);
    }
    return source;
}

void CopyBytes(int nSource, int nTarget) {
    std::vector<char> block(kCopyBlock);
    for (;;) {
        const ssize_t nRead = Resumed([&] { return ::read(nSource, block.data(), block.size()); });
        if (nRead == 0) {
            return;
        }
        if (nRead < 0 ||
            !WriteAll(nTarget, std::string_view(block.data(), static_cast<size_t>(nRead)))) {
            ThrowErrno();
        }
    }
}

/// Opens a target that is there already, unless that is the source itself, and empties it.
Descriptor OpenExisting(const std::string& strTarget, const struct stat& source) {
    Descriptor target = OpenDescriptor(strTarget, O_WRONLY);
    struct stat status {};
    if (!target.IsOpen() || ::fstat(target.Get(), &status) != 0) {
        ThrowErrno();
    }
    if (!S_ISREG(status.st_mode) ||
        (status.st_dev == source.st_dev && status.st_ino == source.st_ino)) {
        throw RuntimeFailure(FailureKind::PermissionDenied);
    }
    if (::ftruncate(target.Get(), 0) != 0) {
        ThrowErrno();
    }
    return target;
}

bool IsFolder(const std::string& strPath) {
    struct stat status {};
    return ::stat(strPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void MakeFolder(const std::string& strPath, mode_t nMode) {
    if (::mkdir(strPath.c_str(), (nMode & kPermissions) | S_IRWXU) != 0 &&
        !(errno == EEXIST && IsFolder(strPath))) {
        ThrowErrno();
    }
}

void CopyLink(int nFolder, const std::string& strName, const std::string& strTarget,
              Existing existing) {
    char buffer[PATH_MAX + 1];
    const ssize_t nLength = ::readlinkat(nFolder, strName.c_str(), buffer, PATH_MAX);
    if (nLength < 0) {
        ThrowErrno();
    }
    buffer[nLength] = '\0';
    if (existing == Existing::Replace && ::unlink(strTarget.c_str()) != 0 && errno != ENOENT) {
        ThrowErrno();
    }
    if (::symlink(buffer, strTarget.c_str()) != 0) {
        ThrowErrno();
    }
}

class FolderCopy : public FolderVisitor {
  public:
    FolderCopy(std::string strSource, std::string strTarget, Existing existing)
        : strSource_(std::move(strSource)), strTarget_(std::move(strTarget)), existing_(existing) {}

    void Entry(int nFolder, const std::string& strBelow, const std::string& strName,
               const struct stat& status) override {
        const std::string strTarget = strTarget_ + "/" + strBelow + strName;
        if (S_ISDIR(status.st_mode)) {
            MakeFolder(strTarget, status.st_mode);
        } else if (S_ISLNK(status.st_mode)) {
            CopyLink(nFolder, strName, strTarget, existing_);
        } else {
            CopyFileTo(strSource_ + "/" + strBelow + strName, strTarget, existing_);
        }
    }

    void Left(int, const std::string&) override {}

  private:
    std::string strSource_;
    std::string strTarget_;
    Existing existing_;
};

class SizeCount : public FolderVisitor {
  public:
    void Entry(int, const std::string&, const std::string&, const struct stat& status) override {
        lBytes_ += S_ISREG(status.st_mode) ? status.st_size : 0;
    }

    void Left(int, const std::string&) override {}

    int64_t Bytes() const { return lBytes_; }

  private:
    int64_t lBytes_ = 0;
};

Descriptor OpenFolder(const std::string& strPath) {
    Descriptor folder = OpenDescriptor(strPath, O_RDONLY | O_DIRECTORY);
    if (!folder.IsOpen()) {
        throw RuntimeFailure(errno == ENOENT ? FailureKind::PathNotFound : FailureKindOf(errno));
    }
    return folder;
}

std::string ParentOf(const std::string& strPath) {
    const size_t nEnd = strPath.find_last_not_of('/');
    const size_t nName = nEnd == std::string::npos ? nEnd : strPath.rfind('/', nEnd);
    return nName == std::string::npos ? "." : strPath.substr(0, nName + 1);
}

} // namespace

void CopyFileTo(const std::string& strSource, const std::string& strTarget, Existing existing) {
    struct stat status {};
    const Descriptor source = OpenSource(strSource, status);
    Descriptor target =
        OpenDescriptor(strTarget, O_WRONLY | O_CREAT | O_EXCL, status.st_mode & kPermissions);
    const bool bCreated = target.IsOpen();
    if (!bCreated) {
        if (errno != EEXIST || existing == Existing::Refuse) {
            ThrowErrno();
        }
        target = OpenExisting(strTarget, status);
    }
    try {
        CopyBytes(source.Get(), target.Get());
        if (!target.Close()) {
            ThrowErrno();
        }
    } catch (const RuntimeFailure&) {
        if (bCreated) {
            static_cast<void>(::unlink(strTarget.c_str())); // the first failure is the one to tell
        }
        throw;
    }
}

void MoveFileTo(const std::string& strSource, const std::string& strTarget) {
    struct stat status {};
    if (::lstat(strSource.c_str(), &status) != 0) {
        ThrowErrno();
    }
    if (S_ISDIR(status.st_mode)) {
        throw RuntimeFailure(FailureKind::FileNotFound);
    }
    if (::renameat2(AT_FDCWD, strSource.c_str(), AT_FDCWD, strTarget.c_str(), RENAME_NOREPLACE) ==
        0) {
        return;
    }
    // EINVAL: a file system that can't rename without replacing. It copies like another device.
    if (errno != EXDEV && errno != EINVAL) {
        ThrowErrno();
    }
    CopyFileTo(strSource, strTarget, Existing::Refuse);
    const timespec times[2] = {status.st_atim, status.st_mtim};
    static_cast<void>(::utimensat(AT_FDCWD, strTarget.c_str(), times, 0)); // times are a courtesy
    if (::unlink(strSource.c_str()) != 0) {
        ThrowErrno();
    }
}

void CopyFolderTo(const std::string& strSource, const std::string& strTarget, Existing existing) {
    Descriptor source = OpenFolder(strSource);
    struct stat status {};
    if (::fstat(source.Get(), &status) != 0) {
        ThrowErrno();
    }
    const auto strFrom = CanonicalPath(strSource);
    const auto strInto = CanonicalPath(IsFolder(strTarget) ? strTarget : ParentOf(strTarget));
    if (!strFrom || !strInto) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
    // A copy into itself would never end.
    if (IsOrHolds(*strFrom, *strInto)) {
        throw RuntimeFailure(FailureKind::PermissionDenied);
    }
    MakeFolder(strTarget, status.st_mode);
    FolderCopy copy(strSource, strTarget, existing);
    WalkFolder(std::move(source), copy);
}

int64_t SizeOfFolder(const std::string& strFolder) {
    SizeCount count;
    WalkFolder(OpenFolder(strFolder), count);
    return count.Bytes();
}

} // namespace brennik
