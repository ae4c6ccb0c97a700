#include "sim/host/PseudoTerminal.h"

// Speeds without a name of their own show only to this form of the call, whose header excludes the
// usual one.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace brennik::sim {

int64_t PseudoTerminal::lSpeed() const {
    termios2 settings{};
    // The master side tells the settings of the slave side.
    return ::ioctl(master_, TCGETS2, &settings) == 0 ? int64_t{settings.c_ospeed} : 0;
}

} // namespace brennik::sim
