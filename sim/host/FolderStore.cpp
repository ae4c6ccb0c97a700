#include "sim/host/FolderStore.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brennik::sim {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
// What is no file must not make the open wait.
constexpr int kFileFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

void CloseIfOpen(int& fd) {
    if (fd >= 0) {
        ::close(std::exchange(fd, -1));
    }
}

bool WriteAll(int fd, std::string_view strBytes) {
    while (!strBytes.empty()) {
        const ssize_t nWritten = ::write(fd, strBytes.data(), strBytes.size());
        if (nWritten < 0 && errno != EINTR) {
            return false;
        }
        strBytes.remove_prefix(nWritten > 0 ? static_cast<size_t>(nWritten) : 0);
    }
    return true;
}

// Cuts a file to what is to stay of it, and goes to its end.
bool KeepOnly(int fd, std::optional<size_t> nKeep) {
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    const off_t nSize =
        nKeep ? std::min(status.st_size, static_cast<off_t>(*nKeep)) : status.st_size;
    return ::ftruncate(fd, nSize) == 0 && ::lseek(fd, 0, SEEK_END) == nSize;
}

} // namespace

FolderStore::~FolderStore() {
    FolderStore::Close();
    CloseIfOpen(folder_);
}

bool FolderStore::OpenFolder(const std::string& strFolder, std::string& strError) {
    ::mkdir(strFolder.c_str(), 0777); // the open tells whether it is there now
    folder_ = ::open(strFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder_ < 0) {
        strError = strFolder + ": " + std::strerror(errno);
    }
    return folder_ >= 0;
}

bool FolderStore::Open(const std::string& strPath, std::optional<size_t> nKeep) {
    Close();
    file_ = OpenAt(strPath);
    if (file_ >= 0 && !KeepOnly(file_, nKeep)) {
        Close();
    }
    return file_ >= 0;
}

bool FolderStore::Write(std::string_view strBytes) {
    return file_ >= 0 && WriteAll(file_, strBytes);
}

bool FolderStore::Append(const std::string& strPath, std::string_view strBytes) {
    int fd = OpenAt(strPath);
    const bool bWritten = fd >= 0 && KeepOnly(fd, std::nullopt) && WriteAll(fd, strBytes);
    CloseIfOpen(fd);
    return bWritten;
}

void FolderStore::Close() {
    CloseIfOpen(file_);
}

// Part by part, so that none of them can be a link.
int FolderStore::OpenAt(const std::string& strPath) const {
    int folder = ::fcntl(folder_, F_DUPFD_CLOEXEC, 0);
    size_t nBegin = 0;
    for (size_t nEnd = 0; (nEnd = strPath.find('/', nBegin)) != std::string::npos;
         nBegin = nEnd + 1) {
        const std::string strPart = strPath.substr(nBegin, nEnd - nBegin);
        ::mkdirat(folder, strPart.c_str(), 0777); // the open tells whether it is there now
        const int next = ::openat(folder, strPart.c_str(), kFolderFlags);
        CloseIfOpen(folder);
        if (next < 0) {
            return -1;
        }
        folder = next;
    }
    const int fd = ::openat(folder, strPath.c_str() + nBegin, kFileFlags, 0666);
    CloseIfOpen(folder);
    return fd;
}

} // namespace brennik::sim
