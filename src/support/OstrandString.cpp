#include "support/OstrandString.h"

#include "support/AsciiText.h"

namespace brennik {

namespace {

template <class Number>
Number NumberOrZero(std::string_view strText) {
    Number value{};
    return TryParseNumber(strText, value) == NumberText::Fits ? value : Number{};
}

} // namespace

int32_t OstrandString::StrToLong(std::string_view strText) {
    return NumberOrZero<int32_t>(strText);
}

int16_t OstrandString::StrToInt(std::string_view strText) {
    return NumberOrZero<int16_t>(strText);
}

double OstrandString::StrToDouble(std::string_view strText) {
    return NumberOrZero<double>(strText);
}

} // namespace brennik
