// Filters for the keystrokes of text boxes, and the format of amounts that grow from the right.
// Key codes are 16-bit character codes; a filter returns the code to accept, or 0 to drop the
// keystroke. Plain computation without state; tests use it as it is.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brennik {

class TextBoxFormat {
  public:
    TextBoxFormat() = delete;

    /// What an amount shows after a keystroke: strExpChar is taken out of the text, a digit is
    /// added at its end, 8 and 37 drop its last character, any other key changes nothing. The
    /// value is then shown with iExp decimals, 0 to 3; another iExp leaves the text as it is.
    /// Empty for the value 0 and for a text that is no number.
    static std::string ExpFormat(int16_t iExp, std::string_view strValue,
                                 std::string_view strExpChar, int16_t iKeyCode);

    /// Digits, backspace and one point; behind the point at most iExponent digits. iSelStart is the
    /// number of characters in front of the cursor.
    static int16_t CurrencyBox(std::string_view strCurrent, int16_t iKeyAscii, int16_t iExponent,
                               int16_t iSelStart);

    // Backspace always passes these four. Another key is dropped when iLen characters reach an
    // iMaxLen that isn't 0 while nothing is selected.

    /// Digits.
    static int16_t NumericBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen, int16_t iMaxLen);

    /// Letters of both cases.
    static int16_t AlphaBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen, int16_t iMaxLen);

    /// Digits and letters of both cases.
    static int16_t AlphaNumericBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen,
                                   int16_t iMaxLen);

    /// Digits and capitals; a small letter becomes its capital.
    static int16_t UCAlphaNumericBox(int16_t iKeyAscii, int16_t iSelLength, int16_t iLen,
                                     int16_t iMaxLen);

    /// Digits and letters of both cases below the maximum; 8, 37 and 39 always.
    static int16_t AlphaNumLen(int16_t iKeyAscii, int16_t iLen, int16_t iMaxLen);
};

} // namespace brennik
