#include "support/OstrandString.h"

#include "support/AsciiText.h"
#include "support/Failure.h"

namespace brennik {

namespace {

template <class Number>
Number NumberOrZero(std::string_view strText) {
    return Guarded([&] { return ParseNumber<Number>(strText); },
                   [](const std::string&) { return Number{}; });
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
