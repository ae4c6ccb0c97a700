#include "platform/IniFileCache.h"

#include "platform/Descriptor.h"
#include "platform/Waits.h"

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace brennik {

namespace {

/// Files carry the time of the system's last tick. Two changes within one tick look alike, so a
/// file that is younger than a few of them is read again at every use.
constexpr int64_t kSettlingTime = 50000000;

int64_t NanosecondsOf(const timespec& time) {
    return time.tv_sec * kNanosecondsOfSecond + time.tv_nsec;
}

} // namespace

IniIndex* IniFileCache::Read(const std::string& strPath) {
    if (index_ && bSettled_ && IdentityOf(strPath, -1) == identity_) {
        return index_.get();
    }
    Load(strPath);
    return index_.get();
}

std::optional<IniFileCache::Identity> IniFileCache::IdentityOf(const std::string& strPath,
                                                               int nDescriptor) {
    struct stat status {};
    const int nResult =
        nDescriptor < 0 ? ::stat(strPath.c_str(), &status) : ::fstat(nDescriptor, &status);
    if (nResult != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > static_cast<int64_t>(kLargestIniFile)) {
        return std::nullopt;
    }
    return Identity{status.st_dev, status.st_ino, status.st_size, NanosecondsOf(status.st_mtim),
                    NanosecondsOf(status.st_ctim)};
}

void IniFileCache::Load(const std::string& strPath) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const Descriptor file = OpenDescriptor(strPath, O_RDONLY);
    const auto identity = file.IsOpen() ? IdentityOf(strPath, file.Get()) : std::nullopt;
    auto strContent =
        identity ? ReadAllOf(file.Get(), kLargestIniFile) : std::optional<std::string>();
    if (!strContent) {
        index_.reset();
        return;
    }
    if (!index_ || index_->Content() != *strContent) {
        index_ = std::make_unique<IniIndex>(std::move(*strContent));
    }
    identity_ = *identity;
    bSettled_ =
        NanosecondsOf(now) - std::max(identity_.lModified, identity_.lChanged) > kSettlingTime;
}

} // namespace brennik
