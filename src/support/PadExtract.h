// Pads, cuts and strips fields of fixed width.
// Plain text work without a far side or a state; tests use it as it is. Padding types: 0 is "0" on
// the right, 1 a blank on the right, 2 "0" on the left, 3 a blank on the left.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

class PadExtract {
  public:
    /// The text filled up to lWidth characters; one that is longer is cut to its first lWidth.
    /// Empty for a width below 0, and for a shorter text with any other type.
    std::string PadString(std::string_view strData, int32_t lPadType, int32_t lWidth) const;

    /// What stands from position lStart (the first is 1) up to the byte iTerminator, which isn't
    /// part of it, or the end, at most lMaxLength characters. Empty for a start or a length that
    /// is none.
    std::string ExtractData(std::string_view strData, int32_t lStart, int16_t iTerminator,
                            int32_t lMaxLength) const;

    /// Type 0 takes "0" from the right end, 1 blanks from the left end, 2 "0" from the left end,
    /// 3 blanks from the right end. Empty for any other type. 1 and 3 work on the sides opposite
    /// to those of PadString: it is meant so.
    std::string StripPadding(int32_t lPadType, std::string_view strData) const;
};

} // namespace brennik
