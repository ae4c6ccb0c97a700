// The serial port calls that the port wrapper makes, in the vocabulary of its control block.
// For real they stand on the serial interface of the operating system (LinuxComPorts); tests put
// the lines in memory of the simulated host in their place. Handles are numbers from 0; -1 is none.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

/// No open port.
inline constexpr int32_t kNoComPort = -1;

/// The control block of a port: how its line is set. The flags stand in one word, by the lowest
/// bit of each; all are one bit wide but fDtrControl and fRtsControl, which have two.
struct DCB {
    int32_t BaudRate = 9600; ///< bits per second
    int32_t Flags = 0x1011;  ///< at the start binary, DTR on, RTS on
    int16_t XonLim = 2048;   ///< bytes left in the input buffer at which XON goes out
    int16_t XoffLim = 512;   ///< bytes free in the input buffer at which XOFF goes out
    int8_t ByteSize = 8;     ///< data bits, 4 to 8
    int8_t Parity = 0;       ///< 0 none, 1 odd, 2 even, 3 mark, 4 space
    int8_t StopBits = 0;     ///< 0 one, 1 one and a half, 2 two
    char XonChar = '\x11';
    char XoffChar = '\x13';

    bool operator==(const DCB&) const = default;
};

/// The lowest bits of the flags.
namespace dcbflag {
inline constexpr int32_t kBinary = 0;
inline constexpr int32_t kOutxCtsFlow = 2;
inline constexpr int32_t kOutxDsrFlow = 3;
inline constexpr int32_t kDtrControl = 4; ///< two bits: 0 off, 1 on, 2 handshake
inline constexpr int32_t kOutX = 8;
inline constexpr int32_t kInX = 9;
inline constexpr int32_t kRtsControl = 12; ///< two bits: 0 off, 1 on, 2 handshake, 3 toggle
} // namespace dcbflag

/// The five time limits of a port, in milliseconds. A read or write of n bytes lasts at most the
/// constant and n times the multiplier; the interval is the longest gap between two bytes of a
/// read.
struct CommTimeouts {
    int32_t ReadIntervalTimeout = 0;
    int32_t ReadTotalTimeoutMultiplier = 0;
    int32_t ReadTotalTimeoutConstant = 0;
    int32_t WriteTotalTimeoutMultiplier = 0;
    int32_t WriteTotalTimeoutConstant = 0;

    bool operator==(const CommTimeouts&) const = default;
};

/// In force from the opening on: a port whose limits could not be set must not be waited on for
/// ever.
inline constexpr CommTimeouts kTimeoutsAtOpening{.ReadTotalTimeoutConstant = 10,
                                                 .WriteTotalTimeoutConstant = 1000};

/// What Purge throws away.
namespace purgeflag {
inline constexpr int32_t kTxAbort = 1;
inline constexpr int32_t kRxAbort = 2;
inline constexpr int32_t kTxClear = 4;
inline constexpr int32_t kRxClear = 8;
} // namespace purgeflag

class ComPorts {
  public:
    virtual ~ComPorts() = default;

    /// The number of the last failing call, as the operating system gives it. Set by failing calls
    /// only, never cleared by a success.
    virtual int32_t LastError() = 0;

    /// Opens an existing port for reading and writing, for this process alone: "COM1", or with
    /// "\\.\" in front. A handle, or -1.
    virtual int32_t Open(const std::string& strPort) = 0;

    /// Closes a port, which can be opened again at once. False when the handle is none, or when
    /// the system's own close fails.
    virtual bool Close(int32_t hPort) = 0;

    /// Reads at most lCount bytes into the buffer. Ends with all of them or when the time limit of
    /// reads is over, with lRead bytes, which may be 0. False on failure; a line that has hung up
    /// is one, once what was read ahead is served. What the system itself still held is lost.
    virtual bool Read(int32_t hPort, char* buffer, int32_t lCount, int32_t& lRead) = 0;

    /// Writes bytes: lWritten of them were taken within the time limit of writes. False on failure.
    virtual bool Write(int32_t hPort, std::string_view strData, int32_t& lWritten) = 0;

    /// Throws away what waits to be read, or to be sent, by purgeflag. The outcome is never looked
    /// at.
    virtual void Purge(int32_t hPort, int32_t lFlags) = 0;

    /// The control block of the port, as it was last set.
    virtual bool GetState(int32_t hPort, DCB& dcb) = 0;

    /// Sets the line as the control block says, as a whole. False when the port can't be set so;
    /// the state is then what it was.
    virtual bool SetState(int32_t hPort, const DCB& dcb) = 0;

    virtual bool SetTimeouts(int32_t hPort, const CommTimeouts& timeouts) = 0;
};

} // namespace brennik
