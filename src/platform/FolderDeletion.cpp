#include "platform/FolderDeletion.h"

#include "platform/CanonicalPath.h"
#include "platform/Descriptor.h"
#include "platform/FolderWalk.h"
#include "platform/LinuxErrors.h"

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brennik {

namespace {

constexpr size_t kLargestMountList = 67108864;
constexpr mode_t kWriteBits = 0222;
constexpr size_t kMountPointField = 5;

using Identity = std::pair<dev_t, ino_t>;

[[noreturn]] void Refuse() {
    throw RuntimeFailure(FailureKind::PermissionDenied);
}

std::string WithoutOctalEscapes(std::string_view strField) {
    std::string strText;
    for (size_t n = 0; n < strField.size(); ++n) {
        const auto bDigit = [&](size_t nAt) {
            return nAt < strField.size() && strField[nAt] >= '0' && strField[nAt] <= '7';
        };
        if (strField[n] == '\\' && bDigit(n + 1) && bDigit(n + 2) && bDigit(n + 3)) {
            strText += static_cast<char>((strField[n + 1] - '0') * 64 +
                                         (strField[n + 2] - '0') * 8 + (strField[n + 3] - '0'));
            n += 3;
        } else {
            strText += strField[n];
        }
    }
    return strText;
}

/// The path without the "/" and "/." at its end, which would make a link look like its target.
std::string WithoutTail(std::string strPath) {
    for (;;) {
        const size_t nSize = strPath.size();
        if (nSize > 1 && strPath.back() == '/') {
            strPath.pop_back();
        } else if (nSize > 2 && strPath.compare(nSize - 2, 2, "/.") == 0) {
            strPath.resize(nSize - 1);
        } else {
            return strPath;
        }
    }
}

std::optional<std::vector<std::string>> MountPoints() {
    const Descriptor file = OpenDescriptor("/proc/self/mountinfo", O_RDONLY);
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    const auto strContent = ReadAllOf(file.Get(), kLargestMountList);
    return strContent ? std::optional(MountPointsIn(*strContent)) : std::nullopt;
}

/// Looks at every entry before the first one is removed.
class DeletionCheck : public FolderVisitor {
  public:
    DeletionCheck(dev_t nDevice, std::set<Identity> protectedFolders)
        : nDevice_(nDevice), protectedFolders_(std::move(protectedFolders)) {}

    void Entry(int nFolder, const std::string&, const std::string& strName,
               const struct stat& status) override {
        Check(status);
        if (S_ISDIR(status.st_mode) &&
            ::faccessat(nFolder, strName.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
            Refuse();
        }
    }

    void Left(int, const std::string&) override {}

    void Check(const struct stat& status) const {
        if (status.st_dev != nDevice_) {
            Refuse();
        }
        if (!S_ISLNK(status.st_mode) && (status.st_mode & kWriteBits) == 0) {
            Refuse();
        }
        if (protectedFolders_.count({status.st_dev, status.st_ino}) != 0) {
            Refuse();
        }
    }

  private:
    dev_t nDevice_;
    std::set<Identity> protectedFolders_;
};

class Removal : public FolderVisitor {
  public:
    void Entry(int nFolder, const std::string&, const std::string& strName,
               const struct stat& status) override {
        if (!S_ISDIR(status.st_mode)) {
            Unlink(nFolder, strName, 0);
        }
    }

    void Left(int nParent, const std::string& strName) override {
        Unlink(nParent, strName, AT_REMOVEDIR);
    }

    static void Unlink(int nFolder, const std::string& strName, int nFlags) {
        if (::unlinkat(nFolder, strName.c_str(), nFlags) != 0 && errno != ENOENT) {
            ThrowErrno();
        }
    }
};

/// A folder about to be deleted, with the one that holds it.
struct Doomed {
    Descriptor parent;
    std::string strName;
    struct stat status {};
    struct stat parentStatus {};
};

Descriptor OpenFolderAt(int nParent, const std::string& strName) {
    Descriptor folder = OpenDescriptorAt(nParent, strName, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (!folder.IsOpen()) {
        ThrowErrno();
    }
    return folder;
}

Doomed OpenDoomed(const std::string& strCanonical) {
    const size_t nName = strCanonical.rfind('/') + 1;
    Doomed doomed;
    doomed.strName = strCanonical.substr(nName);
    doomed.parent = OpenFolderAt(AT_FDCWD, strCanonical.substr(0, nName));
    if (::fstat(doomed.parent.Get(), &doomed.parentStatus) != 0 ||
        ::fstatat(doomed.parent.Get(), doomed.strName.c_str(), &doomed.status,
                  AT_SYMLINK_NOFOLLOW) != 0) {
        ThrowErrno();
    }
    return doomed;
}

std::set<Identity> IdentitiesOf(const std::vector<std::string>& folders) {
    std::set<Identity> identities;
    for (const std::string& strFolder : folders) {
        struct stat status {};
        if (::stat(strFolder.c_str(), &status) == 0) {
            identities.emplace(status.st_dev, status.st_ino);
        }
    }
    return identities;
}

/// Each folder as it is named; links on the way to it are seen through by its identity.
std::vector<std::string> WithoutTails(std::vector<std::string> folders) {
    for (std::string& strFolder : folders) {
        strFolder = WithoutTail(std::move(strFolder));
    }
    return folders;
}

} // namespace

bool MayDeleteByName(const std::string& strCanonical,
                     const std::vector<std::string>& protectedFolders,
                     const std::vector<std::string>& mountPoints) {
    if (strCanonical.size() < 2 || strCanonical.front() != '/') {
        return false;
    }
    const auto bHeld = [&](const std::string& strFolder) {
        return IsOrHolds(strCanonical, strFolder);
    };
    return std::none_of(protectedFolders.begin(), protectedFolders.end(), bHeld) &&
           std::none_of(mountPoints.begin(), mountPoints.end(), bHeld);
}

std::vector<std::string> MountPointsIn(std::string_view strMountInfo) {
    std::vector<std::string> mountPoints;
    while (!strMountInfo.empty()) {
        const size_t nEnd = std::min(strMountInfo.find('\n'), strMountInfo.size());
        std::string_view strRest = strMountInfo.substr(0, nEnd);
        strMountInfo.remove_prefix(std::min(nEnd + 1, strMountInfo.size()));
        std::string_view strField;
        for (size_t nField = 0; nField < kMountPointField; ++nField) {
            const size_t nBlank = std::min(strRest.find(' '), strRest.size());
            strField = strRest.substr(0, nBlank);
            strRest.remove_prefix(std::min(nBlank + 1, strRest.size()));
        }
        if (!strField.empty()) {
            mountPoints.push_back(WithoutOctalEscapes(strField));
        }
    }
    return mountPoints;
}

void DeleteFolderTree(const std::string& strPath,
                      const std::vector<std::string>& protectedFolders) {
    const std::string strFolder = WithoutTail(strPath);
    struct stat named {};
    if (::lstat(strFolder.c_str(), &named) != 0) {
        throw RuntimeFailure(errno == ENOENT ? FailureKind::PathNotFound : FailureKindOf(errno));
    }
    if (S_ISLNK(named.st_mode)) {
        Refuse();
    }
    const auto strCanonical = CanonicalPath(strFolder);
    if (!S_ISDIR(named.st_mode) || !strCanonical) {
        throw RuntimeFailure(FailureKind::PathNotFound);
    }
    const auto mountPoints = MountPoints();
    const std::vector<std::string> none;
    if (!MayDeleteByName(*strCanonical, WithoutTails(protectedFolders),
                         mountPoints ? *mountPoints : none)) {
        Refuse();
    }
    const Doomed doomed = OpenDoomed(*strCanonical);
    // Without the list of mounts a folder on another device than its parent tells one.
    if (!mountPoints && doomed.status.st_dev != doomed.parentStatus.st_dev) {
        Refuse();
    }
    if (::faccessat(doomed.parent.Get(), doomed.strName.c_str(), W_OK | X_OK, AT_EACCESS) != 0 ||
        ::faccessat(doomed.parent.Get(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
        Refuse();
    }
    DeletionCheck check(doomed.status.st_dev, IdentitiesOf(protectedFolders));
    check.Check(doomed.status);
    WalkFolder(OpenFolderAt(doomed.parent.Get(), doomed.strName), check);
    Removal removal;
    WalkFolder(OpenFolderAt(doomed.parent.Get(), doomed.strName), removal);
    Removal::Unlink(doomed.parent.Get(), doomed.strName, AT_REMOVEDIR);
}

} // namespace brennik
