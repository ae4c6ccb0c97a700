// Case and blanks of plain byte texts, as every rule of the seam means them: ASCII letters alone
// have a case, and no locale is ever asked.
// The far ends use it too; the rooms of the client above have their own.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace brennik {

constexpr char UpperAscii(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

inline std::string UpperAscii(std::string_view strText) {
    std::string strUpper(strText);
    std::transform(strUpper.begin(), strUpper.end(), strUpper.begin(),
                   [](char character) { return UpperAscii(character); });
    return strUpper;
}

/// The text without the blanks at both ends; these are 32 alone unless others are told.
constexpr std::string_view WithoutBlanks(std::string_view strText,
                                         std::string_view strBlanks = " ") {
    const size_t nFirst = strText.find_first_not_of(strBlanks);
    if (nFirst == std::string_view::npos) {
        return {};
    }
    return strText.substr(nFirst, strText.find_last_not_of(strBlanks) - nFirst + 1);
}

} // namespace brennik
