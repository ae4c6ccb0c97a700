// The receivers that set the limit: they know how long each frame is, wait for it in one blocking
// call, and answer with one ACK. They speak with the same sender as the program does.
#pragma once

#include "bench/Frames.h"

#include <cstdint>
#include <string>

namespace brennik::bench {

enum class Receiver {
    Bare,    ///< looks at nothing and keeps nothing
    Checked, ///< checks a sliced CRC and appends each block to its file with one write
};

/// Receives one session from 127.0.0.1. Files go into the folder, under the names that the sender
/// gives them. An exit status: 0 when the whole session came.
int ReceiveSession(Receiver receiver, uint16_t iPort, const Job& job, const std::string& strFolder);

/// A connection to 127.0.0.1 that sends without delay; ends the process when there is none.
int ConnectTo(uint16_t iPort);

} // namespace brennik::bench
