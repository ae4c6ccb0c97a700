// Small text work that every room shares: upper case, blanks, and numbers to and from text.
// Plain functions over bytes: ASCII alone has a case, a blank is 32 alone, and no locale has a say,
// so that a wire format reads the same on every machine. Tests use them as they are.
#pragma once

#include "platform/RuntimeFailure.h"

#include <charconv>
#include <concepts>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

namespace brennik {

inline constexpr char kBlank = ' ';

/// "a" to "z" become capitals; every other byte stays.
constexpr char UpperCase(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline std::string UpperCase(std::string_view strText) {
    std::string strResult(strText);
    for (char& c : strResult) {
        c = UpperCase(c);
    }
    return strResult;
}

/// The part of the text between its leading and trailing blanks (32); tabs and the like stay.
constexpr std::string_view TrimmedView(std::string_view strText) noexcept {
    const size_t nFirst = strText.find_first_not_of(kBlank);
    if (nFirst == std::string_view::npos) {
        return {};
    }
    return strText.substr(nFirst, strText.find_last_not_of(kBlank) - nFirst + 1);
}

inline std::string Trim(std::string_view strText) {
    return std::string(TrimmedView(strText));
}

/// The folder text with a backslash at its end, as names are joined to it.
inline std::string WithTrailingBackslash(std::string strFolder) {
    if (!strFolder.ends_with('\\')) {
        strFolder += '\\';
    }
    return strFolder;
}

/// The decimal text of a whole number: no leading zeros, "-" in front of one below 0.
template <std::integral Number>
std::string ToDecimal(Number value) {
    static_assert(!std::same_as<Number, bool> && !std::same_as<Number, char>);
    char digits[std::numeric_limits<Number>::digits10 + 3];
    const auto end = std::to_chars(digits, digits + sizeof digits, value);
    return std::string(digits, end.ptr);
}

/// The shortest decimal text that reads back as the number, without an exponent: "1.5", "2".
inline std::string ToDecimal(double dValue) {
    char digits[400]; // the smallest numbers take some 340 characters
    const auto end =
        std::to_chars(digits, digits + sizeof digits, dValue, std::chars_format::fixed);
    return std::string(digits, end.ptr);
}

/// The same value in another width; throws Overflow where it doesn't fit.
template <std::integral Number, std::integral From>
constexpr Number Narrow(From value) {
    if (!std::in_range<Number>(value)) {
        throw RuntimeFailure(FailureKind::Overflow);
    }
    return static_cast<Number>(value);
}

/// What a text is to a number type.
enum class NumberText { Fits, TooLarge, NoNumber };

/// Reads the number that a whole text stands for: blanks around it, one sign, digits, and for a
/// floating point type a fraction ("1.5", "1.", ".5"; no exponent). Never throws: settings are
/// full of empty texts, and an exception for each would cost more than all the reading.
template <class Number>
NumberText TryParseNumber(std::string_view strText, Number& value) noexcept {
    std::string_view strDigits = TrimmedView(strText);
    if (strDigits.starts_with('+')) {
        strDigits.remove_prefix(1);
        if (strDigits.starts_with('-')) {
            return NumberText::NoNumber;
        }
    }
    Number parsedValue{};
    const char* end = strDigits.data() + strDigits.size();
    std::from_chars_result parsed{};
    if constexpr (std::is_floating_point_v<Number>) {
        // Names of no number ("inf") and exponents are none of the forms.
        if (strDigits.find_first_not_of("-.0123456789") != std::string_view::npos) {
            return NumberText::NoNumber;
        }
        parsed = std::from_chars(strDigits.data(), end, parsedValue, std::chars_format::fixed);
    } else {
        parsed = std::from_chars(strDigits.data(), end, parsedValue);
    }
    if (parsed.ec == std::errc::invalid_argument || parsed.ptr != end) {
        return NumberText::NoNumber;
    }
    if (parsed.ec != std::errc{}) {
        return NumberText::TooLarge;
    }
    value = parsedValue;
    return NumberText::Fits;
}

/// The same as a result. Throws TypeMismatch for a text that is no number, Overflow for a number
/// that doesn't fit. OstrandString gives 0 instead.
template <class Number>
Number ParseNumber(std::string_view strText) {
    Number value{};
    switch (TryParseNumber(strText, value)) {
    case NumberText::NoNumber:
        throw RuntimeFailure(FailureKind::TypeMismatch);
    case NumberText::TooLarge:
        throw RuntimeFailure(FailureKind::Overflow);
    case NumberText::Fits:
        break;
    }
    return value;
}

} // namespace brennik
