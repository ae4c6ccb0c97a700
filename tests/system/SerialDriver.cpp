#include "tests/system/SerialDriver.h"

#include <algorithm>
#include <asm/termbits.h>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

brennik::system_tests::SerialDriver* driver = nullptr;

int SystemCall(int nDescriptor, unsigned long nRequest, void* argument) {
    return static_cast<int>(::syscall(SYS_ioctl, nDescriptor, nRequest, argument));
}

} // namespace

// The call of the C library, for the whole of this program.
extern "C" int ioctl(int nDescriptor, unsigned long nRequest, ...) noexcept {
    va_list arguments;
    va_start(arguments, nRequest);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (driver != nullptr) {
        if (const auto nAnswer = driver->Answer(nDescriptor, nRequest, argument)) {
            return *nAnswer;
        }
    }
    return SystemCall(nDescriptor, nRequest, argument);
}

namespace brennik::system_tests {

SerialDriver::SerialDriver() {
    driver = this;
}

SerialDriver::~SerialDriver() {
    driver = nullptr;
}

std::optional<int> SerialDriver::Answer(int nDescriptor, unsigned long nRequest, void* argument) {
    const auto told = [&](const std::string& strWhat) {
        strTold += strWhat + " ";
        return 0;
    };
    switch (nRequest) {
    case TIOCOUTQ: {
        const size_t nLook = std::min(static_cast<size_t>(nLooks++), held.size() - 1);
        *static_cast<int*>(argument) = held[nLook];
        if (nLookError != 0) {
            errno = nLookError;
            return -1;
        }
        return 0;
    }
    case TCFLSH:
        return told(reinterpret_cast<intptr_t>(argument) == TCIFLUSH ? "discard input"
                                                                     : "discard output");
    case TIOCMBIS:
        return told("raise " + std::to_string(*static_cast<int*>(argument)));
    case TIOCMBIC:
        return told("drop " + std::to_string(*static_cast<int*>(argument)));
    case TIOCEXCL:
        told("exclusive");
        return std::nullopt;
    case TIOCNXCL:
        told("shared");
        return std::nullopt;
    case TIOCGSERIAL: {
        if (!nFlags) {
            return std::nullopt;
        }
        auto* serial = static_cast<serial_struct*>(argument);
        serial->flags = *nFlags;
        serial->baud_base = nBaudBase;
        return 0;
    }
    case TIOCSSERIAL: {
        const auto* serial = static_cast<const serial_struct*>(argument);
        return told("flags " + std::to_string(serial->flags) + " base " +
                    std::to_string(serial->baud_base));
    }
    case TCGETS2: {
        const int nResult = SystemCall(nDescriptor, nRequest, argument);
        auto* terminal = static_cast<termios2*>(argument);
        terminal->c_cflag &= ~lRefusedControlFlags;
        terminal->c_iflag &= ~lRefusedInputFlags;
        terminal->c_ospeed = lOnlyBaudRate.value_or(terminal->c_ospeed);
        return nResult;
    }
    default:
        return std::nullopt;
    }
}

} // namespace brennik::system_tests
