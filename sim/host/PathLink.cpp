#include "sim/host/PathLink.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brennik::sim {

PathLink::PathLink(std::string strPath) : strPath_(std::move(strPath)) {
}

PathLink::~PathLink() {
    Remove();
}

bool PathLink::LeadTo(const std::string& strTarget, std::string& strError) {
    struct stat status {};
    if (::lstat(strPath_.c_str(), &status) == 0 && !S_ISLNK(status.st_mode)) {
        strError = strPath_ + ": what stands there is no symbolic link";
        return false;
    }
    const std::string strNew = strPath_ + "." + std::to_string(::getpid());
    if (::symlink(strTarget.c_str(), strNew.c_str()) != 0) {
        strError = strNew + ": " + std::strerror(errno);
        return false;
    }
    if (::rename(strNew.c_str(), strPath_.c_str()) != 0) {
        strError = strPath_ + ": " + std::strerror(errno);
        ::unlink(strNew.c_str());
        return false;
    }
    strTarget_ = strTarget;
    return true;
}

void PathLink::Remove() {
    if (strTarget_.empty()) {
        return;
    }
    std::array<char, PATH_MAX> target{};
    const ssize_t nTarget = ::readlink(strPath_.c_str(), target.data(), target.size());
    if (nTarget >= 0 && std::string(target.data(), static_cast<size_t>(nTarget)) == strTarget_) {
        ::unlink(strPath_.c_str());
    }
    strTarget_.clear();
}

} // namespace brennik::sim
