// One open serial line: its terminal, what was read ahead of its reader, how it is set and its time
// limits. Handles stand for these in LinuxComPorts.
// Room-internal. Its operations give false with errno set on failure.
#pragma once

#include "platform/ComPorts.h"
#include "platform/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace brennik {

class SerialLine {
  public:
    /// With the terminal as OpenSerialTerminal gives it.
    explicit SerialLine(Descriptor terminal);
    ~SerialLine() { static_cast<void>(Close()); } // nobody is left to hear of it
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    /// Gives what was just written up to 20 ms to leave; the rest, and what was not read, is thrown
    /// away.
    [[nodiscard]] bool Close();

    /// Single bytes come from what was read ahead, without a call of the operating system. A read
    /// that fails since the line hung up lasts its whole time, or 10 ms without a limit.
    [[nodiscard]] bool Read(char* buffer, int32_t lCount, int32_t& lRead);

    [[nodiscard]] bool Write(std::string_view strData, int32_t& lWritten);

    /// By purgeflag. Reads and writes under way, which the two abort flags mean, there are none.
    void Purge(int32_t lFlags);

    const DCB& State() const { return dcb_; }
    [[nodiscard]] bool SetState(const DCB& dcb);

    /// EINVAL for a limit below 0.
    [[nodiscard]] bool SetTimeouts(const CommTimeouts& timeouts);

  private:
    int32_t TakeAhead(char* buffer, int32_t lCount);
    bool ReadAhead();
    bool Hand(std::string_view& strRest);
    int32_t Held();

    Descriptor terminal_;
    bool bPseudoTerminal_;
    DCB dcb_;
    CommTimeouts timeouts_ = kTimeoutsAtOpening;
    std::vector<char> ahead_;
    size_t nAheadBegin_ = 0;
    size_t nAheadEnd_ = 0;
    int64_t lHandedSinceEmpty_ = 0; ///< bytes, since the driver was last seen to hold none
};

} // namespace brennik
