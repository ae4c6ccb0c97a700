#include "platform/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace brennik {

namespace {

constexpr size_t kReadBlock = 65536;
constexpr int kNeverWait = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        static_cast<void>(Close()); // whoever wants to hear of it closes by name
        nDescriptor_ = other.Release();
    }
    return *this;
}

bool Descriptor::Close() {
    if (!IsOpen()) {
        return true;
    }
    // An interrupted close has closed; closing again could hit a descriptor of someone else.
    return ::close(Release()) == 0 || errno == EINTR;
}

Descriptor OpenDescriptor(const std::string& strPath, int nFlags, unsigned nMode) {
    return OpenDescriptorAt(AT_FDCWD, strPath, nFlags, nMode);
}

Descriptor OpenDescriptorAt(int nFolder, const std::string& strName, int nFlags, unsigned nMode) {
    return Descriptor(
        Resumed([&] { return ::openat(nFolder, strName.c_str(), nFlags | kNeverWait, nMode); }));
}

bool WriteAll(int nDescriptor, std::string_view strData) {
    while (!strData.empty()) {
        const ssize_t nWritten =
            Resumed([&] { return ::write(nDescriptor, strData.data(), strData.size()); });
        if (nWritten < 0) {
            return false;
        }
        strData.remove_prefix(static_cast<size_t>(nWritten));
    }
    return true;
}

std::optional<std::string> ReadAllOf(int nDescriptor, size_t nLimit) {
    std::string strContent;
    for (;;) {
        const size_t nOld = strContent.size();
        strContent.resize(nOld + kReadBlock);
        const ssize_t nRead =
            Resumed([&] { return ::read(nDescriptor, strContent.data() + nOld, kReadBlock); });
        if (nRead < 0) {
            return std::nullopt;
        }
        strContent.resize(nOld + static_cast<size_t>(nRead));
        if (nRead == 0) {
            return strContent;
        }
        if (strContent.size() > nLimit) {
            errno = EFBIG;
            return std::nullopt;
        }
    }
}

} // namespace brennik
