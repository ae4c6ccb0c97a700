// What real drivers do and pseudo-terminals don't: bytes that are held until the line has sent
// them, modem lines, settings that aren't taken. While one lives, it stands between this process
// and the terminal's own driver; what it has no answer for goes through.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brennik::system_tests {

class SerialDriver {
  public:
    SerialDriver();
    ~SerialDriver();
    SerialDriver(const SerialDriver&) = delete;
    SerialDriver& operator=(const SerialDriver&) = delete;

    /// Bytes held to be sent, look by look; the last number stays.
    std::vector<int> held = {0};
    int nLooks = 0;

    /// The errno with which a look at the bytes held fails; 0 for none.
    int nLookError = 0;

    /// Bits of the flags that it never sets, and the rate that it makes of any.
    uint32_t lRefusedControlFlags = 0;
    uint32_t lRefusedInputFlags = 0;
    std::optional<uint32_t> lOnlyBaudRate;

    /// Its own flags and rate base, for a driver that has these.
    std::optional<int> nFlags;
    int nBaudBase = 0;

    /// What it was told, in order, with a blank behind each: "raise 6", "drop 4", "discard input",
    /// "discard output", "flags 8192 base 115200", "exclusive", "shared".
    std::string strTold;

    /// The answer to one call, or nothing.
    std::optional<int> Answer(int nDescriptor, unsigned long nRequest, void* argument);
};

} // namespace brennik::system_tests
