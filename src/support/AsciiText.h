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

/// The decimal text of a whole number: no leading zeros, "-" in front of one below 0.
template <std::integral Number>
std::string ToDecimal(Number value) {
    static_assert(!std::same_as<Number, bool> && !std::same_as<Number, char>);
    char digits[std::numeric_limits<Number>::digits10 + 3];
    const auto end = std::to_chars(digits, digits + sizeof digits, value);
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

/// The number that a whole text stands for: blanks around it, one sign, digits, and for a floating
/// point type a fraction ("1.5", "1.", ".5"; no exponent). Throws TypeMismatch for any other text,
/// Overflow for a number that doesn't fit. OstrandString gives 0 instead.
template <class Number>
Number ParseNumber(std::string_view strText) {
    std::string_view strDigits = TrimmedView(strText);
    if (strDigits.starts_with('+')) {
        strDigits.remove_prefix(1);
        if (strDigits.starts_with('-')) {
            throw RuntimeFailure(FailureKind::TypeMismatch);
        }
    }
    Number value{};
    const char* end = strDigits.data() + strDigits.size();
    std::from_chars_result parsed{};
    if constexpr (std::is_floating_point_v<Number>) {
        // Names of no number ("inf") and exponents are none of the forms.
        if (strDigits.find_first_not_of("-.0123456789") != std::string_view::npos) {
            throw RuntimeFailure(FailureKind::TypeMismatch);
        }
        parsed = std::from_chars(strDigits.data(), end, value, std::chars_format::fixed);
    } else {
        parsed = std::from_chars(strDigits.data(), end, value);
    }
    if (parsed.ec == std::errc::invalid_argument || parsed.ptr != end) {
        throw RuntimeFailure(FailureKind::TypeMismatch);
    }
    if (parsed.ec != std::errc{}) {
        throw RuntimeFailure(FailureKind::Overflow);
    }
    return value;
}

} // namespace brennik
