#include "platform/FileListing.h"

#include "platform/Descriptor.h"
#include "platform/Wildcards.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>

namespace brennik {

namespace {

constexpr unsigned kWanted = STATX_TYPE | STATX_ATIME | STATX_MTIME | STATX_BTIME;

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

FileTimes TimesOf(const struct statx& status) {
    const bool bBirth = (status.stx_mask & STATX_BTIME) != 0;
    return FileTimes{bBirth ? status.stx_btime.tv_sec : status.stx_mtime.tv_sec,
                     status.stx_atime.tv_sec, status.stx_mtime.tv_sec};
}

/// An entry by its name; one that a link names, or the link itself when it leads nowhere.
std::optional<FoundFile> EntryOf(int nFolder, const std::string& strName) {
    struct statx status {};
    if (::statx(nFolder, strName.c_str(), 0, kWanted, &status) != 0 &&
        ::statx(nFolder, strName.c_str(), AT_SYMLINK_NOFOLLOW, kWanted, &status) != 0) {
        return std::nullopt;
    }
    return FoundFile{strName, S_ISDIR(status.stx_mode), TimesOf(status)};
}

} // namespace

std::optional<FileTimes> TimesOfDescriptor(int nDescriptor) {
    struct statx status {};
    if (::statx(nDescriptor, "", AT_EMPTY_PATH, kWanted, &status) != 0) {
        return std::nullopt;
    }
    return TimesOf(status);
}

std::vector<FoundFile> ListMatching(const std::string& strFolder, const std::string& strPattern) {
    std::vector<FoundFile> found;
    if (strPattern.empty()) {
        return found;
    }
    const std::string strPrefix = strFolder.empty() ? "./" : strFolder + "/";
    if (!HasWildcard(strPattern)) {
        if (auto entry = EntryOf(AT_FDCWD, strPrefix + strPattern)) {
            entry->strName = strPattern;
            found.push_back(std::move(*entry));
        }
        return found;
    }
    const OpenFolder folder(::opendir(strPrefix.c_str()));
    if (!folder) {
        return found;
    }
    while (const dirent* at = ::readdir(folder.get())) {
        if (!MatchesWildcard(at->d_name, strPattern)) {
            continue;
        }
        if (auto entry = EntryOf(::dirfd(folder.get()), at->d_name)) {
            found.push_back(std::move(*entry));
        }
    }
    std::vector<std::pair<std::string, size_t>> order;
    order.reserve(found.size());
    for (size_t n = 0; n < found.size(); ++n) {
        // Names that differ in case alone keep one order on every machine.
        order.emplace_back(UpperCasedName(found[n].strName) + '\0' + found[n].strName, n);
    }
    std::sort(order.begin(), order.end());
    std::vector<FoundFile> sorted;
    sorted.reserve(found.size());
    for (const auto& place : order) {
        sorted.push_back(std::move(found[place.second]));
    }
    return sorted;
}

} // namespace brennik
