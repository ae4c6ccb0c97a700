// The calls of the operating system on the terminal of a serial line, one by one: opening it for
// this process alone, setting it, asking and emptying its queues.
// Room-internal. Tests try them on pseudo-terminals, and answer in place of a driver where these
// differ from a real line.
#pragma once

#include "platform/Descriptor.h"
#include "platform/LineSettings.h"

#include <string>

namespace brennik {

/// Opens the terminal of a line for this process alone: raw, without flow control, DTR and RTS on;
/// rate and frame stay as they are, and nothing that has arrived is lost. Not open, with errno
/// set, on failure: ENOTTY for what is no terminal, EBUSY for a line in use.
Descriptor OpenSerialTerminal(const std::string& strPath);

/// Lets others open the line again. To be called before the descriptor is closed: a
/// pseudo-terminal whose other end stays open would keep ordinary users out for ever.
void ReleaseSerialTerminal(int nTerminal);

bool IsPseudoTerminal(int nTerminal);

/// Sets the line and sees that the driver took it. False with errno set on failure, EINVAL when it
/// wasn't taken; the line is then as it was.
[[nodiscard]] bool SetSerialTerminal(int nTerminal, const LineSettings& settings,
                                     bool bPseudoTerminal);

/// Bytes that the driver still holds to be sent, or -1 with errno set. A pseudo-terminal never
/// holds any: what it has taken is with the other end.
int BytesLeaving(int nTerminal);

/// Throws away what arrived and wasn't read.
void DiscardInput(int nTerminal);

/// Throws away what the driver still holds to be sent.
void DiscardOutput(int nTerminal);

} // namespace brennik
