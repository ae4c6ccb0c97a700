#include "platform/SerialTerminal.h"

#include <algorithm>
#include <asm/termbits.h>
#include <cerrno>
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace brennik {

namespace {

constexpr unsigned kFirstPseudoMajor = 136;
constexpr unsigned kLastPseudoMajor = 143;

struct NamedRate {
    uint32_t lBaudRate;
    uint32_t lFlags;
};

/// The rates that have a name of their own, by which others who look at the line know them.
constexpr NamedRate kNamedRates[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000}};

uint32_t RateFlags(uint32_t lBaudRate) {
    const auto* named = std::ranges::find(kNamedRates, lBaudRate, &NamedRate::lBaudRate);
    return named == std::end(kNamedRates) ? BOTHER : named->lFlags;
}

template <class Argument>
bool Control(int nTerminal, unsigned long nRequest, Argument argument) {
    return Resumed([&] { return ::ioctl(nTerminal, nRequest, argument); }) == 0;
}

/// Bytes pass as they are, both ways; modem lines have no say in whether the line is up. A read
/// waits for one byte, so that one of none tells a line that hung up from a silent one.
void MakeRaw(termios2& terminal) {
    terminal.c_iflag = IGNBRK;
    terminal.c_oflag = 0;
    terminal.c_lflag = 0;
    terminal.c_cflag |= CLOCAL | CREAD;
    terminal.c_cflag &= ~uint32_t{CRTSCTS};
    terminal.c_cc[VMIN] = 1;
    terminal.c_cc[VTIME] = 0;
}

void PutSettings(const LineSettings& settings, termios2& terminal) {
    MakeRaw(terminal);
    terminal.c_iflag |= settings.lInputFlags;
    // Whether the modem lines fall with the last close is nobody's business here.
    terminal.c_cflag &= HUPCL;
    terminal.c_cflag |= settings.lControlFlags | RateFlags(settings.lBaudRate);
    terminal.c_ispeed = settings.lBaudRate;
    terminal.c_ospeed = settings.lBaudRate;
    terminal.c_cc[VSTART] = static_cast<cc_t>(settings.cXon);
    terminal.c_cc[VSTOP] = static_cast<cc_t>(settings.cXoff);
}

LineSettings SettingsIn(const termios2& terminal) {
    LineSettings settings;
    settings.lControlFlags = terminal.c_cflag;
    settings.lInputFlags = terminal.c_iflag;
    settings.lBaudRate = terminal.c_ospeed;
    return settings;
}

void SetModemLine(int nTerminal, int nLine, bool bOn) {
    // A pseudo-terminal has none.
    static_cast<void>(Control(nTerminal, bOn ? TIOCMBIS : TIOCMBIC, &nLine));
}

/// Adapters gather what arrives for 16 ms and more unless they are asked not to.
void AskForLowLatency(int nTerminal) {
    serial_struct driver{};
    if (Control(nTerminal, TIOCGSERIAL, &driver)) {
        driver.flags |= ASYNC_LOW_LATENCY;
        static_cast<void>(Control(nTerminal, TIOCSSERIAL, &driver)); // some can't
    }
}

/// False with errno set when the line isn't ours to take.
bool Take(int nTerminal) {
    termios2 terminal{};
    if (!Control(nTerminal, TCGETS2, &terminal)) {
        return false;
    }
    // The lock stops all who lock, root among them; the exclusive mode all others.
    if (Resumed([&] { return ::flock(nTerminal, LOCK_EX | LOCK_NB); }) != 0) {
        errno = errno == EWOULDBLOCK ? EBUSY : errno;
        return false;
    }
    int nExclusive = 0;
    if (Control(nTerminal, TIOCGEXCL, &nExclusive) && nExclusive != 0) {
        errno = EBUSY; // root gets through to a port that another program keeps to itself
        return false;
    }
    MakeRaw(terminal);
    if (!Control(nTerminal, TCSETS2, &terminal) || !Control(nTerminal, TIOCEXCL, 0L)) {
        return false;
    }
    AskForLowLatency(nTerminal);
    SetModemLine(nTerminal, TIOCM_DTR | TIOCM_RTS, true);
    return true;
}

} // namespace

Descriptor OpenSerialTerminal(const std::string& strPath) {
    Descriptor terminal = OpenDescriptor(strPath, O_RDWR);
    if (terminal.IsOpen() && !Take(terminal.Get())) {
        const int nError = errno;
        terminal = Descriptor();
        errno = nError;
    }
    return terminal;
}

void ReleaseSerialTerminal(int nTerminal) {
    static_cast<void>(Control(nTerminal, TIOCNXCL, 0L)); // fails on a line that hung up
}

bool IsPseudoTerminal(int nTerminal) {
    struct stat status {};
    if (::fstat(nTerminal, &status) != 0 || !S_ISCHR(status.st_mode)) {
        return false;
    }
    const unsigned nMajor = major(status.st_rdev);
    return nMajor >= kFirstPseudoMajor && nMajor <= kLastPseudoMajor;
}

bool SetSerialTerminal(int nTerminal, const LineSettings& settings, bool bPseudoTerminal) {
    termios2 former{};
    if (!Control(nTerminal, TCGETS2, &former)) {
        return false;
    }
    termios2 terminal = former;
    PutSettings(settings, terminal);
    if (!Control(nTerminal, TCSETS2, &terminal) || !Control(nTerminal, TCGETS2, &terminal)) {
        return false;
    }
    if (!AreTaken(settings, SettingsIn(terminal), bPseudoTerminal)) {
        static_cast<void>(Control(nTerminal, TCSETS2, &former)); // as far as the driver takes it
        errno = EINVAL;
        return false;
    }
    SetModemLine(nTerminal, TIOCM_DTR, settings.bDtr);
    SetModemLine(nTerminal, TIOCM_RTS, settings.bRts);
    return true;
}

int BytesLeaving(int nTerminal) {
    int nBytes = 0;
    return Control(nTerminal, TIOCOUTQ, &nBytes) ? nBytes : -1;
}

void DiscardInput(int nTerminal) {
    static_cast<void>(Control(nTerminal, TCFLSH, long{TCIFLUSH})); // a line that hung up has none
}

void DiscardOutput(int nTerminal) {
    // With nothing in the driver a pseudo-terminal would take back what was sent: the bytes that
    // the other end has not read yet.
    if (BytesLeaving(nTerminal) > 0) {
        static_cast<void>(
            Control(nTerminal, TCFLSH, long{TCOFLUSH})); // a line that hung up has none
    }
}

} // namespace brennik
