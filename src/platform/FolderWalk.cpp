#include "platform/FolderWalk.h"

#include "platform/LinuxErrors.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace brennik {

namespace {

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

std::vector<std::string> NamesIn(int nFolder) {
    Descriptor descriptor = OpenDescriptorAt(nFolder, ".", kOpenFolder);
    const std::unique_ptr<DIR, FolderCloser> folder(
        descriptor.IsOpen() ? ::fdopendir(descriptor.Get()) : nullptr);
    if (!folder) {
        ThrowErrno();
    }
    static_cast<void>(descriptor.Release()); // the stream closes it
    std::vector<std::string> names;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(folder.get());
        if (entry == nullptr) {
            if (errno != 0) {
                ThrowErrno();
            }
            return names;
        }
        const std::string strName = entry->d_name;
        if (strName != "." && strName != "..") {
            names.push_back(strName);
        }
    }
}

class Walk {
  public:
    Walk(Descriptor folder, FolderVisitor& visitor)
        : current_(std::move(folder)), visitor_(visitor) {}

    void Run() {
        Enter({});
        while (!levels_.empty()) {
            if (levels_.back().subfolders.empty()) {
                Leave();
            } else {
                Descend();
            }
        }
    }

  private:
    /// One folder on the way from the root of the walk to the one at hand.
    struct Level {
        std::string strName;
        dev_t nDevice;
        ino_t nInode;
        size_t nBelow; ///< length of strBelow_ in front of this level
        std::vector<std::string> subfolders;
    };

    void Enter(const std::string& strName) {
        struct stat status {};
        if (::fstat(current_.Get(), &status) != 0) {
            ThrowErrno();
        }
        levels_.push_back(Level{strName, status.st_dev, status.st_ino, strBelow_.size(), {}});
        strBelow_ += strName.empty() ? "" : strName + "/";
        for (const std::string& strEntry : NamesIn(current_.Get())) {
            Visit(strEntry);
        }
    }

    void Visit(const std::string& strName) {
        struct stat status {};
        if (::fstatat(current_.Get(), strName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno == ENOENT) {
                return; // somebody else has removed it
            }
            ThrowErrno();
        }
        if (S_ISDIR(status.st_mode)) {
            levels_.back().subfolders.push_back(strName);
        }
        visitor_.Entry(current_.Get(), strBelow_, strName, status);
    }

    void Descend() {
        const std::string strName = std::move(levels_.back().subfolders.back());
        levels_.back().subfolders.pop_back();
        Descriptor child = OpenDescriptorAt(current_.Get(), strName, kOpenFolder);
        if (!child.IsOpen()) {
            ThrowErrno();
        }
        current_ = std::move(child);
        Enter(strName);
    }

    void Leave() {
        const Level left = std::move(levels_.back());
        levels_.pop_back();
        strBelow_.resize(left.nBelow);
        if (levels_.empty()) {
            return;
        }
        Descriptor parent = OpenDescriptorAt(current_.Get(), "..", kOpenFolder);
        struct stat status {};
        if (!parent.IsOpen() || ::fstat(parent.Get(), &status) != 0) {
            ThrowErrno();
        }
        if (status.st_dev != levels_.back().nDevice || status.st_ino != levels_.back().nInode) {
            throw RuntimeFailure(FailureKind::PermissionDenied);
        }
        current_ = std::move(parent);
        visitor_.Left(current_.Get(), left.strName);
    }

    Descriptor current_;
    FolderVisitor& visitor_;
    std::vector<Level> levels_;
    std::string strBelow_;
};

} // namespace

void WalkFolder(Descriptor folder, FolderVisitor& visitor) {
    Walk(std::move(folder), visitor).Run();
}

} // namespace brennik
