// What a control block means on this host: a pure function from the vocabulary of the port wrapper
// to that of the operating system's serial interface. A pseudo-terminal takes nearly anything, so
// what a real line would be told is seen here and nowhere else.
#pragma once

#include "platform/ComPorts.h"

#include <cstdint>
#include <optional>

namespace brennik {

/// How the operating system is to set a line. The flag words hold the bits of its terminal
/// interface that the control block decides; all others stand as a raw line needs them.
struct LineSettings {
    uint32_t lControlFlags = 0; ///< size, parity, stop bits, hardware flow control
    uint32_t lInputFlags = 0;   ///< software flow control
    uint32_t lBaudRate = 0;     ///< bits per second
    char cXon = '\0';
    char cXoff = '\0';
    bool bDtr = false; ///< the line is raised
    bool bRts = false; ///< the line is raised; with hardware flow control the driver moves it

    bool operator==(const LineSettings&) const = default;
};

/// Nothing for a control block that the host can't make. The buffer limits at which XON and XOFF go
/// out are the driver's own; flags that dcbflag doesn't name are not looked at.
std::optional<LineSettings> LineSettingsOf(const DCB& dcb);

/// Whether a line that was told the wanted settings and says the taken ones does what was wanted. A
/// driver may round a rate, by 3 % at most. A pseudo-terminal always has 8 bits and no parity,
/// which are then not compared.
bool AreTaken(const LineSettings& wanted, const LineSettings& taken, bool bPseudoTerminal);

/// Bits that one byte takes on the line, in half bits: start, data, parity and stop bits. For a
/// control block of which the host can make settings.
int32_t HalfBitsOfByte(const DCB& dcb);

} // namespace brennik
