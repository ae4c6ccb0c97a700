// A 32-bit word seen as separate bits, for the flags of a serial port's control block.
// It is good for 31 bits: bit 31 can be set and read as a field but never passes through a number.
// No far side; tests use it as it is.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace brennik {

class TLongBitMap {
  public:
    /// Takes bits 0 to 30 from the number; bit 31 stays as it was.
    void SetBitMap(int32_t lValue);

    /// 32 characters "0" and "1", bit 31 first.
    std::string GetBitMapAsBinaryString() const;

    /// Sets or clears one bit, 0 to 31; throws SubscriptOutOfRange for any other number.
    void SetField(int32_t lBit, bool bValue);
    bool GetField(int32_t lBit) const;

    /// The number of bits 0 to 30, whatever bit 31 is.
    int32_t GetBitMap() const;

  private:
    std::array<uint8_t, 32> bits_{}; ///< 0 or 1 each, the least significant first
};

} // namespace brennik
