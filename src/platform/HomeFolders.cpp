#include "platform/HomeFolders.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace brennik {

namespace {

constexpr size_t kFirstBuffer = 4096;
constexpr size_t kLargestBuffer = 1048576;

std::string ListedHome() {
    std::vector<char> buffer(kFirstBuffer);
    for (;;) {
        passwd entry{};
        passwd* found = nullptr;
        const int nError = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
        if (nError == EINTR) {
            continue;
        }
        if (nError == ERANGE && buffer.size() < kLargestBuffer) {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
    }
}

} // namespace

std::vector<std::string> HomeFolders() {
    const char* home = std::getenv("HOME");
    std::vector<std::string> folders;
    for (const std::string& strFolder : {std::string(home != nullptr ? home : ""), ListedHome()}) {
        if (!strFolder.empty() && strFolder.front() == '/') {
            folders.push_back(strFolder);
        }
    }
    return folders;
}

} // namespace brennik
