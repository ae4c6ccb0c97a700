#include "tests/system/PlainLine.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace brennik::system_tests {

PlainLine::PlainLine(const std::string& strPath)
    : PlainPeer(::open(strPath.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
}

void PlainLine::Send(std::string_view strBytes) {
    static_cast<void>(::write(Descriptor(), strBytes.data(), strBytes.size()));
}

void PlainLine::SetRaw(int nRate) {
    termios settings{};
    ::tcgetattr(Descriptor(), &settings);
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, static_cast<speed_t>(nRate));
    ::tcsetattr(Descriptor(), TCSANOW, &settings);
}

void PlainLine::SetCooked() {
    termios settings{};
    ::tcgetattr(Descriptor(), &settings);
    settings.c_iflag |= ICRNL | IXON;
    settings.c_oflag |= OPOST | ONLCR;
    settings.c_lflag |= ICANON | ECHO | ISIG;
    ::tcsetattr(Descriptor(), TCSANOW, &settings);
}

int PlainLine::nWaiting() const {
    int nBytes = 0;
    ::ioctl(Descriptor(), FIONREAD, &nBytes);
    return nBytes;
}

void PlainLine::TakeForItself() {
    ::ioctl(Descriptor(), TIOCEXCL);
}

std::string_view PlainLine::EndName(bool /*bInOrder*/) const {
    return "hung up";
}

} // namespace brennik::system_tests
