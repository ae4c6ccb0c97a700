#include "sim/host/PseudoTerminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace brennik::sim {

namespace {

int OpenSlave(const std::string& strDevice) {
    return ::open(strDevice.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

// What arrives before the other end has set the line itself must not be cooked, and not be echoed
// as if it had answered.
void MakeRaw(int fd) {
    termios settings{};
    ::tcgetattr(fd, &settings);
    ::cfmakeraw(&settings);
    ::tcsetattr(fd, TCSANOW, &settings);
}

} // namespace

PseudoTerminal::~PseudoTerminal() {
    for (const int fd : {watch_, master_}) {
        if (fd >= 0) {
            ::close(fd);
        }
    }
}

bool PseudoTerminal::Open(std::string& strError) {
    std::array<char, 64> device{};
    int slave = -1;
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ >= 0 && ::grantpt(master_) == 0 && ::unlockpt(master_) == 0 &&
        ::ptsname_r(master_, device.data(), device.size()) == 0) {
        strDevice_ = device.data();
        slave = OpenSlave(strDevice_);
    }
    if (slave < 0) {
        strError = std::string("can't make a pseudo-terminal: ") + std::strerror(errno);
        return false;
    }
    MakeRaw(slave);
    // Only after a first close does the master side see that nobody is there.
    ::close(slave);
    watch_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch_ >= 0 && ::inotify_add_watch(watch_, strDevice_.c_str(), IN_OPEN | IN_CLOSE) < 0) {
        ::close(watch_);
        watch_ = -1;
    }
    return true;
}

// Nobody has the slave side open.
bool PseudoTerminal::bDeserted() const {
    pollfd polled{master_, 0, 0};
    return ::poll(&polled, 1, 0) == 1 && (polled.revents & POLLHUP) != 0;
}

void PseudoTerminal::TakeEvents() {
    alignas(inotify_event) std::array<char, 4096> events;
    ssize_t nRead = 0;
    while (watch_ >= 0 && (nRead = ::read(watch_, events.data(), events.size())) > 0) {
        for (size_t nAt = 0; nAt < static_cast<size_t>(nRead);) {
            inotify_event event{};
            std::memcpy(&event, events.data() + nAt, sizeof event);
            nAt += sizeof event + event.len;
            if ((event.mask & IN_OPEN) != 0) {
                Opened();
            } else if ((event.mask & IN_CLOSE) != 0) {
                Closed();
            }
        }
    }
}

void PseudoTerminal::Opened() {
    bOpened_ = true;
    bChangedHands_ = bChangedHands_ || bAllLeft_;
    nHolders_ += bCounted_ ? 0 : 1;
    bCounted_ = false;
}

// A close is told before it is done, so it ends no hold by itself: soon the master side hangs up,
// or somebody else has opened the line.
void PseudoTerminal::Closed() {
    nHolders_ = std::max(0, nHolders_ - 1);
    bAllLeft_ = bAllLeft_ || nHolders_ == 0;
    bCounted_ = false;
}

bool PseudoTerminal::bOpened() {
    TakeEvents();
    return bOpened_ || (watch_ < 0 && !bDeserted());
}

void PseudoTerminal::BeginHold() {
    bOpened_ = false;
    bAllLeft_ = nHolders_ == 0;
    bChangedHands_ = false;
}

bool PseudoTerminal::bChangedHands() {
    TakeEvents();
    return bChangedHands_;
}

bool PseudoTerminal::Renew() {
    return Clear(true);
}

bool PseudoTerminal::Clear() {
    return Clear(false);
}

bool PseudoTerminal::Clear(bool bSettings) {
    const bool bNobody = bDeserted();
    const int slave = OpenSlave(strDevice_);
    if (slave < 0) {
        return !bNobody || errno != EBUSY;
    }
    if (bNobody) {
        ::ioctl(slave, TIOCNXCL);
    }
    if (bNobody && bSettings) {
        MakeRaw(slave);
    }
    ::tcflush(master_, TCOFLUSH); // what the slave side has not even begun to take
    ::tcflush(slave, TCIFLUSH);
    ::close(slave);
    TakeEvents(); // of this very opening
    // Whoever has opened the line meanwhile may have been told by now, or is yet to be.
    bOpened_ = !bDeserted();
    nHolders_ = bOpened_ ? 1 : 0;
    bCounted_ = bOpened_;
    return true;
}

} // namespace brennik::sim
