// Conversions of text to numbers that give 0 instead of failing, for settings and packet fields.
// They accept blanks around the number, one sign, digits, and for doubles a fraction: the whole
// text or nothing. No far side; tests use them as they are.
#pragma once

#include <cstdint>
#include <string_view>

namespace brennik {

class OstrandString {
  public:
    OstrandString() = delete;

    /// 0 for a text that is no whole number or needs more than 32 bits.
    static int32_t StrToLong(std::string_view strText);

    /// 0 for a text that is no whole number or needs more than 16 bits.
    static int16_t StrToInt(std::string_view strText);

    /// 0 for a text that is no number; the decimal point is "." everywhere.
    static double StrToDouble(std::string_view strText);
};

} // namespace brennik
