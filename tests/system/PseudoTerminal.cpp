#include "tests/system/PseudoTerminal.h"

#include <asm/termbits.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brennik::system_tests {

namespace {

constexpr int kLongTime = 10000;
constexpr unsigned kNobody = 65534;

void Require(bool bDone, const char* strWhat) {
    if (!bDone) {
        throw std::runtime_error(std::string(strWhat) + ": " + std::strerror(errno));
    }
}

bool Await(int nDescriptor, short nEvents, int nMilliseconds) {
    pollfd watched{nDescriptor, nEvents, 0};
    int nReady = 0;
    do {
        nReady = ::poll(&watched, 1, nMilliseconds);
    } while (nReady < 0 && errno == EINTR);
    return (watched.revents & nEvents) != 0;
}

} // namespace

PseudoTerminal::PseudoTerminal() : nFarEnd_(::open("/dev/ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    Require(nFarEnd_ >= 0 && ::grantpt(nFarEnd_) == 0 && ::unlockpt(nFarEnd_) == 0,
            "no pseudo-terminal");
    char name[64];
    Require(::ptsname_r(nFarEnd_, name, sizeof name) == 0, "ptsname");
    strPath_ = name;
}

void PseudoTerminal::Send(std::string_view strText) {
    while (!strText.empty()) {
        const ssize_t nSent = ::write(nFarEnd_, strText.data(), strText.size());
        Require(nSent > 0 || errno == EINTR, "write to the line");
        strText.remove_prefix(static_cast<size_t>(nSent > 0 ? nSent : 0));
    }
}

std::string PseudoTerminal::Receive(size_t nBytes) {
    std::string strText(nBytes, '\0');
    size_t nHave = 0;
    while (nHave < nBytes && Await(nFarEnd_, POLLIN, kLongTime)) {
        const ssize_t nRead = ::read(nFarEnd_, strText.data() + nHave, nBytes - nHave);
        if (nRead <= 0) {
            break;
        }
        nHave += static_cast<size_t>(nRead);
    }
    strText.resize(nHave);
    return strText;
}

std::string PseudoTerminal::ReceiveAll() {
    std::string strText;
    char buffer[4096];
    while (Await(nFarEnd_, POLLIN, 0)) {
        const ssize_t nRead = ::read(nFarEnd_, buffer, sizeof buffer);
        if (nRead <= 0) {
            break;
        }
        strText.append(buffer, static_cast<size_t>(nRead));
    }
    return strText;
}

void PseudoTerminal::HangUp() {
    if (nFarEnd_ >= 0) {
        ::close(std::exchange(nFarEnd_, -1));
    }
}

SeenSettings PseudoTerminal::Settings() const {
    // The far end shows how the near one is set.
    termios2 terminal{};
    Require(::ioctl(nFarEnd_, TCGETS2, &terminal) == 0, "settings of the line");
    return {terminal.c_cflag,  terminal.c_iflag,      terminal.c_oflag,    terminal.c_lflag,
            terminal.c_ospeed, terminal.c_cc[VSTART], terminal.c_cc[VSTOP]};
}

void PseudoTerminal::Permit(unsigned nMode) const {
    Require(::chmod(strPath_.c_str(), nMode) == 0, "chmod");
}

int DescriptorFor(const std::string& strPath) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == strPath) {
            return std::atoi(entry.path().filename().c_str());
        }
    }
    return -1;
}

int BytesThere(int nDescriptor) {
    // A look for input brings in what is still on its way between the two ends.
    static_cast<void>(Await(nDescriptor, POLLIN, 0));
    int nBytes = -1;
    return ::ioctl(nDescriptor, FIONREAD, &nBytes) == 0 ? nBytes : -1;
}

void BecomeOrdinaryUser() {
    if (::geteuid() == 0) {
        Require(::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0,
                "setuid");
    }
}

} // namespace brennik::system_tests
