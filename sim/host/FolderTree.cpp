#include "sim/host/FolderTree.h"

#include "platform/PlainText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace brennik::sim {

namespace {

namespace fs = std::filesystem;

constexpr int64_t kSizeLimit = int64_t{1} << 32;

struct Problem {
    std::string strReason;
};

class OpenFile {
  public:
    explicit OpenFile(const std::string& strPath)
        : fd_(::open(strPath.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~OpenFile() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool bOpen() const { return fd_ >= 0; }

    size_t Read(int64_t lOffset, char* buffer, size_t nCount) const {
        size_t nRead = 0;
        while (nRead < nCount) {
            const ssize_t n =
                ::pread(fd_, buffer + nRead, nCount - nRead, lOffset + static_cast<int64_t>(nRead));
            if (n < 0 && errno == EINTR) {
                continue;
            }
            if (n <= 0) {
                break;
            }
            nRead += static_cast<size_t>(n);
        }
        return nRead;
    }

  private:
    int fd_;
};

ReadAt OpenForReading(const std::string& strPath) {
    const auto file = std::make_shared<const OpenFile>(strPath);
    if (!file->bOpen()) {
        return nullptr;
    }
    return [file](int64_t lOffset, char* buffer, size_t nCount) {
        return file->Read(lOffset, buffer, nCount);
    };
}

DateTime LocalTime(time_t seconds) {
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec};
}

// A name is cut at an ETX, "\" parts folders, and the two markers steer the client's folders.
void CheckName(const std::string& strPath, const std::string& strName) {
    const std::string strUpper = UpperAscii(strName);
    const bool bStored = strName.find_first_of(std::string_view("\x03\\")) == std::string::npos &&
                         strUpper.find("SETDRIVE") == std::string::npos &&
                         strUpper.find("SETGROUP") == std::string::npos && strUpper != "<DEFAULT>";
    if (!bStored) {
        throw Problem{strPath + ": a client would not store a file or folder of this name"};
    }
}

struct stat StatusOf(const std::string& strPath) {
    struct stat status {};
    if (::stat(strPath.c_str(), &status) != 0) {
        throw Problem{strPath + ": " + std::strerror(errno)};
    }
    return status;
}

std::vector<std::string> SortedNames(const std::string& strFolder) {
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator entry(strFolder, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    if (error) {
        throw Problem{strFolder + ": " + std::strerror(error.value())};
    }
    std::sort(names.begin(), names.end());
    return names;
}

ServedFile FileOf(const std::string& strPath, const std::string& strName,
                  const struct stat& status) {
    if (status.st_size >= kSizeLimit) {
        throw Problem{strPath + ": a file of 4 GiB or more can't be sent"};
    }
    ServedFile file;
    file.strName = strName;
    file.lSize = status.st_size;
    file.modified = LocalTime(status.st_mtime);
    file.open = [strPath] { return OpenForReading(strPath); };
    return file;
}

// The names of drive and group of the folder at hand, empty where there is none yet.
void AddLevel(ServedTree& tree, const std::string& strFolder, const std::string& strDrive,
              const std::string& strGroup) {
    for (const std::string& strName : SortedNames(strFolder)) {
        std::string strPath = strFolder;
        strPath += '/';
        strPath += strName;
        CheckName(strPath, strName);
        const struct stat status = StatusOf(strPath);
        if (S_ISREG(status.st_mode)) {
            tree.AddFile(strDrive, strGroup, FileOf(strPath, strName, status));
        } else if (!S_ISDIR(status.st_mode)) {
            throw Problem{strPath + ": neither a file nor a folder"};
        } else if (strDrive.empty()) {
            tree.AddDrive(strName);
            AddLevel(tree, strPath, strName, "");
        } else if (strGroup.empty()) {
            tree.AddGroup(strDrive, strName);
            AddLevel(tree, strPath, strDrive, strName);
        } else {
            throw Problem{strPath + ": a folder below a group can't be served"};
        }
    }
}

} // namespace

bool AddFolder(ServedTree& tree, const std::string& strFolder, std::string& strError) {
    try {
        AddLevel(tree, strFolder, "", "");
        return true;
    } catch (const Problem& problem) {
        strError = problem.strReason;
        return false;
    }
}

} // namespace brennik::sim
